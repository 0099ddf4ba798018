#include "diagnose/tally.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <initializer_list>
#include <vector>

#include "diagnose/diagnose.h"
#include "diagnose/verdict.h"

namespace {

TEST(CountElementsIn, OneHeaderAfterTheOther)
{
    const struct {
        std::vector<uint8_t> octets;
        uint64_t count;
    } rows[] = {
        {{}, 0},
        {{0x02, 0x01, 0x05}, 1},
        {{0x30, 0x03, 0x02, 0x01, 0x05, 0x05, 0x00}, 3},
        // An indefinite SEQUENCE: its end-of-contents counts for nothing.
        {{0x30, 0x80, 0x02, 0x01, 0x05, 0x00, 0x00, 0x01, 0x01, 0xFF}, 3},
        // A primitive length beyond the octets: counted, then the count stops.
        {{0x02, 0x01, 0x05, 0x04, 0x05, 0x00, 0x02, 0x01, 0x05}, 2},
        // A primitive in the indefinite form can't be followed.
        {{0x04, 0x80, 0x01, 0x00, 0x00, 0x05, 0x00}, 1},
        // Length octets that run off the end: not an element.
        {{0x05, 0x00, 0x04, 0x82, 0x01}, 1},
        // A high tag number without its end.
        {{0x05, 0x00, 0x1F, 0x81}, 1},
    };
    for (const auto& row : rows) {
        const OctetView view(row.octets.data(), static_cast<int32_t>(row.octets.size()));
        EXPECT_EQ(row.count, countElementsIn(view)) << row.octets.size() << " octets";
    }
}

TEST(Misencodings, OnlyFaultsOfTheEncodingCount)
{
    for (int code : std::initializer_list<int>{kPrematureEnd, kBadHugeInteger, kLengthOverrun, kMissingEoc, kEocNonZero, kHeaderOverrun,
                     kTagZero}) {
        EXPECT_TRUE(isMisencoding(code)) << code;
    }
    for (int code : std::initializer_list<int>{0, kNoMemory, kCannotOpen, kReadFailed, kBadOffset, kBadCount, kNonHexadecimal, kWriteFailed}) {
        EXPECT_FALSE(isMisencoding(code)) << code;
    }
}

TEST(DiagnoseTally, FailuresAreCountedByCodeAndResult)
{
    DiagnoseTally tally;
    tally.countFailure("D0064S", 17);
    tally.countFailure("D0022E", 5);
    tally.countFailure("D0064S", 17);
    tally.countFailure("D0064S", 5);
    ASSERT_EQ(3, tally.failureKinds);
    EXPECT_STREQ("D0064S", tally.failures[0].key);
    EXPECT_EQ(2u, tally.failures[0].count);
    EXPECT_EQ(1u, tally.failures[1].count);
    EXPECT_EQ(5, tally.failures[2].result);
}

TEST(DiagnoseTally, KindsBeyondTheTableGatherInTheLast)
{
    DiagnoseTally tally;
    char key[8];
    for (int i = 0; i < DiagnoseTally::kFailureKinds + 5; ++i) {
        std::snprintf(key, sizeof key, "K%d", i);
        tally.countFailure(key, i);
    }
    EXPECT_EQ(DiagnoseTally::kFailureKinds, tally.failureKinds);
    EXPECT_STREQ("other", tally.failures[DiagnoseTally::kFailureKinds - 1].key);
    EXPECT_EQ(6u, tally.failures[DiagnoseTally::kFailureKinds - 1].count);
}

TEST(DiagnosisStatus, FindingsGiveTheirStatusOnlyUnderDiagnosis)
{
    DiagnoseTally clean;
    DiagnoseTally found;
    found.misencodings = 1;
    DiagnoseTally failed;
    failed.failedValues = 1;
    const struct {
        const DiagnoseTally* tally;
        bool diagnosing;
        int status;
        int expected;
    } rows[] = {
        {&clean, true, 0, 0},
        {&found, true, 0, kDiagnosisFound},
        {&failed, true, 0, kDiagnosisFound},
        {&found, false, 0, 0},
        // A premature end is a finding; faults of the run keep their status.
        {&found, true, kPrematureEnd, kDiagnosisFound},
        {&found, false, kPrematureEnd, kPrematureEnd},
        {&found, true, kNonHexadecimal, kNonHexadecimal},
        {&found, true, kWriteFailed, kWriteFailed},
        {&clean, true, kPrematureEnd, kPrematureEnd},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.expected, diagnosisStatus(*row.tally, row.diagnosing, row.status)) << row.status;
    }
}

}  // namespace
