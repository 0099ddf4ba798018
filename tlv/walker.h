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

// The steps in front of each record of the top level: CDR file and record
// headers, padding between records, the announcement of a further record.
class RecordSteps {
public:
    RecordSteps() = default;
    // Detects CDR headers in the input (unless -nocdrheaders).
    RecordSteps(RunContext* context, const uint8_t* input, int32_t count);
    // Counts the next record and steps over what stands in front of it;
    // false when the walk must end instead.
    bool next(RunContext* context, const uint8_t*& element, int32_t& count, bool& titles);

private:
    CdrProbe probe_ = {0, 0, 0};
    int recordNumber_ = 0;
};

// The line of an end-of-contents at `depth`, in the layout's form.
void printEndOfContents(RunContext* context, int depth);

void walkRecords(RunContext* context, const uint8_t* element, int32_t& count, int depth,
                 bool& titles, ElementPrinter printer);
bool detectCdrHeaders(RunContext* context, const uint8_t* input, int32_t inputLength,
                      CdrProbe& probe);
void skipCdrHeader(RunContext* context, const uint8_t*& cursor, int32_t& count, int32_t length,
                   const char* word);
int32_t skipPadding(RunContext* context, const uint8_t*& cursor, int32_t& count);
// Whether the two octets at `octets` are an end-of-contents; reports code 37
// for a tag of 00 with a second octet that isn't 0.
bool endOfContentsFollows(RunContext* context, const uint8_t* octets);
// Octets as upper-case hexadecimal behind `indent` blanks, then `suffix`.
int dumpOctets(RunContext* context, const uint8_t* octets, int32_t count, int indent,
               const char* suffix);
// The note for contents nested deeper than the walkers go.
void printTooDeep(RunContext* context, int depth);
