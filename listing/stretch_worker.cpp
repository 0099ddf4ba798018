#include "listing/stretch_worker.h"

#include "app/signal.h"
#include "json/json_layout.h"
#include "runtime/output.h"
#include "tlv/decomposed_layout.h"
#include "tlv/hex_layout.h"
#include "tlv/syntax_layout.h"

RecordCounts RecordCounts::of(const DiagnoseTally& tally)
{
    return {tally.records, tally.elements, tally.failedValues, tally.hiddenElements};
}

void RecordCounts::addTo(DiagnoseTally& tally) const
{
    tally.records += records;
    tally.elements += elements;
    tally.failedValues += failedValues;
    tally.hiddenElements += hiddenElements;
}

bool listStretch(RunContext* context, ListingLayout layout, const RecordStretch& stretch)
{
    switch (layout) {
        case ListingLayout::Hexadecimal:
            return listHexStretch(context, stretch);
        case ListingLayout::Syntax:
            return listSyntaxStretch(context, stretch);
        case ListingLayout::Decomposed:
            return listDecomposedStretch(context, stretch);
        case ListingLayout::Json:
            return listJsonStretch(context, stretch);
    }
    return false;
}

StretchWorker::StretchWorker(const RunContext& listing)
{
    if (qorStartContext(&context_, builtinControlTable()) != 0) return;
    stream_ = outStreamForSink(nullptr);
    if (stream_ == nullptr) {
        qorStopContext(&context_);
        return;
    }
    started_ = true;
    flags_ = listing.toolFlags;
    context_.toolFlags = listing.toolFlags;
    context_.padByteSpec = listing.padByteSpec;
    context_.lineWidth = listing.lineWidth;
    context_.errorHook = listing.errorHook;
    context_.printOverride = listing.printOverride;
    context_.jumpTarget = true;
    context_.outStream = stream_;
    context_.recordWatch = this;
    context_.state->stateFlags |= STATE_STRETCH_WORKER;
    if (listing.extensions != nullptr) extensions_ = *listing.extensions;
    extensions_.tally = &tally_;
    context_.extensions = &extensions_;
    ends_ = std::make_unique<EndCacheScope>(&context_);
}

StretchWorker::~StretchWorker()
{
    if (!started_) return;
    ends_.reset();
    // Without a sink the stop's flush writes nothing.
    stream_->sink = nullptr;
    context_.outStream = stream_;
    qorStopContext(&context_);
    outStreamRelease(stream_);
}

void StretchWorker::recordDone(RunContext* context, const uint8_t*)
{
    // A failed value's mark stays on the records behind it: the listing
    // takes over at this record.
    if ((context->toolFlags & TLV_VALUE_FAILED) != 0 ||
        (context->state->stateFlags & STATE_STRETCH_FAULT) != 0) {
        jumpToTarget(context, 0);
    }
    earlierRecords_ = job_->cleanRecords;
    earlierBytes_ = job_->cleanBytes;
    earlierCounts_ = job_->counts;
    ++job_->cleanRecords;
    job_->cleanBytes = stream_->used;
    job_->counts = RecordCounts::of(tally_);
}

void StretchWorker::list(ListingLayout layout, StretchJob& job)
{
    job_ = &job;
    job.cleanRecords = 0;
    job.cleanBytes = 0;
    job.counts = RecordCounts();
    earlierRecords_ = 0;
    earlierBytes_ = 0;
    earlierCounts_ = RecordCounts();
    tally_ = DiagnoseTally();
    context_.toolFlags = flags_;
    context_.state->lastError = 0;
    context_.state->stateFlags &= ~STATE_STRETCH_FAULT;
    growInto(stream_, &job.output);
    try {
        const bool through = listStretch(&context_, layout, job.stretch);
        job.whole = through && job.cleanRecords == static_cast<long>(job.recordEnds.size());
        if (!through) {
            // The walk ended at or behind the last record it told of.
            job.cleanRecords = earlierRecords_;
            job.cleanBytes = earlierBytes_;
            job.counts = earlierCounts_;
        }
    } catch (const ToolJump&) {
        job.whole = false;
    }
    if (!job.whole) stream_->used = job.cleanBytes;
    endGrowth(stream_);
    job_ = nullptr;
}
