// The driver's messages and the usage text.
#include <cstdint>

#include "app/options.h"
#include "app/signal.h"
#include "runtime/output.h"

namespace {

constexpr const char* kDriverMessages[] = {
    nullptr,
    "Internal error #1.",
    "Internal error #2.",
    "Internal error #3.",
    "Missing mandatory input file name.",
    "Input file name is missing.",
    "Output file name is missing.",
    "Unidentified input parameter, %s.",
    "Too many input file names.",
    "Error reading, stdin.",
    "Too many output file names.",
    "Error opening output file, %s.",
    "Invalid offset into input file, %s.",
    "Invalid number of bytes to be read from input file, %s.",
    "The -pad option requires a mandatory parameter <byte>.",
    "Invalid pad byte, %s.",
};
constexpr int kLastIndex = 15;

}  // namespace

const char* driverMessage(int index)
{
    return index >= 1 && index <= kLastIndex ? kDriverMessages[index] : nullptr;
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
    const char* message = driverMessage(index);
    if (message != nullptr) {
        if (text != nullptr) {
            qorPrint(context, message, text);
        } else {
            qorPrint(context, message, "");
        }
    }
    if (index >= 4 && index <= 8) {
        qorPrint(context, "\n\n");
        printUsage(context);
    }
    jumpToTarget(context, index);
}
#pragma GCC diagnostic pop
