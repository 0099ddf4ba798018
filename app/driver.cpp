#include "app/driver.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "app/input.h"
#include "app/run_extensions.h"
#include "app/options.h"
#include "app/signal.h"
#include "app/text_input.h"
#include "diagnose/check.h"
#include "diagnose/verdict.h"
#include "json/json_layout.h"
#include "listing/progress.h"
#include "listing/stretch_listing.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/extensions.h"
#include "runtime/services.h"
#include "tagmap/bundled_map.h"
#include "tlv/decomposed_layout.h"
#include "tlv/hex_layout.h"
#include "tlv/syntax_layout.h"
#include "tlv/repair.h"

// The driver signals a failed load with the load's own result.
static_assert(LOAD_NO_MEMORY == kNoMemory && LOAD_READ_FAILED == kReadFailed && LOAD_BAD_OFFSET == kBadOffset &&
              LOAD_SHORT_TEXT == kBadCount && LOAD_NOT_HEXADECIMAL == kNonHexadecimal);
// A code and a driver message of one number end a run alike.
static_assert(static_cast<int>(kInternalError1) == static_cast<int>(kNoMemory));

namespace {

std::FILE* openInput(DriverState& state)
{
    if (state.presetInput != nullptr) return state.presetInput;
    state.inputFile = std::fopen(state.inputName, state.binaryInput ? "rb" : "rt");
    return state.inputFile;
}

// Opens and loads the input; returns the load's result code.
int openAndLoad(RunContext* context, DriverState& state)
{
    std::FILE* stream = openInput(state);
    if (stream == nullptr) return kCannotOpen;
    if (state.form == InputForm::Pem || state.form == InputForm::Base64) {
        return loadDecodedInput(context, stream, state.form, 0, state.decoded);
    }
    state.buffer.length = 0;  // no spare octets
    state.range.offset = state.offset;
    state.range.count = state.count;
    return loadInputRange(context, stream, state.range, state.buffer);
}

// Closes the listing file; a write that failed on the way (a full disk) is
// reported on the console. False then.
bool closeListingFile(RunContext* context, DriverState& state)
{
    if (!state.outputOpened) return true;
    state.outputOpened = false;
    if (closeOutputFile(context) == 0) return true;
    qorPrint(context, "Error writing to the output file: '%s'.", state.outputName);
    return false;
}

// The same file by device and inode, whatever the paths. A terminal read
// and written at once (/dev/stdin and /dev/stdout) loses nothing.
bool sameFile(const char* first, const char* second)
{
    struct stat one {};
    struct stat other {};
    return stat(first, &one) == 0 && stat(second, &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino && !S_ISCHR(one.st_mode);
}

// An output that names the input would empty it before it is read: refused
// before anything is opened for writing.
void refuseOutputOverInput(RunContext* context, const DriverState& state)
{
    if (state.presetInput != nullptr) return;
    for (const char* name : {state.outputName, state.repairName}) {
        if (name != nullptr && sameFile(state.inputName, name)) exitWithMessage(context, kOutputOpenFailed, name);
    }
}

// -tags: the map is read before any output is opened; a map that can't be
// read or is malformed ends the run with its own status, the message on
// standard error.
void loadRunTagMap(RunContext* context, DriverState& state)
{
    if (state.tagMapName == nullptr) return;
    std::string error;
    if (!loadTagMap(state.tagMapName, state.tagMap, error)) {
        std::fprintf(stderr, "qortlv: %s\n", error.c_str());
        jumpToTarget(context, kTagMapStatus);
    }
    state.extensions->settings().tagMap = &state.tagMap;
}

// Reports a failed load; 45 to 48 end the run, 49 comes back.
void reportLoadFailure(RunContext* context, DriverState& state)
{
    int result = state.result;
    if (result == kNonHexadecimal && state.buffer.length >= 1) {
        // the octets read so far are printed into the output file too
    } else if (!closeListingFile(context, state)) {  // the message belongs on the console
        jumpToTarget(context, kWriteFailed);
    }
    if (result == kNoMemory) exitWithMessage(context, kInternalError1, nullptr);
    if (result == LOAD_TEXT_FORM_FAULT) {
        printTextFormFault(context, state.form, state.inputName, state.decoded.fault);
        jumpToTarget(context, result);
    }
    intptr_t text = 0;
    long number = 0;
    if (result == kCannotOpen || result == kReadFailed || result == kNonHexadecimal) {
        text = reinterpret_cast<intptr_t>(state.inputName);
    }
    if (result == kBadOffset) {
        number = state.range.wide ? static_cast<long>(state.range.wideOffset) : static_cast<long>(state.offset);
    }
    if (result == kBadCount) number = static_cast<long>(state.count);
    signalError(context, result, text, number);
}

// Each block of a PEM or base64 input is listed as a binary file of its
// octets would be; PEM blocks behind a line with their number and label.
void printBlocks(RunContext* context, DriverState& state, LayoutPrinter printer)
{
    int number = 0;
    for (const PemBlock& block : state.decoded.blocks) {
        ++number;
        InputBuffer view = {0, nullptr};
        state.result = selectBlockOctets(state.decoded, block, state.offset, state.count, view);
        view.origin = state.offset;
        if (state.form == InputForm::Pem) printBlockLabel(context, block, number);
        if (state.result != 0) reportLoadFailure(context, state);
        printer(context, view);
    }
}

// The two line ends behind a run's last text; a JSON run writes whole lines
// and nothing else.
void printRunEnd(RunContext* context)
{
    if ((context->toolFlags & TLV_JSON_LAYOUT) == 0) qorPrint(context, "\n\n");
}

// The layout of a printer that can list in stretches.
bool stretchLayout(LayoutPrinter printer, ListingLayout& layout)
{
    if (printer == printHexLayout) layout = ListingLayout::Hexadecimal;
    else if (printer == printSyntaxLayout) layout = ListingLayout::Syntax;
    else if (printer == printDecomposedLayout) layout = ListingLayout::Decomposed;
    else if (printer == printJsonLayout) layout = ListingLayout::Json;
    else return false;
    return true;
}

int onlineProcessors()
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count < 1 ? 1 : count > 256 ? 256 : static_cast<int>(count);
}

// Larger inputs are listed in stretches even on one thread, so that the
// pages behind the listing can be let go.
constexpr int64_t kWholeAtMost = 256 << 20;

// Lists the input in stretches of records where that is wanted: on several
// threads, from a chosen record, or an input too large for one walk. False
// when the listing is left to the printer.
bool listsInStretches(RunContext* context, DriverState& state, LayoutPrinter printer)
{
    ListingPlan plan;
    if (!stretchLayout(printer, plan.layout)) return false;
    const int64_t size = state.buffer.size != 0 ? state.buffer.size : state.buffer.length;
    // -diagnose counts the kinds of failure as the walk meets them.
    plan.threads = (context->toolFlags & TLV_DIAGNOSE) != 0 ? 1 : state.threads != 0 ? state.threads : onlineProcessors();
    plan.firstRecord = state.records.first;
    plan.lastRecord = state.records.last;
    const bool selects = plan.firstRecord != 1 || plan.lastRecord != 0;
    if (plan.threads == 1 && !selects && state.buffer.size == 0 && size <= kWholeAtMost) return false;
    plan.progress = progressWanted(state.outputName != nullptr);
    ListingInput input;
    input.data = state.buffer.data;
    input.size = size;
    input.origin = state.buffer.origin;
    input.mapBase = state.buffer.mapBase;
    input.mapLength = state.buffer.mapLength;
    const int status = listInStretches(context, input, plan);
    if (status != 0) state.result = status;
    return true;
}

void loadAndPrint(RunContext* context, DriverState& state)
{
    state.result = openAndLoad(context, state);
    if (state.result != 0) reportLoadFailure(context, state);
    LayoutPrinter printer = state.printer != nullptr ? state.printer : printHexLayout;
    if (state.extensions->settings().check) printer = checkLayout;
    if (state.form == InputForm::Pem || state.form == InputForm::Base64) {
        printBlocks(context, state, printer);
        return;
    }
    if (state.form == InputForm::Binary) hintAtTextForm(state.buffer);
    // +offset counts the digits of a text input, two an octet.
    state.buffer.origin = state.form == InputForm::Text ? state.offset / 2
                          : state.range.wide             ? static_cast<int64_t>(state.range.wideOffset)
                                                         : state.offset;
    if (listsInStretches(context, state, printer)) return;
    printer(context, state.buffer);
}

// -zfixencoding: the repair replaces the listing; layout options don't count.
void repairAndReport(RunContext* context, DriverState& state)
{
    context->toolFlags &= ~TLV_DIAGNOSE;  // the repair lists nothing to diagnose
    state.extensions->settings().diagnose = false;
    state.extensions->settings().check = false;
    if ((context->toolFlags & TLV_TEXT_INPUT) != 0) {
        qorPrint(context, "The '-text' is not supported with '-zfixencoding'.");
        return;
    }
    if (state.form == InputForm::Pem || state.form == InputForm::Base64) {
        // A text that doesn't decode is reported as a listing reports it;
        // the repair then decodes it again, into a block of its own. A pipe
        // can't be read twice: the repair alone reads it, and takes a text
        // that doesn't decode for an input it can't read.
        struct stat status {};
        if (state.presetInput == nullptr && stat(state.inputName, &status) == 0 && S_ISREG(status.st_mode)) {
            state.result = openAndLoad(context, state);
            if (state.result != 0) reportLoadFailure(context, state);
            releaseDecodedInput(context, state.decoded);
        }
        context->toolFlags |= state.form == InputForm::Pem ? TLV_PEM_INPUT : TLV_BASE64_INPUT;
    }
    state.result = repairEncoding(context, state.inputName, state.repairName);
    printRepairOutcome(context, state.result, state.inputName, state.repairName);
}

// What every end of a run releases. False when the listing file lost
// octets.
bool releaseRun(RunContext* context, DriverState& state)
{
    releaseInput(context, state.buffer);
    releaseDecodedInput(context, state.decoded);
    const bool written = closeListingFile(context, state);
    if (state.inputFile != nullptr) {
        std::fclose(state.inputFile);
        state.inputFile = nullptr;
    }
    return written;
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
    RunExtensionsScope extensions(context);
    state.extensions = &extensions;
    state.binaryInput = true;
    state.presetInput = input;
    // Findings are counted in every run, so the context points at the
    // settings from the start.
    RunExtensions& settings = extensions.settings();
    settings.tally = &state.tally;
    context->jumpTarget = true;
    try {
        context->toolFlags |= TLV_TRACE_FIXUPS;
        context->padByteSpec = 0;
        if (parseArguments(context, state, argc, argv) == OptionsOutcome::Run) {
            if (state.inputName == nullptr) exitWithMessage(context, kNoInputName, nullptr);
            refuseOutputOverInput(context, state);
            loadRunTagMap(context, state);
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
        if (state.extensions->settings().diagnose) printDiagnosis(context, state.tally);
        state.result = diagnosisStatus(state.tally, state.extensions->settings().diagnose, state.result);
        printRunEnd(context);
        if (!releaseRun(context, state)) {
            state.result = kWriteFailed;
            printRunEnd(context);
        }
    } catch (const ToolJump& jump) {
        // A later jump goes straight to the return: nothing catches it here.
        context->jumpTarget = false;
        // A premature end is a finding of -diagnose like any other.
        if (settings.diagnose && jump.value == kPrematureEnd) printDiagnosis(context, state.tally);
        int value = releaseRun(context, state) ? jump.value : kWriteFailed;
        value = diagnosisStatus(state.tally, settings.diagnose, value);
        // A failure of the program itself is told as "Internal error #<code>.".
        if (toolRow(value).internalError) qorPrint(context, "\n%s", driverMessage(value));
        printRunEnd(context);
        context->toolFlags = savedFlags;
        qorFlush(context);
        if (!settings.diagnose) printFindingsLine(state.tally);
        return value;
    }
    context->toolFlags = savedFlags;
    context->jumpTarget = false;
    qorFlush(context);
    if (!settings.diagnose) printFindingsLine(state.tally);
    return state.result;
}
