#include "app/signal.h"

#include <gtest/gtest.h>

#include <string>

#include "runtime/context.h"
#include "tlv/record_span.h"

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
    const struct {
        std::string text;
        std::string shown;
    } rows[] = {
        {std::string(73, 'n'), std::string(72, 'n') + "... "},
        {std::string(72, 'n'), std::string(72, 'n')},
        {std::string(72, 'n') + "\nx", std::string(72, 'n') + "... "},  // the line end doesn't fit any more
        {"two\r\nlines", "two lines"},
        {"a\t\tb", "a b"},
        {"name--comment", "name"},
        {"name--comment--.ber", "name .ber"},
        {"x/* c */y", "x y"},
        {"end\n", "end"},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.shown, shortened(row.text)) << row.text;
    }
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
        {" -", 0, 1},                 // one character in front of the end: stop
        {"-- a\n-- b\nx", 0, 10},     // comment after comment
        {"ab  /* c */  d", 2, 13},
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

TEST(PrintToolError, TextsThatNoListingShows)
{
    static const char name[] = "in.txt";
    const struct {
        bool inRun;  // outside a run the text has its prefix, and some a shorter form
        int code;
        intptr_t first;
        long second;
        const char* text;
    } rows[] = {
        {true, 29, 0, 0, "Invalid HUGE INTEGER value.\n"},
        // A second argument cuts the name to that many characters.
        {true, 49, reinterpret_cast<intptr_t>(name), 2,
         "Input text file, in, with encoding contains non-hexadecimal characters.\n"},
        {false, 35, 0, 0, "\nQT035E: Value misencoded, length longer than remaining data length\n"},
        {false, 38, 0, 0, "\nQT038E: Value misencoded, length of a tag-length pair longer than remaining length\n"},
        {false, 47, 0, 0, "QT047E: Invalid offset into input file.\n"},
        {false, 73, 0, 0, "\nQT073E: Value misencoded, a tag of '00' encountered."},
    };
    for (const auto& row : rows) {
        TestContext run;
        if (!row.inRun) run.get()->toolFlags &= ~TLV_TOOL_RUN;
        EXPECT_EQ(row.code, printToolError(run.get(), row.code, row.first, row.second));
        EXPECT_EQ(row.text, run.output()) << row.code;
    }
}

// The common tails, to the end and cut at 76 digits, are golden runs.
TEST(PrintToolError, TailOfTheRecordBehindAPrematureEnd)
{
    uint8_t input[50];
    for (int i = 0; i < 50; ++i) input[i] = static_cast<uint8_t>(i);
    const std::string message = "\nValue misencoded, premature end of encoding encountered.";
    const std::string header = " Last invalid record is:\n";
    const struct {
        const char* what;
        int32_t total;
        int offset;  // of the place, from the start
        long second;
        int32_t spareTail;
        std::string tail;
    } rows[] = {
        {"place on the start", 10, 0, 3, 0, ""},
        {"place at the end", 10, 10, 3, 0, ""},
        {"no octets told", 10, 4, 0, 0, ""},
        {"spare tail left out", 10, 4, 3, 2, header + "04050607"},
        {"nothing left but the spare tail: the count told", 10, 4, 3, 8, header + "040506"},
        {"exactly 76 digits", 39, 1, 1, 0,
         header + "0102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F20212223242526"},
    };
    for (const auto& row : rows) {
        TestContext run;
        RecordSpan span = {row.total, input};
        run.get()->recordSpan = &span;
        run.get()->state->spareTail = row.spareTail;
        printToolError(run.get(), 17, reinterpret_cast<intptr_t>(input + row.offset), row.second);
        EXPECT_EQ(message + row.tail + "\n", run.output()) << row.what;
        run.get()->recordSpan = nullptr;
    }
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
