#include "timecheck/time_properties.h"

#include <gtest/gtest.h>

#include <initializer_list>
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
    // Each text's outcome, and the reason of those that name one.
    struct Row {
        const char* text;
        Outcome outcome;
        const char* reason = nullptr;
    };
    void expectRows(const uint32_t* masks, int count, std::initializer_list<Row> rows)
    {
        for (const Row& row : rows) {
            EXPECT_EQ(row.outcome, check(row.text, masks, count)) << row.text;
            if (row.reason != nullptr) {
                EXPECT_EQ(row.reason, reason) << row.text;
            }
        }
    }
};

TEST_F(TimePropertiesTest, CalendarDates)
{
    expectRows(kDate, 1, {
        {"2016-02-29", Pass}, {"2015-02-29", Raised}, {"2000-02-29", Pass}, {"1900-02-29", Raised},
        {"1582-01-01", Pass}, {"2016-13-01", Raised}, {"2016-04-31", Raised}, {"2016-4-01", Fail},
        {"20160401", Fail}, {"", Fail}, {"99999-01-01", Fail},
        {"1581-12-31", Fail, "the year component of the time value is in proleptic Gregorian Calendar"},
        {"2016-04-01x", Fail, "extra characters at the end of time value: \"x\""},
    });
}

TEST_F(TimePropertiesTest, TimesOfDay)
{
    expectRows(kTimeOfDay, 1, {
        {"24:00:00", Pass}, {"24:00:01", Raised}, {"23:59:60", Pass}, {"23:60:00", Raised},
        {"25:00:00", Raised}, {"12-00-00", Fail},
        {"12:00:00Z", Fail, "the value shall specify local time only"},
        {"12:00", Fail, "expected \":\" separator for seconds component but found end of value"},
    });
}

TEST_F(TimePropertiesTest, DatesAndTimes)
{
    expectRows(kDateTime, 2, {
        {"2016-02-26T10:11:12", Pass}, {"2016-02-30T10:11:12", Raised},
        {"2016-02-26T10:61:12", Raised}, {"2016-02-26 10:11:12", Fail},
    });
}

TEST_F(TimePropertiesTest, Durations)
{
    expectRows(kDuration, 1, {
        {"P1Y", Pass},    {"P1Y2M3DT4H5M6S", Pass}, {"P2W", Pass},   {"P2W1D", Fail},       {"P1M1Y", Fail},
        {"PT", Fail},     {"P1.5Y", Pass},          {"P1.5Y2M", Fail}, {"P0.5Y", Pass},     {"PT36H", Pass},
        {"P1DT2H", Pass}, {"P4294967295D", Pass},   {"P4294967296D", Raised}, {"P1T2Y", Fail}, {"1Y", Fail},
        {"P", Fail, "at least one number and its designator shall be present in the duration"},
        {"P01Y", Fail, "the integral part of a designation shall not contain leading zeros"},
    });
}

TEST_F(TimePropertiesTest, ReasonStaysInsideItsBlock)
{
    std::string longText = "P1Y" + std::string(1000, 'x');
    EXPECT_EQ(Fail, check(longText, kDuration, 1));
    EXPECT_EQ(255u, reason.size());
}

}  // namespace
