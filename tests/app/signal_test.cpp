#include "app/signal.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/test_context.h"

namespace {

std::string shortened(const std::string& text)
{
    std::string out;
    shortenForMessage(out, text.c_str(), text.size());
    return out;
}

TEST(ShortenForMessage, OneLineOfAtMost72Characters)
{
    const std::string name100(100, 'n');
    EXPECT_EQ(std::string(72, 'n') + "... ", shortened(name100));
    EXPECT_EQ(std::string(72, 'n'), shortened(std::string(72, 'n')));
    EXPECT_EQ("file.ber", shortened("file.ber"));
    EXPECT_EQ("two lines", shortened("two\nlines"));
    EXPECT_EQ("a b", shortened("a\t\tb"));
    EXPECT_EQ("name", shortened("name--comment"));
    EXPECT_EQ("x y", shortened("x/* c */y"));
    EXPECT_EQ("x y", shortened("x -- c -- y"));
}

TEST(SkipComments, WhiteSpaceAndBothCommentForms)
{
    const struct {
        const char* text;
        size_t from;
        size_t reached;
    } rows[] = {
        {"   x", 0, 3},
        {"-- c\nx", 0, 5},
        {"-- c -- x", 0, 8},
        {"/* c */ x", 0, 8},
        {"/* open", 0, 7},
        {"-- open", 0, 7},
        {"x", 0, 0},
    };
    for (const auto& row : rows) {
        size_t at = row.from;
        skipComments(row.text, std::char_traits<char>::length(row.text), at);
        EXPECT_EQ(row.reached, at) << row.text;
    }
}

TEST(PrintToolError, NamesOnTheirOwnLineFrom31Characters)
{
    TestContext run;
    RunContext* context = run.get();
    context->toolFlags &= ~TLV_TOOL_RUN;  // no jump, and the prefix shows
    const std::string thirty(30, 'a');
    const std::string thirtyOne(31, 'b');
    signalError(context, 45, reinterpret_cast<intptr_t>(thirty.c_str()), 0);
    signalError(context, 45, reinterpret_cast<intptr_t>(thirtyOne.c_str()), 0);
    EXPECT_EQ("QT045E: Input file cannot be open, " + thirty + ".\n" + "QT045E: Input file cannot be open, \n" +
                  thirtyOne + ".\n",
              run.output());
}

TEST(SignalError, QuietAndFatalClasses)
{
    TestContext run;
    RunContext* context = run.get();
    context->jumpTarget = true;
    context->toolFlags |= TLV_QUIET_ERRORS;
    EXPECT_EQ(35, signalError(context, 35, 300, 2));
    EXPECT_EQ("", run.output());
    EXPECT_EQ(35, run.lastError());
    // A quiet premature end still ends the run, unless a probe is running.
    EXPECT_THROW(signalError(context, 17, 0, 0), ToolJump);
    context->state->stateFlags |= STATE_PROBING;
    EXPECT_EQ(17, signalError(context, 17, 0, 0));
    EXPECT_EQ("", run.output());
    context->toolFlags &= ~TLV_QUIET_ERRORS;
    signalError(context, 35, 300, 2);
    EXPECT_EQ("\nValue misencoded, length, 300 (0x12c), longer than remaining data length, 2 (0x2); continuing as if "
              "length were 2:\n",
              run.output());
}

}  // namespace
