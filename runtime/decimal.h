// Decimal digits of unsigned numbers, for the writers that compose text in
// place: eight digits a step, no division loop per digit.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

// "00" to "99".
inline constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Eight decimal digits of a value below 10^8, as digit values 0 to 9 packed
// first digit lowest (the order they stand in memory on a little-endian
// machine), leading zeros kept. Splits into two halves of four digits, each
// into two pairs, each pair into its digits, all lanes at once.
inline uint64_t eightDigits(uint32_t value)
{
    const uint64_t halves = (value / 10000) | (static_cast<uint64_t>(value % 10000) << 32);
    const uint64_t hundreds = ((halves * 10486) >> 20) & 0x0000007F0000007FULL;  // lane / 100
    const uint64_t pairs = hundreds | ((halves - hundreds * 100) << 16);
    const uint64_t tens = ((pairs * 103) >> 10) & 0x000F000F000F000FULL;         // lane / 10
    return tens | ((pairs - tens * 10) << 8);
}

inline constexpr uint64_t kAsciiZeros = 0x3030303030303030ULL;

// The digits of `value` at `out` without leading zeros ("0" for 0);
// returns the end. Writes whole words: `out` needs room for 8 characters,
// or for the digits when there are more (20 hold any value).
inline char* putDecimal(char* out, uint64_t value)
{
    constexpr uint64_t kEight = 100000000;
    if (value < 100) {
        // Octets of an address, small counts: a step of their own.
        if (value < 10) {
            *out = static_cast<char>('0' + value);
            return out + 1;
        }
        std::memcpy(out, &kDigitPairs[2 * value], 2);
        return out + 2;
    }
    if (value < kEight) {
        uint64_t digits = eightDigits(static_cast<uint32_t>(value));
        // The leading zero digits are the low zero octets; the last digit stays, even a 0.
        const int zeros = __builtin_ctzll(digits | (uint64_t{1} << 56)) / 8;
        digits = (digits >> (8 * zeros)) | kAsciiZeros;
        std::memcpy(out, &digits, 8);
        return out + 8 - zeros;
    }
    // The digits in front of the last eight, then those eight in full.
    out = putDecimal(out, value / kEight);
    const uint64_t digits = eightDigits(static_cast<uint32_t>(value % kEight)) | kAsciiZeros;
    std::memcpy(out, &digits, 8);
    return out + 8;
}

// A signed value as "%ld" prints it, at `out` (room as putDecimal asks, and
// one for the sign); returns the end.
inline char* putSignedDecimal(char* out, long value)
{
    if (value >= 0) return putDecimal(out, static_cast<uint64_t>(value));
    *out = '-';
    return putDecimal(out + 1, 0 - static_cast<uint64_t>(value));
}

// 0 to 999 as four characters each, right-aligned behind blanks ("   7",
// " 334"), and four more for reading past the last: the columns of a
// listing line take the last characters they need.
inline constexpr std::array<char, 4004> kRightAlignedSmall = [] {
    std::array<char, 4004> table{};
    for (int value = 0; value < 1000; ++value) {
        char* field = &table[4 * static_cast<size_t>(value)];
        field[0] = ' ';
        field[1] = value >= 100 ? static_cast<char>('0' + value / 100) : ' ';
        field[2] = value >= 10 ? static_cast<char>('0' + value / 10 % 10) : ' ';
        field[3] = static_cast<char>('0' + value % 10);
    }
    return table;
}();
