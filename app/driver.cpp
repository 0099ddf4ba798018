#include "app/driver.h"

#include <cstdint>
#include <cstring>

#include "app/input.h"
#include "app/options.h"
#include "app/signal.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tlv/hex_layout.h"
#include "tlv/repair.h"

// The driver signals a failed load with the load's own result.
static_assert(LOAD_NO_MEMORY == kNoMemory && LOAD_READ_FAILED == kReadFailed && LOAD_BAD_OFFSET == kBadOffset &&
              LOAD_SHORT_TEXT == kBadCount && LOAD_NOT_HEXADECIMAL == kNonHexadecimal);
// A code and a driver message of one number end a run alike.
static_assert(static_cast<int>(kInternalError1) == static_cast<int>(kNoMemory));

namespace {

// Opens and loads the input; returns the load's result code.
int openAndLoad(RunContext* context, DriverState& state)
{
    std::FILE* stream = state.presetInput;
    if (stream == nullptr) {
        state.inputFile = std::fopen(state.inputName, state.binaryInput ? "rb" : "rt");
        stream = state.inputFile;
    }
    if (stream == nullptr) return kCannotOpen;
    state.buffer.length = 0;  // no spare octets
    return loadInput(context, stream, state.offset, state.count, state.buffer);
}

// Reports a failed load; all but a non-hexadecimal text end the run.
void reportLoadFailure(RunContext* context, const DriverState& state)
{
    int result = state.result;
    if (result == kNonHexadecimal && state.buffer.length >= 1) {
        // the octets read so far are printed into the output file too
    } else if (state.outputOpened) {
        closeOutputFile(context);  // the message belongs on the console
    }
    if (result == kNoMemory) exitWithMessage(context, kInternalError1, nullptr);
    intptr_t text = 0;
    long number = 0;
    if (result == kCannotOpen || result == kReadFailed || result == kNonHexadecimal) {
        text = reinterpret_cast<intptr_t>(state.inputName);
    }
    if (result == kBadOffset) number = static_cast<long>(state.offset);
    if (result == kBadCount) number = static_cast<long>(state.count);
    signalError(context, result, text, number);
}

void loadAndPrint(RunContext* context, DriverState& state)
{
    state.result = openAndLoad(context, state);
    if (state.result != 0) reportLoadFailure(context, state);
    LayoutPrinter printer = state.printer != nullptr ? state.printer : printHexLayout;
    printer(context, state.buffer);
}

// -zfixencoding: the repair replaces the listing; layout options don't count.
void repairAndReport(RunContext* context, DriverState& state)
{
    if ((context->toolFlags & TLV_TEXT_INPUT) != 0) {
        qorPrint(context, "The '-text' is not supported with '-zfixencoding'.");
        return;
    }
    state.result = repairEncoding(context, state.inputName, state.repairName);
    printRepairOutcome(context, state.result, state.inputName, state.repairName);
}

// What every end of a run releases.
void releaseRun(RunContext* context, DriverState& state)
{
    releaseInput(context, state.buffer);
    if (state.outputName != nullptr && state.outputOpened) closeOutputFile(context);
    if (state.inputFile != nullptr) {
        std::fclose(state.inputFile);
        state.inputFile = nullptr;
    }
}

}  // namespace

int runDriver(RunContext* context, int argc, char** argv)
{
    return runDriverOn(context, argc, argv, nullptr);
}

int runDriverOn(RunContext* context, int argc, char** argv, std::FILE* input)
{
    const uint32_t savedFlags = context->toolFlags;
    DriverState state{};
    state.binaryInput = true;
    state.presetInput = input;
    context->jumpTarget = true;
    try {
        context->toolFlags |= TLV_TRACE_FIXUPS;
        context->padByteSpec = 0;
        if (parseArguments(context, state, argc, argv) == OptionsOutcome::Run) {
            if (state.inputName == nullptr) exitWithMessage(context, kNoInputName, nullptr);
            if (state.outputName != nullptr) {
                if (openOutputFile(context, state.outputName) != 0) {
                    exitWithMessage(context, kOutputOpenFailed, state.outputName);
                }
                state.outputOpened = true;
            }
            if ((context->toolFlags & TLV_FIX_ENCODING) != 0) {
                repairAndReport(context, state);
            } else {
                loadAndPrint(context, state);
            }
        }
        qorPrint(context, "\n\n");
        releaseRun(context, state);
    } catch (const ToolJump& jump) {
        // A later jump goes straight to the return: nothing catches it here.
        context->jumpTarget = false;
        releaseRun(context, state);
        // A failure of the program itself is told as "Internal error #<code>.".
        if (toolRow(jump.value).internalError) qorPrint(context, "\n%s", driverMessage(jump.value));
        qorPrint(context, "\n\n");
        context->toolFlags = savedFlags;
        qorFlush(context);
        return jump.value;
    }
    context->toolFlags = savedFlags;
    context->jumpTarget = false;
    qorFlush(context);
    return state.result;
}
