#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "runtime/output.h"

namespace {

struct Row {
    std::string expected;
    std::string produced;
};

// "%I64d" is ours; the compiler's format check doesn't know it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"

TEST(Format, ExponentsHaveThreeDigits)
{
    const Row rows[] = {
        {"1.500000E+000", formatText("%E", 1.5)},
        {"1.000000E-300", formatText("%E", 1e-300)},
        {"-2.500000e+010", formatText("%e", -2.5e10)},
        {"1.23E+004", formatText("%.2E", 12345.678)},
        {"  1.000000E+000", formatText("%15E", 1.0)},
        {"1.000000E+000  ", formatText("%-15E", 1.0)},
        {"001.000000E+000", formatText("%015E", 1.0)},
        {"-01.000000E+000", formatText("%015E", -1.0)},
        {"1E-005", formatText("%G", 1e-5)},
        {"0.5", formatText("%g", 0.5)},
    };
    for (const Row& row : rows) EXPECT_EQ(row.expected, row.produced);
}

TEST(Format, I64dIsASigned64BitDecimal)
{
    const Row rows[] = {
        {"-9223372036854775808", formatText("%I64d", INT64_MIN)},
        {"   42", formatText("%5I64d", int64_t{42})},
        {"42   |", formatText("%-5I64d|", int64_t{42})},
        {"-1 and 7", formatText("%I64d and %d", int64_t{-1}, 7)},
    };
    for (const Row& row : rows) EXPECT_EQ(row.expected, row.produced);
}

TEST(Format, WidthsAndTheOtherConversions)
{
    const Row rows[] = {
        {"[   ]", formatText("[%*s]", -3, "")},
        {"[ab  ]", formatText("[%*s]", -4, "ab")},
        {"[  ab]", formatText("[%*s]", 4, "ab")},
        {"[abc]", formatText("[%*s]", 2, "abc")},
        {"[   -5]", formatText("[%*ld]", 5, -5L)},
        {"[-5   ]", formatText("[%*ld]", -5, -5L)},
        {"12 0x12c", formatText("%ld %#x", 12L, 300u)},
        {"100%", formatText("%d%%", 100)},
        {"A", formatText("%c", 'A')},
        {"0A", formatText("%02X", 10)},
    };
    for (const Row& row : rows) EXPECT_EQ(row.expected, row.produced);
}

#pragma GCC diagnostic pop

}  // namespace
