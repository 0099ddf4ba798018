#include "meaning/utf8_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/test_context.h"

namespace {

std::string readable(const std::string& octets)
{
    TestContext run;
    char* text = nullptr;
    utf8ReadableText(run.get(), text, octets.data(), CHARS_UTF8, static_cast<uint32_t>(octets.size()));
    return run.take(text);
}

std::string readable16(const std::vector<uint16_t>& units)
{
    TestContext run;
    char* text = nullptr;
    utf8ReadableText(run.get(), text, units.data(), CHARS_16BIT, static_cast<uint32_t>(units.size()));
    return run.take(text);
}

std::string readable32(const std::vector<uint32_t>& units)
{
    TestContext run;
    char* text = nullptr;
    utf8ReadableText(run.get(), text, units.data(), CHARS_32BIT, static_cast<uint32_t>(units.size()));
    return run.take(text);
}

TEST(Utf8Text, Utf8StringCharactersAndTheirEscapes)
{
    const struct {
        std::string octets;
        std::string text;
    } rows[] = {
        {"plain", "plain"},
        {"a\\b", "a\\\\b"},
        {"Gr\xC3\xBC\xC3\x9F" "e", "Gr\xC3\xBC\xC3\x9F" "e"},       // two octets: U+00FC, U+00DF
        {"E-Tu\xC4\x9F" "ra", "E-Tu\xC4\x9F" "ra"},                 // U+011F
        {"\xE2\x82\xAC" "5", "\xE2\x82\xAC" "5"},                   // three: U+20AC
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},                   // four: U+1F600
        {"\xC2\xA0", "\xC2\xA0"},                                   // U+00A0, the first after C1
        {"a\x01" "b", "a\\U00000001b"},                             // C0
        {"\x7F", "\\U0000007f"},                                    // DEL
        {"\xC2\x85", "\\U00000085"},                                // C1 (NEL)
        {"\xE2\x80\xA8", "\\U00002028"},                            // line separator
        {"\xE2\x80\xAE" "x", "\\U0000202ex"},                       // right-to-left override
        {"\xE2\x81\xA6", "\\U00002066"},                            // left-to-right isolate
        {"\xE2\x80\x8F", "\\U0000200f"},                            // right-to-left mark
        {"\xE0\x82\xAC", "\\U000000ac"},                            // overlong U+00AC
        {"\xED\xA0\x80", "\\U0000d800"},                            // a surrogate
        {"\xF4\x90\x80\x80", "\\U00110000"},                        // above U+10FFFF
        {"\x80" "a", "\\U00000000a"},                               // a lone continuation octet
        {"a\xC3", "a\\U00000000"},                                  // cut inside a character
        {"\xE2\x82" "A", "\\U00000000"},                            // a character that stops short
        {"\xC0\xAF", "/"},                                          // overlong "/": the decoding stands as ever
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.text, readable(row.octets)) << row.octets;
    }
}

TEST(Utf8Text, BmpAndUniversalStrings)
{
    EXPECT_EQ("G\xC3\xBC", readable16({0x0047, 0x00FC}));
    EXPECT_EQ("\xE2\x82\xAC\xE6\x97\xA5", readable16({0x20AC, 0x65E5}));
    EXPECT_EQ("\\u0009\\u0085", readable16({0x0009, 0x0085}));
    // UCS-2 has no surrogate pairs: the halves stay escaped.
    EXPECT_EQ("\\ud83d\\ude00", readable16({0xD83D, 0xDE00}));
    EXPECT_EQ("\\\\", readable16({0x005C}));  // a backslash, doubled as ever

    EXPECT_EQ("A\xF0\x9F\x98\x80", readable32({0x41, 0x1F600}));
    EXPECT_EQ("\\U00110000\\U0000d800\\U0000007f", readable32({0x110000, 0xD800, 0x7F}));
    EXPECT_EQ("\xC3\xA9", readable32({0xE9}));
}

TEST(Utf8Text, ValidUtf8)
{
    EXPECT_TRUE(isValidUtf8({}));
    const std::string good = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_TRUE(isValidUtf8({reinterpret_cast<const uint8_t*>(good.data()), good.size()}));
    for (const std::string bad : {"\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xC3\x41", "\xFF"}) {
        EXPECT_FALSE(isValidUtf8({reinterpret_cast<const uint8_t*>(bad.data()), bad.size()})) << bad;
    }
}

TEST(Utf8Text, CharactersNotOctets)
{
    const std::string text = "Gr\xC3\xBC\xC3\x9F" "e\xF0\x9F\x98\x80";  // 6 characters in 11 octets
    EXPECT_EQ(6u, utf8Characters(text.data(), text.size()));
    EXPECT_EQ(0u, utf8PrefixOctets(text.data(), text.size(), 0));
    EXPECT_EQ(2u, utf8PrefixOctets(text.data(), text.size(), 2));
    EXPECT_EQ(4u, utf8PrefixOctets(text.data(), text.size(), 3));
    EXPECT_EQ(7u, utf8PrefixOctets(text.data(), text.size(), 5));
    EXPECT_EQ(11u, utf8PrefixOctets(text.data(), text.size(), 6));
    EXPECT_EQ(11u, utf8PrefixOctets(text.data(), text.size(), 60));
}

}  // namespace
