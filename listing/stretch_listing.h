// Listing an input in stretches of whole records: on several threads, in
// windows of an input of any size, from a chosen record to another. The
// output is the one of a single walk over the whole input, byte for byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "listing/record_scan.h"

struct RunContext;

// Exit statuses of a listing in stretches.
constexpr int kRecordTooLarge = 84;  // a record doesn't end within 2 GiB
constexpr int kNoSuchRecord = 85;    // -records: the input ends in front of the first one

struct ListingInput {
    const uint8_t* data = nullptr;
    int64_t size = 0;
    int64_t origin = 0;  // where data[0] stands in the file (+offset)
    // A read-only mapping of the file, whose pages behind the listing are
    // let go as it goes; null for an input in memory.
    void* mapBase = nullptr;
    size_t mapLength = 0;
};

struct ListingPlan {
    ListingLayout layout = ListingLayout::Hexadecimal;
    int threads = 1;
    long firstRecord = 1;  // -records n-m: 1 and 0 list them all
    long lastRecord = 0;
    bool progress = false;
    // Octets a stretch holds, about; 0: chosen by the input's size.
    int64_t stretchOctets = 0;
};

// Lists the input; returns 0, or one of the statuses above. A fatal report
// ends the run from inside, as it does in a walk over the whole input.
int listInStretches(RunContext* context, const ListingInput& input, const ListingPlan& plan);
