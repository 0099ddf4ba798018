#include "app/number_arguments.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(RecordRange, ReadsOneRecordARangeOrAllFromOne)
{
    struct Row {
        const char* text;
        bool valid;
        long first;
        long last;
    };
    const Row rows[] = {
        {"7", true, 7, 7},          {"2-5", true, 2, 5},       {"4000000-", true, 4000000, 0},
        {"3-3", true, 3, 3},        {"0", false, 0, 0},        {"5-2", false, 0, 0},
        {"-5", false, 0, 0},        {"2-x", false, 0, 0},      {"", false, 0, 0},
        {"1 -2", false, 0, 0},      {"99999999999", false, 0, 0},
    };
    for (const Row& row : rows) {
        RecordRange range;
        EXPECT_EQ(row.valid, parseRecordRange(row.text, range)) << row.text;
        if (!row.valid) continue;
        EXPECT_EQ(row.first, range.first) << row.text;
        EXPECT_EQ(row.last, range.last) << row.text;
    }
}

TEST(WideDecimal, ReadsSixtyFourBitsAndSaturates)
{
    EXPECT_EQ(5368709120ULL, wideDecimal("5368709120", 10));
    EXPECT_EQ(UINT64_MAX, wideDecimal("99999999999999999999999", 23));
    // The count of characters is what is read.
    EXPECT_EQ(12ULL, wideDecimal("1234", 2));
}

}  // namespace
