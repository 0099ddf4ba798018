// The command line: options, abbreviations, usage and driver messages.
#pragma once

#include <cstddef>
#include <cstdint>

#include "app/messages.h"

struct RunContext;
struct DriverState;

// Outcome of the option loop.
enum class OptionsOutcome { Run, Finished };

// Goes through the arguments from the second on; fills `state` and the
// option bits of toolFlags. Finished: usage or help was printed.
OptionsOutcome parseArguments(RunContext* context, DriverState& state, int argc, char** argv);

// Prints the driver message of `index` (a DriverMessage, with `text` for its
// %s), the usage text behind the faults of the input name, and ends the run
// with `index` as its value.
[[noreturn]] void exitWithMessage(RunContext* context, int index, const char* text);

// Whether the arguments choose the -json layout for a listing: its first
// layout option is -json, and neither -help nor -zfixencoding is asked
// for. Read before the banner, which a JSON run doesn't print.
bool asksForJsonLayout(int argc, char** argv);

void printUsage(RunContext* context);
// The help text, then the Extensions section.
void printHelp(RunContext* context);

// Reads exactly `count` characters as a decimal number; a character that is
// not a digit ends the run with the driver message `errorIndex`.
uint32_t parseDecimal(const char* text, size_t count, RunContext* context, int errorIndex);

// The exit status of a bad argument to -threads or -records.
constexpr int kListingArgumentStatus = 86;

// A decimal number of any length in 64 bits, UINT64_MAX when larger; the
// characters are digits.
uint64_t wideDecimal(const char* text, size_t count);
// A whole argument of 1 to 18 digits.
bool parseCount(const char* text, uint64_t& value);

// -records: n, n-m or n- (to the last record); first from 1, last 0 for no end.
struct RecordRange {
    long first = 1;
    long last = 0;
};
bool parseRecordRange(const char* text, RecordRange& range);

// The driver message of an index from 1 to 15.
const char* driverMessage(int index);
