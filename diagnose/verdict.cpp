#include "diagnose/verdict.h"

#include <cstdio>
#include <cstring>

#include "diagnose/tally.h"
#include "runtime/catalog.h"
#include "runtime/output.h"
#include "runtime/runtime_catalog.h"

namespace {

// The wording of a decoder message code ("D0064S"): the first row of the
// runtime catalog with that code, without the blank or ": " that stands in
// front of an argument.
void printWording(RunContext* context, const char* key)
{
    if (key[0] != 'D' || std::strlen(key) != 6) return;
    for (int32_t entry = 1; entry < RT_ENTRY_COUNT; ++entry) {
        const char* text = runtimeMessage(entry).text;
        if (text == nullptr || std::strncmp(text, key + 1, 5) != 0 || text[5] != ':') continue;
        size_t length = std::strlen(text);
        while (length > 0 && (text[length - 1] == ' ' || text[length - 1] == ':')) --length;
        qorWrite(context, text + 5, length - 5);
        return;
    }
}

}  // namespace

void DiagnoseTally::countFailure(const char* key, int32_t result)
{
    for (int i = 0; i < failureKinds; ++i) {
        if (failures[i].result == result && std::strcmp(failures[i].key, key) == 0) {
            ++failures[i].count;
            return;
        }
    }
    if (failureKinds == kFailureKinds) {
        ++failures[kFailureKinds - 1].count;  // the last kind gathers the rest
        return;
    }
    FailureCount& row = failures[failureKinds++];
    std::snprintf(row.key, sizeof row.key, "%s", failureKinds == kFailureKinds ? "other" : key);
    row.result = result;
    row.count = 1;
}

void printDiagnosis(RunContext* context, const DiagnoseTally& tally)
{
    qorPrint(context, "\n\nDiagnosis: records %llu, elements %llu, misencodings %llu, values not decoded %llu.",
             static_cast<unsigned long long>(tally.records), static_cast<unsigned long long>(tally.elements),
             static_cast<unsigned long long>(tally.misencodings),
             static_cast<unsigned long long>(tally.failedValues));
    for (int code = 0; code < TOOL_CATALOG_SIZE; ++code) {
        if (tally.reported[code] == 0) continue;
        const char* text = toolMessage(code, false);
        qorPrint(context, "\n  %llu  %s", static_cast<unsigned long long>(tally.reported[code]),
                 text != nullptr ? text : "");
    }
    for (int i = 0; i < tally.failureKinds; ++i) {
        const FailureCount& row = tally.failures[i];
        qorPrint(context, "\n  %llu  %s", static_cast<unsigned long long>(row.count), row.key);
        printWording(context, row.key);
        if (row.result > 0) qorPrint(context, " (result %d)", row.result);
    }
}

int diagnosisStatus(const DiagnoseTally& tally, bool diagnosing, int status)
{
    if (!diagnosing || !tally.anything()) return status;
    return status == 0 || status == kPrematureEnd ? kDiagnosisFound : status;
}

void printFindingsLine(const DiagnoseTally& tally)
{
    if (tally.misencodings == 0 && tally.failedValues == 0) return;
    std::fprintf(stderr,
                 "qortlv: misencodings reported: %llu; values not decoded: %llu, elements not shown behind "
                 "them: %llu; -diagnose tells why and shows them.\n",
                 static_cast<unsigned long long>(tally.misencodings),
                 static_cast<unsigned long long>(tally.failedValues),
                 static_cast<unsigned long long>(tally.hiddenElements));
}
