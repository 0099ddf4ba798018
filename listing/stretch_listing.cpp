#include "listing/stretch_listing.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "diagnose/tally.h"
#include "listing/progress.h"
#include "listing/stretch_worker.h"
#include "listing/worker_pool.h"
#include "runtime/context.h"
#include "runtime/output.h"

namespace {

constexpr int64_t kLargestJob = 128 << 10;          // a worker's stretch
constexpr int64_t kLargestInOrder = 8 << 20;        // a stretch the listing walks itself
constexpr int64_t kReleaseEvery = 32 << 20;         // pages behind the listing let go this often

// The pages of a mapped input in front of `offset` are let go: what lies
// behind the listing is read no more (and would come back from the file if
// it were).
void releaseBehind(const ListingInput& input, int64_t offset)
{
    if (input.mapBase == nullptr) return;
    const auto base = reinterpret_cast<uintptr_t>(input.mapBase);
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t end = (reinterpret_cast<uintptr_t>(input.data) + static_cast<uintptr_t>(offset)) / page * page;
    if (end > base) madvise(input.mapBase, end - base, MADV_DONTNEED);
}

// -records: the listing has come behind the last record asked for.
struct SelectionDone {};

// The listing's own walk of a stretch: counts the records for -records and
// the progress line. Records in front of the first one asked for are
// listed into nothing (the scan couldn't step over them), and the walk stops
// behind the last one.
class InOrderWatch final : public RecordWatch {
public:
    InOrderWatch(RunContext* context, const ListingInput& input, const ListingPlan& plan,
                 const RecordStretch& stretch, ProgressLine& progress)
        : context_(context), input_(input), plan_(plan), listed_(stretch.recordsBefore), progress_(progress),
          released_(stretch.offset), saved_(context->recordWatch), listing_(context->outStream)
    {
        context->recordWatch = this;
        if (listed_ + 1 < plan.firstRecord) {
            discard_ = outStreamForSink(&discarded_);
            if (discard_ != nullptr) context->outStream = discard_;
        }
    }
    ~InOrderWatch()
    {
        context_->recordWatch = saved_;
        if (discard_ != nullptr) {
            if (context_->outStream == discard_) context_->outStream = listing_;
            outStreamRelease(discard_);
        }
    }
    InOrderWatch(const InOrderWatch&) = delete;
    InOrderWatch& operator=(const InOrderWatch&) = delete;

    void recordDone(RunContext* context, const uint8_t* record) override
    {
        ++listed_;
        if (context->outStream == discard_ && discard_ != nullptr) {
            qorFlush(context);
            discarded_.clear();
            if (listed_ + 1 >= plan_.firstRecord) context->outStream = listing_;
        }
        const int64_t offset = record != nullptr ? record - input_.data : released_;
        progress_.update(listed_, offset);
        if (offset - released_ >= kReleaseEvery) {
            releaseBehind(input_, offset);
            released_ = offset;
        }
        if (plan_.lastRecord != 0 && listed_ >= plan_.lastRecord) throw SelectionDone{};
    }

private:
    RunContext* context_;
    const ListingInput& input_;
    const ListingPlan& plan_;
    long listed_;
    ProgressLine& progress_;
    int64_t released_;  // pages in front of this offset are let go
    RecordWatch* saved_;
    OutStream* listing_;
    OutStream* discard_ = nullptr;
    std::string discarded_;
};

class StretchListing {
public:
    StretchListing(RunContext* context, const ListingInput& input, const ListingPlan& plan)
        : context_(context),
          input_(input),
          plan_(plan),
          scan_(context, plan.layout, input.data, input.size, input.origin),
          progress_(plan.progress, input.size)
    {
    }

    int run();

private:
    int64_t jobOctets() const;
    int64_t inOrderOctets() const;
    bool walkInOrder(const RecordStretch& stretch);
    bool scanNext(ListingJob& job, int64_t octets);
    void fillJobs(WorkerPool& pool, std::deque<std::unique_ptr<ListingJob>>& jobs);
    bool takeJob(WorkerPool& pool, ListingJob& job, long& from);
    void passed(int64_t offset, long records);
    bool skipRecords();
    int finish();

    RunContext* context_;
    const ListingInput& input_;
    const ListingPlan& plan_;
    RecordScan scan_;
    ProgressLine progress_;
    bool scanning_ = true;
    bool parallel_ = false;
    int64_t released_ = 0;
    double outputRatio_ = 4.0;  // listing octets an input octet, as found so far
    std::vector<GrownText> spare_;  // output buffers written out, for the next jobs
};

int64_t StretchListing::jobOctets() const
{
    if (plan_.stretchOctets > 0) return plan_.stretchOctets;
    const int64_t share = input_.size / (16 * static_cast<int64_t>(plan_.threads));
    return share < 1 ? 1 : share > kLargestJob ? kLargestJob : share;
}

int64_t StretchListing::inOrderOctets() const
{
    if (plan_.stretchOctets > 0) return plan_.stretchOctets;
    const int64_t share = input_.size / 16;
    return share < 1 ? 1 : share > kLargestInOrder ? kLargestInOrder : share;
}

bool StretchListing::walkInOrder(const RecordStretch& stretch)
{
    InOrderWatch watch(context_, input_, plan_, stretch, progress_);
    try {
        return listStretch(context_, plan_.layout, stretch);
    } catch (const SelectionDone&) {
        return false;
    }
}

bool StretchListing::scanNext(ListingJob& job, int64_t octets)
{
    if (!scanning_) return false;
    if (!scan_.next(job.work.stretch, job.work.recordEnds, octets, plan_.lastRecord)) {
        scanning_ = false;
        return false;
    }
    job.tail = scan_.end() == ScanEnd::Tail;
    if (scan_.end() != ScanEnd::More) scanning_ = false;
    return true;
}

void StretchListing::fillJobs(WorkerPool& pool, std::deque<std::unique_ptr<ListingJob>>& jobs)
{
    const size_t inFlight = 2 * static_cast<size_t>(plan_.threads);
    while (parallel_ && jobs.size() < inFlight && (jobs.empty() || !jobs.back()->tail)) {
        auto job = std::make_unique<ListingJob>();
        if (!scanNext(*job, jobOctets())) return;
        if (!job->tail) {
            // A buffer a worker filled before, pages and all: fresh memory
            // for every stretch would cost a page fault every 4 KiB.
            if (!spare_.empty()) {
                job->work.output = std::move(spare_.back());
                spare_.pop_back();
            }
            job->work.output.size = 0;
            job->work.output.reserve(static_cast<size_t>(outputRatio_ * job->work.stretch.length * 1.1) + 4096);
            pool.give(*job);
        }
        jobs.push_back(std::move(job));
    }
}

// Writes what a worker made of the job; false when the listing must go on
// with it itself, from its record `from` (0-based) on.
bool StretchListing::takeJob(WorkerPool& pool, ListingJob& job, long& from)
{
    from = 0;
    if (!pool.wait(job)) return false;
    const StretchJob& work = job.work;
    qorWriteBlock(context_, work.output.data.get(), work.output.size);
    // A terminal sees each stretch as it is done.
    if (context_->outStream->terminal) qorFlush(context_);
    if (DiagnoseTally* tally = runTally(context_)) work.counts.addTo(*tally);
    if (work.stretch.length > 0) {
        outputRatio_ = 0.75 * outputRatio_ + 0.25 * static_cast<double>(work.output.size) / work.stretch.length;
    }
    from = work.cleanRecords;
    const bool whole = work.whole;
    spare_.push_back(std::move(job.work.output));
    return whole;
}

// The rest of a stretch from its record `from` (0-based) on.
RecordStretch restOf(const StretchJob& work, long from)
{
    RecordStretch rest = work.stretch;
    if (from == 0) return rest;
    const int64_t skip = work.recordEnds[static_cast<size_t>(from) - 1] - work.stretch.offset;
    rest.data += skip;
    rest.length -= static_cast<int32_t>(skip);
    rest.reach -= static_cast<int32_t>(skip);
    rest.offset += skip;
    rest.recordsBefore += from;
    return rest;
}

// The listing has come to `offset`: the pages of a mapped input in front of
// it are let go, and the progress line moves.
void StretchListing::passed(int64_t offset, long records)
{
    progress_.update(records, offset);
    if (offset - released_ < kReleaseEvery) return;
    releaseBehind(input_, offset);
    released_ = offset;
}

// -records: the records in front of the first are stepped over by the scan
// alone, and the pages behind it let go as it goes.
bool StretchListing::skipRecords()
{
    constexpr long kStep = 1 << 16;
    for (long first = 1 + kStep; first < plan_.firstRecord; first += kStep) {
        if (!scan_.skipTo(first)) return false;
        passed(scan_.position(), scan_.recordsScanned());
    }
    return scan_.skipTo(plan_.firstRecord);
}

int StretchListing::finish()
{
    if (scan_.end() != ScanEnd::TooLarge) return 0;
    qorFlush(context_);
    std::fprintf(stderr,
                 "qortlv: record #%ld at offset %lld doesn't end within 2 GiB, the most one walk holds; the "
                 "listing stops in front of it.\n",
                 scan_.recordsScanned() + 1, static_cast<long long>(input_.origin + scan_.position()));
    return kRecordTooLarge;
}

int StretchListing::run()
{
    if (plan_.firstRecord > 1 && !skipRecords() && scan_.endedBeforeFirst()) {
        std::fprintf(stderr, "qortlv: -records: the input holds %ld records, none from #%ld on.\n",
                     scan_.recordsScanned(), plan_.firstRecord);
        return kNoSuchRecord;
    }
    parallel_ = plan_.threads > 1;
    std::deque<std::unique_ptr<ListingJob>> jobs;
    std::unique_ptr<WorkerPool> pool;
    if (parallel_) pool = std::make_unique<WorkerPool>(*context_, plan_.layout, plan_.threads);
    while (true) {
        if (parallel_) fillJobs(*pool, jobs);
        std::unique_ptr<ListingJob> job;
        if (!jobs.empty()) {
            job = std::move(jobs.front());
            jobs.pop_front();
        } else {
            job = std::make_unique<ListingJob>();
            if (!scanNext(*job, inOrderOctets())) break;
        }
        const StretchJob& work = job->work;
        long from = 0;
        const bool listed = parallel_ && !job->tail && takeJob(*pool, *job, from);
        if (!listed) {
            // From a record a worker handed back on, the listing walks on
            // itself: every report lands where it lands in a single walk.
            if (parallel_) {
                parallel_ = false;
                pool->stop();
            }
            RecordStretch rest = restOf(work, from);
            rest.verified = false;  // it goes on past the stretch, and a report is due
            // One walk to the end of the input where it can hold the rest: a
            // failed value counts what it hides up to there.
            const bool toEnd = input_.size - rest.offset <= kLargestStretch;
            if (toEnd) rest.length = static_cast<int32_t>(input_.size - rest.offset);
            const bool goesOn = walkInOrder(rest) && !job->tail && !toEnd;
            if (pool != nullptr) pool->wait(*job);  // a worker may still hold it
            if (!goesOn) break;
        }
        passed(work.stretch.offset + work.stretch.length,
               work.stretch.recordsBefore + static_cast<long>(work.recordEnds.size()));
    }
    // Jobs still held by workers end before their memory goes.
    if (pool != nullptr) {
        pool->stop();
        for (auto& left : jobs) pool->wait(*left);
        pool.reset();
    }
    return finish();
}

}  // namespace

int listInStretches(RunContext* context, const ListingInput& input, const ListingPlan& plan)
{
    StretchListing listing(context, input, plan);
    return listing.run();
}
