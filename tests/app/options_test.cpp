#include "app/options.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "app/driver.h"
#include "app/run_extensions.h"
#include "oids/oid_file.h"
#include "runtime/extensions.h"
#include "tests/test_context.h"
#include "tlv/decomposed_layout.h"
#include "tlv/hex_layout.h"
#include "tlv/syntax_layout.h"

namespace {

// One pass of the option loop over `args` (the program's name is added).
struct Parsed {
    int exitIndex = 0;  // the driver message that ended the loop, or 0
    OptionsOutcome outcome = OptionsOutcome::Run;
    DriverState state{};
    // Copies of the names, which point into the argument vector.
    std::string inputName, outputName, repairName, tagMapName;
    uint32_t toolFlags = 0;
    uint32_t padByteSpec = 0;
    std::string printed;
    // The extension settings the loop left for the run; all off when the
    // context points at none.
    bool extensionsGiven = false;
    bool oidsNamed = false;
    bool dig = false;
    bool utf8 = false;
    bool diagnose = false;
    bool check = false;
};

Parsed parse(const std::vector<std::string>& args)
{
    TestContext run;
    std::vector<std::string> words = {"qortlv"};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    Parsed parsed;
    parsed.state.binaryInput = true;
    RunContext* context = run.get();
    RunExtensionsScope extensions(context);
    parsed.state.extensions = &extensions;
    const uint32_t before = context->toolFlags;
    try {
        parsed.outcome = parseArguments(context, parsed.state, static_cast<int>(words.size()), argv.data());
    } catch (const ToolJump& jump) {
        parsed.exitIndex = jump.value;
    }
    parsed.toolFlags = context->toolFlags & ~before;
    parsed.padByteSpec = context->padByteSpec;
    if (const RunExtensions* given = context->extensions; given != nullptr) {
        parsed.extensionsGiven = true;
        parsed.oidsNamed = given->oidNames != nullptr;
        parsed.dig = given->digEncapsulated;
        parsed.utf8 = given->utf8Text;
        parsed.diagnose = given->diagnose;
        parsed.check = given->check;
    }
    parsed.printed = run.output();
    auto copy = [](const char* name) { return std::string(name != nullptr ? name : "<none>"); };
    parsed.inputName = copy(parsed.state.inputName);
    parsed.outputName = copy(parsed.state.outputName);
    parsed.repairName = copy(parsed.state.repairName);
    parsed.tagMapName = copy(parsed.state.tagMapName);
    parsed.state.inputName = parsed.state.outputName = parsed.state.repairName = parsed.state.tagMapName = nullptr;
    return parsed;
}

TEST(OptionLoop, AbbreviationsAndFlags)
{
    const struct {
        std::vector<std::string> args;
        uint32_t flags;
        LayoutPrinter printer;
    } rows[] = {
        {{"-h", "in"}, 0, printHexLayout},
        {{"-HEXA", "in"}, 0, printHexLayout},
        {{"-hexadecimal", "in"}, 0, printHexLayout},
        {{"-De", "in"}, 0, printDecomposedLayout},
        {{"-s", "in"}, 0, printSyntaxLayout},
        {{"in"}, 0, nullptr},
        {{"-nos", "in"}, TLV_NO_SHORT, nullptr},
        {{"-NOADD", "in"}, TLV_NO_ADDITION, nullptr},
        {{"-not", "in"}, TLV_NO_TITLES, nullptr},
        {{"-noc", "in"}, TLV_NO_CDR_HEADERS, nullptr},
        {{"-t", "in"}, TLV_TEXT_INPUT, nullptr},
        {{"-zf", "rep", "in"}, TLV_FIX_ENCODING, nullptr},
        // The loop itself doesn't set the trace bit: -znotrace only clears it.
        {{"-zn", "in"}, 0, nullptr},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse(row.args);
        std::string shown = row.args[0];
        EXPECT_EQ(0, parsed.exitIndex) << shown << ": " << parsed.printed;
        EXPECT_EQ(row.flags, parsed.toolFlags) << shown;
        EXPECT_EQ(row.printer, parsed.state.printer) << shown;
        EXPECT_EQ("in", parsed.inputName) << shown;
    }
}

TEST(OptionLoop, NamesAndRanges)
{
    Parsed text = parse({"-text", "+name"});
    EXPECT_EQ("+name", text.inputName);
    EXPECT_FALSE(text.state.binaryInput);

    Parsed binary = parse({"-b", "file", "-o", "list.txt", "-zfix", "fixed.ber"});
    EXPECT_EQ("file", binary.inputName);
    EXPECT_EQ("list.txt", binary.outputName);
    EXPECT_EQ("fixed.ber", binary.repairName);
    EXPECT_TRUE(binary.state.binaryInput);

    // A later range overwrites what it names and keeps the rest.
    Parsed ranges = parse({"in", "+7,3", "+12"});
    EXPECT_EQ(12u, ranges.state.offset);
    EXPECT_EQ(3u, ranges.state.count);

    Parsed noCount = parse({"in", "+0"});
    EXPECT_EQ(0u, noCount.state.offset);
    EXPECT_EQ(0u, noCount.state.count);
}

TEST(OptionLoop, ExtensionsKeepEveryAbbreviationOfTheListing)
{
    const struct {
        std::vector<std::string> args;
        int index;  // 0: the loop went through
        InputForm form;
        uint32_t padByteSpec;
    } rows[] = {
        {{"-pe", "in"}, 0, InputForm::Pem, 0},
        {{"-PEM", "in"}, 0, InputForm::Pem, 0},
        {{"-ba", "in"}, 0, InputForm::Base64, 0},
        {{"-Base64", "in"}, 0, InputForm::Base64, 0},
        // The rows of the listing's options come first.
        {{"-b", "in"}, 0, InputForm::Binary, 0},
        {{"-bi", "in"}, 0, InputForm::Binary, 0},
        {{"-t", "in"}, 0, InputForm::Text, 0},
        {{"-p", "1", "in"}, 0, InputForm::Binary, 2},
        {{"-pa", "1", "in"}, 0, InputForm::Binary, 2},
        {{"-pem"}, 5, InputForm::Pem, 0},
        {{"-pems", "in"}, 7, InputForm::Binary, 0},
        {{"-base64", "a", "b"}, 8, InputForm::Base64, 0},
        {{"-pem", "a", "-t", "b"}, 8, InputForm::Text, 0},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse(row.args);
        std::string shown = row.args[0];
        EXPECT_EQ(row.index, parsed.exitIndex) << shown << ": " << parsed.printed;
        EXPECT_EQ(row.form, parsed.state.form) << shown;
        EXPECT_EQ(row.padByteSpec, parsed.padByteSpec) << shown;
    }
}

TEST(OptionLoop, MeaningOptionsTakeNoAbbreviationOfTheListing)
{
    const struct {
        std::vector<std::string> args;
        int index;  // 0: the loop went through; 7: unidentified parameter
        LayoutPrinter printer;
        std::string outputName;
        bool oids, dig, utf8;
    } rows[] = {
        // -o.. stays -output, -d.. -decomposed; -di.., -oi.. and -u.. name nothing.
        {{"-o", "x", "in"}, 0, nullptr, "x", false, false, false},
        {{"-ou", "x", "in"}, 0, nullptr, "x", false, false, false},
        {{"-oi", "in"}, 7, nullptr, "<none>", false, false, false},
        {{"-oid", "in"}, 7, nullptr, "<none>", false, false, false},
        {{"-oidsx", "in"}, 7, nullptr, "<none>", false, false, false},
        {{"-d", "in"}, 0, printDecomposedLayout, "<none>", false, false, false},
        {{"-de", "in"}, 0, printDecomposedLayout, "<none>", false, false, false},
        {{"-di", "in"}, 7, nullptr, "<none>", false, false, false},
        {{"-u", "in"}, 7, nullptr, "<none>", false, false, false},
        {{"-utf", "in"}, 7, nullptr, "<none>", false, false, false},
        // The whole names, A-Z folded.
        {{"-oids", "in"}, 0, nullptr, "<none>", true, false, false},
        {{"-OIDS", "-s", "in"}, 0, printSyntaxLayout, "<none>", true, false, false},
        {{"-dig", "-d", "in"}, 0, printDecomposedLayout, "<none>", false, true, false},
        {{"-Dig", "in"}, 0, nullptr, "<none>", false, true, false},
        {{"-utf8", "in"}, 0, nullptr, "<none>", false, false, true},
        {{"-s", "-oids", "-dig", "-utf8", "in"}, 0, printSyntaxLayout, "<none>", true, true, true},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse(row.args);
        std::string shown = row.args[0];
        EXPECT_EQ(row.index, parsed.exitIndex) << shown << ": " << parsed.printed;
        EXPECT_EQ(row.printer, parsed.state.printer) << shown;
        EXPECT_EQ(row.outputName, parsed.outputName) << shown;
        EXPECT_EQ(row.oids, parsed.oidsNamed) << shown;
        EXPECT_EQ(row.dig, parsed.dig) << shown;
        EXPECT_EQ(row.utf8, parsed.utf8) << shown;
        // A run without them leaves the context pointing at nothing.
        EXPECT_EQ(row.oids || row.dig || row.utf8, parsed.extensionsGiven) << shown;
    }
}

TEST(OptionLoop, OidFileImpliesOidsAndEndsTheRunWhenMalformed)
{
    const std::string good = testing::TempDir() + "/qortlv_names.txt";
    const std::string bad = testing::TempDir() + "/qortlv_bad_names.txt";
    {
        std::FILE* file = std::fopen(good.c_str(), "w");
        std::fputs("# names\n1.2.3.4 first\n", file);
        std::fclose(file);
        file = std::fopen(bad.c_str(), "w");
        std::fputs("1.2.3.4 first\n1.2.x second\n", file);
        std::fclose(file);
    }
    Parsed loaded = parse({"-oidf", good, "in"});
    EXPECT_EQ(0, loaded.exitIndex);
    EXPECT_TRUE(loaded.oidsNamed);
    EXPECT_EQ("in", loaded.inputName);

    Parsed whole = parse({"in", "-OIDFILE", good});
    EXPECT_EQ(0, whole.exitIndex);
    EXPECT_TRUE(whole.oidsNamed);

    testing::internal::CaptureStderr();
    Parsed malformed = parse({"-oidfile", bad, "in"});
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(kOidFileStatus, malformed.exitIndex);
    EXPECT_EQ(0u, told.find("qortlv: " + bad + ":2: ")) << told;

    testing::internal::CaptureStderr();
    Parsed missing = parse({"in", "-oidfile"});
    EXPECT_EQ(kOidFileStatus, missing.exitIndex);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("-oidfile needs"));
    std::remove(good.c_str());
    std::remove(bad.c_str());
}

TEST(OptionLoop, TagsStartsAtThreeLettersSoThatTAndTeStayText)
{
    const struct {
        std::vector<std::string> args;
        int index;  // 0: the loop went through
        InputForm form;
        const char* tagMapName;
        const char* inputName;
    } rows[] = {
        {{"-t", "in"}, 0, InputForm::Text, "<none>", "in"},
        {{"-te", "in"}, 0, InputForm::Text, "<none>", "in"},
        {{"-tex", "in"}, 0, InputForm::Text, "<none>", "in"},
        {{"-text", "in"}, 0, InputForm::Text, "<none>", "in"},
        {{"-ta", "3gpp-ps", "in"}, 0, InputForm::Binary, "3gpp-ps", "in"},
        {{"-tag", "my.tags", "in"}, 0, InputForm::Binary, "my.tags", "in"},
        {{"in", "-TAGS", "-"}, 0, InputForm::Binary, "-", "in"},
        {{"-t", "in", "-tags", "m"}, 0, InputForm::Text, "m", "in"},
        {{"in", "-tags"}, kTagMapStatus, InputForm::Binary, "<none>", "in"},
        {{"-tags", "-s", "in"}, kTagMapStatus, InputForm::Binary, "<none>", "<none>"},
        {{"-tagsx", "m", "in"}, 7, InputForm::Binary, "<none>", "<none>"},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse(row.args);
        std::string shown = row.args[0] + " " + row.args[1];
        EXPECT_EQ(row.index, parsed.exitIndex) << shown << ": " << parsed.printed;
        EXPECT_EQ(row.form, parsed.state.form) << shown;
        EXPECT_EQ(row.tagMapName, parsed.tagMapName) << shown;
        EXPECT_EQ(row.inputName, parsed.inputName) << shown;
    }
}

TEST(OptionLoop, RefusedCommandLines)
{
    const std::string usageStart = "\n\nUsage:  qortlv [-b|-t] <input>";
    const struct {
        std::vector<std::string> args;
        int index;
        std::string message;
        bool usage;
    } rows[] = {
        {{"-t", "-x"}, 5, "Input file name is missing.", true},
        {{"-o"}, 6, "Output file name is missing.", true},
        {{"-zfixencoding", "-"}, 6, "Output file name is missing.", true},
        {{"-z"}, 7, "Unidentified input parameter, -z.", true},
        {{"a", "-b", "b"}, 8, "Too many input file names.", true},
        {{"a", "-"}, 8, "Too many input file names.", true},
        {{"-zf", "x", "-zfix", "y"}, 10, "Too many output file names.", false},
        {{"in", "+-1"}, 12, "Invalid offset into input file, -1.", false},
        {{"in", "+,"}, 13, "Invalid number of bytes to be read from input file, +,.", false},
        {{"in", "+1,2,3"}, 13, "Invalid number of bytes to be read from input file, 2,3.", false},
        {{"in", "-pad"}, 14, "The -pad option requires a mandatory parameter <byte>.", false},
        {{"in", "-pad", "0x100"}, 15, "Invalid pad byte, 0x100.", false},
        {{"in", "-pad", "08"}, 15, "Invalid pad byte, 08.", false},
        {{"in", "-pad", "12 "}, 15, "Invalid pad byte, 12 .", false},
        {{"in", "-pad", "FF"}, 15, "Invalid pad byte, FF.", false},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse(row.args);
        std::string shown = row.args.back();
        EXPECT_EQ(row.index, parsed.exitIndex) << shown;
        EXPECT_EQ(0u, parsed.printed.rfind(row.message, 0)) << shown << ": " << parsed.printed;
        std::string behind = parsed.printed.substr(std::min(parsed.printed.size(), row.message.size()));
        if (row.usage) {
            EXPECT_EQ(0u, behind.rfind(usageStart, 0)) << shown;
        } else {
            EXPECT_EQ("", behind) << shown;
        }
    }
}

TEST(OptionLoop, PadByteInTheBaseItsTextShows)
{
    const struct {
        const char* text;
        uint32_t padByteSpec;
    } rows[] = {
        {"0", 1},       {"1", 2},        {"10", 11},      {"128", 129},  {"255", 256},
        {"0x00", 1},    {"0xFF", 256},   {"0Xa", 11},     {"010", 9},    {"0377", 256},
        {"", 1},        {" 7", 8},       {"+0x0A", 11},   {"\t+12", 13},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse({"in", "-pad", row.text});
        EXPECT_EQ(0, parsed.exitIndex) << '"' << row.text << '"';
        EXPECT_EQ(row.padByteSpec, parsed.padByteSpec) << '"' << row.text << '"';
    }
}

TEST(ParseDecimal, ThirtyTwoBitsWithoutOverflowCheck)
{
    TestContext run;
    const struct {
        std::string text;
        uint32_t value;
    } rows[] = {
        {"", 0},
        {"0", 0},
        {"007", 7},
        {"4294967294", 4294967294u},
        // Reaching all ones stops the reading, whatever follows.
        {"4294967295", 4294967295u},
        {"42949672959x", 4294967295u},
        // Past it the value wraps: 4294967296 is 2^32.
        {"4294967296", 0},
        {"99999999999", 1215752191u},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.value, parseDecimal(row.text.c_str(), row.text.size(), run.get(), 12)) << row.text;
    }
    // Only the given count of characters is read.
    EXPECT_EQ(12u, parseDecimal("12,x", 2, run.get(), 13));
    EXPECT_EQ("", run.output());
}

}  // namespace

TEST(OptionLoop, DiagnoseAndCheckLeaveEveryOlderAbbreviationAsItWas)
{
    const struct {
        std::vector<std::string> args;
        int index;  // 0: the loop went through
        LayoutPrinter printer;
        bool diagnose;
        bool check;
    } rows[] = {
        {{"-dia", "in"}, 0, nullptr, true, false},
        {{"-DIAGNOSE", "in"}, 0, nullptr, true, false},
        {{"-ch", "in"}, 0, nullptr, true, true},
        {{"-check", "in"}, 0, nullptr, true, true},
        {{"-check", "-diag", "in"}, 0, nullptr, true, true},
        // "-d" and "-de" stay -decomposed; "-di" and "-c" name no option.
        {{"-d", "in"}, 0, printDecomposedLayout, false, false},
        {{"-de", "in"}, 0, printDecomposedLayout, false, false},
        {{"-di", "in"}, 7, nullptr, false, false},
        {{"-c", "in"}, 7, nullptr, false, false},
        {{"-checks", "in"}, 7, nullptr, false, false},
        {{"-syntax", "-dia", "in"}, 0, printSyntaxLayout, true, false},
    };
    for (const auto& row : rows) {
        Parsed parsed = parse(row.args);
        std::string shown = row.args[0];
        EXPECT_EQ(row.index, parsed.exitIndex) << shown << ": " << parsed.printed;
        EXPECT_EQ(row.printer, parsed.state.printer) << shown;
        EXPECT_EQ(row.diagnose, parsed.diagnose) << shown;
        EXPECT_EQ(row.check, parsed.check) << shown;
        EXPECT_EQ(row.diagnose, (parsed.toolFlags & TLV_DIAGNOSE) != 0) << shown;
    }
}
