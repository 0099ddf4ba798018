// The option loop: every argument is an input name, an option (abbreviated
// down to its minimum length, A-Z folded), or +offset,num.
#include "app/options.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/driver.h"
#include "json/json_layout.h"
#include "app/run_extensions.h"
#include "app/signal.h"
#include "oids/oid_file.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "tlv/decomposed_layout.h"
#include "tlv/hex_layout.h"
#include "tlv/syntax_layout.h"

namespace {

enum OptionNumber : int16_t {
    OPT_NONE = 0,
    OPT_HEXADECIMAL = 1,
    OPT_DECOMPOSED = 2,
    OPT_SYNTAX = 3,
    OPT_BINARY = 4,
    OPT_TEXT = 5,
    OPT_NAME_FROM_STDIN = 6,
    OPT_OUTPUT = 7,
    OPT_RANGE = 8,
    OPT_NO_SHORT = 9,
    OPT_NO_ADDITION = 10,
    OPT_NO_TITLES = 11,
    OPT_HELP = 12,
    OPT_FIX_ENCODING = 14,
    OPT_NO_TRACE = 15,
    OPT_PAD = 16,
    OPT_NO_CDR_HEADERS = 17,
    OPT_PEM = 18,
    OPT_BASE64 = 19,
    OPT_JSON = 20,
    OPT_OIDS = 21,
    OPT_OID_FILE = 22,
    OPT_DIG = 23,
    OPT_UTF8 = 24,
    OPT_DIAGNOSE = 25,
    OPT_CHECK = 26,
    OPT_TAGS = 27,
    OPT_THREADS = 28,
    OPT_RECORDS = 29,
};

struct OptionRow {
    char name[16];
    int16_t number;
    int16_t minimumLength;  // the shortest abbreviation, "-" included
};

// Empty rows stand at both ends; they never match.
constexpr OptionRow kOptions[] = {
    {"", OPT_NONE, 0},
    {"-hexadecimal", OPT_HEXADECIMAL, 2},
    {"-decomposed", OPT_DECOMPOSED, 2},
    {"-syntax", OPT_SYNTAX, 2},
    {"-binary", OPT_BINARY, 2},
    {"-text", OPT_TEXT, 2},
    {"-", OPT_NAME_FROM_STDIN, 1},
    {"-output", OPT_OUTPUT, 2},
    {"+", OPT_RANGE, 1},
    {"-noshort", OPT_NO_SHORT, 4},
    {"-noaddition", OPT_NO_ADDITION, 4},
    {"-notitles", OPT_NO_TITLES, 4},
    {"-help", OPT_HELP, 5},
    {"-zfixencoding", OPT_FIX_ENCODING, 3},
    {"-znotrace", OPT_NO_TRACE, 3},
    {"-pad", OPT_PAD, 2},
    {"-nocdrheaders", OPT_NO_CDR_HEADERS, 4},
    // Extensions stand behind every row above: the first match wins, so no
    // abbreviation above changes its meaning ("-p" is -pad, "-b" -binary).
    // --help is whole or nothing; --version is answered before the loop.
    {"--help", OPT_HELP, 6},
    {"-pem", OPT_PEM, 3},
    {"-base64", OPT_BASE64, 3},
    {"-json", OPT_JSON, 2},
    // Whole names, or "-oidf": "-o" and "-ou.." stay -output, and "-d..",
    // "-di.." and "-u.." are left free.
    {"-oids", OPT_OIDS, 5},
    {"-oidfile", OPT_OID_FILE, 5},
    {"-dig", OPT_DIG, 4},
    {"-utf8", OPT_UTF8, 5},
    // "-d" and "-de" stay -decomposed; "-dia" leaves "-di" to no option.
    {"-diagnose", OPT_DIAGNOSE, 4},
    {"-check", OPT_CHECK, 3},
    {"-tags", OPT_TAGS, 3},  // "-t", "-te"... stay -text
    {"-threads", OPT_THREADS, 3},
    {"-records", OPT_RECORDS, 3},
    {"", OPT_NONE, 0},
};

constexpr LayoutPrinter kLayouts[] = {nullptr, printHexLayout, printDecomposedLayout, printSyntaxLayout};

// The first row whose name begins with the argument, A-Z folded, within the
// row's lengths.
int16_t lookUp(const char* argument)
{
    size_t length = std::strlen(argument);
    for (const OptionRow& row : kOptions) {
        size_t nameLength = std::strlen(row.name);
        if (row.number == OPT_NONE || length < static_cast<size_t>(row.minimumLength) || length > nameLength) continue;
        bool same = true;
        for (size_t i = 0; i < length && same; ++i) {
            char c = argument[i];
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
            same = c == row.name[i];
        }
        if (same) return row.number;
    }
    return OPT_NONE;
}

bool isLayout(int16_t number)
{
    return (number >= OPT_HEXADECIMAL && number <= OPT_SYNTAX) || number == OPT_JSON;
}

// Whether an option takes the next argument as its own (a name or a byte).
bool takesArgument(int16_t number)
{
    return number == OPT_BINARY || number == OPT_TEXT || number == OPT_PEM || number == OPT_BASE64 ||
           number == OPT_OUTPUT || number == OPT_FIX_ENCODING || number == OPT_PAD || number == OPT_THREADS ||
           number == OPT_RECORDS;
}

// The "-" option: the input's name is one line of standard input.
void readNameFromStdin(RunContext* context, DriverState& state)
{
    if (state.inputName != nullptr) exitWithMessage(context, kTooManyInputNames, nullptr);
    if (std::fgets(state.nameFromStdin, sizeof state.nameFromStdin, stdin) == nullptr) {
        exitWithMessage(context, kStdinReadFailed, nullptr);
    }
    size_t length = std::strlen(state.nameFromStdin);
    if (length > 0 && state.nameFromStdin[length - 1] == '\n') state.nameFromStdin[length - 1] = '\0';
    state.inputName = state.nameFromStdin;
}

// -binary and -text: the next argument is the input's name.
int takeInputName(RunContext* context, DriverState& state, int argc, char** argv, int at)
{
    if (state.inputName != nullptr) exitWithMessage(context, kTooManyInputNames, nullptr);
    if (at + 1 >= argc) exitWithMessage(context, kInputNameMissing, nullptr);
    const char* next = argv[at + 1];
    if (next[0] == '-' && next[1] != '\0') exitWithMessage(context, kInputNameMissing, nullptr);
    if (std::strcmp(next, "-") == 0) {
        readNameFromStdin(context, state);
    } else {
        state.inputName = next;
    }
    return at + 1;
}

// -output and -zfixencoding: the next argument is a file's name.
int takeFileName(RunContext* context, const char*& name, int argc, char** argv, int at)
{
    if (name != nullptr) exitWithMessage(context, kTooManyOutputNames, nullptr);
    if (at + 1 >= argc || argv[at + 1][0] == '-') exitWithMessage(context, kOutputNameMissing, nullptr);
    name = argv[at + 1];
    return at + 1;
}

// The pad byte, in the base its text shows: 0x.. hexadecimal, 0.. octal,
// else decimal, behind optional white space and a sign.
int takePadByte(RunContext* context, int argc, char** argv, int at)
{
    if (at + 1 >= argc || argv[at + 1][0] == '-') exitWithMessage(context, kPadByteMissing, nullptr);
    const char* text = argv[at + 1];
    char* end = nullptr;
    errno = 0;
    long value = std::strtol(text, &end, 0);
    if (*end != '\0' || errno != 0 || value > 255) exitWithMessage(context, kBadPadByte, text);
    context->padByteSpec = static_cast<uint32_t>(value) + 1;
    return at + 1;
}

// -oidfile: the next argument names the file, loaded at once.
int takeOidFile(RunContext* context, DriverState& state, int argc, char** argv, int at)
{
    if (at + 1 >= argc || argv[at + 1][0] == '-') {
        std::fputs("qortlv: -oidfile needs the name of a file of OID names.\n", stderr);
        jumpToTarget(context, kOidFileStatus);
    }
    state.extensions->loadOidFile(argv[at + 1]);
    return at + 1;
}

// -tags: the next argument names the tag map, a file or a bundled map.
int takeTagMapName(RunContext* context, DriverState& state, int argc, char** argv, int at)
{
    if (at + 1 >= argc || (argv[at + 1][0] == '-' && argv[at + 1][1] != '\0')) {
        std::fputs("qortlv: -tags needs a tag map: a file, or a bundled map's name (3gpp-ps).\n", stderr);
        jumpToTarget(context, kTagMapStatus);
    }
    state.tagMapName = argv[at + 1];
    return at + 1;
}

// -threads <n> and -records <n>[-<m>]: a bad or missing argument ends the
// run with its own status, the message on standard error.
[[noreturn]] void refuseArgument(RunContext* context, const char* message)
{
    std::fprintf(stderr, "qortlv: %s\n", message);
    jumpToTarget(context, kListingArgumentStatus);
}

int takeThreads(RunContext* context, DriverState& state, int argc, char** argv, int at)
{
    constexpr char kMessage[] = "-threads needs a number of threads from 1 to 256.";
    if (at + 1 >= argc) refuseArgument(context, kMessage);
    uint64_t threads = 0;
    if (!parseCount(argv[at + 1], threads) || threads < 1 || threads > 256) refuseArgument(context, kMessage);
    state.threads = static_cast<int>(threads);
    return at + 1;
}

int takeRecords(RunContext* context, DriverState& state, int argc, char** argv, int at)
{
    constexpr char kMessage[] =
        "-records needs the records to list: <n> (that one), <n>-<m> or <n>- (from n on), numbered from 1.";
    if (at + 1 >= argc || !parseRecordRange(argv[at + 1], state.records)) refuseArgument(context, kMessage);
    return at + 1;
}

// +offset,num
void takeRange(RunContext* context, DriverState& state, const char* argument)
{
    const char* range = argument + 1;
    if (*range == '\0') exitWithMessage(context, kBadOffsetText, argument);
    const char* comma = std::strchr(range, ',');
    if (comma != nullptr && comma[1] == '\0') exitWithMessage(context, kBadCountText, argument);
    if (comma == range) exitWithMessage(context, kBadOffsetText, range);
    size_t digits = comma != nullptr ? static_cast<size_t>(comma - range) : std::strlen(range);
    state.offset = parseDecimal(range, digits, context, kBadOffsetText);
    state.range.wideOffset = wideDecimal(range, digits);
    if (comma != nullptr) {
        state.count = parseDecimal(comma + 1, std::strlen(comma + 1), context, kBadCountText);
        state.range.wideCount = wideDecimal(comma + 1, std::strlen(comma + 1));
    }
    state.range.offset = state.offset;
    state.range.count = state.count;
}

}  // namespace

uint32_t parseDecimal(const char* text, size_t count, RunContext* context, int errorIndex)
{
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9') exitWithMessage(context, errorIndex, text);
        value = value * 10 + static_cast<uint32_t>(text[i] - '0');  // no overflow check, as ever
        if (value == 0xFFFFFFFF) break;
    }
    return value;
}

bool asksForJsonLayout(int argc, char** argv)
{
    int16_t layout = OPT_NONE;
    bool repair = false;
    for (int at = 1; at < argc; ++at) {
        const char* argument = argv[at];
        if (argument[0] != '-') continue;
        const int16_t number = lookUp(argument);
        // The option loop ends at -help (which prints the banner) and at an
        // option it doesn't know.
        if (number == OPT_HELP) return false;
        if (number == OPT_NONE) break;
        if (isLayout(number) && layout == OPT_NONE) layout = number;
        if (number == OPT_FIX_ENCODING) repair = true;
        if (takesArgument(number) && at + 1 < argc) {
            const char* next = argv[at + 1];
            if (next[0] != '-' || next[1] == '\0') ++at;
        }
    }
    // The repair replaces the listing; layout options don't count there.
    return layout == OPT_JSON && !repair;
}

OptionsOutcome parseArguments(RunContext* context, DriverState& state, int argc, char** argv)
{
    if (argc < 2) {
        printUsage(context);
        return OptionsOutcome::Finished;
    }
    for (int at = 1; at < argc; ++at) {
        const char* argument = argv[at];
        if (argument[0] == '+') {
            takeRange(context, state, argument);
            continue;
        }
        if (argument[0] != '-') {
            if (state.inputName != nullptr) exitWithMessage(context, kTooManyInputNames, nullptr);
            state.inputName = argument;
            continue;
        }
        int16_t number = lookUp(argument);
        if (state.printer != nullptr && isLayout(number)) {
            qorPrint(context, "Ignored extra TLV-format option: %s.\n", argument);
            continue;
        }
        switch (number) {
            case OPT_HEXADECIMAL:
            case OPT_DECOMPOSED:
            case OPT_SYNTAX:
                state.printer = kLayouts[number];
                break;
            case OPT_JSON:
                state.printer = printJsonLayout;
                break;
            case OPT_TEXT:
                context->toolFlags |= TLV_TEXT_INPUT;
                state.binaryInput = false;
                state.form = InputForm::Text;
                at = takeInputName(context, state, argc, argv, at);
                break;
            case OPT_BINARY:
                at = takeInputName(context, state, argc, argv, at);
                break;
            case OPT_PEM:
            case OPT_BASE64:
                state.form = number == OPT_PEM ? InputForm::Pem : InputForm::Base64;
                at = takeInputName(context, state, argc, argv, at);
                break;
            case OPT_TAGS:
                at = takeTagMapName(context, state, argc, argv, at);
                break;
            case OPT_NAME_FROM_STDIN:
                readNameFromStdin(context, state);
                break;
            case OPT_OUTPUT:
                at = takeFileName(context, state.outputName, argc, argv, at);
                break;
            case OPT_FIX_ENCODING:
                context->toolFlags |= TLV_FIX_ENCODING;
                at = takeFileName(context, state.repairName, argc, argv, at);
                break;
            case OPT_NO_TRACE:
                context->toolFlags &= ~TLV_TRACE_FIXUPS;
                break;
            case OPT_NO_SHORT:
                context->toolFlags |= TLV_NO_SHORT;
                break;
            case OPT_NO_ADDITION:
                context->toolFlags |= TLV_NO_ADDITION;
                break;
            case OPT_NO_TITLES:
                context->toolFlags |= TLV_NO_TITLES;
                break;
            case OPT_NO_CDR_HEADERS:
                context->toolFlags |= TLV_NO_CDR_HEADERS;
                break;
            case OPT_PAD:
                at = takePadByte(context, argc, argv, at);
                break;
            case OPT_OIDS:
                state.extensions->nameOids();
                break;
            case OPT_OID_FILE:
                at = takeOidFile(context, state, argc, argv, at);
                break;
            case OPT_DIG:
                state.extensions->settings().digEncapsulated = true;
                break;
            case OPT_UTF8:
                state.extensions->settings().utf8Text = true;
                break;
            case OPT_DIAGNOSE:
            case OPT_CHECK:
                context->toolFlags |= TLV_DIAGNOSE;
                state.extensions->settings().diagnose = true;
                state.extensions->settings().check = state.extensions->settings().check || number == OPT_CHECK;
                break;
            case OPT_THREADS:
                at = takeThreads(context, state, argc, argv, at);
                break;
            case OPT_RECORDS:
                at = takeRecords(context, state, argc, argv, at);
                break;
            case OPT_HELP:
                printHelp(context);
                return OptionsOutcome::Finished;
            default:
                exitWithMessage(context, kUnknownParameter, argument);
        }
    }
    return OptionsOutcome::Run;
}
