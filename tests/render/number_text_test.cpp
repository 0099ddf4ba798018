#include "render/number_text.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

#include "decoder/values.h"
#include "runtime/services.h"
#include "tests/test_context.h"

namespace {

struct NumberTextTest : ::testing::Test {
    TestContext run;
    RunContext* context = run.get();

    std::string take(char* text) { return run.take(text); }
};

TEST(ShortInteger, AdditionalValueShowsTheSignInItsFirstDigit)
{
    const struct {
        int32_t value;
        const char* text;
    } rows[] = {
        {0, "0 (0x00)"},
        {127, "127 (0x7f)"},
        {128, "128 (0x0080)"},
        {255, "255 (0x00ff)"},
        {256, "256 (0x0100)"},
        {32768, "32768 (0x008000)"},
        {2147483647, "2147483647 (0x7fffffff)"},
        {-1, "-1 (0xff)"},
        {-2, "-2 (0xfe)"},
        {-128, "-128 (0xff80)"},
        {-257, "-257 (0xfeff)"},
        {-32768, "-32768 (0xff8000)"},
        {-2147483647 - 1, "-2147483648 (0x80000000)"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.text, shortIntegerText(row.value, false)) << row.value;
    EXPECT_EQ("-128", shortIntegerText(-128, true));
}

TEST_F(NumberTextTest, HugeIntegersInDecimalAndHexadecimal)
{
    const struct {
        std::vector<uint8_t> octets;
        const char* main;
    } rows[] = {
        {{0x00, 0xFF, 0xFF, 0xFF, 0xFF}, "4294967295"},
        {{0x01, 0x00, 0x00, 0x00, 0x00}, "0x0100000000"},
        {{0xFF, 0x00, 0x00, 0x00, 0x00, 0x01}, "0x0000000001"},
        {{0x00, 0x80, 0x00, 0x00, 0x00}, "2147483648"},
        {{0xFF, 0x7F, 0xFF, 0xFF, 0xFF}, "-2147483649"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.main, take(hugeIntegerText(context, row.octets.data(), static_cast<int32_t>(row.octets.size()))));
    }
    const uint8_t five[] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ("0x00ffffffff", take(hugeIntegerHex(context, five, 5)));
}

TEST_F(NumberTextTest, EmptyHugeIntegerIsReported)
{
    EXPECT_EQ(nullptr, hugeIntegerText(context, nullptr, 0));
    EXPECT_EQ(29, run.lastError());
    EXPECT_EQ("Invalid HUGE INTEGER value.\n", run.output());
}

TEST_F(NumberTextTest, IntegerMakerChoosesTheFormByContentsLength)
{
    const uint8_t octets[] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF};
    HugeInteger huge = {5, octets};
    RenderInput input = {nullptr, 0, 5};
    char* text = nullptr;
    ASSERT_EQ(0, integerText(context, input, &huge, text));
    EXPECT_EQ("4294967295 (0x00ffffffff)", take(text));

    int32_t small = 5;
    input.contents = 1;
    ASSERT_EQ(0, integerText(context, input, &small, text));
    EXPECT_EQ("5 (0x05)", take(text));

    context->toolFlags |= TLV_NO_ADDITION;
    input.contents = 5;
    ASSERT_EQ(0, integerText(context, input, &huge, text));
    EXPECT_EQ("4294967295", take(text));
}

TEST_F(NumberTextTest, RealAsExactBinaryMantissaAndExponent)
{
    const struct {
        double value;
        const char* text;
    } rows[] = {
        {1.0, "{ mantissa 1, base 2, exponent 0 } (1.000000E+000)"},
        {-1.5, "{ mantissa -3, base 2, exponent -1 } (-1.500000E+000)"},
        {0.1, "{ mantissa 3602879701896397, base 2, exponent -55 } (1.000000E-001)"},
        {1e-300, "{ mantissa 6032057205060441, base 2, exponent -1049 } (1.000000E-300)"},
        {0.0, "0"},
        {-0.0, "-0"},
        {DBL_MAX, "PLUS-INFINITY"},
        {-DBL_MAX, "MINUS-INFINITY"},
        {std::numeric_limits<double>::infinity(), "PLUS-INFINITY"},
        {std::numeric_limits<double>::quiet_NaN(), "NOT-A-NUMBER"},
    };
    for (const auto& row : rows) {
        char* text = nullptr;
        ASSERT_EQ(0, realValueText(context, RenderInput{}, &row.value, text));
        EXPECT_EQ(row.text, take(text)) << row.value;
    }
    context->toolFlags |= TLV_NO_ADDITION;
    double one = 1.0;
    char* text = nullptr;
    realValueText(context, RenderInput{}, &one, text);
    EXPECT_EQ("{ mantissa 1, base 2, exponent 0 }", take(text));
}

TEST(RealClass, SpecialValues)
{
    EXPECT_EQ(REAL_NOT_A_NUMBER, qorRealClass(std::nan(""), 8));
    EXPECT_EQ(REAL_MINUS_ZERO, qorRealClass(-0.0, 8));
    EXPECT_EQ(REAL_ZERO, qorRealClass(0.0, 8));
    EXPECT_EQ(REAL_PLUS_INFINITY, qorRealClass(DBL_MAX, 8));
    EXPECT_EQ(REAL_MINUS_INFINITY, qorRealClass(-INFINITY, 8));
    EXPECT_EQ(REAL_ORDINARY, qorRealClass(2.5, 8));
    EXPECT_EQ(nullptr, qorRealClassName(REAL_ORDINARY));
    EXPECT_STREQ("NOT-A-NUMBER", qorRealClassName(REAL_NOT_A_NUMBER));
    char text[] = "1,5E+000,0";
    fixDecimalPoint(text);
    EXPECT_STREQ("1.5E+000,0", text);
}

TEST_F(NumberTextTest, BooleanAndNull)
{
    uint8_t yes = 1;
    uint8_t no = 0;
    char* text = nullptr;
    booleanText(context, RenderInput{}, &yes, text);
    EXPECT_EQ("TRUE", take(text));
    booleanText(context, RenderInput{}, &no, text);
    EXPECT_EQ("FALSE", take(text));
    nullText(context, RenderInput{}, &no, text);
    EXPECT_EQ("NULL", take(text));
}

}  // namespace
