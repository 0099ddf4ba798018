// Shapes that make a careless walker quadratic or deep: generated here, run
// whole inside the process in every layout, each bounded in time.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/hostile_inputs.h"

namespace {

using hostile::kBudgetSeconds;
using hostile::longOctetString;
using hostile::Octets;
using hostile::repeated;

bool endsWith(const std::string& text, const std::string& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

constexpr const char* kLayouts[] = {"-hexadecimal", "-syntax", "-decomposed"};

// Runs every layout on `input`; each must end normally within the budget.
std::vector<std::string> runEveryLayout(const Octets& input)
{
    std::vector<std::string> outputs;
    for (const char* layout : kLayouts) {
        hostile::TimedRun run = hostile::runTimed(input, {layout});
        EXPECT_EQ(0, run.status) << layout;
        EXPECT_LT(run.seconds, kBudgetSeconds) << layout;
        outputs.push_back(std::move(run.output));
    }
    return outputs;
}

TEST(HostileShapes, MillionNestedIndefiniteElements)
{
    const Octets input = repeated(repeated(repeated({}, 1000000, {0x30, 0x80}), 1, {0x05, 0x00}), 1000000, {0, 0});
    for (const std::string& output : runEveryLayout(input)) {
        EXPECT_NE(std::string::npos, output.find("Nesting deeper than 256 levels"));
    }
}

TEST(HostileShapes, MillionNestedIndefiniteElementsWithoutEnds)
{
    for (const std::string& output : runEveryLayout(repeated({}, 1000000, {0x30, 0x80}))) {
        EXPECT_TRUE(endsWith(output, "expected EOC not found for indefinite length encoding.\n\n\n"));
    }
}

TEST(HostileShapes, MillionNestedDefiniteSequences)
{
    // Each level: 30 84 and four length octets, the length of what is inside.
    constexpr int kLevels = 1000000;
    Octets input(6 * static_cast<size_t>(kLevels) + 2);
    for (int level = 0; level < kLevels; ++level) {
        uint32_t inside = static_cast<uint32_t>(6 * (kLevels - level - 1) + 2);
        uint8_t* at = input.data() + 6 * static_cast<size_t>(level);
        at[0] = 0x30;
        at[1] = 0x84;
        at[2] = static_cast<uint8_t>(inside >> 24);
        at[3] = static_cast<uint8_t>(inside >> 16);
        at[4] = static_cast<uint8_t>(inside >> 8);
        at[5] = static_cast<uint8_t>(inside);
    }
    input[input.size() - 2] = 0x05;
    input[input.size() - 1] = 0x00;
    runEveryLayout(input);
}

TEST(HostileShapes, HundredMegabyteOctetString)
{
    const Octets input = longOctetString(100u << 20);
    for (const std::string& output : runEveryLayout(input)) {
        EXPECT_LT(output.size(), 1000u);  // truncated to its line
    }
}

TEST(HostileShapes, MillionConcatenatedRecords)
{
    for (const std::string& output : runEveryLayout(repeated({}, 1000000, {0x02, 0x01, 0x05}))) {
        EXPECT_NE(std::string::npos, output.find("#1000000 detected"));
    }
}

TEST(HostileShapes, ConstructedStringsNestedToTheLimit)
{
    // Ten levels of constructed OCTET STRING around a thousand segments.
    runEveryLayout(repeated(repeated(repeated({}, 9, {0x24, 0x80}), 1000, {0x04, 0x01, 0x41}), 9, {0x00, 0x00}));
}

}  // namespace
