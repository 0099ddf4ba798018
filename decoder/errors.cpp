#include "decoder/errors.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "runtime/context.h"
#include "runtime/runtime_catalog.h"

namespace {

constexpr size_t kErrorTextSize = 512;
constexpr char kCutMark[] = "...\n";

// Writes a failure text into a buffer of fixed capacity without taking any
// memory: the text is built while a decode is failing, perhaps for want of
// memory. Whatever doesn't fit is cut, and the cut is marked.
class TextWriter {
public:
    TextWriter(char* buffer, size_t capacity) : buffer_(buffer), capacity_(capacity)
    {
        if (capacity_ > 0) buffer_[0] = '\0';
    }

    void append(const char* format, ...) __attribute__((format(printf, 2, 3)))
    {
        if (cut_) return;
        va_list args;
        va_start(args, format);
        int written = std::vsnprintf(buffer_ + used_, capacity_ - used_, format, args);
        va_end(args);
        if (written < 0) buffer_[used_] = '\0';
        if (written < 0 || static_cast<size_t>(written) >= capacity_ - used_) {
            markCut();
            return;
        }
        used_ += static_cast<size_t>(written);
    }
    bool cut() const { return cut_; }

private:
    // "...\n" behind the part that fits, in place of what didn't.
    void markCut()
    {
        cut_ = true;
        if (capacity_ < sizeof kCutMark) {
            if (capacity_ > 0) buffer_[0] = '\0';
            return;
        }
        size_t keep = std::min(capacity_ - sizeof kCutMark, std::strlen(buffer_));
        std::memcpy(buffer_ + keep, kCutMark, sizeof kCutMark);
        used_ = capacity_ - 1;
    }

    char* buffer_;
    size_t capacity_;
    size_t used_ = 0;
    bool cut_ = false;
};

const char* classWord(uint32_t tag)
{
    switch (tag >> 14) {
        case 0: return "UNIVERSAL ";
        case 1: return "APPLICATION ";
        case 2: return "";
        default: return "PRIVATE ";
    }
}

void appendArgument(TextWriter& text, uint32_t form, const ErrorArgument& argument)
{
    const int64_t number = argument.number;
    const char* string = argument.text != nullptr ? argument.text : "";
    switch (form) {
        case FORM_FIELD:
            if (argument.text == nullptr) {
                text.append("#%ld", static_cast<long>(number));
            } else if (std::strlen(string) >= 510) {
                text.append("\"%.40s...\"", string);
            } else {
                text.append("\"%s\"", string);
            }
            return;
        case FORM_TAG_PAIR: {
            // A pair of tag words: the one read, and above it the one expected.
            auto read = static_cast<uint32_t>(number & 0xFFFF);
            auto expected = static_cast<uint32_t>((number >> 16) & 0xFFFF);
            text.append("[%s%ld]", classWord(read), static_cast<long>(read & 0x3FFF));
            if (expected != 0) {
                text.append(" (expected tag [%s%ld])", classWord(expected), static_cast<long>(expected & 0x3FFF));
            }
            return;
        }
        case FORM_SIGNED: text.append("%lld", static_cast<long long>(number)); return;
        case FORM_UNSIGNED: text.append("%llu", static_cast<unsigned long long>(number)); return;
        case FORM_DOUBLE: text.append("%f", static_cast<double>(number)); return;
        case FORM_QUOTED:
        case FORM_QUOTED_TOO:
            if (std::strlen(string) >= 128) {
                text.append("'%.40s...'", string);
            } else {
                text.append("'%s'", string);
            }
            return;
        case FORM_CHARACTER: {
            // A character of any width: printable ones as themselves, the
            // others as their four octets, most significant first.
            auto character = static_cast<uint32_t>(number);
            if (character >= 0x20 && character < 0x7F) {
                text.append("'%c'", static_cast<int>(character));
            } else {
                text.append("{%u,%u,%u,%u}", character >> 24, (character >> 16) & 0xFF, (character >> 8) & 0xFF,
                            character & 0xFF);
            }
            return;
        }
        case FORM_BARE:
            if (std::strlen(string) >= 130) {
                text.append("%.40s...", string);
            } else {
                text.append("%s", string);
            }
            return;
        default: return;
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
    TextWriter text(buffer, capacity);
    // The letter names the side: D for a decode.
    text.append("%s%s", message.text[0] == '0' ? "D" : "", message.text);
    if (text.cut()) return 1;
    if (argument.present) appendArgument(text, message.flags & MESSAGE_FORM_MASK, argument);
    if (pdu != 0 && (message.flags & MESSAGE_NO_LOCATION) == 0) {
        text.append("; check PDU #%d", pdu);
        // The innermost type names the place; a root frame has no name.
        const ErrorFrame* frame = context->decode.errorFrames;
        while (frame != nullptr && frame->typeName == nullptr && frame->frameKind != FRAME_ROOT) frame = frame->previous;
        if (frame != nullptr && frame->typeName != nullptr) text.append(" '%s'", frame->typeName);
    }
    text.append(".\n");
    return text.cut() ? 1 : 0;
}

void reportError(RunContext* context, int32_t entry, ErrorArgument argument)
{
    DecodeState& decode = context->decode;
    RunState* state = context->state;
    int32_t code = runtimeMessage(entry).resultCode;
    // The long text of an earlier failure goes now.
    if (state != nullptr && state->longErrorText != nullptr) {
        context->stateFreeFn(state->longErrorText);
        state->longErrorText = nullptr;
    }
    char* target = decode.errorTextPtr != nullptr ? decode.errorTextPtr : context->errorText;
    size_t capacity = kErrorTextSize;
    while (buildErrorText(context, target, capacity, entry, decode.currentPdu, argument) != 0 && state != nullptr) {
        // Too long for the buffer in hand: a larger one, kept until the next
        // failure or the stop of the context.
        capacity += kErrorTextSize;
        auto* larger = static_cast<char*>(context->stateAllocFn(capacity));
        if (larger == nullptr) {
            code = runtimeMessage(RT_OUT_OF_MEMORY).resultCode;
            break;
        }
        context->stateFreeFn(state->longErrorText);
        state->longErrorText = larger;
        target = larger;
    }
    if (decode.runtimeResult == 0) decode.runtimeResult = code;
    throw DecodeFailure{decode.runtimeResult};
}
