#include "render/number_text.h"

#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "app/signal.h"
#include "decoder/values.h"
#include "render/universal_tags.h"
#include "runtime/context.h"
#include "runtime/decimal.h"
#include "runtime/output.h"
#include "runtime/services.h"

namespace {

int textOrNoMemory(RunContext* context, const std::string& made, char*& text)
{
    text = newText(context, made.data(), made.size());
    return text == nullptr ? 1 : 0;
}

}  // namespace

size_t shortIntegerChars(int32_t value, bool noAddition, char* out)
{
    char digits[24];
    size_t size = static_cast<size_t>(putSignedDecimal(digits, value) - digits);
    std::memcpy(out, digits, size);
    if (noAddition) return size;
    // The additional value: whole octets of hexadecimal. A positive value
    // gets a 0 in front when its first digit would read as a sign; a
    // negative one drops its leading f digits, but keeps one f, or a whole
    // ff octet when an even count was dropped, so the sign still shows.
    static constexpr char kDigits[] = "0123456789abcdef";
    char hex[8];
    const auto bits = static_cast<uint32_t>(value);
    int count = 8;
    for (int i = 0; i < 8; ++i) hex[i] = kDigits[(bits >> (28 - 4 * i)) & 0xF];
    int first = 0;
    std::memcpy(out + size, " (0x", 4);
    size += 4;
    if (value >= 0) {
        while (first < 7 && hex[first] == '0') ++first;
        if ((count - first) % 2 != 0) {
            out[size++] = '0';
        } else if (hex[first] >= '8') {
            out[size++] = '0';
            out[size++] = '0';
        }
    } else {
        while (first < count && hex[first] == 'f') ++first;
        if (first != 0) {
            out[size++] = 'f';
            if (first % 2 == 0) out[size++] = 'f';
        }
    }
    std::memcpy(out + size, hex + first, static_cast<size_t>(count - first));
    size += static_cast<size_t>(count - first);
    out[size++] = ')';
    return size;
}

std::string shortIntegerText(int32_t value, bool noAddition)
{
    char text[48];
    return std::string(text, shortIntegerChars(value, noAddition, text));
}

char* hugeIntegerHex(RunContext* context, const uint8_t* octets, int32_t length)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    int32_t first = length > 0 && octets[0] == 0xFF ? 1 : 0;
    std::string text = "0x";
    text.reserve(2 + 2 * static_cast<size_t>(length));
    for (int32_t i = first; i < length; ++i) {
        text += kDigits[octets[i] >> 4];
        text += kDigits[octets[i] & 0xF];
    }
    char* block = newText(context, text.data(), text.size());
    if (block == nullptr) signalError(context, kNoMemory, 0, 0);
    return block;
}

char* hugeIntegerText(RunContext* context, const uint8_t* octets, int32_t length)
{
    if (octets == nullptr || length == 0) {
        signalError(context, kBadHugeInteger, 0, 0);
        return nullptr;
    }
    if (length > kHugeIntegerFrom || (octets[0] != 0x00 && octets[0] != 0xFF)) {
        return hugeIntegerHex(context, octets, length);
    }
    // Five octets: the value lies just outside 32 bits and fits 64 exactly.
    int64_t value = octets[0] == 0xFF ? -1 : 0;
    for (int32_t i = 0; i < length; ++i) value = static_cast<int64_t>(static_cast<uint64_t>(value) << 8) | octets[i];
    std::string text = std::to_string(value);
    char* block = newText(context, text.data(), text.size());
    if (block == nullptr) signalError(context, kNoMemory, 0, 0);
    return block;
}

int qorRealClass(const double& value, int)
{
    if (std::isnan(value)) return REAL_NOT_A_NUMBER;
    if (value == 0) return std::signbit(value) ? REAL_MINUS_ZERO : REAL_ZERO;
    if (value >= DBL_MAX) return REAL_PLUS_INFINITY;
    if (value <= -DBL_MAX) return REAL_MINUS_INFINITY;
    return REAL_ORDINARY;
}

const char* qorRealClassName(int realClass)
{
    switch (realClass) {
        case REAL_ZERO: return "0";
        case REAL_PLUS_INFINITY: return "PLUS-INFINITY";
        case REAL_MINUS_INFINITY: return "MINUS-INFINITY";
        case REAL_NOT_A_NUMBER: return "NOT-A-NUMBER";
        case REAL_MINUS_ZERO: return "-0";
        default: return nullptr;
    }
}

void fixDecimalPoint(char* text)
{
    if (char* comma = std::strchr(text, ','); comma != nullptr) *comma = '.';
}

int realText(RunContext*, const double& value, std::string& text)
{
    if (value >= DBL_MAX) {
        text = "PLUS-INFINITY";
        return REAL_PLUS_INFINITY;
    }
    if (value <= -DBL_MAX) {
        text = "MINUS-INFINITY";
        return REAL_MINUS_INFINITY;
    }
    int realClass = qorRealClass(value, 8);
    if (realClass != REAL_ORDINARY) {
        text = qorRealClassName(realClass);
        return realClass;
    }
    // An exact binary mantissa and exponent: scale the magnitude into 64
    // bits, then drop trailing zero bits so that the mantissa is odd.
    constexpr double kTwo63 = 9223372036854775808.0;
    double magnitude = std::fabs(value);
    int exponent = 0;
    while (magnitude < kTwo63 && exponent > -32000) {
        magnitude *= 2;
        --exponent;
    }
    while (magnitude > kTwo63 && exponent < 32000) {
        magnitude /= 2;
        ++exponent;
    }
    auto mantissa = static_cast<uint64_t>(magnitude);
    if (mantissa > 0x7FFFFFFFFFFFFFFFULL) {
        mantissa >>= 1;
        ++exponent;
    }
    while (mantissa != 0 && (mantissa & 1) == 0) {
        mantissa >>= 1;
        ++exponent;
    }
    auto signedMantissa = static_cast<long long>(mantissa);
    if (value < 0) signedMantissa = -signedMantissa;
    text = formatText("{ mantissa %lld, base 2, exponent %d }", signedMantissa, exponent);
    return REAL_ORDINARY;
}

int booleanText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    bool isTrue = *static_cast<const uint8_t*>(value) != 0;
    return textOrNoMemory(context, isTrue ? "TRUE" : "FALSE", text);
}

int nullText(RunContext* context, const RenderInput&, const void*, char*& text)
{
    return textOrNoMemory(context, "NULL", text);
}

int integerText(RunContext* context, const RenderInput& input, const void* value, char*& text)
{
    const bool noAddition = (context->toolFlags & TLV_NO_ADDITION) != 0;
    if (input.contents < kHugeIntegerFrom) {
        return textOrNoMemory(context, shortIntegerText(*static_cast<const int32_t*>(value), noAddition), text);
    }
    const auto* huge = static_cast<const HugeInteger*>(value);
    char* main = hugeIntegerText(context, huge->octets, huge->length);
    if (main == nullptr) return 0;
    if (noAddition || input.contents != kHugeIntegerFrom || main[1] == 'x') {
        text = main;
        return 0;
    }
    // A negative five-octet value keeps its sign octet in the additional form.
    std::string hex = "0x";
    for (int32_t i = 0; i < huge->length; ++i) hex += formatText("%02x", huge->octets[i]);
    std::string whole = std::string(main) + " (" + hex + ")";
    qorFree(context, main);
    return textOrNoMemory(context, whole, text);
}

int realValueText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const double real = *static_cast<const double*>(value);
    std::string plain = formatText("%E", real);
    fixDecimalPoint(plain.data());
    std::string main;
    int realClass = realText(context, real, main);
    if (realClass == REAL_ORDINARY && (context->toolFlags & TLV_NO_ADDITION) == 0) main += " (" + plain + ")";
    return textOrNoMemory(context, main, text);
}
