// The option loop.
#include "app/options.h"

#include "app/driver.h"
#include "runtime/output.h"

OptionsOutcome parseArguments(RunContext* context, DriverState& state, int argc, char** argv)
{
    if (argc < 2) {
        printUsage(context);
        return OptionsOutcome::Finished;
    }
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (argument[0] != '-' && argument[0] != '+') {
            if (state.inputName != nullptr) exitWithMessage(context, 8, nullptr);
            state.inputName = argument;
            continue;
        }
        exitWithMessage(context, 7, argument);
    }
    return OptionsOutcome::Run;
}
