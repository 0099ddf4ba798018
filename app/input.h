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

// +offset,num as the listing reads it, in 32 bits without an overflow check,
// and in 64 bits. The 64-bit values count for a binary file larger than the
// 32-bit lengths can hold; `wide` tells that they did.
struct InputRange {
    uint32_t offset = 0;
    uint32_t count = 0;
    uint64_t wideOffset = 0;
    uint64_t wideCount = 0;
    bool wide = false;
};
// loadInput with both readings of the range. A binary file of any size is
// mapped; one whose octets from the offset on exceed 2 GiB gets buffer.size
// and a length of 0: only a listing in stretches takes it.
int loadInputRange(RunContext* context, std::FILE* stream, InputRange& range, InputBuffer& buffer);
int hexTextToBinary(RunContext* context, const char* text, int32_t length, InputBuffer& buffer);
// Gives back the memory of a loaded input and empties the buffer.
void releaseInput(RunContext* context, InputBuffer& buffer);
