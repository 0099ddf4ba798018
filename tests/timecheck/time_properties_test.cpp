#include "timecheck/time_properties.h"

#include <gtest/gtest.h>

#include <string>

#include "decoder/errors.h"
#include "tests/test_context.h"

namespace {

constexpr uint32_t kDate[] = {0x1382};
constexpr uint32_t kTimeOfDay[] = {0x0784};
constexpr uint32_t kDateTime[] = {0x138a, 0x0784};
constexpr uint32_t kDuration[] = {0x0110};

enum Outcome { Pass, Fail, Raised };

struct TimePropertiesTest : ::testing::Test {
    TestContext run;
    RunContext* context = run.get();
    std::string reason;

    Outcome check(const std::string& text, const uint32_t* masks, int count)
    {
        context->services->svcOpenScratch(context);
        Outcome outcome = Pass;
        try {
            if (!qorCheckTimeProperties(context, text.c_str(), masks, count)) {
                outcome = Fail;
                reason = static_cast<const char*>(context->decode.pendingArgument);
            }
        } catch (const DecodeFailure&) {
            outcome = Raised;
            reason = context->errorText;
        }
        context->services->svcCloseScratch(context);
        return outcome;
    }
};

TEST_F(TimePropertiesTest, CalendarDates)
{
    const struct {
        const char* text;
        Outcome outcome;
    } rows[] = {
        {"2016-02-29", Pass}, {"2015-02-29", Raised}, {"2000-02-29", Pass}, {"1900-02-29", Raised},
        {"1581-12-31", Fail}, {"1582-01-01", Pass},   {"2016-13-01", Raised}, {"2016-04-31", Raised},
        {"2016-4-01", Fail},  {"20160401", Fail},     {"2016-04-01x", Fail},  {"", Fail},
        {"99999-01-01", Fail},
    };
    for (const auto& row : rows) EXPECT_EQ(row.outcome, check(row.text, kDate, 1)) << row.text;
    check("1581-12-31", kDate, 1);
    EXPECT_EQ("the year component of the time value is in proleptic Gregorian Calendar", reason);
    check("2016-04-01x", kDate, 1);
    EXPECT_EQ("extra characters at the end of time value: \"x\"", reason);
}

TEST_F(TimePropertiesTest, TimesOfDay)
{
    const struct {
        const char* text;
        Outcome outcome;
    } rows[] = {
        {"24:00:00", Pass}, {"24:00:01", Raised}, {"23:59:60", Pass}, {"23:60:00", Raised},
        {"25:00:00", Raised}, {"12:00:00Z", Fail}, {"12:00", Fail}, {"12-00-00", Fail},
    };
    for (const auto& row : rows) EXPECT_EQ(row.outcome, check(row.text, kTimeOfDay, 1)) << row.text;
    check("12:00:00Z", kTimeOfDay, 1);
    EXPECT_EQ("the value shall specify local time only", reason);
    check("12:00", kTimeOfDay, 1);
    EXPECT_EQ("expected \":\" separator for seconds component but found end of value", reason);
}

TEST_F(TimePropertiesTest, DatesAndTimes)
{
    EXPECT_EQ(Pass, check("2016-02-26T10:11:12", kDateTime, 2));
    EXPECT_EQ(Raised, check("2016-02-30T10:11:12", kDateTime, 2));
    EXPECT_EQ(Raised, check("2016-02-26T10:61:12", kDateTime, 2));
    EXPECT_EQ(Fail, check("2016-02-26 10:11:12", kDateTime, 2));
}

TEST_F(TimePropertiesTest, Durations)
{
    const struct {
        const char* text;
        Outcome outcome;
    } rows[] = {
        {"P", Fail},         {"P1Y", Pass},     {"P1Y2M3DT4H5M6S", Pass}, {"P2W", Pass},
        {"P2W1D", Fail},     {"P1M1Y", Fail},   {"PT", Fail},             {"P1.5Y", Pass},
        {"P1.5Y2M", Fail},   {"P01Y", Fail},    {"P0.5Y", Pass},          {"PT36H", Pass},
        {"P1DT2H", Pass},    {"P4294967295D", Pass}, {"P1T2Y", Fail},     {"1Y", Fail},
    };
    for (const auto& row : rows) EXPECT_EQ(row.outcome, check(row.text, kDuration, 1)) << row.text;
    EXPECT_EQ(Raised, check("P4294967296D", kDuration, 1));
    check("P", kDuration, 1);
    EXPECT_EQ("at least one number and its designator shall be present in the duration", reason);
    check("P01Y", kDuration, 1);
    EXPECT_EQ("the integral part of a designation shall not contain leading zeros", reason);
}

TEST_F(TimePropertiesTest, ReasonStaysInsideItsBlock)
{
    std::string longText = "P1Y" + std::string(1000, 'x');
    EXPECT_EQ(Fail, check(longText, kDuration, 1));
    EXPECT_EQ(255u, reason.size());
}

}  // namespace
