#include "textforms/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Decoded {
    std::string octets;
    TextFaultAt fault;
};

Decoded decode(const std::string& text)
{
    std::vector<uint8_t> out(text.size() + 1);
    size_t written = 0;
    TextFaultAt fault = decodeBase64Text(text.data(), text.size(), out.data(), written);
    return {std::string(out.begin(), out.begin() + static_cast<long>(written)), fault};
}

struct Base64Row {
    std::string text;
    std::string octets;  // what stands decoded; up to the fault when there is one
    TextFault fault;
    long line;
    uint8_t character;
};

TEST(Base64Text, AlphabetsPaddingWhiteSpaceAndFaults)
{
    const std::vector<Base64Row> rows = {
        {"", "", TextFault::None, 0, 0},
        {" \r\n\t", "", TextFault::None, 0, 0},
        {"TWFu", "Man", TextFault::None, 0, 0},
        // A last group of three or two characters, padded or not.
        {"TWE", "Ma", TextFault::None, 0, 0},
        {"TQ==", "M", TextFault::None, 0, 0},
        {"TQ", "M", TextFault::None, 0, 0},
        {"TQ=", "M", TextFault::None, 0, 0},
        {"TQ= =\n", "M", TextFault::None, 0, 0},
        // 62 and 63 in both alphabets, even mixed.
        {"+/+/", "\xFB\xFF\xBF", TextFault::None, 0, 0},
        {"+_-/", "\xFB\xFF\xBF", TextFault::None, 0, 0},
        {"AAAA", std::string(3, '\0'), TextFault::None, 0, 0},
        {"////", "\xFF\xFF\xFF", TextFault::None, 0, 0},
        // White space anywhere, a group across lines.
        {" T W\tF\r\nu \n\n", "Man", TextFault::None, 0, 0},
        {"TW\nFu\nTW\nE", "ManMa", TextFault::None, 0, 0},
        // Bits below the last whole octet are dropped, not checked.
        {"TR", "M", TextFault::None, 0, 0},
        // A fault names its line and character.
        {"TWFu!", "Man", TextFault::BadCharacter, 1, '!'},
        {"TWFu\nTW\x80u", "Man", TextFault::BadCharacter, 2, 0x80},
        {"TWFu\n\n:", "Man", TextFault::BadCharacter, 3, ':'},
        {"TW.Fu", "", TextFault::BadCharacter, 1, '.'},
        {std::string("TW\0u", 4), "", TextFault::BadCharacter, 1, 0},
        // Padding behind none or one character of a group, or overfilling it.
        {"=", "", TextFault::MisplacedPadding, 1, '='},
        {"TWFu=", "Man", TextFault::MisplacedPadding, 1, '='},
        {"TWFu\nT=", "Man", TextFault::MisplacedPadding, 2, '='},
        {"TQ===", "", TextFault::MisplacedPadding, 1, '='},
        {"TWE==", "", TextFault::MisplacedPadding, 1, '='},
        // Base64 behind the padding: two files run together.
        {"TWE=\nTWFu", "", TextFault::DataAfterPadding, 2, 'T'},
        {"TQ=x", "", TextFault::DataAfterPadding, 1, 'x'},
        // One character alone in the last group holds no whole octet.
        {"TWFuT", "Man", TextFault::LoneCharacter, 1, 0},
    };
    for (const Base64Row& row : rows) {
        Decoded decoded = decode(row.text);
        EXPECT_EQ(row.octets, decoded.octets) << row.text;
        EXPECT_EQ(row.fault, decoded.fault.fault) << row.text;
        EXPECT_EQ(row.line, decoded.fault.line) << row.text;
        EXPECT_EQ(row.character, decoded.fault.character) << row.text;
    }
}

TEST(Base64Text, EveryOctetValueRoundTrips)
{
    // The 256 octet values, encoded by the RFC 4648 alphabet here and
    // decoded back.
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string octets;
    for (int i = 0; i < 256; ++i) octets += static_cast<char>(i);
    std::string text;
    for (size_t at = 0; at < octets.size(); at += 3) {
        uint32_t group = static_cast<uint8_t>(octets[at]) << 16;
        if (at + 1 < octets.size()) group |= static_cast<uint8_t>(octets[at + 1]) << 8;
        if (at + 2 < octets.size()) group |= static_cast<uint8_t>(octets[at + 2]);
        const size_t characters = at + 2 < octets.size() ? 4 : at + 1 < octets.size() ? 3 : 2;
        for (size_t i = 0; i < characters; ++i) text += kAlphabet[(group >> (18 - 6 * i)) & 0x3F];
        if (at % 57 == 54) text += "\n";
    }
    EXPECT_EQ(octets, decode(text).octets);
}

}  // namespace
