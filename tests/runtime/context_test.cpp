#include "runtime/context.h"

#include <gtest/gtest.h>

#include <cstring>

#include "decoder/control_table.h"
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

}  // namespace
