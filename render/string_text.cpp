#include "render/string_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "app/signal.h"
#include "decoder/values.h"
#include "meaning/utf8_text.h"
#include "runtime/context.h"
#include "runtime/services.h"

namespace {

constexpr size_t kOidTextLimit = 2047;
constexpr char kLowerDigits[] = "0123456789abcdef";
constexpr char kUpperDigits[] = "0123456789ABCDEF";

using Wide = unsigned __int128;

// Reads one base-128 subidentifier of at most `maxOctets` octets whose value
// must stay below 2 to the power `maxBits`.
int readSubidentifier(const uint8_t*& cursor, const uint8_t* end, int maxOctets, int maxBits, Wide& value)
{
    value = 0;
    int octets = 0;
    while (cursor < end) {
        uint8_t octet = *cursor++;
        if (++octets > maxOctets) return OID_ARC_TOO_BIG;
        value = (value << 7) | (octet & 0x7F);
        if ((value >> maxBits) != 0) return OID_ARC_TOO_BIG;
        if ((octet & 0x80) == 0) return OID_DONE;
    }
    return OID_MALFORMED;
}

void appendArc(std::string& text, Wide arc)
{
    char digits[48];
    int at = sizeof digits;
    do {
        digits[--at] = static_cast<char>('0' + static_cast<int>(arc % 10));
        arc /= 10;
    } while (arc != 0);
    text += ' ';
    text.append(digits + at, sizeof digits - static_cast<size_t>(at));
}

int finishOidText(RunContext* context, std::string& made, OidText& text)
{
    made += " }";
    if (made.size() > kOidTextLimit) return OID_TOO_LONG;
    auto length = static_cast<int32_t>(made.size() + 1);
    if (text.text == nullptr || text.length <= 0) {
        text.text = newText(context, made.data(), made.size());
        if (text.text == nullptr) return OID_TOO_LONG;
    } else {
        if (text.length < length) return OID_TOO_LONG;
        std::memcpy(text.text, made.c_str(), made.size() + 1);
    }
    text.length = length;
    return OID_DONE;
}

int convertOid(RunContext* context, const EncodedOid& encoded, OidText& text, bool relative)
{
    if (encoded.length == 0 || (encoded.octets[encoded.length - 1] & 0x80) != 0) return OID_MALFORMED;
    const uint8_t* cursor = encoded.octets;
    const uint8_t* end = encoded.octets + encoded.length;
    std::string made = "{";
    Wide value = 0;
    if (!relative) {
        // The first subidentifier carries two arcs: 40 * first + second.
        if (int result = readSubidentifier(cursor, end, 11, 72, value); result != OID_DONE) return result;
        Wide first = value < 40 ? 0 : value < 80 ? 1 : 2;
        Wide second = value - first * 40;
        if ((second >> 64) != 0) return OID_ARC_TOO_BIG;
        appendArc(made, first);
        appendArc(made, second);
    }
    while (cursor < end) {
        if (int result = readSubidentifier(cursor, end, 10, 64, value); result != OID_DONE) return result;
        appendArc(made, value);
        if (made.size() > kOidTextLimit) return OID_TOO_LONG;
    }
    return finishOidText(context, made, text);
}

int identifierText(RunContext* context, const void* value, char*& text, bool relative)
{
    OidText converted = {0, nullptr};
    const auto& encoded = *static_cast<const EncodedOid*>(value);
    int result = relative ? qorEncodedRelOidToText(context, encoded, converted)
                          : qorEncodedOidToText(context, encoded, converted);
    if (result != OID_DONE) return 18;
    if ((context->toolFlags & TLV_SYNTAX_LAYOUT) != 0) {
        text = converted.text;
        return 0;
    }
    // The decomposed layout shows the arcs alone, without "{ " and " }".
    size_t length = std::strlen(converted.text);
    text = newText(context, converted.text + 2, length >= 4 ? length - 4 : 0);
    qorFree(context, converted.text);
    return text == nullptr ? 1 : 0;
}

int escapedFromUnits(RunContext* context, const void* units, CharForm form, uint32_t count, char*& text)
{
    escapedText(context, text, units, form, count);
    return 0;
}

// -utf8 writes the international strings as text; without it, escapes.
int internationalText(RunContext* context, const void* units, CharForm form, uint32_t count, char*& text)
{
    if (utf8TextWanted(context)) {
        utf8ReadableText(context, text, units, form, count);
        return 0;
    }
    escapedText(context, text, units, form, count);
    return 0;
}

void appendTwoDigits(std::string& text, unsigned value)
{
    text += static_cast<char>('0' + (value / 10) % 10);
    text += static_cast<char>('0' + value % 10);
}

}  // namespace

int qorEncodedOidToText(RunContext* context, const EncodedOid& encoded, OidText& text)
{
    return convertOid(context, encoded, text, false);
}

int qorEncodedRelOidToText(RunContext* context, const EncodedOid& encoded, OidText& text)
{
    return convertOid(context, encoded, text, true);
}

int unitWidth(CharForm form)
{
    switch (form) {
        case CHARS_8BIT: return 1;
        case CHARS_16BIT: return 2;
        default: return 4;
    }
}

uint32_t nextUtf8Char(const uint8_t*& cursor, const uint8_t* end)
{
    uint8_t first = *cursor;
    int ones = 0;
    while (ones < 8 && (first & (0x80 >> ones)) != 0) ++ones;
    if (ones == 0) {
        ++cursor;
        return first;
    }
    if (ones == 1 || ones >= 7) {
        ++cursor;
        return 0;
    }
    uint32_t character = first & (0xFFu >> (ones + 1));
    bool wellFormed = true;
    for (int i = 1; i < ones; ++i) {
        if (cursor + i >= end || (cursor[i] & 0xC0) != 0x80) {
            wellFormed = false;
            break;
        }
        character = (character << 6) | (cursor[i] & 0x3F);
    }
    cursor += ones;
    return wellFormed ? character : 0;
}

uint32_t nextUnit(const uint8_t*& cursor, const uint8_t* end, CharForm form)
{
    uint32_t unit = 0;
    switch (form) {
        case CHARS_UTF8:
            return nextUtf8Char(cursor, end);
        case CHARS_8BIT:
            unit = *cursor;
            break;
        case CHARS_16BIT: {
            uint16_t half;
            std::memcpy(&half, cursor, sizeof half);
            unit = half;
            break;
        }
        case CHARS_32BIT:
            std::memcpy(&unit, cursor, sizeof unit);
            break;
    }
    cursor += unitWidth(form);
    return unit;
}

namespace {

// The walk that escapedText and escapedLength share: each character with
// its escape, if it needs one.
template <typename Sink>
void walkEscapes(const void* units, CharForm form, uint32_t count, Sink&& sink)
{
    const auto* cursor = static_cast<const uint8_t*>(units);
    size_t total = form == CHARS_UTF8 ? count : static_cast<size_t>(count) * static_cast<size_t>(unitWidth(form));
    if (cursor == nullptr) return;
    const uint8_t* end = cursor + total;
    while (cursor < end) {
        const uint8_t* before = cursor;
        uint32_t character = nextUnit(cursor, end, form);
        sink(character);
        if (cursor == before) break;
    }
}

}  // namespace

size_t escapedLength(const void* units, CharForm form, uint32_t count)
{
    size_t length = 0;
    const size_t escaped = 2 * static_cast<size_t>(unitWidth(form) + 1);
    walkEscapes(units, form, count, [&](uint32_t c) {
        if (c >= 0x20 && c <= 0x7E) {
            length += c == '\\' ? 2 : 1;
        } else {
            length += escaped;
        }
    });
    return length;
}

void escapedText(RunContext* context, char*& result, const void* units, CharForm form, uint32_t count)
{
    size_t length = escapedLength(units, form, count);
    result = static_cast<char*>(qorAlloc(context, length + 1));
    if (result == nullptr) {
        signalError(context, kNoMemory, 0, 0);
        return;
    }
    char* out = result;
    const int width = unitWidth(form);
    walkEscapes(units, form, count, [&](uint32_t c) {
        if (c >= 0x20 && c <= 0x7E) {
            *out++ = static_cast<char>(c);
            if (c == '\\') *out++ = '\\';
            return;
        }
        *out++ = '\\';
        *out++ = form == CHARS_8BIT ? 'x' : form == CHARS_16BIT ? 'u' : 'U';
        for (int i = width - 1; i >= 0; --i) {
            unsigned octet = (c >> (8 * i)) & 0xFF;
            *out++ = kLowerDigits[octet >> 4];
            *out++ = kLowerDigits[octet & 0xF];
        }
    });
    *out = '\0';
}

int timeText(RunContext*, const TimeRecord& record, char* text, bool utcForm)
{
    if (record.month < 1 || record.month > 12 || record.day < 1 || record.day > 31 || record.hour > 23 ||
        record.minute > 59 || record.second > 59) {
        return 7;
    }
    std::string made;
    if (utcForm) {
        appendTwoDigits(made, record.year % 100);
    } else {
        char year[8];
        std::snprintf(year, sizeof year, "%04u", static_cast<unsigned>(record.year));
        made += year;
    }
    for (unsigned field : {record.month, record.day, record.hour, record.minute, record.second}) {
        appendTwoDigits(made, field);
    }
    if (!utcForm) {
        if (record.millisec > 999) return 7;
        made += '.';
        made += static_cast<char>('0' + record.millisec / 100);
        appendTwoDigits(made, record.millisec % 100);
    }
    if (record.utc != 0) {
        made += 'Z';
    } else if (record.mindiff != 0) {
        int minutes = record.mindiff;
        made += minutes < 0 ? '-' : '+';
        minutes = std::abs(minutes);
        appendTwoDigits(made, static_cast<unsigned>(minutes / 60));
        appendTwoDigits(made, static_cast<unsigned>(minutes % 60));
    } else if (utcForm) {
        made += 'Z';
    }
    std::memcpy(text, made.c_str(), made.size() + 1);
    return 0;
}

int objectIdentifierText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    return identifierText(context, value, text, false);
}

int relativeOidText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    return identifierText(context, value, text, true);
}

int bitStringText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const auto& bits = *static_cast<const CountedValue*>(value);
    uint32_t unused = bits.length % 8 == 0 ? 0 : 8 - bits.length % 8;
    size_t octets = (static_cast<size_t>(bits.length) + 7) / 8;
    std::string made;
    made.reserve(2 + 2 * octets);
    made += kLowerDigits[unused >> 4];
    made += kLowerDigits[unused & 0xF];
    const auto* data = static_cast<const uint8_t*>(bits.data);
    for (size_t i = 0; i < octets; ++i) {
        made += kUpperDigits[data[i] >> 4];
        made += kUpperDigits[data[i] & 0xF];
    }
    text = newText(context, made.data(), made.size());
    return text == nullptr ? 1 : 0;
}

int octetStringText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const auto& octets = *static_cast<const CountedValue*>(value);
    text = hexText(context, static_cast<const uint8_t*>(octets.data),
                   shownOctets(context, static_cast<int32_t>(octets.length)));
    return text == nullptr ? 1 : 0;
}

int ia5StringText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const auto& string = *static_cast<const CountedValue*>(value);
    return escapedFromUnits(context, string.data, CHARS_8BIT, string.length, text);
}

int bmpStringText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const auto& string = *static_cast<const CountedValue*>(value);
    return internationalText(context, string.data, CHARS_16BIT, string.length, text);
}

int universalStringText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const auto& string = *static_cast<const CountedValue*>(value);
    return internationalText(context, string.data, CHARS_32BIT, string.length, text);
}

int utf8StringText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    const char* string = *static_cast<const TextValue*>(value);
    if (string == nullptr) string = "";
    return internationalText(context, string, CHARS_UTF8, static_cast<uint32_t>(std::strlen(string)), text);
}

int utcTimeText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    char made[64];
    if (timeText(context, *static_cast<const TimeRecord*>(value), made, true) != 0) return 7;
    text = newText(context, made, std::strlen(made));
    return text == nullptr ? 1 : 0;
}

int generalizedTimeText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    char made[64];
    if (timeText(context, *static_cast<const TimeRecord*>(value), made, false) != 0) return 7;
    text = newText(context, made, std::strlen(made));
    return text == nullptr ? 1 : 0;
}
