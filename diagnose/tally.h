// What a run found wrong, counted as it goes: misencodings by the message
// that reported them, values that failed to decode by the decoder's failure
// code, and the elements that a failed value kept out of the listing. The
// driver owns one tally a run; the context reaches it through its
// extensions. Nothing here is global.
#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/catalog.h"
#include "runtime/context.h"
#include "runtime/extensions.h"

struct RunContext;

// The exit status of -diagnose and -check when anything was found.
constexpr int kDiagnosisFound = 83;

struct FailureCount {
    char key[16];     // the decoder's message code ("D0064S"), or a word of our own
    int32_t result;   // the decoder's result code; -1 for failures of our own
    uint64_t count;
};

struct DiagnoseTally {
    static constexpr int kFailureKinds = 32;  // the last one gathers any further kind

    uint64_t records = 0;
    uint64_t elements = 0;
    uint64_t reported[TOOL_CATALOG_SIZE] = {};  // misencodings by tool code
    uint64_t misencodings = 0;
    uint64_t failedValues = 0;
    uint64_t hiddenElements = 0;  // behind failed values whose level ended there
    int failureKinds = 0;
    FailureCount failures[kFailureKinds] = {};
    // The reason of the last failed value, until the layout writes it
    // behind the element's line.
    static constexpr size_t kNoteSize = 600;
    char note[kNoteSize] = {};
    bool notePending = false;

    // A failed value of this kind.
    void countFailure(const char* key, int32_t result);
    bool anything() const { return misencodings != 0 || failedValues != 0; }
};

// The codes of the tool catalog that report a fault of the encoding (the
// others are faults of the input file, the output or the program).
constexpr bool isMisencoding(int code)
{
    return code == kPrematureEnd || code == kBadHugeInteger || code == kLengthOverrun || code == kMissingEoc ||
           code == kEocNonZero || code == kHeaderOverrun || code == kTagZero;
}

// The run's tally, or null when the run keeps none (a context without
// extensions, as in unit tests).
inline DiagnoseTally* runTally(const RunContext* context)
{
    return context->extensions != nullptr ? context->extensions->tally : nullptr;
}

// Called by the error signal for every report that the message hook heard.
void countReport(RunContext* context, int code);
