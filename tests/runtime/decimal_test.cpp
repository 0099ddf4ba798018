#include "runtime/decimal.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

// Every power of ten and its neighbours, and a spread of others: the digits
// are made eight at a time, the leading zeros cut, a 0 kept alone.
TEST(Decimal, SpellsEveryValueAsToStringDoes)
{
    std::vector<uint64_t> values = {0, UINT64_MAX};
    for (uint64_t power = 1; power <= UINT64_MAX / 10; power *= 10) {
        for (uint64_t value : {power - 1, power, power + 1, 5 * power + 3 * (power / 7)}) values.push_back(value);
    }
    uint64_t state = 88172645463325252ULL;
    for (int i = 0; i < 20000; ++i) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        values.push_back(state >> (i % 64));
    }
    for (uint64_t value : values) {
        char out[24];
        EXPECT_EQ(std::to_string(value), std::string(out, putDecimal(out, value))) << value;
    }
}

}  // namespace
