#include "render/string_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "decoder/values.h"
#include "runtime/services.h"
#include "tests/test_context.h"

namespace {

struct StringTextTest : ::testing::Test {
    TestContext run;
    RunContext* context = run.get();

    std::string take(char* text) { return run.take(text); }
    std::string oid(const std::vector<uint8_t>& octets, bool relative, int* result = nullptr)
    {
        EncodedOid encoded = {static_cast<uint16_t>(octets.size()), octets.data()};
        OidText text = {0, nullptr};
        int code = relative ? qorEncodedRelOidToText(context, encoded, text) : qorEncodedOidToText(context, encoded, text);
        if (result != nullptr) *result = code;
        if (code == 0) return take(text.text);
        std::string failed = "<";
        failed += std::to_string(code);
        return failed + ">";
    }
};

TEST_F(StringTextTest, ObjectIdentifierArcs)
{
    const struct {
        std::vector<uint8_t> octets;
        const char* text;
    } rows[] = {
        {{0x2A, 0x86, 0x48}, "{ 1 2 840 }"},
        {{0x27}, "{ 0 39 }"},
        {{0x28}, "{ 1 0 }"},
        {{0x4F}, "{ 1 39 }"},
        {{0x50}, "{ 2 0 }"},
        {{0x88, 0x37}, "{ 2 999 }"},
        {{0x80, 0x80, 0x01}, "{ 0 1 }"},  // leading 80 octets add nothing
        {{0x2A, 0x81, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}, "{ 1 2 18446744073709551615 }"},
        {{0x2A, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00}, "<33>"},  // 2^64
        {{}, "<5>"},
        {{0x2A, 0x86}, "<5>"},
        // 2^64 + 79 as the first subidentifier still fits; 2^64 + 80 doesn't.
        {{0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x4F}, "{ 2 18446744073709551615 }"},
        {{0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x50}, "<33>"},
        {{0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01}, "<33>"},  // twelve octets
    };
    for (const auto& row : rows) EXPECT_EQ(row.text, oid(row.octets, false)) << row.text;
}

TEST_F(StringTextTest, RelativeIdentifierArcs)
{
    EXPECT_EQ("{ 5 }", oid({0x05}, true));
    EXPECT_EQ("{ 0 }", oid({0x00}, true));
    EXPECT_EQ("{ 1 2 840 }", oid({0x01, 0x02, 0x86, 0x48}, true));
    // Ten octets at most, even with leading 80s.
    EXPECT_EQ("<33>", oid({0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01}, true));
}

TEST_F(StringTextTest, IdentifierInEachLayout)
{
    const uint8_t octets[] = {0x2A, 0x86, 0x48};
    EncodedOid encoded = {3, octets};
    char* text = nullptr;
    context->toolFlags |= TLV_SYNTAX_LAYOUT;
    ASSERT_EQ(0, objectIdentifierText(context, RenderInput{}, &encoded, text));
    EXPECT_EQ("{ 1 2 840 }", take(text));
    context->toolFlags &= ~TLV_SYNTAX_LAYOUT;
    ASSERT_EQ(0, objectIdentifierText(context, RenderInput{}, &encoded, text));
    EXPECT_EQ("1 2 840", take(text));
    const uint8_t bad[] = {0x86};
    EncodedOid broken = {1, bad};
    EXPECT_EQ(18, objectIdentifierText(context, RenderInput{}, &broken, text));
}

TEST_F(StringTextTest, EscapesInEveryForm)
{
    const char ia5[] = "a\\b\n\"\x7f";
    char* text = nullptr;
    escapedText(context, text, ia5, CHARS_8BIT, 6);
    EXPECT_EQ("a\\\\b\\x0a\"\\x7f", take(text));
    const uint8_t withNul[] = {'x', 0x00};
    escapedText(context, text, withNul, CHARS_8BIT, 2);
    EXPECT_EQ("x\\x00", take(text));

    const uint16_t bmp[] = {'L', 'a', 0x00E9};
    escapedText(context, text, bmp, CHARS_16BIT, 3);
    EXPECT_EQ("La\\u00e9", take(text));
    EXPECT_EQ(8u, escapedLength(bmp, CHARS_16BIT, 3));

    const uint32_t universal[] = {0x00E9, 'z'};
    escapedText(context, text, universal, CHARS_32BIT, 2);
    EXPECT_EQ("\\U000000e9z", take(text));

    const char utf8[] = "\xC3\xA9" "a";
    escapedText(context, text, utf8, CHARS_UTF8, 3);
    EXPECT_EQ("\\U000000e9a", take(text));

    escapedText(context, text, nullptr, CHARS_8BIT, 0);
    EXPECT_EQ("", take(text));
}

TEST(Utf8, SequencesAndTheirSteps)
{
    const struct {
        std::vector<uint8_t> octets;
        uint32_t character;
        long step;
    } rows[] = {
        {{0x41}, 0x41, 1},
        {{0xC3, 0xA9}, 0xE9, 2},
        {{0xE2, 0x82, 0xAC}, 0x20AC, 3},
        {{0xF0, 0x9F, 0x98, 0x80}, 0x1F600, 4},
        {{0x80}, 0, 1},                // a continuation octet alone
        {{0xFE}, 0, 1},                // seven leading ones
        {{0xC3, 0x41}, 0, 2},          // not a continuation: still steps over both
        {{0xE2, 0x82}, 0, 3},          // cut short by the end of the string
    };
    for (const auto& row : rows) {
        const uint8_t* cursor = row.octets.data();
        EXPECT_EQ(row.character, nextUtf8Char(cursor, row.octets.data() + row.octets.size()));
        EXPECT_EQ(row.step, cursor - row.octets.data());
    }
}

TEST_F(StringTextTest, BitAndOctetStrings)
{
    const uint8_t bits[] = {0xF0};
    CountedValue twelve = {4, bits};
    char* text = nullptr;
    bitStringText(context, RenderInput{}, &twelve, text);
    EXPECT_EQ("04F0", take(text));
    const uint8_t one[] = {0x80};
    CountedValue single = {1, one};
    bitStringText(context, RenderInput{}, &single, text);
    EXPECT_EQ("0780", take(text));
    CountedValue empty = {0, nullptr};
    bitStringText(context, RenderInput{}, &empty, text);
    EXPECT_EQ("00", take(text));
    octetStringText(context, RenderInput{}, &empty, text);
    EXPECT_EQ("", take(text));
    const uint8_t octets[] = {0x0A, 0xBC};
    CountedValue two = {2, octets};
    octetStringText(context, RenderInput{}, &two, text);
    EXPECT_EQ("0ABC", take(text));
}

TEST_F(StringTextTest, TimesInBothForms)
{
    char text[64];
    TimeRecord record = {2023, 1, 2, 3, 4, 5, 0, 0, 1};
    ASSERT_EQ(0, timeText(context, record, text, false));
    EXPECT_STREQ("20230102030405.000Z", text);
    record = {2023, 1, 2, 3, 4, 5, 500, 330, 0};
    ASSERT_EQ(0, timeText(context, record, text, false));
    EXPECT_STREQ("20230102030405.500+0530", text);
    record = {2023, 1, 2, 3, 4, 5, 0, 0, 0};
    ASSERT_EQ(0, timeText(context, record, text, false));
    EXPECT_STREQ("20230102030405.000", text);
    ASSERT_EQ(0, timeText(context, record, text, true));
    EXPECT_STREQ("230102030405Z", text);
    record = {99, 12, 31, 23, 59, 59, 0, -90, 0};
    ASSERT_EQ(0, timeText(context, record, text, true));
    EXPECT_STREQ("991231235959-0130", text);
    record = {2023, 2, 31, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(0, timeText(context, record, text, true));  // only checked against 31
    const TimeRecord outOfRange[] = {
        {2023, 0, 1, 0, 0, 0, 0, 0, 1}, {2023, 13, 1, 0, 0, 0, 0, 0, 1}, {2023, 1, 32, 0, 0, 0, 0, 0, 1},
        {2023, 1, 1, 24, 0, 0, 0, 0, 1}, {2023, 1, 1, 0, 60, 0, 0, 0, 1}, {2023, 1, 1, 0, 0, 60, 0, 0, 1},
    };
    for (const TimeRecord& bad : outOfRange) EXPECT_EQ(7, timeText(context, bad, text, true));
    record = {2023, 1, 1, 0, 0, 0, 1000, 0, 1};
    EXPECT_EQ(7, timeText(context, record, text, false));
    EXPECT_EQ(0, timeText(context, record, text, true));  // UTCTime has no fraction
}

}  // namespace
