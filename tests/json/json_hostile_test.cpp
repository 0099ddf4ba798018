// The shapes that make a careless walker quadratic or deep, through -json:
// each run ends normally within a time bound and leaves whole JSON lines.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/hostile_inputs.h"

namespace {

using hostile::longOctetString;
using hostile::Octets;
using hostile::repeated;

struct JsonRun {
    int status;
    std::string output;
};

JsonRun runJson(const Octets& input, const char* option = nullptr)
{
    std::vector<const char*> options = {"-json"};
    if (option != nullptr) options.push_back(option);
    const hostile::TimedRun run = hostile::runTimed(input, options);
    EXPECT_LT(run.seconds, hostile::kBudgetSeconds);
    return {run.status, run.output};
}

// Every line one object whose brackets close, strings taken into account;
// returns the count of lines, or -1.
long wholeLines(const std::string& output)
{
    long lines = 0;
    long open = 0;
    bool inString = false;
    for (size_t at = 0; at < output.size(); ++at) {
        const char c = output[at];
        if (inString) {
            if (c == '\\') ++at;
            if (c == '"') inString = false;
            continue;
        }
        if (c == '"') inString = true;
        if (c == '{' || c == '[') ++open;
        if (c == '}' || c == ']') --open;
        if (open < 0) return -1;
        if (c == '\n') {
            if (open != 0) return -1;
            ++lines;
        }
    }
    return open == 0 && !inString && (output.empty() || output.back() == '\n') ? lines : -1;
}

TEST(JsonHostileShapes, MillionNestedIndefiniteElements)
{
    const Octets input = repeated(repeated(repeated({}, 1000000, {0x30, 0x80}), 1, {0x05, 0x00}), 1000000, {0, 0});
    const JsonRun run = runJson(input);
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(1, wholeLines(run.output));
    // The walk goes 256 levels deep; the 256th shows its contents in hex.
    EXPECT_NE(std::string::npos, run.output.find("\"too_deep\":true"));
    EXPECT_NE(std::string::npos, run.output.find("\"truncated\":true"));
}

TEST(JsonHostileShapes, MillionNestedIndefiniteElementsWithoutEnds)
{
    const JsonRun run = runJson(repeated({}, 1000000, {0x30, 0x80}));
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(1, wholeLines(run.output));
    EXPECT_NE(std::string::npos, run.output.find("{\"code\":36,"));
}

TEST(JsonHostileShapes, HundredMegabyteOctetStringIsCut)
{
    const Octets input = longOctetString(100u << 20);
    const JsonRun run = runJson(input);
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(1, wholeLines(run.output));
    // 64 KiB of contents in hexadecimal, and the mark.
    std::string hex;
    for (int i = 0; i < 65536; ++i) hex += "41";
    EXPECT_NE(std::string::npos, run.output.find("\"hex\":\"" + hex + "\""));
    EXPECT_NE(std::string::npos, run.output.find("\"truncated\":true"));
}

size_t occurrences(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST(JsonHostileShapes, MillionOctetStringsEachHoldingTheNextUnderDig)
{
    // From the inside out: 04 02 41 41, then each string holds the one before.
    constexpr int kLevels = 1000000;
    std::vector<uint32_t> sizes(kLevels);
    sizes[0] = 4;
    for (int i = 1; i < kLevels; ++i) {
        const uint32_t inner = sizes[i - 1];
        sizes[i] = 1 + (inner < 0x80 ? 1 : inner < 0x100 ? 2 : inner < 0x10000 ? 3 : 4) + inner;
    }
    Octets input;
    input.reserve(sizes[kLevels - 1]);
    for (int i = kLevels - 1; i >= 1; --i) {
        const uint32_t length = sizes[i - 1];
        input.push_back(0x04);
        if (length >= 0x10000) input.insert(input.end(), {0x83, static_cast<uint8_t>(length >> 16)});
        if (length >= 0x100 && length < 0x10000) input.push_back(0x82);
        if (length >= 0x100) input.push_back(static_cast<uint8_t>(length >> 8));
        if (length >= 0x80 && length < 0x100) input.push_back(0x81);
        input.push_back(static_cast<uint8_t>(length));
    }
    input.insert(input.end(), {0x04, 0x02, 0x41, 0x41});
    ASSERT_EQ(sizes[kLevels - 1], input.size());
    const JsonRun run = runJson(input, "-dig");
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(1, wholeLines(run.output));
    // Levels 1 to 255 each open the string below them; the 256th level is
    // the deepest the walk lists, so its string stays octets, and nothing
    // is too deep.
    EXPECT_EQ(255u, occurrences(run.output, "\"encapsulated\":["));
    EXPECT_EQ(std::string::npos, run.output.find("\"too_deep\""));
}

TEST(JsonHostileShapes, MillionConcatenatedRecords)
{
    const JsonRun run = runJson(repeated({}, 1000000, {0x02, 0x01, 0x05}));
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(1000000, wholeLines(run.output));
    EXPECT_NE(std::string::npos, run.output.find("{\"kind\":\"record\",\"record\":1000000,\"offset\":2999997,"));
}

}  // namespace
