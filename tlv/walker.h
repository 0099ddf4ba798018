// The record walker: goes into constructed elements, closes indefinite ones,
// and at the top level treats whatever follows a record as a further record
// (a CDR file is a run of BER records, maybe behind file and record headers,
// maybe with fill octets between them).
#pragma once

#include <cstdint>

#include "runtime/buffers.h"
#include "tlv/element.h"

struct RunContext;

// Prints one element; returns 0 when the walk may go on with it (go inside,
// then step over it), 1 when it must stop at this element.
using ElementPrinter = int (*)(RunContext* context, const Element& element, int depth, bool& indefinite,
                               bool& titles);

// Deepest nesting that the walkers go into; deeper contents are stepped over
// with a note in the listing.
constexpr int MAX_WALK_DEPTH = 256;

struct CdrProbe {
    int32_t expectedLength;
    int32_t fileHeaderLength;
    int32_t recordHeaderLength;
};

// A stretch of whole top-level records out of a larger input, and where the
// listing stands in front of it. Listing the stretches of an input one after
// the other prints what one walk over the whole input prints: a stretch
// begins where a record's element ended, in front of the padding and the
// record header of the next one.
struct RecordStretch {
    const uint8_t* data = nullptr;
    int32_t length = 0;
    // Octets readable from `data` on, to the end of the input (at most 2 GiB):
    // a premature end shows the record's tail, which may run past the stretch.
    int32_t reach = 0;
    int64_t offset = 0;         // of `data`, from the start of the listed input
    int64_t origin = 0;         // of the listed input in its file (+offset)
    long recordsBefore = 0;     // records listed in front of the stretch
    CdrProbe probe = {0, 0, 0};  // the CDR headers found at the start of the input
    // Every record of the stretch was stepped over without a finding: each
    // indefinite element that the indefinite record holds (directly, or in
    // indefinite elements) ends at the first end-of-contents its contents'
    // steps meet, so a walk finds that end as it gets there.
    bool verified = false;
};

// The steps in front of each record of the top level: CDR file and record
// headers, padding between records, the announcement of a further record.
class RecordSteps {
public:
    RecordSteps() = default;
    // Detects CDR headers in the input (unless -nocdrheaders).
    RecordSteps(RunContext* context, const uint8_t* input, int32_t count);
    // Goes on in front of a stretch's first record.
    explicit RecordSteps(const RecordStretch& stretch)
        : probe_(stretch.probe), recordNumber_(static_cast<int>(stretch.recordsBefore)), verified_(stretch.verified)
    {
    }
    // The records are verified (RecordStretch::verified).
    bool verified() const { return verified_; }
    // Counts the next record and steps over what stands in front of it;
    // false when the walk must end instead.
    bool next(RunContext* context, const uint8_t*& element, int32_t& count, bool& titles);

private:
    CdrProbe probe_ = {0, 0, 0};
    int recordNumber_ = 0;
    bool verified_ = false;
};

// The line of an end-of-contents at `depth`, in the layout's form.
void printEndOfContents(RunContext* context, int depth);

void walkRecords(RunContext* context, const uint8_t* element, int32_t& count, int depth,
                 bool& titles, ElementPrinter printer);
// The top level of a walk from the steps in front of a record on; `count`
// comes back as walkRecords gives it back.
void walkRecordsWith(RunContext* context, const uint8_t* first, int32_t& count, bool& titles,
                     ElementPrinter printer, RecordSteps& records);
// The CDR headers of an input as the walk of its top level finds them: none
// with -nocdrheaders. `total` is the whole input's length, which a CDR file
// header repeats.
CdrProbe probeCdrHeaders(RunContext* context, const uint8_t* input, int32_t count, int64_t total);
bool detectCdrHeaders(RunContext* context, const uint8_t* input, int32_t inputLength,
                      CdrProbe& probe);
void skipCdrHeader(RunContext* context, const uint8_t*& cursor, int32_t& count, int32_t length,
                   const char* word);
int32_t skipPadding(RunContext* context, const uint8_t*& cursor, int32_t& count);
// The -pad byte: false without one, or with a value no octet can equal.
bool padByteOf(const RunContext* context, uint8_t& pad);
// The whole of an input as one stretch; the CDR headers at its start are
// looked for when asked (and -nocdrheaders isn't given).
RecordStretch wholeInputStretch(RunContext* context, const InputBuffer& buffer, bool findCdrHeaders);
// Whether the two octets at `octets` are an end-of-contents; reports code 37
// for a tag of 00 with a second octet that isn't 0.
bool endOfContentsFollows(RunContext* context, const uint8_t* octets);
// Octets as upper-case hexadecimal behind `indent` blanks, then `suffix`.
int dumpOctets(RunContext* context, const uint8_t* octets, int32_t count, int indent,
               const char* suffix);
// The note for contents nested deeper than the walkers go.
void printTooDeep(RunContext* context, int depth);
