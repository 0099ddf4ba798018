// The text of a tag, for the printers.
#pragma once

#include <cstdint>

#include "tlv/element.h"

struct RunContext;
struct UniversalTag;

// Room for a bracketed name: "[APPLICATION 4294967295]".
struct TagNameBuffer {
    char text[48];
};

// An element's name: a constant, or the bracketed form in a caller's buffer.
struct TagText {
    const char* text = nullptr;  // null: the tag has no name (reported)
    int length = 0;
    const UniversalTag* row = nullptr;  // the universal tag's row, when it has one
};

// The names of the context-specific tags that CDRs use most, made once:
// "[0]" to "[255]".
struct ContextNames {
    char text[256][6];
    uint8_t length[256];
};
inline constexpr ContextNames kContextNames = [] {
    ContextNames names{};
    for (int number = 0; number < 256; ++number) {
        char digits[3];
        int count = 0;
        for (int rest = number; count == 0 || rest != 0; rest /= 10) digits[count++] = static_cast<char>('0' + rest % 10);
        int at = 0;
        names.text[number][at++] = '[';
        while (count > 0) names.text[number][at++] = digits[--count];
        names.text[number][at++] = ']';
        names.length[number] = static_cast<uint8_t>(at);
    }
    return names;
}();

// Reports code 37 for a tag of 00 whose second octet isn't 0, and code 17 for
// a high-tag-number identifier with nothing behind its first octet.
TagText elementTagNameSlow(RunContext* context, const Element& element, TagNameBuffer& buffer);
inline TagText elementTagName(RunContext* context, const Element& element, TagNameBuffer& buffer)
{
    // The context-specific tags of a CDR: a name made once, nothing to report.
    if (element.tagClass == CLASS_CONTEXT && element.tagNumber >= 0 && element.tagNumber < 256 &&
        element.available() != 0) {
        TagText name;
        name.text = kContextNames.text[element.tagNumber];
        name.length = kContextNames.length[element.tagNumber];
        return name;
    }
    return elementTagNameSlow(context, element, buffer);
}

// The same for the element at `element`; null when there is no name.
const char* tagNameText(RunContext* context, const uint8_t* element, int32_t available, TagNameBuffer& buffer);

// A new block from the context's memory service that the caller frees with
// qorFree, or null when there is no name.
char* tagName(RunContext* context, const uint8_t* element, int32_t available);

// The name of a universal tag from 1 to 36, or null (tag 0, 15, others).
const char* universalTagName(int32_t tag);
