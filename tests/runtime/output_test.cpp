#include "runtime/output.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "runtime/context.h"
#include "runtime/output_line.h"
#include "tests/test_context.h"

namespace {

std::string fileText(const char* path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

int silent(RunContext*, const char*, va_list)
{
    return 0;
}

TEST(Output, AnOverrideTakesAllPrinting)
{
    TestContext run;
    RunContext* context = run.get();
    context->printOverride = silent;
    const std::string longText(2 * OutStream::kCapacity, 'x');
    EXPECT_EQ(0, qorPrint(context, "%s", "hidden"));
    EXPECT_EQ(0, qorPrint(context, "%E", 1.5));
    EXPECT_EQ(0, qorPrint(context, "%s", longText.c_str()));
    EXPECT_EQ(0, qorWrite(context, "hidden", 6));
    EXPECT_EQ(0, qorBlanks(context, 5));
    EXPECT_EQ(0, qorWriteDecimal(context, 42));
    EXPECT_EQ("", run.output());

    // The override isn't asked on a stopped context.
    qorStopContext(context);
    EXPECT_EQ(4, qorPrint(context, "seen"));
    EXPECT_EQ("seen", run.output());
}

// "%I64d" is ours; the compiler's format check doesn't know it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"
TEST(Output, PrintsReturnTheCharactersWritten)
{
    TestContext run;
    RunContext* context = run.get();
    const struct {
        int count;
        int expected;
    } rows[] = {
        {qorPrint(context, "%s", "abc"), 3},
        {qorPrint(context, "%E", 1.5), 13},
        {qorPrint(context, "[%*s]", -4, "ab"), 6},
        {qorPrint(context, "%s", ""), 0},
        {qorWrite(context, "xy", 2), 2},
        {qorBlanks(context, -3), 3},
        {qorWriteDecimal(context, -120), 4},
        {qorPrint(context, "[%*s]", -3, ""), 5},
        {qorPrint(context, " %I64d", INT64_MAX), 20},  // the conventions of formatText
    };
    for (const auto& row : rows) EXPECT_EQ(row.expected, row.count);
    EXPECT_EQ("abc1.500000E+000[ab  ]xy   -120[   ] 9223372036854775807", run.output());
}
#pragma GCC diagnostic pop

TEST(Output, ATextLongerThanAnyBufferPrintsWhole)
{
    TestContext run;
    const std::string longText(3 * OutStream::kCapacity + 17, 'x');
    EXPECT_EQ(static_cast<int>(longText.size()), qorPrint(run.get(), "%s", longText.c_str()));
    EXPECT_EQ(static_cast<int>(longText.size()), qorWrite(run.get(), longText.c_str(), longText.size()));
    qorPrint(run.get(), "|");
    EXPECT_EQ(longText + longText + "|", run.output());
}

TEST(OutputFile, OpenAndCloseCodes)
{
    TestContext run;
    RunContext* context = run.get();
    const char* first = "qortlv-output-first.txt";
    const char* second = "qortlv-output-second.txt";
    std::remove(second);

    EXPECT_EQ(0, closeOutputFile(context));  // none open: nothing happens
    qorPrint(context, "console ");
    ASSERT_EQ(0, openOutputFile(context, first));
    EXPECT_EQ(28, openOutputFile(context, second));  // the first file stays current
    qorPrint(context, "file");
    EXPECT_EQ(0, closeOutputFile(context));
    EXPECT_EQ(nullptr, context->savedOutStream);
    EXPECT_EQ(0, closeOutputFile(context));
    qorPrint(context, "again");
    EXPECT_EQ("console again", run.output());
    EXPECT_EQ("file", fileText(first));
    EXPECT_FALSE(std::ifstream(second).good());
    std::remove(first);

    // A path that can't be created: printing goes on where it was.
    EXPECT_EQ(27, openOutputFile(context, "no-such-folder/x.txt"));
    EXPECT_EQ(nullptr, context->savedOutStream);
    qorPrint(context, "!");
    EXPECT_EQ("console again!", run.output());

    EXPECT_EQ(6, openOutputFile(nullptr, first));
    EXPECT_EQ(6, closeOutputFile(nullptr));
}

TEST(OutputFile, AnExistingFileIsReplaced)
{
    TestContext run;
    const char* path = "qortlv-output-replaced.txt";
    {
        std::ofstream old(path);
        old << "old contents that are longer";
    }
    ASSERT_EQ(0, openOutputFile(run.get(), path));
    qorPrint(run.get(), "new");
    EXPECT_EQ(0, closeOutputFile(run.get()));
    EXPECT_EQ("new", fileText(path));
    std::remove(path);
}

TEST(RunContextStop, AnOpenOutputFileIsClosedAndTheConsoleIsBack)
{
    TestContext run;
    RunContext* context = run.get();
    OutStream* console = context->outStream;
    const char* path = "qortlv-context-stop.txt";
    qorPrint(context, "before ");
    ASSERT_EQ(0, openOutputFile(context, path));
    qorPrint(context, "in the file");
    qorStopContext(context);
    EXPECT_EQ(console, context->outStream);
    EXPECT_EQ(nullptr, context->savedOutStream);
    // A stopped context still prints, to the stream it had before the file.
    EXPECT_EQ(5, qorPrint(context, "after"));
    EXPECT_EQ("before after", run.output());
    EXPECT_EQ("in the file", fileText(path));
    std::remove(path);
}

// Numbers on a line as printf's "%*lu" and "%ld" print them, composed in
// place (whole-word stores) and piece by piece (a line too long for the
// buffer), every digit count and width.
TEST(Output, LineNumbersAsPrintfPrintsThem)
{
    const unsigned long values[] = {0, 7, 10, 99, 100, 999, 1000, 12345, 99999999, 100000000, 4294967295UL};
    const long signedValues[] = {0, -1, 9, -10, 123456789, -2147483648L};
    for (size_t most : {size_t{200}, size_t{20000}}) {
        for (int width = 0; width <= 10; ++width) {
            for (unsigned long value : values) {
                TestContext run;
                {
                    OutputLine line(run.get(), most);
                    line.text("<", 1);
                    EXPECT_EQ(static_cast<int>(std::snprintf(nullptr, 0, "%*lu", width, value)),
                              line.rightAligned(width, value));
                    line.text(">", 1);
                }
                char expected[64];
                std::snprintf(expected, sizeof expected, "<%*lu>", width, value);
                EXPECT_EQ(expected, run.output()) << most << ' ' << width << ' ' << value;
            }
        }
        for (long value : signedValues) {
            TestContext run;
            {
                OutputLine line(run.get(), most);
                line.decimal(value);
                line.text(";", 1);
            }
            EXPECT_EQ(std::to_string(value) + ";", run.output()) << most;
        }
    }
}

}  // namespace
