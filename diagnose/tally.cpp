#include "diagnose/tally.h"

#include "runtime/context.h"
#include "runtime/extensions.h"

void countReport(RunContext* context, int code)
{
    DiagnoseTally* tally = runTally(context);
    if (tally == nullptr || !isMisencoding(code)) return;
    ++tally->misencodings;
    ++tally->reported[code];
}
