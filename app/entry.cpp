#include "app/entry.h"

#include <cstdio>
#include <ctime>

#include "app/driver.h"
#include "app/options.h"
#include "app/signal.h"
#include "runtime/context.h"
#include "runtime/output.h"

namespace {

int currentYearUtc()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    return parts.tm_year + 1900;
}

// Under -json standard output carries the JSON lines alone; every other text
// of the run (a message, a note) goes to standard error.
int printToStandardError(RunContext*, const char* format, va_list args)
{
    return std::vfprintf(stderr, format, args);
}

int runEntryOn(int argc, char** argv, std::FILE* input, OutStream* console)
{
    const int year = currentYearUtc();
    RunContext context;
    int started = qorStartContext(&context, builtinControlTable());
    if (started != 0) {
        std::printf("Initialization failed with error %d.\n", started);
        return started;
    }
    if (console != nullptr) context.outStream = console;
    const bool json = asksForJsonLayout(argc, argv);
    if (json) {
        context.toolFlags |= TLV_JSON_LAYOUT;
        context.printOverride = printToStandardError;
    } else {
        qorPrint(&context, "QOR Marvane TLV Print Utility  Version 10.3\n");
        qorPrint(&context, "Copyright (C) QOR Marvane 1995-%d. All rights reserved.\n\n", year);
    }
    setErrorHook(&context, printToolError);
    context.toolFlags |= TLV_TOOL_RUN;
    int result = runDriverOn(&context, argc, argv, input);
    context.toolFlags &= ~TLV_TOOL_RUN;
    qorStopContext(&context);
    if (!json) qorPrint(&context, "\n");
    qorFlush(&context);
    return result;
}

}  // namespace

int runEntry(int argc, char** argv, OutStream* console)
{
    return runEntryOn(argc, argv, nullptr, console);
}

int runEntryOnBuffer(int argc, char** argv, const uint8_t* data, size_t size, OutStream* console)
{
    // A stream over the octets; an empty buffer is an empty file.
    std::FILE* input = size > 0 ? fmemopen(const_cast<uint8_t*>(data), size, "rb") : std::tmpfile();
    if (input == nullptr) return kNoMemory;  // no stream over the octets
    int result = runEntryOn(argc, argv, input, console);
    std::fclose(input);
    return result;
}
