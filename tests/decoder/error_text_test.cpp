// The text of a failure: the letter, the catalog text, the argument in the
// form of its row, the location, and the cut of a text that doesn't fit.
#include "decoder/errors.h"

#include <gtest/gtest.h>

#include <string>

#include "runtime/runtime_catalog.h"
#include "tests/test_context.h"

namespace {

struct ErrorTextTest : ::testing::Test {
    TestContext run;
    RunContext* context = run.get();

    std::string build(int32_t entry, int32_t pdu, const ErrorArgument& argument, size_t capacity = 512)
    {
        std::string buffer(capacity, '#');
        cut = buildErrorText(context, buffer.data(), capacity, entry, pdu, argument);
        return buffer.c_str();
    }
    int cut = 0;
};

TEST_F(ErrorTextTest, ArgumentForms)
{
    const std::string long128(128, 'x');
    const std::string long127(127, 'y');
    const struct {
        int32_t entry;
        ErrorArgument argument;
        std::string text;
    } rows[] = {
        // Form 2: the tag read, then the one expected above it.
        {RT_PDU_TAG_MISMATCH, 0xC01F4005, "D0034E: PDU number and input tags do not match: [APPLICATION 5] (expected tag [PRIVATE 31]).\n"},
        {RT_TAG_MISMATCH, 0x8007, "D0033E: Tag mismatch or tag not expected: [7].\n"},
        {RT_TAG_MISMATCH, 0x00040003, "D0033E: Tag mismatch or tag not expected: [UNIVERSAL 3] (expected tag [UNIVERSAL 4]).\n"},
        // Forms 3 and 4: signed and unsigned 64-bit numbers.
        {RT_INTEGER_TOO_LONG, -5, "D0023E: Integer or enumerated value too long: -5.\n"},
        {RT_INTEGER_TOO_LONG_UNSIGNED, 4294967296LL, "D0023E: Integer or enumerated value too long: 4294967296.\n"},
        {RT_LENGTH_TOO_LONG, -1, "D0026S: Length too long: 18446744073709551615.\n"},
        // Form 7: a character, printable or as its four octets.
        {RT_ALPHABET, '*', "D0064S: Permitted alphabet constraint violated, bad character: '*'.\n"},
        {RT_ALPHABET, ' ', "D0064S: Permitted alphabet constraint violated, bad character: ' '.\n"},
        {RT_ALPHABET, 0x7F, "D0064S: Permitted alphabet constraint violated, bad character: {0,0,0,127}.\n"},
        {RT_ALPHABET, 0x0001F600, "D0064S: Permitted alphabet constraint violated, bad character: {0,1,246,0}.\n"},
        // Form 6: a string in quotes, cut from 128 characters on.
        {RT_PROPERTY_SETTINGS, ErrorArgument::ofText(long127.c_str()),
         "D0326S: PropertySettings constraint violated: '" + long127 + "'.\n"},
        {RT_PROPERTY_SETTINGS, ErrorArgument::ofText(long128.c_str()),
         "D0326S: PropertySettings constraint violated: '" + std::string(40, 'x') + "...'.\n"},
        // Form 0 takes no argument even when one is given.
        {RT_TAG_NEEDLESSLY_LONG, 7, "D0018E: Tag needlessly long.\n"},
        {RT_ZERO_BYTES, {}, "D0083S: Zero bytes of memory requested.\n"},
        // Only texts that start with 0 are a decode's: the last row has no letter.
        {RT_HINDMOST, {}, "X999I: Hindmost message.\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.text, build(row.entry, 0, row.argument)) << row.entry;
        EXPECT_EQ(0, cut) << row.entry;
    }
}

TEST_F(ErrorTextTest, Location)
{
    ErrorFrame root = {nullptr, nullptr, nullptr, 4, FRAME_ROOT};
    ErrorFrame type = {nullptr, nullptr, "QUELT-OCTETSTRING", 0, FRAME_TYPE};
    ErrorFrame unnamed = {nullptr, nullptr, nullptr, 0, FRAME_TYPE};
    const struct {
        const char* what;
        int32_t entry;
        int32_t pdu;
        ErrorFrame* innermost;
        const char* text;
    } rows[] = {
        {"no PDU yet", RT_END_OF_INPUT, 0, nullptr, "D0081S: End of input reached before message was fully decoded.\n"},
        {"the root alone", RT_END_OF_INPUT, 4, &root,
         "D0081S: End of input reached before message was fully decoded; check PDU #4.\n"},
        {"a type inside the root", RT_END_OF_INPUT, 4, &type,
         "D0081S: End of input reached before message was fully decoded; check PDU #4 'QUELT-OCTETSTRING'.\n"},
        {"an unnamed frame inside a named one", RT_END_OF_INPUT, 4, &unnamed,
         "D0081S: End of input reached before message was fully decoded; check PDU #4 'QUELT-OCTETSTRING'.\n"},
        {"a row without location", RT_NEGATIVE_LENGTH, 4, &type,
         "D0057S: Decoder argument for length is negative; length = -1.\n"},
    };
    for (const auto& row : rows) {
        FramePush outer(context, root);
        FramePush middle(context, type);
        FramePush inner(context, unnamed);
        context->decode.errorFrames = row.innermost;
        ErrorArgument argument = row.entry == RT_NEGATIVE_LENGTH ? ErrorArgument(-1) : ErrorArgument();
        EXPECT_EQ(row.text, build(row.entry, row.pdu, argument)) << row.what;
    }
    EXPECT_EQ(nullptr, context->decode.errorFrames) << "each push is undone";
}

TEST_F(ErrorTextTest, TextsThatDontFitAreCut)
{
    // "D0003S: PDU number not in range: 0.\n" has 36 characters.
    const struct {
        int32_t entry;
        size_t capacity;
        const char* text;
        int cut;
    } rows[] = {
        {RT_PDU_RANGE, 37, "D0003S: PDU number not in range: 0.\n", 0},
        {RT_PDU_RANGE, 36, "D0003S: PDU number not in range...\n", 1},
        {RT_PDU_RANGE, 20, "D0003S: PDU num...\n", 1},
        {RT_PDU_RANGE, 3, "", 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.text, build(row.entry, 0, 0, row.capacity)) << row.capacity;
        EXPECT_EQ(row.cut, cut) << row.capacity;
    }
}

// Runs reportError where a decode's recovery point would catch it.
int32_t raise(RunContext* context, int32_t entry, ErrorArgument argument = {})
{
    try {
        reportError(context, entry, argument);
    } catch (const DecodeFailure& failure) {
        return failure.code;
    }
    return -1;
}

TEST_F(ErrorTextTest, TheFirstCodeOfACallStays)
{
    context->decode.runtimeResult = 0;
    context->decode.errorTextPtr = context->errorText;
    EXPECT_EQ(4, raise(context, RT_END_OF_INPUT));
    EXPECT_EQ(4, raise(context, RT_LENGTH_TOO_LONG, 1));
    EXPECT_EQ(4, context->decode.runtimeResult);
    EXPECT_STREQ("D0026S: Length too long: 1.\n", context->errorText) << "the text is the last one's";
}

TEST_F(ErrorTextTest, ALongTextGetsALargerBufferUntilTheNextFailure)
{
    const std::string name(600, 'N');
    ErrorFrame root = {nullptr, nullptr, nullptr, 2, FRAME_ROOT};
    ErrorFrame type = {nullptr, nullptr, name.c_str(), 0, FRAME_TYPE};
    context->decode.runtimeResult = 0;
    context->decode.currentPdu = 2;
    context->decode.errorTextPtr = context->errorText;
    {
        FramePush outer(context, root);
        FramePush inner(context, type);
        EXPECT_EQ(5, raise(context, RT_MISENCODED));
    }
    const char* longText = context->state->longErrorText;
    ASSERT_NE(nullptr, longText);
    EXPECT_EQ("D0037E: Value misencoded or length wrong for value; check PDU #2 '" + name + "'.\n", longText);
    EXPECT_EQ(std::string("...\n"), std::string(context->errorText).substr(507)) << "the short buffer holds the cut";

    raise(context, RT_MISENCODED);
    EXPECT_EQ(nullptr, context->state->longErrorText);
    EXPECT_STREQ("D0037E: Value misencoded or length wrong for value; check PDU #2.\n", context->errorText);
}

}  // namespace
