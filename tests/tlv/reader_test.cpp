#include "tlv/reader.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/test_context.h"

namespace {

using Octets = std::vector<uint8_t>;

struct ReaderTest : ::testing::Test {
    TestContext run;
    RunContext* context = run.get();
};

TEST_F(ReaderTest, IdentifierWithoutLengthOctetIsTruncated)
{
    struct Row {
        Octets octets;
        int32_t result;
        int32_t remainingAfter;
    };
    const Row rows[] = {
        {{0x02}, LENGTH_TRUNCATED, 0},          // no length octet
        {{0x1F, 0x81}, LENGTH_TRUNCATED, 0},    // high tag without its end
        {{0x1F}, LENGTH_TRUNCATED, 0},
        {{0x02, 0x01}, 1, 1},
        {{0x5F, 0x81, 0x01, 0x00}, 3, 1},
    };
    for (const Row& row : rows) {
        const uint8_t* cursor = row.octets.data();
        int32_t remaining = static_cast<int32_t>(row.octets.size());
        EXPECT_EQ(row.result, readIdentifier(context, cursor, remaining));
        EXPECT_EQ(row.remainingAfter, remaining);
        const uint8_t* expected = row.octets.data() + (row.result > 0 ? row.result : 0);
        EXPECT_EQ(expected, cursor);
    }
    const uint8_t* none = nullptr;
    int32_t zero = 5;
    EXPECT_EQ(0, readIdentifier(context, none, zero));
}

TEST_F(ReaderTest, LengthOctetsInEveryForm)
{
    struct Row {
        Octets octets;  // from the first length octet on
        int32_t length;
    };
    const Row rows[] = {
        {{0x80}, LENGTH_INDEFINITE},
        {{0x05}, 5},
        {{0x81, 0x80}, 128},
        {{0x82, 0x01, 0x00}, 256},
        {{0x85, 0x01, 0x00, 0x00, 0x00, 0x05, 0x00}, 5},  // the top octet leaves the 32 bits
        {{0x82, 0x01}, LENGTH_TRUNCATED},
        {{0x81}, LENGTH_TRUNCATED},
    };
    for (const Row& row : rows) {
        const uint8_t* cursor = row.octets.data();
        int32_t remaining = static_cast<int32_t>(row.octets.size());
        EXPECT_EQ(row.length, readLengthOctets(context, cursor, remaining));
    }
}

TEST_F(ReaderTest, HeaderOverrunsAndHugeLengths)
{
    Octets overrun = {0x02, 0x01};
    const uint8_t* cursor = overrun.data();
    int32_t remaining = 2;
    EXPECT_EQ(1, readHeader(context, cursor, remaining));
    EXPECT_EQ(0, remaining);

    Octets huge = {0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    cursor = huge.data();
    remaining = static_cast<int32_t>(huge.size());
    EXPECT_EQ(LENGTH_TOO_LARGE, readHeader(context, cursor, remaining));
    EXPECT_EQ(0, remaining);

    Octets fine = {0x04, 0x02, 0x41, 0x42, 0x05};
    cursor = fine.data();
    remaining = 5;
    EXPECT_EQ(2, readHeader(context, cursor, remaining));
    EXPECT_EQ(fine.data() + 2, cursor);
    EXPECT_EQ(3, remaining);
}

TEST_F(ReaderTest, HeaderLengthReportsMissingLengthOctets)
{
    Octets octets = {0x04, 0x82, 0x01};
    EXPECT_EQ(4, headerLength(context, octets.data(), 3));
    EXPECT_EQ(38, run.lastError());
    EXPECT_NE(std::string::npos, run.output().find("length of a tag-length pair, 4 (0x4), longer than remaining data length, 3 (0x3):"));
}

TEST_F(ReaderTest, ContentLengthReportsOverrun)
{
    Octets octets = {0x04, 0x82, 0x01, 0x2C, 0x41};
    EXPECT_EQ(300, contentLength(context, octets.data(), 5));
    EXPECT_EQ(35, run.lastError());
    EXPECT_NE(std::string::npos, run.output().find("length, 300 (0x12c), longer than remaining data length, 1 (0x1); continuing as if length were 1:"));
}

TEST_F(ReaderTest, NextElementStepsOverDefiniteAndIndefinite)
{
    Octets octets = {0x30, 0x80, 0x04, 0x02, 0x41, 0x42, 0x30, 0x80, 0x00, 0x00, 0x00, 0x00, 0x05, 0x00};
    int32_t count = static_cast<int32_t>(octets.size());
    const uint8_t* next = nextElement(context, octets.data(), count);
    EXPECT_EQ(octets.data() + 12, next);
    EXPECT_EQ(2, count);
    EXPECT_EQ(nullptr, nextElement(context, next, count));
    EXPECT_EQ(0, count);
}

TEST_F(ReaderTest, IndefiniteWithoutEndOfContentsSignals36)
{
    Octets alone = {0x30, 0x80};
    int32_t count = 2;
    EXPECT_EQ(nullptr, nextElement(context, alone.data(), count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(36, run.lastError());
    EXPECT_NE(std::string::npos, run.output().find("expected EOC not found"));

    // Already quiet: the same walk says nothing.
    TestContext quietRun;
    quietRun.get()->toolFlags |= TLV_QUIET_ERRORS;
    Octets nested = {0x30, 0x80, 0x30, 0x80, 0x00, 0x00};
    count = 6;
    EXPECT_EQ(nullptr, nextElement(quietRun.get(), nested.data(), count));
    EXPECT_EQ(36, quietRun.lastError());
    EXPECT_EQ("", quietRun.output());
}

TEST_F(ReaderTest, FirstInsideOfEmptyAndFilledElements)
{
    Octets empty = {0x30, 0x00, 0x05, 0x00};
    int32_t count = 4;
    EXPECT_EQ(nullptr, firstInside(context, empty.data(), count));
    EXPECT_EQ(0, count);

    Octets emptyIndefinite = {0x30, 0x80, 0x00, 0x00};
    count = 4;
    EXPECT_EQ(nullptr, firstInside(context, emptyIndefinite.data(), count));

    Octets filled = {0x30, 0x80, 0x05, 0x00, 0x00, 0x00, 0x02, 0x01, 0x01};
    count = 9;
    EXPECT_EQ(filled.data() + 2, firstInside(context, filled.data(), count));
    EXPECT_EQ(2, count);

    Octets primitive = {0x04, 0x00};
    count = 2;
    EXPECT_EQ(nullptr, firstInside(context, primitive.data(), count));
}

TEST_F(ReaderTest, TagNumbersAndClasses)
{
    Octets twoOctets = {0x5F, 0x81, 0x01};
    EXPECT_EQ(129, tagNumber(context, twoOctets.data(), 3));
    Octets threeOctets = {0x5F, 0x81, 0x81, 0x01};
    EXPECT_EQ(16513, tagNumber(context, threeOctets.data(), 4));
    Octets low = {0xA3};
    EXPECT_EQ(3, tagNumber(context, low.data(), 1));
    EXPECT_EQ(2, tagClass(context, low.data(), 1));
    EXPECT_EQ(4, tagClass(context, low.data(), 0));
    Octets alone = {0x1F};
    EXPECT_EQ(-1, tagNumber(context, alone.data(), 1));
    EXPECT_EQ(17, run.lastError());
}

}  // namespace
