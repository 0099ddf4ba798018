#include "app/entry.h"

#include <cstdio>
#include <cstring>
#include <ctime>

#include "app/driver.h"
#include "app/signal.h"
#include "runtime/context.h"
#include "runtime/output.h"

namespace {

// The version of the banner and of --version.
constexpr char kVersion[] = "10.3";

// --version, anywhere on the line, answers alone: no banner, no run. No
// option takes an argument that begins with "-", so it is never a name.
bool asksForVersion(int argc, char** argv)
{
    for (int at = 1; at < argc; ++at) {
        if (std::strcmp(argv[at], "--version") == 0) return true;
    }
    return false;
}

int currentYearUtc()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    return parts.tm_year + 1900;
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
    if (asksForVersion(argc, argv)) {
        qorPrint(&context, "qortlv %s\n", kVersion);
        qorStopContext(&context);
        qorFlush(&context);
        return 0;
    }
    qorPrint(&context, "QOR Marvane TLV Print Utility  Version %s\n", kVersion);
    qorPrint(&context, "Copyright (C) QOR Marvane 1995-%d. All rights reserved.\n\n", year);
    setErrorHook(&context, printToolError);
    context.toolFlags |= TLV_TOOL_RUN;
    int result = runDriverOn(&context, argc, argv, input);
    context.toolFlags &= ~TLV_TOOL_RUN;
    qorStopContext(&context);
    qorPrint(&context, "\n");
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
