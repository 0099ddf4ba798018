#include "decoder/errors.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/runtime_catalog.h"

namespace {

constexpr size_t kErrorTextSize = 512;

const char* classWord(uint32_t tag)
{
    switch (tag >> 14) {
        case 0: return "UNIVERSAL ";
        case 1: return "APPLICATION ";
        case 2: return "";
        default: return "PRIVATE ";
    }
}

std::string argumentText(uint32_t form, const ErrorArgument& argument)
{
    const int64_t number = argument.number;
    switch (form) {
        case 1:
            if (argument.text == nullptr) return formatText("#%ld", static_cast<long>(number));
            if (std::strlen(argument.text) >= 510) return formatText("\"%.40s...\"", argument.text);
            return formatText("\"%s\"", argument.text);
        case 2: {
            auto read = static_cast<uint32_t>(number & 0xFFFF);
            auto expected = static_cast<uint32_t>((number >> 16) & 0xFFFF);
            std::string text = formatText("[%s%ld]", classWord(read), static_cast<long>(read & 0x3FFF));
            if (expected != 0) {
                text += formatText(" (expected tag [%s%ld])", classWord(expected), static_cast<long>(expected & 0x3FFF));
            }
            return text;
        }
        case 3: return formatText("%lld", static_cast<long long>(number));
        case 4: return formatText("%llu", static_cast<unsigned long long>(number));
        case 5: return formatText("%f", static_cast<double>(number));
        case 6:
        case 8: {
            const char* text = argument.text != nullptr ? argument.text : "";
            if (std::strlen(text) >= 128) return formatText("'%.40s...'", text);
            return formatText("'%s'", text);
        }
        case 7: {
            auto character = static_cast<uint32_t>(number);
            if (character < 256 && std::isprint(static_cast<int>(character))) {
                return formatText("'%c'", static_cast<int>(character));
            }
            return formatText("{%u,%u,%u,%u}", character >> 24, (character >> 16) & 0xFF, (character >> 8) & 0xFF,
                             character & 0xFF);
        }
        case 9: {
            const char* text = argument.text != nullptr ? argument.text : "";
            if (std::strlen(text) >= 130) return formatText("%.40s...", text);
            return text;
        }
        default: return "";
    }
}

}  // namespace

FramePush::FramePush(RunContext* context, ErrorFrame& frame) : context_(context), saved_(context->decode.errorFrames)
{
    frame.previous = saved_;
    context_->decode.errorFrames = &frame;
}

FramePush::~FramePush()
{
    context_->decode.errorFrames = saved_;
}

int buildErrorText(RunContext* context, char* buffer, size_t capacity, int32_t entry, int32_t pdu,
                   const ErrorArgument& argument)
{
    const RuntimeMessage& message = runtimeMessage(entry);
    // The letter names the side: D for a decode.
    std::string text = message.text[0] == '0' ? "D" : "";
    text += message.text;
    if (text.size() + 1 > capacity) {
        size_t keep = capacity > 5 ? capacity - 5 : 0;
        std::memcpy(buffer, text.data(), keep);
        std::memcpy(buffer + keep, "...\n", capacity >= 5 ? 5 : 0);
        return 1;
    }
    if (argument.present) text += argumentText(message.flags & MESSAGE_FORM_MASK, argument);
    if (pdu != 0 && (message.flags & MESSAGE_NO_LOCATION) == 0) {
        text += formatText("; check PDU #%d", pdu);
        const ErrorFrame* frame = context->decode.errorFrames;
        while (frame != nullptr && frame->typeName == nullptr && frame->frameKind != FRAME_ROOT) frame = frame->previous;
        if (frame != nullptr && frame->typeName != nullptr) text += formatText(" '%s'", frame->typeName);
    }
    text += ".\n";
    if (text.size() + 1 > capacity) {
        size_t keep = capacity > 5 ? capacity - 5 : 0;
        std::memcpy(buffer, text.data(), keep);
        std::memcpy(buffer + keep, "...\n", capacity >= 5 ? 5 : 0);
        return 1;
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return 0;
}

void reportError(RunContext* context, int32_t entry, ErrorArgument argument)
{
    DecodeState& decode = context->decode;
    RunState* state = context->state;
    int32_t code = runtimeMessage(entry).resultCode;
    char* target = decode.errorTextPtr != nullptr ? decode.errorTextPtr : context->errorText;
    size_t capacity = kErrorTextSize;
    while (buildErrorText(context, target, capacity, entry, decode.currentPdu, argument) != 0) {
        // Too long for the buffer in hand: a larger one, kept until the next
        // failure or the stop of the context.
        capacity += kErrorTextSize;
        auto* larger = static_cast<char*>(context->stateAllocFn(capacity));
        if (larger == nullptr) {
            code = 8;
            break;
        }
        context->stateFreeFn(state->longErrorText);
        state->longErrorText = larger;
        target = larger;
    }
    if (decode.runtimeResult == 0) decode.runtimeResult = code;
    throw DecodeFailure{decode.runtimeResult};
}
