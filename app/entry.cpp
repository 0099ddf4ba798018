#include "app/entry.h"

#include <cstdio>
#include <cstring>
#include <ctime>

#include "app/driver.h"
#include "app/options.h"
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

// Under -json standard output carries the JSON lines alone; every other text
// of the run (a message, a note) goes to standard error, which the run ends
// with a line end if its last text had none (the listing's closing line ends
// aren't printed).
bool gErrorLineOpen = false;

int printToStandardError(RunContext*, const char* format, va_list args)
{
    char first[256];
    va_list again;
    va_copy(again, args);
    const int count = std::vsnprintf(first, sizeof first, format, args);
    if (count > 0 && static_cast<size_t>(count) < sizeof first) {
        std::fwrite(first, 1, static_cast<size_t>(count), stderr);
        gErrorLineOpen = first[count - 1] != '\n';
    } else if (count > 0) {
        std::vfprintf(stderr, format, again);
        gErrorLineOpen = true;
    }
    va_end(again);
    return count;
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
    const bool json = asksForJsonLayout(argc, argv);
    if (json) {
        context.toolFlags |= TLV_JSON_LAYOUT;
        context.printOverride = printToStandardError;
    } else {
        qorPrint(&context, "QOR Marvane TLV Print Utility  Version %s\n", kVersion);
        qorPrint(&context, "Copyright (C) QOR Marvane 1995-%d. All rights reserved.\n\n", year);
    }
    setErrorHook(&context, printToolError);
    context.toolFlags |= TLV_TOOL_RUN;
    int result = runDriverOn(&context, argc, argv, input);
    context.toolFlags &= ~TLV_TOOL_RUN;
    qorStopContext(&context);
    if (!json) qorPrint(&context, "\n");
    if (json && gErrorLineOpen) std::fputc('\n', stderr);
    gErrorLineOpen = false;
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
