#include "render/contents.h"

#include <cstring>
#include <utility>

#include "app/signal.h"
#include "decoder/decoder.h"
#include "decoder/values.h"
#include "render/number_text.h"
#include "render/text_block.h"
#include "render/universal_tags.h"
#include "runtime/context.h"
#include "runtime/services.h"
#include "tlv/element.h"
#include "tlv/reader.h"

namespace {

constexpr int kBooleanPdu = 1;
constexpr int kNullPdu = 5;
constexpr int kObjectIdentifierPdu = 6;
constexpr int kIa5StringPdu = 13;
constexpr int kOctetStringPdu = 4;

// Failures of one rendering, as renderContents sorts them.
constexpr int FAIL_NONE = 0;
constexpr int FAIL_NO_MEMORY = kNoMemory;
constexpr int FAIL_PREMATURE_END = kPrematureEnd;
constexpr int FAIL_DECODE = 18;
constexpr int FAIL_OVERRUN = kLengthOverrun;

// Releases a decoded value however its text maker ends.
class DecodedValue {
public:
    DecodedValue(RunContext* context, int pdu) : context_(context), pdu_(pdu) {}
    ~DecodedValue()
    {
        if (value_ != nullptr) qorFreeValue(context_, pdu_, value_);
    }
    DecodedValue(const DecodedValue&) = delete;
    DecodedValue& operator=(const DecodedValue&) = delete;

    bool decode(const Element& element)
    {
        BerBuffer buffer = {static_cast<uint32_t>(element.available()), element.start()};
        value_ = nullptr;
        int pdu = pdu_;
        if (qorDecode(context_, pdu, buffer, value_) != 0) {
            value_ = nullptr;
            return false;
        }
        return true;
    }
    const void* value() const { return value_; }

private:
    RunContext* context_;
    int pdu_;
    void* value_ = nullptr;
};

// A definite length that the input holds.
bool wholeDefinite(const Element& element)
{
    return element.length >= 0 && !element.lengthOverruns();
}

// A primitive element whose header the decoder takes as it stands: a
// one-octet identifier and at most four length octets. For OCTET STRING
// nothing in the contents can make its decode fail then.
bool plainPrimitive(const Element& element)
{
    return !element.constructed && wholeDefinite(element) && element.identifier == 1 &&
           element.header - element.identifier - 1 <= 4;
}

// BOOLEAN, NULL and an INTEGER of up to four octets: their texts made from
// the contents as the decoder would take them (BOOLEAN: one octet, any
// non-zero one is TRUE; NULL: none; INTEGER: minimal two's complement).
// False for contents the decoder refuses: those take the decoder's road.
bool simpleValue(RunContext* context, const UniversalTag& row, const Element& element, Rendered& result)
{
    const OctetView octets = element.contents();
    const int32_t size = octets.size();
    switch (row.pdu) {
        case kBooleanPdu:
            if (size != 1) return false;
            result = octets.at(0) != 0 ? Rendered::shortText("TRUE", 4) : Rendered::shortText("FALSE", 5);
            return true;
        case kNullPdu:
            if (size != 0) return false;
            result = Rendered::shortText("NULL", 4);
            return true;
        case kIntegerPdu: {
            if (size == 0 || size >= kHugeIntegerFrom) return false;
            // The first nine bits all equal: needlessly long.
            if (size > 1 && ((octets.at(0) == 0 && (octets.at(1) & 0x80) == 0) ||
                             (octets.at(0) == 0xFF && (octets.at(1) & 0x80) != 0))) {
                return false;
            }
            uint32_t value = (octets.at(0) & 0x80) != 0 ? 0xFFFFFFFFu : 0;
            for (int32_t i = 0; i < size; ++i) value = (value << 8) | octets.at(i);
            char text[Rendered::kShortest];
            const size_t length =
                shortIntegerChars(static_cast<int32_t>(value), (context->toolFlags & TLV_NO_ADDITION) != 0, text);
            result = Rendered::shortText(text, length);
            return true;
        }
        default:
            return false;
    }
}

// An IA5String or an OBJECT IDENTIFIER in one primitive segment: the decoded
// value would be its contents as they stand, so the text maker takes them
// from the input. False when the decoder would refuse them (IA5String: an
// octet above 127; OBJECT IDENTIFIER: no octet, or a last subidentifier
// that doesn't end) or the text can't be made: those take the decoder's road.
bool directText(RunContext* context, const UniversalTag& row, const Element& element, Rendered& result)
{
    const OctetView contents = element.contents();
    const int32_t size = contents.size();
    RenderInput input = {element.start(), element.available(), element.length};
    char* text = nullptr;
    if (row.pdu == kIa5StringPdu) {
        for (int32_t i = 0; i < size; ++i) {
            if (contents.at(i) > 0x7F) return false;
        }
        const CountedValue value = {static_cast<uint32_t>(size), size > 0 ? contents.data() : nullptr};
        if (row.makeText(context, input, &value, text) != 0) return false;
    } else if (row.pdu == kObjectIdentifierPdu) {
        if (size == 0 || size > 0xFFFF || (contents.at(size - 1) & 0x80) != 0) return false;
        const EncodedOid value = {static_cast<uint16_t>(size), contents.data()};
        if (row.makeText(context, input, &value, text) != 0) {
            qorFree(context, text);
            return false;
        }
    } else {
        return false;
    }
    result = Rendered(context, text);
    return text != nullptr;
}

// Makes the text of a universal tag through the decoder; returns a failure.
int decodedText(RunContext* context, const UniversalTag& row, const Element& element, char*& text)
{
    RenderInput input = {element.start(), element.available(), 0};
    if (row.pdu == kIntegerPdu) {
        input.contents = element.length;
        if (element.length == LENGTH_TRUNCATED || element.lengthOverruns()) return FAIL_DECODE;
    }
    const int pdu = valuePdu(row, element.length);
    DecodedValue decoded(context, pdu);
    if (!decoded.decode(element)) return FAIL_DECODE;
    return row.makeText(context, input, decoded.value(), text);
}

// The contents in hexadecimal, by the length that the encoding gives; an
// indefinite element shows everything up to the octets behind its end,
// end-of-contents included.
int hexadecimalForm(RunContext* context, const Element& element, OctetView& octets)
{
    int failure = FAIL_NONE;
    int32_t contents = reportContentLength(context, element);
    if (contents == LENGTH_TRUNCATED) return FAIL_PREMATURE_END;
    if (contents == LENGTH_INDEFINITE) {
        int32_t behind = element.available();
        const uint8_t* next = nextElementOf(context, element, behind);
        if (next == nullptr) behind = 0;
        contents = element.room() - behind;
        if (next == nullptr) {
            if (contents < 2 || (contents == 2 && !element.behindHeader().startsWithEndOfContents())) {
                failure = FAIL_DECODE;
            }
        }
    } else if (contents > element.room()) {
        contents = element.room();
        failure = FAIL_OVERRUN;
    }
    octets = element.behindHeader().first(contents);
    return failure;
}

}  // namespace

Rendered::~Rendered()
{
    if (text_ != nullptr) qorFree(context_, text_);
}

Rendered::Rendered(Rendered&& other) noexcept
    : context_(other.context_), text_(std::exchange(other.text_, nullptr)), size_(other.size_), hex_(other.hex_),
      hexForm_(other.hexForm_), inline_(other.inline_)
{
    if (inline_) std::memcpy(small_, other.small_, size_ + 1);
}

Rendered& Rendered::operator=(Rendered&& other) noexcept
{
    if (this != &other) {
        if (text_ != nullptr) qorFree(context_, text_);
        context_ = other.context_;
        text_ = std::exchange(other.text_, nullptr);
        size_ = other.size_;
        hex_ = other.hex_;
        hexForm_ = other.hexForm_;
        inline_ = other.inline_;
        if (inline_) std::memcpy(small_, other.small_, size_ + 1);
    }
    return *this;
}

Rendered Rendered::shortText(const char* text, size_t size)
{
    Rendered result;
    result.inline_ = true;
    result.size_ = size < kShortest - 1 ? size : kShortest - 1;
    std::memcpy(result.small_, text, result.size_);
    result.small_[result.size_] = '\0';
    return result;
}

Rendered renderContents(RunContext* context, const Element& element, const UniversalTag* row)
{
    if (element.available() == 0) {
        signalError(context, kPrematureEnd, 0, 0);
        return {};
    }
    if (!element.readable() || element.headerOverruns() || element.tagNumber == -1) return {};

    bool readable = hasReadableForm(row);
    // A constructed element whose end is known to be there: its contents
    // are its elements, nothing to show on its own line, and nothing to
    // search its end for.
    if (!readable && element.constructed && element.endVerified && (context->toolFlags & TLV_VALUE_FAILED) == 0) {
        return {};
    }
    if (readable && plainPrimitive(element)) {
        Rendered simple;
        if (row->pdu <= kNullPdu && simpleValue(context, *row, element, simple)) return simple;
        if (directText(context, *row, element, simple)) return simple;
    }
    if (readable) {
        // The rules in force are BER; probing them must leave them as they were.
        int rules = qorGetRules(context);
        readable = qorSetRules(context, 0) == 0;
        context->encodingRules = rules;
    }
    // An OCTET STRING's text is its contents in hexadecimal; a primitive one
    // that the input holds can't fail to decode.
    if (readable && row->pdu == kOctetStringPdu && plainPrimitive(element)) return Rendered(element.contents());
    // What has no readable form shows its contents as they are.
    if (!readable && wholeDefinite(element)) {
        return element.length == 0 ? Rendered() : Rendered(element.contents());
    }

    context->toolFlags |= TLV_QUIET_ERRORS;
    int failure = FAIL_NONE;
    char* text = nullptr;
    OctetView octets;
    if (readable) failure = decodedText(context, *row, element, text);
    const bool hexForm = !readable || failure != FAIL_NONE;
    if (hexForm) {
        qorFree(context, text);
        text = nullptr;
        // What the hexadecimal form finds wrong takes the place of the
        // decoder's failure; else that failure stands.
        int hexFailure = hexadecimalForm(context, element, octets);
        if (hexFailure != FAIL_NONE) failure = hexFailure;
    }
    context->toolFlags &= ~TLV_QUIET_ERRORS;

    Rendered result = !hexForm ? Rendered(context, text) : octets.empty() ? Rendered() : Rendered(octets);
    switch (failure) {
        case FAIL_NONE:
            return result;
        case FAIL_NO_MEMORY:
        case FAIL_PREMATURE_END:
            signalError(context, failure, 0, 0);
            return {};
        default:
            context->toolFlags |= TLV_VALUE_FAILED;
            return result;
    }
}

char* renderContents(RunContext* context, const uint8_t* start, int32_t available)
{
    Element element = readElement(start, available);
    const UniversalTag* row = element.tagClass == CLASS_UNIVERSAL ? universalTag(element.tagNumber) : nullptr;
    Rendered rendered = renderContents(context, element, row);
    if (!rendered.present()) return nullptr;
    if (!rendered.hexForm()) return newText(context, rendered.text(), rendered.textSize());
    return hexText(context, rendered.hex().data(), shownOctets(context, rendered.hex().size()));
}
