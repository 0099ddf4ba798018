#include "render/contents.h"

#include <cstring>

#include "app/signal.h"
#include "decoder/decoder.h"
#include "render/renderers.h"
#include "render/text_block.h"
#include "runtime/context.h"
#include "runtime/services.h"
#include "tlv/reader.h"

namespace {

constexpr int32_t kLastUniversal = 36;
constexpr int kIntegerPdu = 2;
constexpr int kHugeIntegerPdu = 23;
constexpr int kOctetStringPdu = 4;
constexpr int32_t kHugeIntegerFrom = 5;  // contents octets that need PDU 23

// Failures of one rendering, as renderContents sorts them.
constexpr int FAIL_NONE = 0;
constexpr int FAIL_NO_MEMORY = 1;
constexpr int FAIL_PREMATURE_END = 17;
constexpr int FAIL_DECODE = 18;
constexpr int FAIL_OVERRUN = 35;

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

    bool decode(const uint8_t* element, int32_t available)
    {
        BerBuffer buffer = {static_cast<uint32_t>(available), element};
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

// A primitive OCTET STRING of a definite length that the input holds, longer
// than a line can show: nothing in its contents can make its decode fail.
bool longOctetString(RunContext* context, RenderInput& input)
{
    if ((input.element[0] & CONSTRUCTED_BIT) != 0 || (input.element[0] & HIGH_TAG_MASK) == HIGH_TAG_MASK) return false;
    int32_t header = headerLength(context, input.element, input.available);
    int32_t length = contentLength(context, input.element, input.available);
    if (length < 0 || length > input.available - header) return false;
    input.contents = length;
    return shownOctets(context, length) < length;
}

// Makes the text of a universal tag through the decoder; returns a failure.
int decodedText(RunContext* context, const ContentsRenderer& row, RenderInput& input, char*& text)
{
    int pdu = row.pdu;
    if (pdu == kIntegerPdu) {
        // INTEGER: the short form holds up to four octets in an i32.
        input.contents = contentLength(context, input.element, input.available);
        int32_t header = headerLength(context, input.element, input.available);
        if (input.contents == LENGTH_TRUNCATED || input.contents > input.available - header) return FAIL_DECODE;
        if (input.contents >= kHugeIntegerFrom) pdu = kHugeIntegerPdu;
    }
    if (pdu == kOctetStringPdu && longOctetString(context, input)) {
        // Its text is the start of its contents, exactly as the decoded
        // value would give it, without a copy of a value that can be huge.
        int32_t header = headerLength(context, input.element, input.available);
        text = hexText(context, input.element + header, shownOctets(context, input.contents));
        return text == nullptr ? FAIL_NO_MEMORY : FAIL_NONE;
    }
    DecodedValue decoded(context, pdu);
    if (!decoded.decode(input.element, input.available)) return FAIL_DECODE;
    return row.makeText(context, input, decoded.value(), text);
}

// The contents in hexadecimal, by the length that the encoding gives.
int hexadecimalForm(RunContext* context, RenderInput& input, char*& text)
{
    int failure = FAIL_NONE;
    int32_t header = headerLength(context, input.element, input.available);
    if (input.contents == 0) input.contents = contentLength(context, input.element, input.available);
    if (input.contents == LENGTH_TRUNCATED) return FAIL_PREMATURE_END;
    if (input.contents == LENGTH_INDEFINITE) {
        int32_t behind = input.available;
        const uint8_t* next = nextElement(context, input.element, behind);
        if (next == nullptr) behind = 0;
        input.contents = input.available - behind - header;
        if (next == nullptr) {
            const uint8_t* contents = input.element + header;
            if (input.contents < 2) failure = FAIL_DECODE;
            if (input.contents == 2 && (contents[0] != 0 || contents[1] != 0)) failure = FAIL_DECODE;
        }
    } else if (input.contents > input.available - header) {
        input.contents = input.available - header;
        failure = FAIL_OVERRUN;
    }
    if (input.contents > 0) {
        // A constructed element's text is only shown when it failed.
        const bool shown = failure != FAIL_NONE || (input.element[0] & CONSTRUCTED_BIT) == 0;
        text = shown ? hexText(context, input.element + header, shownOctets(context, input.contents))
                     : newText(context, "", 0);
        if (text == nullptr) return FAIL_NO_MEMORY;
    }
    return failure;
}

}  // namespace

char* renderContents(RunContext* context, const uint8_t* element, int32_t available)
{
    if (element == nullptr || available == 0) {
        signalError(context, 17, 0, 0);
        return nullptr;
    }
    int32_t header = headerLength(context, element, available);
    if (header == LENGTH_TRUNCATED || header > available) return nullptr;
    int tagClassOf = tagClass(context, element, available);
    int32_t tag = tagNumber(context, element, available);
    if (tag == -1) return nullptr;

    // The rules in force are BER; probing them must leave them as they were.
    int rules = qorGetRules(context);
    int probe = qorSetRules(context, 0);
    context->encodingRules = rules;

    context->toolFlags |= TLV_QUIET_ERRORS;
    int failure = FAIL_NONE;
    char* text = nullptr;
    RenderInput input = {element, available, 0};
    bool readable = probe == 0 && tagClassOf == 0 && tag <= kLastUniversal && contentsRenderer(tag).pdu != 0 &&
                    contentsRenderer(tag).makeText != nullptr;
    if (readable) failure = decodedText(context, contentsRenderer(tag), input, text);
    if (!readable || failure != FAIL_NONE) {
        qorFree(context, text);
        text = nullptr;
        // What the hexadecimal form finds wrong takes the place of the
        // decoder's failure; else that failure stands.
        int hexFailure = hexadecimalForm(context, input, text);
        if (hexFailure != FAIL_NONE) failure = hexFailure;
    }
    context->toolFlags &= ~TLV_QUIET_ERRORS;

    switch (failure) {
        case FAIL_NONE:
            return text;
        case FAIL_NO_MEMORY:
        case FAIL_PREMATURE_END:
            signalError(context, failure, 0, 0);
            qorFree(context, text);
            return nullptr;
        default:
            context->toolFlags |= TLV_VALUE_FAILED;
            return text;
    }
}
