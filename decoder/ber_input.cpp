// The runtime's own reading of BER: the input cursor under the PDU's
// definite length, and identifier, length and end-of-contents octets under
// the decoder's limits (not the tool's reader: an element the walker
// accepted can still be refused here).
#include <cstring>

#include "decoder/ber_decode.h"
#include "decoder/decode_state.h"
#include "decoder/errors.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"
#include "runtime/services.h"

namespace {

DecodeState& decodeOf(RunContext* context)
{
    return context->decode;
}

// Takes `count` octets under the PDU's definite length.
void takeFromPdu(RunContext* context, uint32_t count)
{
    DecodeState& decode = decodeOf(context);
    if (decode.pduRemaining == -1) return;
    if (static_cast<uint32_t>(decode.pduRemaining) < count) {
        reportError(context, RT_PDU_END_OF_INPUT, decode.pduRemaining);
    }
    decode.pduRemaining -= static_cast<int32_t>(count);
}

// The octets of the PDU's first header are counted, up to a limit.
void captureHeaderOctet(RunContext* context, uint8_t octet)
{
    DecodeState& decode = decodeOf(context);
    if ((decode.decodeMode & MODE_CAPTURE_HEADER) == 0) return;
    if (decode.headerOctets >= HEADER_CAPTURE_LIMIT) {
        reportError(context, RT_TAG_LEADING_OCTETS, decode.headerOctets);
    }
    decode.headerCapture[decode.headerOctets++] = octet;
}

}  // namespace

void inputRequire(RunContext* context, uint32_t count)
{
    DecodeState& decode = decodeOf(context);
    if (decode.pduRemaining != -1 && static_cast<uint32_t>(decode.pduRemaining) < count) {
        reportError(context, RT_PDU_END_OF_INPUT, decode.pduRemaining);
    }
    if (count > decode.inputLength - decode.inputOffset) context->services->svcInputExhausted(context);
}

uint8_t inputPeek(RunContext* context)
{
    DecodeState& decode = decodeOf(context);
    if (decode.inputOffset >= decode.inputLength) context->services->svcInputExhausted(context);
    return decode.inputBase[decode.inputOffset];
}

// The PDU's definite length is asked before the span: octets that the
// length doesn't allow are refused whether or not the buffer holds them.
uint8_t inputByte(RunContext* context)
{
    DecodeState& decode = decodeOf(context);
    takeFromPdu(context, 1);
    if (decode.inputOffset >= decode.inputLength) context->services->svcInputExhausted(context);
    uint8_t octet = decode.inputBase[decode.inputOffset++];
    captureHeaderOctet(context, octet);
    return octet;
}

void inputCopy(RunContext* context, uint32_t count, uint8_t* target)
{
    DecodeState& decode = decodeOf(context);
    takeFromPdu(context, count);
    uint32_t available = decode.inputLength - decode.inputOffset;
    if (count > available) context->services->svcInputExhausted(context);
    std::memcpy(target, decode.inputBase + decode.inputOffset, count);
    decode.inputOffset += count;
}

void inputSkip(RunContext* context, uint32_t count)
{
    DecodeState& decode = decodeOf(context);
    takeFromPdu(context, count);
    if (count > decode.inputLength - decode.inputOffset) context->services->svcInputExhausted(context);
    decode.inputOffset += count;
}

uint16_t berReadTag(RunContext* context, bool& constructed, uint32_t& octets)
{
    uint8_t first = inputByte(context);
    ++octets;
    constructed = (first & 0x20) != 0;
    auto tagClass = static_cast<uint16_t>(first >> 6);
    uint32_t number = first & 0x1F;
    if (number == 0x1F) {
        uint8_t octet = inputByte(context);
        ++octets;
        bool leadingZero = false;
        while (octet == 0x80) {
            leadingZero = true;
            octet = inputByte(context);
            ++octets;
        }
        number = octet & 0x7F;
        while ((octet & 0x80) != 0) {
            if ((number & 0xfe00) != 0) {
                // More groups than 16 bits hold: read the rest, then refuse.
                while ((octet & 0x80) != 0) {
                    octet = inputByte(context);
                    ++octets;
                }
                reportError(context, RT_TAG_TOO_LONG, number);
            }
            octet = inputByte(context);
            ++octets;
            number = ((number << 7) | (octet & 0x7F)) & 0xFFFF;
        }
        if (leadingZero || number < 31) reportError(context, RT_TAG_NEEDLESSLY_LONG);
    }
    return static_cast<uint16_t>(number | (tagClass << 14));
}

int32_t berReadLength(RunContext* context, uint32_t& octets)
{
    uint8_t first = inputByte(context);
    ++octets;
    if (first == 0x80) return -1;
    if (first < 0x80) return first;
    uint32_t value = 0;
    bool dropped = false;
    for (int i = first & 0x7F; i > 0; --i) {
        uint8_t octet = inputByte(context);
        ++octets;
        if ((value >> 24) == 0) {
            value = (value << 8) | octet;
        } else {
            dropped = true;
        }
    }
    if (dropped || (value & 0x80000000) != 0) reportError(context, RT_LENGTH_TOO_LONG, static_cast<int64_t>(value));
    return static_cast<int32_t>(value);
}

uint32_t berReadHeader(RunContext* context, uint16_t& tag, int32_t& length, int32_t& eocPending, bool& constructed,
                       bool keepEoc)
{
    constructed = false;
    tag = 0;
    length = 0;
    if (!keepEoc) eocPending = 0;
    uint32_t octets = 0;
    tag = berReadTag(context, constructed, octets);
    length = berReadLength(context, octets);
    if (length == -1) ++eocPending;
    if (tag == 0) reportError(context, length == 0 ? RT_EXPECTED_TAG_FOUND_EOC : RT_NONSTANDARD_EOC);
    if (!constructed && length == -1) reportError(context, RT_PRIMITIVE_INDEFINITE);
    return octets;
}

uint32_t berSkipEoc(RunContext* context, int32_t& eocPending)
{
    uint32_t consumed = 0;
    while (eocPending > 0) {
        if (inputPeek(context) != 0) break;
        inputByte(context);
        if (inputByte(context) != 0) reportError(context, RT_NONSTANDARD_EOC);
        consumed += 2;
        --eocPending;
    }
    return consumed;
}
