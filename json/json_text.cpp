#include "json/json_text.h"

#include <cstring>

#include "meaning/utf8_text.h"
#include "runtime/decimal.h"
#include "runtime/output.h"
#include "runtime/output_line.h"

namespace {


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

}  // namespace

char* putJsonNumberSlow(char* out, int64_t value)
{
    const bool exact = value <= kJsonExactLimit && value >= -kJsonExactLimit;
    if (!exact) *out++ = '"';
    out = putSignedDecimal(out, value);
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
