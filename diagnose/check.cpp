#include "diagnose/check.h"

#include <cstdio>

#include "app/signal.h"
#include "diagnose/diagnose.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "tlv/decomposed_layout.h"
#include "tlv/end_cache.h"
#include "tlv/hex_layout.h"
#include "tlv/syntax_layout.h"
#include "tlv/walker.h"

namespace {

intptr_t place(const uint8_t* octets)
{
    return reinterpret_cast<intptr_t>(octets);
}

// The listing of a check goes nowhere: the walk's notes and the reports of
// misencodings are written into a stream on /dev/null for the length of
// the walk; the counts are what is kept.
class DiscardedOutput {
public:
    explicit DiscardedOutput(RunContext* context) : context_(context), saved_(context->outStream)
    {
        std::FILE* sink = std::fopen("/dev/null", "w");
        stream_ = sink != nullptr ? outStreamForFile(sink, true) : nullptr;
        if (stream_ != nullptr) context_->outStream = stream_;
    }
    ~DiscardedOutput()
    {
        if (stream_ == nullptr) return;
        context_->outStream = saved_;
        outStreamRelease(stream_);
    }
    DiscardedOutput(const DiscardedOutput&) = delete;
    DiscardedOutput& operator=(const DiscardedOutput&) = delete;

private:
    RunContext* context_;
    OutStream* saved_;
    OutStream* stream_ = nullptr;
};

}  // namespace

void checkLayout(RunContext* context, InputBuffer& buffer)
{
    DiscardedOutput discarded(context);
    EndCacheScope ends(context);
    int32_t count = buffer.length;
    bool titles = false;
    walkRecords(context, buffer.data, count, 0, titles, checkElement);
}

int checkElement(RunContext* context, const Element& read, int depth, bool& indefinite, bool&)
{
    // The reports of printHexElement, in its order.
    const int32_t available = read.available();
    if (read.firstOctet() == 0) signalError(context, kTagZero, 0, 0);
    indefinite = false;
    if (read.identifier == LENGTH_TRUNCATED) {
        signalError(context, kPrematureEnd, place(read.start()), available);
        return 1;
    }
    if (read.identifier == 0) return 0;
    countElement(context, depth == 0);
    indefinite = read.lengthOctet() == 0x80;
    if (read.header > available) {
        signalError(context, kHeaderOverrun, read.header, available);
        return 1;
    }
    if (read.length == LENGTH_TRUNCATED) {
        signalError(context, kPrematureEnd, place(read.start()), available);
        return 1;
    }
    if (!indefinite && read.length > available - read.header) {
        signalError(context, kLengthOverrun, read.length, available - read.header);
        return 1;
    }
    return diagnoseValue(context, read, 0, false) ? 1 : 0;
}

int printHexDiagnosed(RunContext* context, const Element& read, int depth, bool& indefinite, bool& titles)
{
    if (read.readable()) countElement(context, depth == 0);
    const int stop = printHexElement(context, read, depth, indefinite, titles);
    if (stop != 0) return stop;
    return diagnoseValue(context, read, 2 * depth, true) ? 1 : 0;
}

int printSyntaxDiagnosed(RunContext* context, const Element& read, int depth, bool& indefinite, bool& titles)
{
    if (read.readable()) countElement(context, depth == 0);
    const int stop = printSyntaxElement(context, read, depth, indefinite, titles);
    writeFailureNote(context, 2 * depth);
    if (stop == 0) showEncodedTime(context, read, 2 * depth);
    return stop;
}

int printDecomposedDiagnosed(RunContext* context, const Element& read, int depth, long offset, bool& indefinite,
                             bool record)
{
    if (read.readable()) countElement(context, record);
    const int stop = printDecomposedElement(context, read, depth, offset, indefinite);
    writeFailureNote(context, kDecomposedNoteIndent);
    if (stop == 0) showEncodedTime(context, read, kDecomposedNoteIndent);
    return stop;
}
