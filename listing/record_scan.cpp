#include "listing/record_scan.h"

#include "runtime/context.h"
#include "tlv/element.h"
#include "tlv/reader.h"

namespace {

// A step of the walk taken as a look-ahead: what it meets is no finding of
// the listing, and doesn't stay behind as the run's last error. Whether it
// met anything is the scan's to know.
class QuietStep {
public:
    explicit QuietStep(RunContext* context)
        : context_(context),
          flags_(context->toolFlags),
          stateFlags_(context->state->stateFlags),
          lastError_(context->state->lastError)
    {
        context->toolFlags |= TLV_QUIET_ERRORS;
        context->state->stateFlags |= STATE_PROBING;
        context->state->lastError = 0;
    }
    ~QuietStep()
    {
        context_->toolFlags = flags_;
        context_->state->stateFlags = stateFlags_;
        context_->state->lastError = lastError_;
    }
    QuietStep(const QuietStep&) = delete;
    QuietStep& operator=(const QuietStep&) = delete;

    bool metAnything() const { return context_->state->lastError != 0; }

private:
    RunContext* context_;
    uint32_t flags_;
    uint32_t stateFlags_;
    int32_t lastError_;
};

}  // namespace

const uint8_t* plainEndOfContents(const uint8_t* at, const uint8_t* end)
{
    long open = 1;
    while (end - at >= 2) {
        if (at[0] == 0 && at[1] == 0) {
            at += 2;
            if (--open == 0) return at;
            continue;
        }
        const uint8_t* cursor = at + 1;
        if ((at[0] & HIGH_TAG_MASK) == HIGH_TAG_MASK) {
            const uint8_t* last = cursor + 5 < end ? cursor + 5 : end;
            while (cursor < last && (*cursor & 0x80) != 0) ++cursor;
            if (cursor >= last) return nullptr;
            ++cursor;
        }
        if (cursor >= end) return nullptr;
        const uint8_t first = *cursor++;
        int64_t length = first;
        if (first == 0x80) {
            ++open;
            at = cursor;
            continue;
        }
        if (first > 0x80) {
            const int octets = first & 0x7F;
            if (octets > 4 || end - cursor < octets) return nullptr;
            length = 0;
            for (int i = 0; i < octets; ++i) length = (length << 8) | *cursor++;
        }
        // The walk's step runs to the end of the contents here: it decides.
        if (length >= end - cursor) return nullptr;
        at = cursor + length;
    }
    return nullptr;
}

namespace {

int32_t walkable(int64_t octets)
{
    return octets > kLargestStretch ? static_cast<int32_t>(kLargestStretch) : static_cast<int32_t>(octets);
}

}  // namespace

RecordScan::RecordScan(RunContext* context, ListingLayout layout, const uint8_t* input, int64_t size, int64_t origin)
    : context_(context), layout_(layout), input_(input), size_(size), origin_(origin)
{
    // The decomposed walk knows no CDR headers.
    if (layout != ListingLayout::Decomposed && size > 0) {
        probe_ = probeCdrHeaders(context, input, walkable(size), size);
    }
}

RecordScan::Step RecordScan::stepOverElement(const uint8_t* at, int64_t remaining, int64_t& recordEnd)
{
    const int32_t count = walkable(remaining);
    const bool wide = remaining > count;
    const Element element = readElement(at, count);
    // Whatever the listing reports at a record's own header, and a record
    // that runs off the input, end the scan in front of the record.
    if (!element.readable() || element.firstOctet() == 0 || element.headerOverruns() ||
        element.length == LENGTH_TRUNCATED) {
        return Step::Fault;
    }
    if (element.lengthOverruns()) return wide ? Step::TooLarge : Step::Fault;
    if (element.indefinite()) {
        const OctetView contents = element.behindHeader();
        const uint8_t* end = plainEndOfContents(contents.data(), contents.data() + contents.size());
        if (end != nullptr) {
            recordEnd = end - input_;
            return Step::Record;
        }
    }
    int32_t behind = count;
    bool met = false;
    try {
        QuietStep quiet(context_);
        nextElementOf(context_, element, behind);
        met = quiet.metAnything();
    } catch (const ToolJump&) {
        met = true;
    }
    if (met) return wide && element.indefinite() ? Step::TooLarge : Step::Fault;
    recordEnd = (at - input_) + (count - behind);
    return Step::Record;
}

RecordScan::Step RecordScan::stepOver(int64_t& recordEnd)
{
    const uint8_t* at = input_ + position_;
    int64_t left = size_ - position_;
    if (left <= 0) return Step::Input;
    const long number = records_ + 1;
    // The steps in front of a record, as the walk takes them.
    auto skipHeader = [&](int32_t length) {
        if (length > 0 && left > length) {
            at += length;
            left -= length;
        }
    };
    auto skipPadding = [&] {
        uint8_t pad = 0;
        if (!padByteOf(context_, pad)) return false;
        int64_t skipped = 0;
        while (skipped < left && at[skipped] == pad) ++skipped;
        at += skipped;
        left -= skipped;
        return skipped != 0 && left == 0;
    };
    if (layout_ == ListingLayout::Decomposed) {
        if (number >= 2 && skipPadding()) return Step::Input;
    } else {
        if (number == 1) {
            skipHeader(probe_.fileHeaderLength);
            skipHeader(probe_.recordHeaderLength);
        }
        // Padding is looked for only between records of a file without a header.
        if (probe_.fileHeaderLength == 0 && skipPadding()) return Step::Input;
        if (number >= 2) skipHeader(probe_.recordHeaderLength);
    }
    return stepOverElement(at, left, recordEnd);
}

bool RecordScan::skipTo(long first)
{
    while (records_ + 1 < first) {
        int64_t recordEnd = pendingEnd_;
        const Step step = pending_ ? pendingStep_ : stepOver(recordEnd);
        pending_ = false;
        if (step != Step::Record) {
            pending_ = true;
            pendingStep_ = step;
            return false;
        }
        position_ = recordEnd;
        ++records_;
    }
    if (pending_) return pendingStep_ != Step::Input;
    // A look at record `first` itself: the input may end in front of it.
    int64_t recordEnd = 0;
    pendingStep_ = stepOver(recordEnd);
    pendingEnd_ = recordEnd;
    pending_ = true;
    return pendingStep_ != Step::Input;
}

void RecordScan::fillStretch(RecordStretch& stretch, int64_t begin, int64_t end, long recordsBefore) const
{
    stretch.data = input_ + begin;
    stretch.length = static_cast<int32_t>(end - begin);
    stretch.reach = walkable(size_ - begin);
    stretch.offset = begin;
    stretch.origin = origin_;
    stretch.recordsBefore = recordsBefore;
    stretch.probe = probe_;
}

bool RecordScan::next(RecordStretch& stretch, std::vector<int64_t>& recordEnds, int64_t target, long last)
{
    recordEnds.clear();
    if (finished_) return false;
    const int64_t begin = position_;
    const long recordsBefore = records_;
    end_ = ScanEnd::More;
    while (true) {
        if (last != 0 && records_ >= last) {
            finished_ = true;
            end_ = ScanEnd::Input;
            break;
        }
        int64_t recordEnd = 0;
        const Step step = pending_ ? pendingStep_ : stepOver(recordEnd);
        if (pending_) recordEnd = pendingEnd_;
        pending_ = false;
        if (step == Step::Record && recordEnd - begin > kLargestStretch) {
            // The record goes into a stretch of its own.
            pending_ = true;
            pendingStep_ = step;
            pendingEnd_ = recordEnd;
            break;
        }
        if (step == Step::Record) {
            position_ = recordEnd;
            ++records_;
            recordEnds.push_back(recordEnd);
            if (position_ - begin >= target) break;
            continue;
        }
        if (step != Step::Input && records_ != recordsBefore) {
            // The records in front of the one the scan can't step over make a
            // stretch of their own; that one begins the next.
            pending_ = true;
            pendingStep_ = step;
            break;
        }
        finished_ = true;
        if (step == Step::Input) {
            end_ = ScanEnd::Input;
            position_ = size_;
        } else if (step == Step::Fault) {
            end_ = ScanEnd::Tail;
            position_ = begin + walkable(size_ - begin);
        } else {
            end_ = ScanEnd::TooLarge;
        }
        break;
    }
    if (position_ == begin && end_ != ScanEnd::Tail) return false;
    fillStretch(stretch, begin, position_, recordsBefore);
    // The tail begins with the record the scan couldn't step over.
    stretch.verified = end_ != ScanEnd::Tail;
    return true;
}
