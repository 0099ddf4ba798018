#include "tlv/reader.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/test_context.h"
#include "tlv/end_cache.h"

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

TEST_F(ReaderTest, AQuietWalkSignalsWithoutPrinting)
{
    run.get()->toolFlags |= TLV_QUIET_ERRORS;
    Octets nested = {0x30, 0x80, 0x30, 0x80, 0x00, 0x00};
    int32_t count = 6;
    EXPECT_EQ(nullptr, nextElement(context, nested.data(), count));
    EXPECT_EQ(36, run.lastError());
    EXPECT_EQ("", run.output());
}

TEST_F(ReaderTest, LengthOctetsLeaveTheCursorOnTheLastOneRead)
{
    struct Row {
        Octets octets;  // from the first length octet on
        int32_t length;
        int32_t cursorAt;      // offset of the cursor afterwards; -1: not told
        int32_t remainingAfter;
    };
    Octets allFF(129, 0x00);  // 0xFF is a long form of 127 octets, nothing special
    allFF[0] = 0xFF;
    allFF[127] = 0x05;
    const Row rows[] = {
        {{0x05, 0x00}, 5, 0, 2},                         // short form: nothing moves
        {{0x80, 0x00}, LENGTH_INDEFINITE, 0, 2},
        {{0x81, 0x80, 0x00}, 128, 1, 2},
        {{0x82, 0x01, 0x2C, 0x00}, 300, 2, 2},
        {{0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, -256, 4, 2},         // 0xFFFFFF00: the last octet isn't added
        {{0x86, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, -256, 4, 4},  // reading stops above 0x7FFFFFFE
        {{0x84, 0x7F, 0xFF, 0xFF, 0xFF, 0x00}, 0x7FFFFFFF, 4, 2},
        {{0x85, 0x01, 0x00, 0x00, 0x00, 0x05, 0x00}, 5, 5, 2},  // the top octet leaves the 32 bits
        {{0x81}, LENGTH_TRUNCATED, -1, 0},
        {{0xFF, 0x01, 0x02}, LENGTH_TRUNCATED, -1, 0},
        {allFF, 5, 127, 2},
    };
    for (const Row& row : rows) {
        const uint8_t* cursor = row.octets.data();
        int32_t remaining = static_cast<int32_t>(row.octets.size());
        EXPECT_EQ(row.length, readLengthOctets(context, cursor, remaining)) << int(row.octets[0]);
        if (row.cursorAt >= 0) {
            EXPECT_EQ(row.cursorAt, cursor - row.octets.data()) << int(row.octets[0]);
        }
        EXPECT_EQ(row.remainingAfter, remaining) << int(row.octets[0]);
    }
}

TEST_F(ReaderTest, HeaderInEveryFormAndEveryShortfall)
{
    constexpr int32_t kUnmoved = 0;
    struct Row {
        Octets octets;
        int32_t length;
        int32_t cursorAt;  // -1: not told
        int32_t remainingAfter;
    };
    const Row rows[] = {
        {{}, 0, kUnmoved, 0},
        {{0x02, 0x01, 0x05}, 1, 2, 1},
        {{0x04, 0x00}, 0, 2, 0},
        {{0x30, 0x80}, LENGTH_INDEFINITE, 2, 0},
        {{0x30, 0x80, 0x00, 0x00}, LENGTH_INDEFINITE, 2, 2},
        {{0x5F, 0x81, 0x01, 0x02, 0x41, 0x42}, 2, 4, 2},
        {{0x04, 0x82, 0x01, 0x2C, 0x41}, 300, 4, 0},    // overruns: nothing left
        {{0x02, 0x01}, 1, 2, 0},
        {{0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, LENGTH_TOO_LARGE, -1, 0},
        {{0x02}, LENGTH_TRUNCATED, kUnmoved, 0},         // no length octet
        {{0x04, 0x82, 0x01}, LENGTH_TRUNCATED, kUnmoved, 0},
    };
    for (const Row& row : rows) {
        const uint8_t* cursor = row.octets.data();
        int32_t remaining = static_cast<int32_t>(row.octets.size());
        EXPECT_EQ(row.length, readHeader(context, cursor, remaining)) << row.octets.size();
        if (row.cursorAt >= 0) {
            EXPECT_EQ(row.cursorAt, cursor - row.octets.data()) << row.octets.size();
        }
        EXPECT_EQ(row.remainingAfter, remaining) << row.octets.size();
    }
}

TEST_F(ReaderTest, HeaderLengthCountsIdentifierAndLengthOctets)
{
    struct Row {
        Octets octets;
        int32_t result;
        int32_t signalled;  // lastError afterwards, 0 for none
    };
    const Row rows[] = {
        {{0x02, 0x01, 0x05}, 2, 0},
        {{0x30, 0x80, 0x00, 0x00}, 2, 0},
        {{0x04, 0x81, 0x80}, 3, 0},
        {{0x5F, 0x81, 0x01, 0x81, 0x05}, 5, 0},
        {{0x04, 0x82, 0x01}, 4, 38},
        {{0x1F, 0x81}, LENGTH_TRUNCATED, 17},
        {{}, 0, 0},
    };
    for (const Row& row : rows) {
        TestContext own;
        EXPECT_EQ(row.result, headerLength(own.get(), row.octets.data(), static_cast<int32_t>(row.octets.size())));
        EXPECT_EQ(row.signalled, own.lastError());
    }
}

TEST_F(ReaderTest, NextElementStepsOrStopsAtTheEnd)
{
    struct Row {
        Octets octets;
        int32_t nextAt;  // -1: null
        int32_t countAfter;
        int32_t signalled;
    };
    const Row rows[] = {
        {{0x05, 0x00, 0x02, 0x01, 0x07}, 2, 3, 0},
        {{0x05, 0x00}, -1, 0, 0},                  // the element ends the data
        {{0x04, 0x05, 0x41}, -1, 0, 0},            // the length overruns: nothing behind it
        {{0x02}, -1, 0, 17},                       // a header that runs off the end
        {{0x30, 0x80}, -1, 0, 36},                 // indefinite, header alone
        {{0x30, 0x80, 0x05, 0x00}, -1, 0, 36},     // indefinite without end-of-contents
        {{0x30, 0x80, 0x00, 0x00}, -1, 0, 0},
        {{0x30, 0x80, 0x30, 0x80, 0x00, 0x00, 0x00, 0x00, 0x05}, 8, 1, 0},
        {{0x30, 0x80, 0x30, 0x80, 0x00, 0x00, 0x05}, -1, 0, 36},  // only the inner one ends
    };
    for (const Row& row : rows) {
        TestContext own;
        int32_t count = static_cast<int32_t>(row.octets.size());
        const uint8_t* next = nextElement(own.get(), row.octets.data(), count);
        const uint8_t* expected = row.nextAt < 0 ? nullptr : row.octets.data() + row.nextAt;
        EXPECT_EQ(expected, next) << row.octets.size();
        EXPECT_EQ(row.countAfter, count) << row.octets.size();
        EXPECT_EQ(row.signalled, own.lastError()) << row.octets.size();
    }
    // A count of 0 is no premature end.
    int32_t none = 0;
    Octets any = {0x02};
    EXPECT_EQ(nullptr, nextElement(context, any.data(), none));
    EXPECT_EQ(0, run.lastError());
}

TEST_F(ReaderTest, FirstInsideWithNothingToRead)
{
    struct Row {
        Octets octets;
        int32_t insideAt;  // -1: null
        int32_t countAfter;  // only looked at when something is inside
    };
    const Row rows[] = {
        {{0x30, 0x03, 0x02, 0x01, 0x05, 0x05, 0x00}, 2, 3},
        {{0x30, 0x80, 0x05, 0x00, 0x05, 0x00}, 2, 2},  // no end-of-contents: its two octets are taken all the same
        {{0x30, 0x80}, -1, 0},                         // the count comes out below 0
        {{0x30, 0x80, 0x05, 0x00}, -1, 0},             // and at 0
        {{0x24, 0x00}, -1, 0},
        {{0x30, 0x00, 0x05, 0x00}, -1, 0},
        {{0x30, 0x80, 0x00, 0x00}, -1, 0},
        {{0x30, 0x80, 0x05, 0x00, 0x00, 0x00, 0x02, 0x01, 0x01}, 2, 2},
        {{0x04, 0x00}, -1, 0},
    };
    for (const Row& row : rows) {
        TestContext own;
        int32_t count = static_cast<int32_t>(row.octets.size());
        const uint8_t* inside = firstInside(own.get(), row.octets.data(), count);
        const uint8_t* expected = row.insideAt < 0 ? nullptr : row.octets.data() + row.insideAt;
        EXPECT_EQ(expected, inside) << row.octets.size();
        if (expected != nullptr) {
            EXPECT_EQ(row.countAfter, count);
        }
        // The step over the element is quiet.
        EXPECT_EQ("", own.output());
    }
}

TEST_F(ReaderTest, ClassesConstructionAndBigEndianNumbers)
{
    const struct {
        uint8_t octet;
        int tagClassOf;
        bool constructed;
    } rows[] = {
        {0x02, 0, false}, {0x30, 0, true}, {0x41, 1, false}, {0x61, 1, true},
        {0x80, 2, false}, {0xA0, 2, true}, {0xC0, 3, false}, {0xFF, 3, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.tagClassOf, tagClass(context, &row.octet, 1)) << int(row.octet);
        EXPECT_EQ(row.constructed, isConstructed(context, &row.octet, 1)) << int(row.octet);
        EXPECT_FALSE(isConstructed(context, &row.octet, 0));
        EXPECT_EQ(4, tagClass(context, &row.octet, 0));
    }
    EXPECT_EQ(4, tagClass(context, nullptr, 1));

    Octets big = {0x01, 0x02, 0xFF, 0xFE};
    EXPECT_EQ(0x0102u, readBigEndian(2, big.data()));
    EXPECT_EQ(0x0102FFFEu, readBigEndian(4, big.data()));
    EXPECT_EQ(0xFFu, readBigEndian(1, big.data() + 2));
    EXPECT_EQ(0u, readBigEndian(0, big.data()));
}

TEST_F(ReaderTest, TagNumbersCutByTheCountOrBy32Bits)
{
    const struct {
        Octets octets;
        int32_t count;
        int32_t number;
    } rows[] = {
        {{0x5F, 0x81, 0x01}, 2, 1},      // cut off by the count
        {{0x5F, 0x81, 0x81, 0x01}, 3, 129},
        {{0x5F, 0x81, 0x01}, 3, 129},
        {{0x5F, 0x81, 0x81, 0x01}, 4, 16513},
        {{0x5F, 0x1F}, 2, 31},
        {{0x5F, 0x90, 0x80, 0x80, 0x80, 0x80, 0x01}, 7, 1},  // 2^39 + 1: the top leaves the 32 bits
        {{0x9E}, 1, 30},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.number, tagNumber(context, row.octets.data(), row.count));
    }
    EXPECT_EQ(-1, tagNumber(context, nullptr, 3));
    EXPECT_EQ(17, run.lastError());
    run.get()->state->lastError = 0;
    const uint8_t alone = 0x1F;
    EXPECT_EQ(-1, tagNumber(context, &alone, 1));
    EXPECT_EQ(17, run.lastError());
}

// The inline reading of the common form against the reading of every form,
// on every one- to three-octet input: the same element, field by field.
TEST(ReadElement, CommonFormReadsAsEveryForm)
{
    auto same = [](const Element& a, const Element& b) {
        return a.start() == b.start() && a.available() == b.available() && a.identifier == b.identifier &&
               a.header == b.header && a.length == b.length && a.tagNumber == b.tagNumber &&
               a.tagClass == b.tagClass && a.constructed == b.constructed;
    };
    uint8_t octets[3] = {0, 0, 0};
    for (int size = 1; size <= 3; ++size) {
        for (int first = 0; first < 256; ++first) {
            for (int second = 0; second < 256; ++second) {
                octets[0] = static_cast<uint8_t>(first);
                octets[1] = static_cast<uint8_t>(second);
                octets[2] = static_cast<uint8_t>(second ^ 0x81);
                const OctetView whole(octets, size);
                ASSERT_TRUE(same(readLongElement(whole), readElement(whole))) << size << ' ' << first << ' ' << second;
            }
        }
    }
}

}  // namespace

namespace {

// With the ends of a layout's walk remembered, a second walk of a smaller
// region still meets what it would meet on its own: here the region of the
// inner element stops inside the header 1F 81 01 00.
TEST(RememberedEnds, ASmallerRegionMeetsItsOwnPrematureEnd)
{
    const Octets octets = {0x30, 0x80, 0x30, 0x80, 0x05, 0x00, 0x1F, 0x81, 0x01, 0x00};
    for (bool remembered : {false, true}) {
        TestContext run;
        EndCacheScope ends(run.get());
        if (remembered) {
            int32_t whole = static_cast<int32_t>(octets.size());
            EXPECT_EQ(nullptr, nextElement(run.get(), octets.data(), whole));
            EXPECT_EQ(36, run.lastError());
        }
        // A premature end is fatal, also in a quiet walk.
        const std::string before = run.output();
        run.get()->jumpTarget = true;
        int32_t inner = 6;  // the outer contents without their two missing octets
        EXPECT_THROW(nextElement(run.get(), octets.data() + 2, inner), ToolJump) << remembered;
        EXPECT_EQ(17, run.lastError()) << remembered;
        EXPECT_EQ(before, run.output());
    }
}

}  // namespace
