#include "json/json_text.h"

#include <gtest/gtest.h>

#include <string>

#include "json/tag_fields.h"
#include "tests/test_context.h"

namespace {

TEST(JsonText, Utf8WellFormed)
{
    const struct {
        std::string octets;
        bool valid;
    } rows[] = {
        {"", true},
        {"plain ASCII", true},
        {"\xC3\xA9", true},                 // U+00E9
        {"\xE2\x82\xAC", true},             // U+20AC
        {"\xF0\x9F\x98\x80", true},         // U+1F600
        {"\xF4\x8F\xBF\xBF", true},         // U+10FFFF, the last
        {"\xC3", false},                    // cut short
        {"\xC3\x28", false},                // no continuation octet
        {"\xC0\xAF", false},                // overlong two-octet form
        {"\xE0\x9F\xBF", false},            // overlong three-octet form
        {"\xED\xA0\x80", false},            // a surrogate
        {"\xF0\x8F\xBF\xBF", false},        // overlong four-octet form
        {"\xF4\x90\x80\x80", false},        // beyond U+10FFFF
        {"\xF5\x80\x80\x80", false},        // no such lead
        {"\x80", false},                    // a continuation octet alone
        {"A\xE9", false},                   // Latin-1, not UTF-8
        {std::string("a\0b", 3), true},     // U+0000 is a character too
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.valid, isValidUtf8(row.octets.data(), row.octets.size())) << row.octets;
    }
}

TEST(JsonText, Utf8PrefixNeverCutsACharacter)
{
    const std::string text = "a\xE2\x82\xAC" "b";  // a, U+20AC, b
    EXPECT_EQ(1u, utf8Prefix(text.data(), text.size(), 1));
    EXPECT_EQ(1u, utf8Prefix(text.data(), text.size(), 2));
    EXPECT_EQ(1u, utf8Prefix(text.data(), text.size(), 3));
    EXPECT_EQ(4u, utf8Prefix(text.data(), text.size(), 4));
    EXPECT_EQ(5u, utf8Prefix(text.data(), text.size(), 9));
}

TEST(JsonText, StringsEscaped)
{
    const struct {
        std::string text;
        const char* json;
    } rows[] = {
        {"", "\"\""},
        {"abc", "\"abc\""},
        {"say \"hi\"", "\"say \\\"hi\\\"\""},
        {"a\\b", "\"a\\\\b\""},
        {"\b\f\n\r\t", "\"\\b\\f\\n\\r\\t\""},
        {std::string("\0\x01\x1F", 3), "\"\\u0000\\u0001\\u001F\""},
        {"\x7F/\xC3\xA9", "\"\x7F/\xC3\xA9\""},  // DEL, '/' and non-ASCII stand as they are
    };
    for (const auto& row : rows) {
        TestContext run;
        writeJsonString(run.get(), row.text.data(), row.text.size());
        EXPECT_EQ(row.json, run.output());
    }
}

TEST(JsonText, HexOfOctets)
{
    TestContext run;
    const uint8_t octets[] = {0x00, 0x9A, 0xFF};
    writeJsonHex(run.get(), OctetView(octets, 3));
    writeJsonHex(run.get(), OctetView());
    EXPECT_EQ("\"009AFF\"\"\"", run.output());
}

TEST(JsonText, NumbersBeyondTwoToThe53AreStrings)
{
    const struct {
        int64_t value;
        const char* json;
    } rows[] = {
        {0, "0"},
        {9, "9"},
        {10, "10"},
        {99, "99"},
        {100, "100"},
        {12345, "12345"},
        {1020304, "1020304"},
        {10000000, "10000000"},
        {99999999, "99999999"},
        {100000000, "100000000"},
        {100000001, "100000001"},
        {1000000000000LL, "1000000000000"},
        {-7, "-7"},
        {2147483647, "2147483647"},
        {-2147483648LL, "-2147483648"},
        {9007199254740992LL, "9007199254740992"},        // 2^53: still exact
        {9007199254740993LL, "\"9007199254740993\""},    // one more
        {-9007199254740992LL, "-9007199254740992"},
        {-9007199254740993LL, "\"-9007199254740993\""},
        {INT64_MAX, "\"9223372036854775807\""},
        {INT64_MIN, "\"-9223372036854775808\""},
    };
    for (const auto& row : rows) {
        char out[32];
        char* end = putJsonNumber(out, row.value);
        EXPECT_EQ(row.json, std::string(out, putJsonNumberSlow(out, row.value))) << row.value;
        EXPECT_EQ(row.json, std::string(out, end)) << row.value;
        TestContext run;
        writeJsonNumber(run.get(), row.value);
        EXPECT_EQ(row.json, run.output()) << row.value;
    }
}

// Offsets rise by small steps, by carries into a digit more, by jumps, and
// go back (a new walk): every text as putJsonNumber makes it.
TEST(JsonText, RisingNumbersAsMadeAnew)
{
    const int64_t values[] = {0,   2,  9,  10,      98,      99,     100,     65535,    65536, 131072, 131071,
                              7,   99999998, 99999999, 100000001, 9007199254740990LL, 9007199254740992LL,
                              9007199254740993LL, 9007199254740994LL, 12};
    RisingNumber rising;
    for (int64_t value : values) {
        rising.set(value);
        char made[32];
        char stepped[32];
        EXPECT_EQ(std::string(made, putJsonNumber(made, value)), std::string(stepped, rising.put(stepped))) << value;
    }
}

}  // namespace
