#include "app/entry.h"

#include <cstdio>
#include <ctime>

#include "app/driver.h"
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

}  // namespace

int runEntry(int argc, char** argv, OutStream* console)
{
    const int year = currentYearUtc();
    RunContext context;
    int started = qorStartContext(&context, builtinControlTable());
    if (started != 0) {
        std::printf("Initialization failed with error %d.\n", started);
        return started;
    }
    if (console != nullptr) context.outStream = console;
    qorPrint(&context, "QOR Marvane TLV Print Utility  Version 10.3\n");
    qorPrint(&context, "Copyright (C) QOR Marvane 1995-%d. All rights reserved.\n\n", year);
    setErrorHook(&context, printToolError);
    context.toolFlags |= TLV_TOOL_RUN;
    int result = runDriver(&context, argc, argv);
    context.toolFlags &= ~TLV_TOOL_RUN;
    qorStopContext(&context);
    qorPrint(&context, "\n");
    qorFlush(&context);
    return result;
}
