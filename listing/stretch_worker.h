// A worker thread's own run context, listing stretches of records ahead of
// the listing into memory. A stretch comes back whole, or cut at the first
// record that would report something or leave a failed value's mark on the
// records behind it: the listing lists that one itself, in order, so every
// report lands where one walk over the input puts it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "diagnose/tally.h"
#include "listing/record_scan.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output.h"
#include "tlv/end_cache.h"

// What a run's tally counts of listed records, besides reports.
struct RecordCounts {
    uint64_t records = 0;
    uint64_t elements = 0;
    uint64_t failedValues = 0;
    uint64_t hiddenElements = 0;

    static RecordCounts of(const DiagnoseTally& tally);
    void addTo(DiagnoseTally& tally) const;
};

struct StretchJob {
    RecordStretch stretch;
    std::vector<int64_t> recordEnds;  // where each record's element ends, in the input
    // What the worker made of it.
    GrownText output;
    long cleanRecords = 0;  // records listed whole, from the first on
    size_t cleanBytes = 0;  // the output of those records
    RecordCounts counts;    // and their counts
    bool whole = false;     // every record of the stretch listed clean
};

class StretchWorker final : public RecordWatch {
public:
    // Takes the settings of the listing's context; false from ready() when
    // the context can't be started.
    explicit StretchWorker(const RunContext& listing);
    ~StretchWorker();
    StretchWorker(const StretchWorker&) = delete;
    StretchWorker& operator=(const StretchWorker&) = delete;

    bool ready() const { return started_; }
    void list(ListingLayout layout, StretchJob& job);
    void recordDone(RunContext* context, const uint8_t* record) override;

private:
    RunContext context_{};
    bool started_ = false;
    uint32_t flags_ = 0;
    RunExtensions extensions_;
    DiagnoseTally tally_;
    OutStream* stream_ = nullptr;
    // One cache of element ends for all the stretches, cleared for each.
    std::unique_ptr<EndCacheScope> ends_;
    StretchJob* job_ = nullptr;
    // The record in front of the last one listed clean: a walk that ends
    // early is handed back from there.
    long earlierRecords_ = 0;
    size_t earlierBytes_ = 0;
    RecordCounts earlierCounts_;
};

// Lists a stretch in the layout on `context`; false when the listing ended
// inside it.
bool listStretch(RunContext* context, ListingLayout layout, const RecordStretch& stretch);
