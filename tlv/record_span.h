// The span of the whole input, kept while the hexadecimal layout prints, so
// that a premature end can show the tail of the bad record.
#pragma once

#include <cstdint>

struct RecordSpan {
    int64_t total;
    const uint8_t* start;
};
