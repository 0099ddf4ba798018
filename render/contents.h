// Readable contents: the choice of the built-in type for a tag, the call of
// the decoder, and the hexadecimal fallback.
#pragma once

#include <cstddef>
#include <cstdint>

struct RunContext;

// What a text maker knows of the element besides its decoded value.
struct RenderInput {
    const uint8_t* element;
    int32_t available;
    int32_t contents;  // the contents length as read, or a length result
};

// Makes the text of a decoded value; returns 0, or the failure: 1 when no
// block could be had, 7 for a time field out of range, 18 when a conversion
// of the value failed. `text` is a block from qorAlloc, or null.
using TextMaker = int (*)(RunContext* context, const RenderInput& input, const void* value, char*& text);

// One row a universal tag: its PDU of the built-in table and its text maker.
struct ContentsRenderer {
    int pdu;             // 0: the tag has no readable form
    TextMaker makeText;  // null: shown in hexadecimal
};

// A new text (freed by the caller with qorFree) or null. Sets
// TLV_VALUE_FAILED when the encoding of the value is at fault.
char* renderContents(RunContext* context, const uint8_t* element, int32_t available);
