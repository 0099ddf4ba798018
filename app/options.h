// The command line: options, abbreviations, usage and driver messages.
#pragma once

#include <cstddef>
#include <cstdint>

#include "app/messages.h"
#include "app/number_arguments.h"

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

// The driver message of an index from 1 to 15.
const char* driverMessage(int index);
