#include "decoder/ber_decode.h"

#include <cstring>
#include <new>

#include "decoder/control_table.h"
#include "decoder/decoder.h"
#include "decoder/errors.h"
#include "decoder/kinds.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"
#include "runtime/services.h"

namespace {

// Bits of the decoder flags of a call.
constexpr uint32_t DECODER_CALLER_BUFFER = 0x10;  // the value goes into the caller's block
constexpr uint32_t DECODER_NO_CONSTRAINTS = 0x800;

// A failure while a failed decode gives back what it took ends the call
// with this result, or with the second one when that was the first result.
constexpr int32_t kCleanUpFailed = 18;
constexpr int32_t kCleanUpFailedKept = 19;

DecodeState& decodeOf(RunContext* context)
{
    return context->decode;
}

}  // namespace

uint32_t berDecodeType(DecodeCall& call, uint16_t tag, int32_t length, int32_t& eocPending, bool constructed)
{
    RunContext* context = call.context;
    const TypeRecord& type = *call.type;
    ErrorFrame frame = {nullptr, nullptr, errorNameOfType(type), 0, FRAME_TYPE};
    FramePush push(context, frame);
    (void)tag;
    if (!constructed && length == -1) reportError(context, RT_PRIMITIVE_INDEFINITE);
    if (call.bounded && length > call.remaining) reportError(context, RT_INCONSISTENT_LENGTHS);
    call.unit = 0;
    call.total = 0;
    call.offset = 0;
    KindRoutine routine = kindRoutine(context, type.kind);
    uint32_t consumed = routine(call, length, eocPending, constructed);
    if (call.bounded && consumed > static_cast<uint32_t>(call.remaining)) reportError(context, RT_INCONSISTENT_LENGTHS);
    if (!constructed) {
        berSkipEoc(context, eocPending);
        if (eocPending > 0) reportError(context, RT_EXPECTED_EOC);
    }
    return consumed;
}

int berDecodePdu(RunContext* context, int pdu, void** value)
{
    DecodeState& decode = decodeOf(context);
    decode.pduRemaining = -1;
    const TypeRecord& type = typeOfPdu(*decode.decodeTable, pdu);
    decode.currentPdu = pdu;

    uint16_t tag = 0;
    int32_t length = 0;
    int32_t eocPending = 0;
    bool constructed = false;
    decode.decodeMode |= MODE_CAPTURE_HEADER;
    uint32_t header = berReadHeader(context, tag, length, eocPending, constructed, false);
    decode.decodeMode &= ~MODE_CAPTURE_HEADER;

    DecodeCall call = {nullptr, context, &type, 0, 0, 0, 0, false};
    if (length >= 0) {
        decode.pduRemaining = length;
        call.bounded = true;
        call.remaining = length;
    }
    decode.errorFrames->number = pdu;
    uint16_t expected = firstTagOfType(*decode.decodeTable, type);
    if (tag != expected) reportError(context, RT_PDU_TAG_MISMATCH, static_cast<int64_t>(tag) | (static_cast<int64_t>(expected) << 16));

    uint32_t slotSize = (type.typeFlags & TF_INDIRECT) != 0 ? static_cast<uint32_t>(sizeof(void*)) : type.memorySize;
    call.value = context->services->svcAllocValue(context, slotSize, 0);
    *value = call.value;
    uint32_t consumed = berDecodeType(call, tag, length, eocPending, constructed);
    decode.consumedOctets = static_cast<int32_t>(consumed + header);
    return pdu;
}

int berEncoderPresent(RunContext*)
{
    return 0;
}

namespace {

// How far a decode came before it failed: what the failure path has to undo.
struct DecodeProgress {
    const uint8_t* input = nullptr;  // the local copy that the input service moves
    uint32_t length = 0;
    bool inputOpened = false;
    bool valueComplete = false;  // the constraint pass failed, not the decode
};

// A memory failure that didn't come through reportError, recorded as
// reportError would record it.
void recordOutOfMemory(RunContext* context)
{
    DecodeState& decode = decodeOf(context);
    char* target = decode.errorTextPtr != nullptr ? decode.errorTextPtr : context->errorText;
    buildErrorText(context, target, sizeof context->errorText, RT_OUT_OF_MEMORY, decode.currentPdu, {});
    if (decode.runtimeResult == 0) decode.runtimeResult = runtimeMessage(RT_OUT_OF_MEMORY).resultCode;
}

// The failure path: everything the decode took is given back, and the
// caller gets the first code and no value.
int32_t failurePath(RunContext* context, int pdu, void** value, DecodeProgress& progress, ErrorFrame& root)
{
    DecodeState& decode = decodeOf(context);
    const ServiceTable* services = context->services;
    int32_t result = decode.runtimeResult;
    decode.decoding = 0;
    // Failures before the input was opened (0003S, 0006S, 0007S, 0057S)
    // have nothing to give back.
    if (!progress.inputOpened) {
        decode.errorFrames = nullptr;
        return result;
    }
    // A failure of the clean-up itself is located at the PDU.
    decode.errorFrames = &root;
    try {
        uint32_t left = services->svcCloseInput(context, &progress.input, decode.inputOffset);
        decode.consumedOctets = static_cast<int32_t>(progress.length - left);
    } catch (const DecodeFailure&) {
        result = result == kCleanUpFailedKept ? kCleanUpFailedKept : kCleanUpFailed;
    }
    // None of these raise, so the release is complete whatever happened
    // above.
    scratchStackEnd(context);
    services->svcCloseScratch(context);
    if (progress.valueComplete && *value != nullptr) {
        void* complete = *value;
        services->svcCloseValues(context, value);
        services->svcFreeValue(context, pdu, complete, decode.decodeTable);
    } else {
        services->svcDropValues(context, nullptr, nullptr, nullptr);
        services->svcCloseValues(context, value);
    }
    *value = nullptr;
    decode.valueBytes = 0;
    decode.errorFrames = nullptr;
    return result;
}

}  // namespace

int qorBerDecode(RunContext* context, int pdu, BerBuffer* buffer, void** value, uint32_t flags)
{
    DecodeState& decode = decodeOf(context);
    const ServiceTable* services = context->services;
    decode.consumedOctets = 0;
    decode.decodeMode = 0;
    decode.stringNesting = 0;
    decode.headerOctets = 0;
    DecodeProgress progress;
    ErrorFrame root = {nullptr, nullptr, nullptr, 0, FRAME_ROOT};
    try {
        decode.currentPdu = 0;
        decode.errorFrames = nullptr;
        decode.runtimeResult = 0;
        decode.decoding = 1;
        decode.decodeTable = context->controlTable;
        const ControlTable& table = *decode.decodeTable;
        if (pdu <= 0 || pdu > table.pduCount || table.pduMap[pdu - 1] == NO_PDU) reportError(context, RT_PDU_RANGE, pdu);
        FramePush rootFrame(context, root);
        if (table.version != CONTROL_TABLE_VERSION) reportError(context, RT_VERSION, CONTROL_TABLE_VERSION);
        if (value == nullptr || buffer == nullptr || buffer->data == nullptr) reportError(context, RT_NULL_POINTER);
        // The length is an i32 for the runtime: 2 GB and more reads as negative.
        if (static_cast<int32_t>(buffer->length) < 0) {
            reportError(context, RT_NEGATIVE_LENGTH, static_cast<int32_t>(buffer->length));
        }
        progress.input = buffer->data;
        progress.length = buffer->length;
        uint32_t length = progress.length;
        decode.inputBase = services->svcOpenInput(context, &progress.input, &length);
        decode.inputOffset = 0;
        decode.inputLength = length;
        progress.inputOpened = true;
        services->svcOpenValues(context);
        services->svcOpenScratch(context);
        ++context->memory.scratchUsers;

        berDecodePdu(context, pdu, value);
        progress.valueComplete = true;
        const RunState* state = context->state;
        if (decode.runtimeResult == 0 && (flags & DECODER_NO_CONSTRAINTS) == 0 && state->hooks.constraintEntry != nullptr &&
            (table.flags & TABLE_HAS_CONSTRAINTS) != 0) {
            decode.decodeMode |= MODE_CHECKING;
            state->hooks.constraintEntry(context, pdu, *value, decode.decodeTable);
            decode.decodeMode &= ~MODE_CHECKING;
        }
        uint32_t left = services->svcCloseInput(context, &progress.input, decode.inputOffset);
        decode.consumedOctets = static_cast<int32_t>(progress.length - left);
        scratchStackEnd(context);
        decode.valueBytes = services->svcCloseValues(context, value);
        services->svcCloseScratch(context);
        decode.decoding = 0;
        return decode.runtimeResult;
    } catch (const DecodeFailure&) {
        return failurePath(context, pdu, value, progress, root);
    } catch (const std::bad_alloc&) {
        // The decoder's own memory comes from the memory services, which
        // refuse through reportError; but the memory functions of the
        // context are the caller's, and one of them may throw instead of
        // returning null. That is the same failure: 0008S. Any other
        // exception is a defect and goes on to the caller.
        recordOutOfMemory(context);
        return failurePath(context, pdu, value, progress, root);
    }
}

namespace {

// A call that qorDecode refuses before any recovery point exists: the text
// is built without a location and the code returned, nothing unwinds.
int refuseCall(RunContext* context, int32_t entry, const ErrorArgument& argument)
{
    buildErrorText(context, context->errorText, sizeof context->errorText, entry, 0, argument);
    return runtimeMessage(entry).resultCode;
}

}  // namespace

int qorDecode(RunContext* context, int& pdu, BerBuffer& buffer, void*& value)
{
    if (context == nullptr) return QOR_NULL_CONTEXT;
    if (buffer.data == nullptr) return refuseCall(context, RT_NULL_POINTER, {});
    // A stopped context has no RunState, so the table is asked for before
    // the entry of the rules.
    if (context->controlTable == nullptr || context->state == nullptr) return refuseCall(context, RT_NULL_TABLE, {});
    const uint32_t flags = context->decoderFlags;
    // The value is always the runtime's to allocate here.
    value = nullptr;
    const uint32_t callFlags = flags & ~DECODER_CALLER_BUFFER;
    DecoderEntry entry = context->encodingRules == 0 ? context->state->hooks.decoderEntry : nullptr;
    if (entry == nullptr) return refuseCall(context, RT_RULES_NOT_LINKED, ErrorArgument::ofText("BER"));
    context->errorText[0] = '\0';
    context->decode.errorTextPtr = context->errorText;
    int result = entry(context, pdu, &buffer, &value, callFlags);
    context->decoderFlags = flags;
    return result;
}
