// JSON text for the -json layout: strings escaped as RFC 8259 asks, octets
// as hexadecimal strings, numbers; all written into the run buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "runtime/decimal.h"
#include "runtime/output.h"
#include "tlv/octet_view.h"

struct RunContext;

// Whether `length` octets are well-formed UTF-8 (RFC 3629): no overlong
// form, no surrogate, nothing beyond U+10FFFF, no sequence cut short.
bool isValidUtf8(const char* text, size_t length);

// How many of the first `limit` octets of a UTF-8 text can be kept without
// cutting a character in two.
size_t utf8Prefix(const char* text, size_t length, size_t limit);

// A string in quotes: '"', '\' and the control characters U+0000 to U+001F
// escaped, everything else as it stands. The text must be valid UTF-8.
void writeJsonString(RunContext* context, const char* text, size_t length);

// Octets as a string of upper-case hexadecimal digits, two an octet.
void writeJsonHex(RunContext* context, OctetView octets);

constexpr int64_t kJsonExactLimit = int64_t{1} << 53;  // doubles hold every integer up to here

// Writes the digits of `value` at `out` as writeJsonNumber writes them;
// returns the end. Needs 24 chars.
char* putJsonNumberSlow(char* out, int64_t value);
inline char* putJsonNumber(char* out, int64_t value)
{
    // Offsets, lengths, tag numbers: not negative, and exact in a double.
    if (value >= 0 && value <= kJsonExactLimit) return putDecimal(out, static_cast<uint64_t>(value));
    return putJsonNumberSlow(out, value);
}
// The JSON text of a number that rises by small steps (the offsets of a
// walk's elements, one after the other): the digits of the last one are
// stepped up in place instead of made anew.
class RisingNumber {
public:
    // Makes `value` the number whose text put() writes.
    void set(int64_t value)
    {
        if (value > value_ && value - value_ < kLargestStep && value_ >= 0 && value < kJsonExactLimit &&
            stepUp(static_cast<uint32_t>(value - value_))) {
            value_ = value;
            return;
        }
        length_ = static_cast<uint8_t>(putJsonNumber(digits_, value) - digits_);
        value_ = value;
    }
    // The text at `out`, which needs room for 24 characters; returns the end.
    char* put(char* out) const
    {
        std::memcpy(out, digits_, sizeof digits_);
        return out + length_;
    }

private:
    static constexpr int64_t kLargestStep = 1 << 16;

    // Adds `step` to the digits; false when a digit more is needed.
    bool stepUp(uint32_t step)
    {
        // Most steps change the last digit alone.
        const uint32_t last = static_cast<uint32_t>(digits_[length_ - 1] - '0') + step;
        if (last < 10) {
            digits_[length_ - 1] = static_cast<char>('0' + last);
            return true;
        }
        for (int at = length_ - 1; step != 0; --at) {
            if (at < 0) return false;
            step += static_cast<uint32_t>(digits_[at] - '0');
            digits_[at] = static_cast<char>('0' + step % 10);
            step /= 10;
        }
        return true;
    }

    int64_t value_ = -1;
    char digits_[24] = {};
    uint8_t length_ = 0;
};

// Text at `out`, for fields composed in a buffer of the caller's: a
// literal by its known size, any other text by its length.
template <size_t N>
inline char* put(char* out, const char (&text)[N])
{
    std::memcpy(out, text, N - 1);
    return out + N - 1;
}
inline char* put(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// A number; one beyond 2^53 in magnitude, which not every reader holds
// exactly in a double, is written as a string of its digits.
void writeJsonNumber(RunContext* context, int64_t value);

// Fixed JSON text (keys with their quotes, commas, brackets), its length
// known at compile time.
template <size_t N>
inline void writeJsonLiteral(RunContext* context, const char (&text)[N])
{
    qorWrite(context, text, N - 1);
}
