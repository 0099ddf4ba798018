// The text of a tag, for the printers.
#pragma once

#include <cstdint>

struct RunContext;
struct Element;
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

// Reports code 37 for a tag of 00 whose second octet isn't 0, and code 17 for
// a high-tag-number identifier with nothing behind its first octet.
TagText elementTagName(RunContext* context, const Element& element, TagNameBuffer& buffer);

// The same for the element at `element`; null when there is no name.
const char* tagNameText(RunContext* context, const uint8_t* element, int32_t available, TagNameBuffer& buffer);

// A new block from the context's memory service that the caller frees with
// qorFree, or null when there is no name.
char* tagName(RunContext* context, const uint8_t* element, int32_t available);

// The name of a universal tag from 1 to 36, or null (tag 0, 15, others).
const char* universalTagName(int32_t tag);
