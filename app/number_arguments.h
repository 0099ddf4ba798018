// The numbers that extension options take: 64-bit offsets and counts, the
// thread count, record ranges.
#pragma once

#include <cstddef>
#include <cstdint>

// The digits of `text`, `count` characters at most and up to the first that
// isn't a digit, as a number in 64 bits; UINT64_MAX when larger.
uint64_t wideDecimal(const char* text, size_t count);
// A whole argument of 1 to 18 digits.
bool parseCount(const char* text, uint64_t& value);

// -records: n, n-m or n- (to the last record); first from 1, last 0 for no end.
struct RecordRange {
    long first = 1;
    long last = 0;
};
bool parseRecordRange(const char* text, RecordRange& range);
