// Readable contents: the choice of the built-in type for a tag, the call of
// the decoder, and the hexadecimal fallback.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tlv/octet_view.h"

struct RunContext;
struct Element;
struct UniversalTag;

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

// The readable form of an element's contents: a made text, or octets of the
// input to be shown in hexadecimal, or nothing.
class Rendered {
public:
    Rendered() = default;
    Rendered(RunContext* context, char* text) : context_(context), text_(text) {}
    explicit Rendered(OctetView hex) : hex_(hex), hexForm_(true) {}
    ~Rendered();
    Rendered(Rendered&& other) noexcept;
    Rendered& operator=(Rendered&& other) noexcept;
    Rendered(const Rendered&) = delete;
    Rendered& operator=(const Rendered&) = delete;

    bool present() const { return text_ != nullptr || hexForm_; }
    bool hexForm() const { return hexForm_; }
    const char* text() const { return text_; }
    OctetView hex() const { return hex_; }

private:
    RunContext* context_ = nullptr;
    char* text_ = nullptr;
    OctetView hex_;
    bool hexForm_ = false;
};

// Sets TLV_VALUE_FAILED when the encoding of the value is at fault. `row` is
// the universal tag's row, if the element has one.
Rendered renderContents(RunContext* context, const Element& element, const UniversalTag* row);

// The same for the element at `element`, as a new text (freed by the caller
// with qorFree) or null.
char* renderContents(RunContext* context, const uint8_t* element, int32_t available);
