// The top level of an input read header by header, as a layout's walk steps
// over it, without listing anything: where each record ends, so that the
// input can be listed in stretches of whole records (on several threads, in
// windows of an input of any size, from a chosen record on).
#pragma once

#include <cstdint>
#include <vector>

#include "tlv/walker.h"

struct RunContext;

enum class ListingLayout { Hexadecimal, Syntax, Decomposed, Json };

// Stretches never hold more than the walkers count.
constexpr int64_t kLargestStretch = INT32_MAX;

// What the scan found at the end of the stretch it last gave.
enum class ScanEnd {
    More,      // the scan goes on behind it
    Input,     // the input ends there
    Tail,      // the stretch ends where the scan can't step over a record: its
               // walk is the last, and takes the input to its end
    TooLarge,  // a record in front of which the stretch ends doesn't end within
               // the most a walk can hold; nothing behind it can be listed
};

// Where an indefinite-length element ends, for contents from `at` to `end`
// whose every header is of the plain kinds (identifier octets that end, a
// length in up to four octets or indefinite, every element within the
// contents): behind the end-of-contents that closes it. Null for anything
// else, which the walk's own step decides instead. On such contents the
// walk steps exactly so: over an end-of-contents, into an indefinite
// element, over a definite one.
const uint8_t* plainEndOfContents(const uint8_t* at, const uint8_t* end);

class RecordScan {
public:
    // `input` holds `size` octets; `origin` is where it stands in its file.
    RecordScan(RunContext* context, ListingLayout layout, const uint8_t* input, int64_t size, int64_t origin);

    // Passes over the records in front of record `first` (1-based) without
    // a stretch, on a new scan; false when the input ends in front of that
    // record or the scan can't step over one in front of it (the next
    // stretch then starts there).
    bool skipTo(long first);
    // The next stretch: whole records from where the last stretch ended, at
    // least one and about `target` octets, none behind record `last` (0: no
    // last). `recordEnds` gets where each of its records ends. False when
    // nothing is left.
    bool next(RecordStretch& stretch, std::vector<int64_t>& recordEnds, int64_t target, long last = 0);
    ScanEnd end() const { return end_; }
    // After skipTo: the input ended in front of the record asked for.
    bool endedBeforeFirst() const { return pending_ && pendingStep_ == Step::Input; }
    long recordsScanned() const { return records_; }
    int64_t position() const { return position_; }
    int64_t size() const { return size_; }

private:
    enum class Step { Record, Input, Fault, TooLarge };
    Step stepOver(int64_t& recordEnd);
    Step stepOverElement(const uint8_t* at, int64_t remaining, int64_t& recordEnd);
    void fillStretch(RecordStretch& stretch, int64_t begin, int64_t end, long recordsBefore) const;

    RunContext* context_;
    ListingLayout layout_;
    const uint8_t* input_;
    int64_t size_;
    int64_t origin_;
    CdrProbe probe_ = {0, 0, 0};
    int64_t position_ = 0;  // where the last record's element ended
    long records_ = 0;      // records stepped over
    ScanEnd end_ = ScanEnd::More;
    bool finished_ = false;
    // A record stepped over that didn't fit into the stretch before it.
    bool pending_ = false;
    Step pendingStep_ = Step::Record;
    int64_t pendingEnd_ = 0;
};
