// Loading the whole input into memory: binary octets, or hexadecimal text
// turned into octets.
#pragma once

#include <cstdint>
#include <cstdio>

#include "runtime/buffers.h"

struct RunContext;

// Result codes of loading.
constexpr int LOAD_DONE = 0;
constexpr int LOAD_NO_MEMORY = 1;
constexpr int LOAD_READ_FAILED = 46;
constexpr int LOAD_BAD_OFFSET = 47;
constexpr int LOAD_SHORT_TEXT = 48;
constexpr int LOAD_NOT_HEXADECIMAL = 49;

// On entry buffer.length holds the spare octets wanted behind the input.
int loadInput(RunContext* context, std::FILE* stream, uint32_t offset, uint32_t count,
              InputBuffer& buffer);
int hexTextToBinary(RunContext* context, const char* text, int32_t length, InputBuffer& buffer);
// Gives back the memory of a loaded input and empties the buffer.
void releaseInput(RunContext* context, InputBuffer& buffer);
