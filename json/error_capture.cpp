#include "json/error_capture.h"

#include <cstring>

#include "app/signal.h"
#include "json/json_text.h"
#include "runtime/catalog.h"
#include "runtime/output.h"

namespace {

// The capture of the run in progress on this thread; the hook has no other
// way to it. Runs don't nest, so there is at most one a thread.
thread_local ErrorCapture* gActive = nullptr;

// The text without the line ends that place it in the listing.
std::string trimmedLines(const std::string& text)
{
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && (text[begin] == '\n' || text[begin] == ' ')) ++begin;
    while (end > begin && (text[end - 1] == '\n' || text[end - 1] == ' ')) --end;
    return text.substr(begin, end - begin);
}

}  // namespace

ErrorCapture::ErrorCapture(RunContext* context)
    : context_(context), savedHook_(context->errorHook), sink_(outStreamForSink(&message_))
{
    if (sink_ == nullptr) signalError(context, kNoMemory, 0, 0);
    gActive = this;
    context->errorHook = hook;
}

ErrorCapture::~ErrorCapture()
{
    context_->errorHook = savedHook_;
    gActive = nullptr;
    outStreamRelease(sink_);
}

int ErrorCapture::hook(RunContext*, int code, intptr_t first, long second)
{
    if (gActive != nullptr) gActive->capture(code, first, second);
    return code;
}

void ErrorCapture::capture(int code, intptr_t first, long second)
{
    // The listing's own printer makes the text, into the sink instead of the
    // listing; its line ends are the listing's layout, not the message's.
    OutStream* listing = context_->outStream;
    PrintOverride override = context_->printOverride;
    context_->outStream = sink_;
    context_->printOverride = nullptr;
    message_.clear();
    printToolError(context_, code, first, second);
    qorFlush(context_);
    context_->outStream = listing;
    context_->printOverride = override;
    errors_.push_back({code, trimmedLines(message_)});
    if (toolRow(code).ending != SignalEnding::No) heardEnding_ = true;
}

void ErrorCapture::addUnreported(int code)
{
    const char* text = toolMessage(code, false);
    // The catalog's texts begin with the message number ("QT017E: ").
    if (text != nullptr && std::strlen(text) > TOOL_PREFIX_LENGTH) text += TOOL_PREFIX_LENGTH;
    add(code, text != nullptr ? text : "");
}

void ErrorCapture::add(int code, const char* text)
{
    errors_.push_back({code, text});
}

void ErrorCapture::writeErrors()
{
    if (errors_.empty()) return;
    writeJsonLiteral(context_, ",\"errors\":[");
    bool first = true;
    for (const Kept& error : errors_) {
        if (!first) writeJsonLiteral(context_, ",");
        first = false;
        writeJsonLiteral(context_, "{\"code\":");
        writeJsonNumber(context_, error.code);
        if (isValidUtf8(error.text.data(), error.text.size())) {
            writeJsonLiteral(context_, ",\"text\":");
            writeJsonString(context_, error.text.data(), error.text.size());
        }
        writeJsonLiteral(context_, "}");
    }
    writeJsonLiteral(context_, "]");
    errors_.clear();
}
