// The text of a tag, for the printers.
#pragma once

#include <cstdint>

struct RunContext;

// A new block from the context's memory service that the caller frees with
// qorFree, or null when there is no name.
char* tagName(RunContext* context, const uint8_t* element, int32_t available);

// The same text without a block of its own: a constant, or the bracketed
// form in `buffer`. Null when there is no name.
struct TagNameBuffer {
    char text[48];
};
const char* tagNameText(RunContext* context, const uint8_t* element, int32_t available, TagNameBuffer& buffer);

// The name of a universal tag from 1 to 36, or null (tag 0, 15, others).
const char* universalTagName(int32_t tag);
