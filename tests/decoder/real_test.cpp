// REAL contents in every form, through the parser behind the REAL decoder.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "decoder/primitive.h"
#include "runtime/runtime_catalog.h"

namespace {

std::vector<uint8_t> decimal(uint8_t form, const std::string& text)
{
    std::vector<uint8_t> octets(text.size() + 1, form);
    for (size_t i = 0; i < text.size(); ++i) octets[i + 1] = static_cast<uint8_t>(text[i]);
    return octets;
}

double parsed(const std::vector<uint8_t>& octets, int32_t expectedEntry = 0)
{
    double value = 0;
    EXPECT_EQ(expectedEntry, parseRealContents(octets.data(), static_cast<int32_t>(octets.size()), value));
    return value;
}

TEST(RealContents, DecimalForms)
{
    const struct {
        uint8_t form;
        const char* text;
        int32_t entry;
        double value;  // when no entry is expected
    } rows[] = {
        {1, "12", 0, 12.0},
        {1, "-12", 0, -12.0},
        {1, "100", 0, 100.0},
        {2, "1.5", 0, 1.5},
        {2, "0.05", 0, 0.05},
        {2, "1.500", 0, 1.5},
        {3, "1.5E1", 0, 15.0},
        {3, " +15E-1", 0, 1.5},
        {3, "15E2", 0, 1500.0},
        {3, "100E1", 0, 1000.0},
        // Twenty-five significant digits keep the first twenty and their size.
        {1, "1234567890123456789012345", 0, 1234567890123456789012345.0},
        {2, "1234567890123456789012345.000", 0, 1234567890123456789012345.0},
        {3, "1E308", 0, 1e308},
        {3, "1E-400", 0, 0.0},
        {1, "0", RT_REAL_ZERO_CONTENTS, 0},
        {2, "0.000", RT_REAL_ZERO_CONTENTS, 0},
        {1, "+", RT_MANTISSA_DIGITS, 0},
        {3, "1E", RT_EXPONENT_DIGITS, 0},
        {1, "12x", RT_MISENCODED, 0},
        {2, "12", RT_INVALID_NR2, 0},
        {1, "1.5", RT_INVALID_NR1, 0},
        {2, "1E5", RT_INVALID_NR2, 0},
        {3, "1E400", RT_REAL_TOO_LARGE, 0},
    };
    for (const auto& row : rows) {
        double value = parsed(decimal(row.form, row.text), row.entry);
        if (row.entry == 0) {
            EXPECT_DOUBLE_EQ(row.value, value) << row.text;
        }
    }
    // Scaling divides twice by a power of ten found by squaring: close, not exact.
    EXPECT_NEAR(1.0, parsed(decimal(3, "1E-300")) / 1e-300, 1e-14);
}

TEST(RealContents, BinaryForms)
{
    EXPECT_EQ(1.0, parsed({0x80, 0x00, 0x01}));
    EXPECT_EQ(-1.0, parsed({0xC0, 0x00, 0x01}));
    EXPECT_EQ(0.5, parsed({0x90, 0xFF, 0x04}));      // base 8
    EXPECT_EQ(256.0, parsed({0xA0, 0x02, 0x01}));    // base 16: 16^2
    EXPECT_EQ(2.0, parsed({0x84, 0x00, 0x01}));      // scale factor 1
    EXPECT_EQ(256.0, parsed({0x80, 0x00, 0x01, 0x00}));  // a trailing zero octet adds 8
    EXPECT_TRUE(std::isinf(parsed({0x81, 0x7F, 0xFF, 0x01})));  // 2^32767: no failure
    parsed({0x81, 0x00, 0x01, 0x01}, RT_EXPONENT_NEEDLESSLY_LONG);  // exponent 00 01
    parsed({0xB0, 0x00, 0x01}, RT_RESERVED_REAL);                   // base code 3
    parsed({0x83, 0x05, 0x00}, RT_MISENCODED);                      // count beyond the octets
    parsed({0x83, 0x00, 0x01}, RT_MISENCODED);                      // a count of 0
}

TEST(RealContents, SingleOctets)
{
    EXPECT_EQ(DBL_MAX, parsed({0x40}));
    EXPECT_EQ(-DBL_MAX, parsed({0x41}));
    EXPECT_TRUE(std::isnan(parsed({0x42})));
    double minusZero = parsed({0x43});
    EXPECT_TRUE(minusZero == 0 && std::signbit(minusZero));
    parsed({0x00}, RT_REAL_TOO_LARGE);
    parsed({0x80}, RT_MISENCODED);
    parsed({0x01}, RT_MANTISSA_DIGITS);
    parsed({0x44}, RT_RESERVED_REAL);
    parsed({0x40, 0x00}, RT_MISENCODED);
}

}  // namespace
