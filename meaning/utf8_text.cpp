#include "meaning/utf8_text.h"

#include <string>

#include "app/signal.h"
#include "render/text_block.h"
#include "runtime/context.h"
#include "runtime/extensions.h"

namespace {

constexpr char kLowerDigits[] = "0123456789abcdef";

// The octets of the sequence that starts with `first`; 0 for an octet that
// starts none (RFC 3629 section 4: C0, C1 and F5 to FF never appear).
int sequenceLength(uint8_t first)
{
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first <= 0xDF) return 2;
    if (first >= 0xE0 && first <= 0xEF) return 3;
    if (first >= 0xF0 && first <= 0xF4) return 4;
    return 0;
}

// The character of the well-formed sequence at `at`, which ends at or before
// `end`; false when it is not one.
bool wellFormedSequence(const uint8_t* at, const uint8_t* end, int& length, uint32_t& character)
{
    length = sequenceLength(*at);
    if (length == 0 || end - at < length) return false;
    character = length == 1 ? *at : *at & (0x7Fu >> length);
    for (int i = 1; i < length; ++i) {
        if ((at[i] & 0xC0) != 0x80) return false;
        character = (character << 6) | (at[i] & 0x3F);
    }
    // The shortest form, no surrogate, nothing above U+10FFFF.
    if (length == 3 && (character < 0x800 || (character >= 0xD800 && character <= 0xDFFF))) return false;
    if (length == 4 && (character < 0x10000 || character > 0x10FFFF)) return false;
    return true;
}

// A character that may stand in the listing as it is.
bool showable(uint32_t c)
{
    if (c < 0xA0) return false;                                      // C0, DEL, C1 (ASCII is handled apart)
    if (c >= 0xD800 && c <= 0xDFFF) return false;                    // surrogates
    if (c > 0x10FFFF) return false;
    if (c == 0x200E || c == 0x200F) return false;                    // left-to-right and right-to-left marks
    if (c >= 0x2028 && c <= 0x202E) return false;                    // separators, embeddings, overrides
    if (c >= 0x2066 && c <= 0x2069) return false;                    // isolates
    return true;
}

void appendUtf8(std::string& text, uint32_t c)
{
    if (c < 0x800) {
        text += static_cast<char>(0xC0 | (c >> 6));
    } else if (c < 0x10000) {
        text += static_cast<char>(0xE0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (c >> 18));
        text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    }
    text += static_cast<char>(0x80 | (c & 0x3F));
}

// The escape the listing gives a character without -utf8.
void appendEscape(std::string& text, uint32_t c, CharForm form)
{
    const int width = unitWidth(form);
    text += '\\';
    text += form == CHARS_8BIT ? 'x' : form == CHARS_16BIT ? 'u' : 'U';
    for (int i = width - 1; i >= 0; --i) {
        const unsigned octet = (c >> (8 * i)) & 0xFF;
        text += kLowerDigits[octet >> 4];
        text += kLowerDigits[octet & 0xF];
    }
}

}  // namespace

bool utf8TextWanted(const RunContext* context)
{
    return context->extensions != nullptr && context->extensions->utf8Text;
}

bool isValidUtf8(std::span<const uint8_t> octets)
{
    const uint8_t* at = octets.data();
    const uint8_t* end = at + octets.size();
    while (at < end) {
        int length = 0;
        uint32_t character = 0;
        if (!wellFormedSequence(at, end, length, character)) return false;
        at += length;
    }
    return true;
}

void utf8ReadableText(RunContext* context, char*& result, const void* units, CharForm form, uint32_t count)
{
    std::string text;
    const auto* cursor = static_cast<const uint8_t*>(units);
    if (cursor != nullptr) {
        const size_t total = form == CHARS_UTF8 ? count : static_cast<size_t>(count) * unitWidth(form);
        const uint8_t* end = cursor + total;
        text.reserve(total);
        while (cursor < end) {
            // The units go as they go without -utf8, so that what can't be
            // shown has the escape it had.
            const uint8_t* before = cursor;
            const uint32_t c = nextUnit(cursor, end, form);
            if (c >= 0x20 && c <= 0x7E) {
                text += static_cast<char>(c);
                if (c == '\\') text += '\\';
            } else {
                bool shown = showable(c);
                if (shown && form == CHARS_UTF8) {
                    int length = 0;
                    uint32_t character = 0;
                    shown = wellFormedSequence(before, end, length, character) && before + length == cursor;
                }
                if (shown) {
                    appendUtf8(text, c);
                } else {
                    appendEscape(text, c, form);
                }
            }
            if (cursor == before) break;
        }
    }
    result = newText(context, text.data(), text.size());
    if (result == nullptr) signalError(context, kNoMemory, 0, 0);
}

size_t utf8Characters(const char* text, size_t size)
{
    size_t characters = 0;
    for (size_t i = 0; i < size; ++i) {
        if ((static_cast<uint8_t>(text[i]) & 0xC0) != 0x80) ++characters;
    }
    return characters;
}

size_t utf8PrefixOctets(const char* text, size_t size, size_t characters)
{
    size_t at = 0;
    for (size_t seen = 0; at < size; ++at) {
        if ((static_cast<uint8_t>(text[at]) & 0xC0) != 0x80 && seen++ == characters) break;
    }
    return at;
}
