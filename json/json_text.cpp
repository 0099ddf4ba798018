#include "json/json_text.h"

#include <cstring>

#include "meaning/utf8_text.h"
#include "runtime/output.h"
#include "runtime/output_line.h"

namespace {

constexpr int64_t kExactLimit = int64_t{1} << 53;  // doubles hold every integer up to here

// The escape of a character below U+0020, or of '"' and '\'; null for one
// that stands as it is. RFC 8259 7: the short forms where there are ones.
const char* escapeOf(uint8_t octet, char (&spelled)[7])
{
    switch (octet) {
        case '"': return "\\\"";
        case '\\': return "\\\\";
        case '\b': return "\\b";
        case '\f': return "\\f";
        case '\n': return "\\n";
        case '\r': return "\\r";
        case '\t': return "\\t";
        default: break;
    }
    if (octet >= 0x20) return nullptr;
    std::memcpy(spelled, "\\u00", 4);
    spelled[4] = hexPair(octet)[0];
    spelled[5] = hexPair(octet)[1];
    spelled[6] = '\0';
    return spelled;
}

// Eight decimal digits of a value below 10^8, as eight ASCII digits packed
// first-digit-lowest (the order they stand in memory on a little-endian
// machine), leading zeros kept. Splits into two halves of four digits, each
// into two pairs, each pair into its digits, all lanes at once.
uint64_t eightDigits(uint32_t value)
{
    const uint64_t halves = (value / 10000) | (static_cast<uint64_t>(value % 10000) << 32);
    const uint64_t hundreds = ((halves * 10486) >> 20) & 0x0000007F0000007FULL;  // lane / 100
    const uint64_t pairs = hundreds | ((halves - hundreds * 100) << 16);
    const uint64_t tens = ((pairs * 103) >> 10) & 0x000F000F000F000FULL;         // lane / 10
    return tens | ((pairs - tens * 10) << 8);
}

// The digits of a value below 10^8 without its leading zeros.
char* putShortDigits(char* out, uint32_t value)
{
    uint64_t digits = eightDigits(value);
    // The last digit stays, even a 0.
    const int zeros = __builtin_ctzll(digits | (uint64_t{1} << 56)) / 8;
    digits = (digits >> (8 * zeros)) | 0x3030303030303030ULL;
    std::memcpy(out, &digits, 8);  // what lies behind the last digit is scratch
    return out + 8 - zeros;
}

char* putDigits(char* out, uint64_t value)
{
    constexpr uint64_t kEight = 100000000;
    if (value < kEight) return putShortDigits(out, static_cast<uint32_t>(value));
    // The digits in front of the last eight, then those eight in full.
    out = putDigits(out, value / kEight);
    const uint64_t digits = eightDigits(static_cast<uint32_t>(value % kEight)) | 0x3030303030303030ULL;
    std::memcpy(out, &digits, 8);
    return out + 8;
}

}  // namespace

char* putJsonNumberSlow(char* out, int64_t value)
{
    const bool exact = value <= kExactLimit && value >= -kExactLimit;
    if (!exact) *out++ = '"';
    if (value < 0) {
        *out++ = '-';
        out = putDigits(out, 0 - static_cast<uint64_t>(value));
    } else {
        out = putDigits(out, static_cast<uint64_t>(value));
    }
    if (!exact) *out++ = '"';
    return out;
}

bool isValidUtf8(const char* text, size_t length)
{
    return isValidUtf8(std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(text), length));
}

size_t utf8Prefix(const char* text, size_t length, size_t limit)
{
    if (limit >= length) return length;
    size_t end = limit;
    // Step back over continuation octets to the lead of the cut character.
    while (end > 0 && (static_cast<uint8_t>(text[end]) & 0xC0) == 0x80) --end;
    return end;
}

void writeJsonString(RunContext* context, const char* text, size_t length)
{
    qorWrite(context, "\"", 1);
    size_t run = 0;  // where the octets not yet written begin
    char spelled[7];
    for (size_t at = 0; at < length; ++at) {
        const auto octet = static_cast<uint8_t>(text[at]);
        if (octet >= 0x20 && octet != '"' && octet != '\\') continue;
        const char* escape = escapeOf(octet, spelled);
        qorWrite(context, text + run, at - run);
        qorWrite(context, escape, std::strlen(escape));
        run = at + 1;
    }
    qorWrite(context, text + run, length - run);
    qorWrite(context, "\"", 1);
}

void writeJsonHex(RunContext* context, OctetView octets)
{
    OutputLine line(context, 2 * static_cast<size_t>(octets.size()) + 2);
    line.character('"');
    line.hexDigits(octets.data(), 2 * octets.size());
    line.character('"');
}

void writeJsonNumber(RunContext* context, int64_t value)
{
    char digits[24];
    qorWrite(context, digits, static_cast<size_t>(putJsonNumber(digits, value) - digits));
}
