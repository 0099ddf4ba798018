#include "runtime/context.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "decoder/control_table.h"
#include "runtime/output.h"
#include "tests/test_context.h"

namespace {

TEST(RunContextStart, CodesOfAFailedStart)
{
    EXPECT_EQ(6, qorStartContext(nullptr, builtinControlTable()));

    RunContext context;
    EXPECT_EQ(20, qorStartContext(&context, nullptr));
    EXPECT_EQ(nullptr, context.controlTable);
    EXPECT_EQ(nullptr, context.state);

    for (uint16_t version : {14, 16}) {
        ControlTable table = *builtinControlTable();
        table.version = version;
        EXPECT_EQ(7, qorStartContext(&context, &table));
        EXPECT_EQ(nullptr, context.state);
        qorStopContext(&context);  // ignored: the context isn't running
    }
}

TEST(RunContextStart, StartsOnArbitraryBytesAndStopsTwice)
{
    RunContext context;
    std::memset(static_cast<void*>(&context), 0xA5, sizeof context);
    ASSERT_EQ(0, qorStartContext(&context, builtinControlTable()));
    EXPECT_EQ(0x200u, context.decoderFlags);
    EXPECT_EQ(35u, context.lineWidth);
    EXPECT_EQ(0u, context.toolFlags);
    EXPECT_EQ(10u, context.state->maxStringNesting);
    EXPECT_EQ(64u, context.state->maxStructureNesting);
    EXPECT_EQ(0x0915, context.state->tableFlags);
    EXPECT_EQ(0, qorGetRules(&context));
    EXPECT_EQ(0, qorSetRules(&context, 0));
    EXPECT_EQ(23, qorSetRules(&context, 1));
    qorStopContext(&context);
    EXPECT_EQ(nullptr, context.controlTable);
    qorStopContext(&context);
    EXPECT_EQ(-1, qorGetRules(nullptr));
}

std::string fileText(const char* path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(Output, FileRedirectionAndStop)
{
    TestContext run;
    RunContext* context = run.get();
    const char* path = "qortlv-output-test.txt";
    EXPECT_EQ(0, closeOutputFile(context));  // none open
    qorPrint(context, "console ");
    ASSERT_EQ(0, openOutputFile(context, path));
    EXPECT_EQ(28, openOutputFile(context, "qortlv-second.txt"));
    EXPECT_EQ(4, qorPrint(context, "file"));
    qorStopContext(context);  // closes the file and puts the console back
    qorPrint(context, "after");
    EXPECT_EQ("console after", run.output());
    EXPECT_EQ("file", fileText(path));
    std::remove(path);
    EXPECT_EQ(27, openOutputFile(context, "no-such-folder/x.txt"));
    EXPECT_EQ(6, openOutputFile(nullptr, path));
}

TEST(Output, OverrideTakesAllPrinting)
{
    TestContext run;
    RunContext* context = run.get();
    context->printOverride = [](RunContext*, const char*, va_list) { return 0; };
    EXPECT_EQ(0, qorPrint(context, "%s", "hidden"));
    EXPECT_EQ(0, qorWrite(context, "hidden", 6));
    EXPECT_EQ(0, qorBlanks(context, 5));
    EXPECT_EQ("", run.output());
}

TEST(Output, TextLongerThanTheRunBuffer)
{
    TestContext run;
    std::string longText(3 * OutStream::kCapacity + 17, 'x');
    EXPECT_EQ(static_cast<int>(longText.size()), qorPrint(run.get(), "%s", longText.c_str()));
    qorPrint(run.get(), "|");
    EXPECT_EQ(longText + "|", run.output());
}

TEST(Format, ListingConventions)
{
    EXPECT_EQ("1.500000E+000", formatText("%E", 1.5));
    EXPECT_EQ("1.000000E-300", formatText("%E", 1e-300));
    EXPECT_EQ("-2.500000e+010", formatText("%e", -2.5e10));
    EXPECT_EQ("  1.000000E+000", formatText("%15E", 1.0));
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"  // "%I64d" is ours, unknown to the compiler's check
    EXPECT_EQ("-9223372036854775807", formatText("%I64d", -9223372036854775807LL));
#pragma GCC diagnostic pop
    EXPECT_EQ("12 0x12c", formatText("%ld %#x", 12L, 300u));
    EXPECT_EQ("[   ]", formatText("[%*s]", -3, ""));
    EXPECT_EQ("[  ab]", formatText("[%*s]", 4, "ab"));
    EXPECT_EQ("100%", formatText("%d%%", 100));
}

TEST(Output, PrintReturnsCharacters)
{
    TestContext run;
    EXPECT_EQ(13, qorPrint(run.get(), "%E", 1.5));
    EXPECT_EQ(3, qorBlanks(run.get(), -3));
    EXPECT_EQ("1.500000E+000   ", run.output());
}

}  // namespace
