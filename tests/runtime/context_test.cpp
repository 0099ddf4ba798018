#include "runtime/context.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "decoder/control_table.h"
#include "runtime/output.h"
#include "tests/test_context.h"

namespace {

TEST(RunContextStart, CodesOfAFailedStart)
{
    EXPECT_EQ(6, qorStartContext(nullptr, builtinControlTable()));
    qorStopContext(nullptr);  // does nothing

    const struct {
        uint16_t version;
        bool nullTable;
        int code;
    } rows[] = {
        {15, true, 20},
        {14, false, 7},
        {16, false, 7},
        {0, false, 7},
    };
    for (const auto& row : rows) {
        ControlTable table = *builtinControlTable();
        table.version = row.version;
        RunContext context;  // a record of arbitrary bytes
        std::memset(static_cast<void*>(&context), 0x5A, sizeof context);
        EXPECT_EQ(row.code, qorStartContext(&context, row.nullTable ? nullptr : &table)) << row.version;
        EXPECT_EQ(nullptr, context.controlTable);
        EXPECT_EQ(nullptr, context.state);
        qorStopContext(&context);  // ignored: the context isn't running
        EXPECT_EQ(nullptr, context.state);
        // The same record starts afterwards, and stopping twice is stopping once.
        ASSERT_EQ(0, qorStartContext(&context, builtinControlTable()));
        qorStopContext(&context);
        qorStopContext(&context);
        EXPECT_EQ(nullptr, context.controlTable);
        EXPECT_EQ(nullptr, context.state);
    }
}

TEST(RunContextRules, OnlyBerIsLinked)
{
    TestContext run;
    EXPECT_EQ(0, qorGetRules(run.get()));
    EXPECT_EQ(0, qorSetRules(run.get(), 0));
    EXPECT_EQ(23, qorSetRules(run.get(), 1));
    EXPECT_EQ(0, qorGetRules(run.get()));
    EXPECT_EQ(-1, qorGetRules(nullptr));
    EXPECT_EQ(6, qorSetRules(nullptr, 0));
}

std::string fileText(const char* path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
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

}  // namespace
