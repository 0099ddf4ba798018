// The driver's messages and the usage text.
#include <cstdint>

#include "app/options.h"
#include "app/signal.h"
#include "runtime/output.h"

namespace {

struct DriverRow {
    const char* text;
    bool withUsage;  // a fault of the input name: the usage text follows
};

// Indexed by DriverMessage.
constexpr DriverRow kDriverMessages[] = {
    {nullptr, false},
    {"Internal error #1.", false},
    {"Internal error #2.", false},
    {"Internal error #3.", false},
    {"Missing mandatory input file name.", true},
    {"Input file name is missing.", true},
    {"Output file name is missing.", true},
    {"Unidentified input parameter, %s.", true},
    {"Too many input file names.", true},
    {"Error reading, stdin.", false},
    {"Too many output file names.", false},
    {"Error opening output file, %s.", false},
    {"Invalid offset into input file, %s.", false},
    {"Invalid number of bytes to be read from input file, %s.", false},
    {"The -pad option requires a mandatory parameter <byte>.", false},
    {"Invalid pad byte, %s.", false},
};
constexpr int kLastIndex = kBadPadByte;
static_assert(sizeof kDriverMessages / sizeof kDriverMessages[0] == kLastIndex + 1);

const DriverRow* driverRow(int index)
{
    return index >= 1 && index <= kLastIndex ? &kDriverMessages[index] : nullptr;
}

}  // namespace

const char* driverMessage(int index)
{
    const DriverRow* row = driverRow(index);
    return row != nullptr ? row->text : nullptr;
}

void printUsage(RunContext* context)
{
    qorPrint(context,
             "Usage:  %s [-b|-t] <input>  [+off[,num]] [-dec|-hex|-syn]\n"
             "               [-out <output>]  [-notitles]  [-noaddition   ]\n"
             "               [-pad  <byte> ]  [-noshort ]  [-nocdrheaders ]\n"
             "               [-help ]%s",
             "qortlv", "");
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
void exitWithMessage(RunContext* context, int index, const char* text)
{
    const DriverRow* row = driverRow(index);
    if (row != nullptr) qorPrint(context, row->text, text != nullptr ? text : "");
    if (row != nullptr && row->withUsage) {
        qorPrint(context, "\n\n");
        printUsage(context);
    }
    jumpToTarget(context, index);
}
#pragma GCC diagnostic pop
