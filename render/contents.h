// Readable contents: the choice of the built-in type for a tag, the call of
// the decoder, and the hexadecimal fallback.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

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
    Rendered(RunContext* context, char* text) : context_(context), text_(text), size_(text != nullptr ? std::strlen(text) : 0) {}
    explicit Rendered(OctetView hex) : hex_(hex), hexForm_(true) {}
    // A short text kept in the result itself.
    static Rendered shortText(const char* text, size_t size);
    ~Rendered();
    Rendered(Rendered&& other) noexcept;
    Rendered& operator=(Rendered&& other) noexcept;
    Rendered(const Rendered&) = delete;
    Rendered& operator=(const Rendered&) = delete;

    bool present() const { return text_ != nullptr || size_ != 0 || hexForm_ || inline_; }
    bool hexForm() const { return hexForm_; }
    const char* text() const { return inline_ ? small_ : text_; }
    size_t textSize() const { return size_; }
    OctetView hex() const { return hex_; }

    static constexpr size_t kShortest = 48;

private:
    RunContext* context_ = nullptr;
    char* text_ = nullptr;  // a block from qorAlloc, owned
    size_t size_ = 0;
    OctetView hex_;
    bool hexForm_ = false;
    bool inline_ = false;
    char small_[kShortest];  // read only when inline_
};

// Sets TLV_VALUE_FAILED when the encoding of the value is at fault. `row` is
// the universal tag's row, if the element has one.
Rendered renderContents(RunContext* context, const Element& element, const UniversalTag* row);

// The same for the element at `element`, as a new text (freed by the caller
// with qorFree) or null.
char* renderContents(RunContext* context, const uint8_t* element, int32_t available);
