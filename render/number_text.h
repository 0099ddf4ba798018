// Texts of BOOLEAN, NULL, INTEGER of any length, and REAL.
#pragma once

#include <cstdint>
#include <string>

#include "render/text_block.h"

struct RunContext;

// The class of a float, by the BER special REAL octets.
constexpr int REAL_ORDINARY = -1;
constexpr int REAL_ZERO = 0;
constexpr int REAL_PLUS_INFINITY = 64;
constexpr int REAL_MINUS_INFINITY = 65;
constexpr int REAL_NOT_A_NUMBER = 66;
constexpr int REAL_MINUS_ZERO = 67;

char* hugeIntegerText(RunContext* context, const uint8_t* octets, int32_t length);
char* hugeIntegerHex(RunContext* context, const uint8_t* octets, int32_t length);
// The main form of a REAL into `text`; returns its class.
int realText(RunContext* context, const double& value, std::string& text);
int qorRealClass(const double& value, int size);
const char* qorRealClassName(int realClass);
void fixDecimalPoint(char* text);
// "%d" of an INTEGER, with its additional value unless `noAddition`.
std::string shortIntegerText(int32_t value, bool noAddition);
// The same into `out` (room for 40 characters); returns its length.
size_t shortIntegerChars(int32_t value, bool noAddition, char* out);

int booleanText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int nullText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int integerText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int realValueText(RunContext* context, const RenderInput& input, const void* value, char*& text);
