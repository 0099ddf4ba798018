// Buffers of octets that cross subsystems.
#pragma once

#include <cstddef>
#include <cstdint>

// The whole input in memory, owned by the driver (or the repair). A binary
// file may stand in memory as a private mapping of it instead of a block;
// releaseInput gives back either.
struct InputBuffer {
    int32_t length;
    uint8_t* data;
    void* mapBase = nullptr;
    size_t mapLength = 0;
    // Where data[0] stands in the input, in octets (+offset); the -json
    // layout counts its offsets from the start of the input.
    int64_t origin = 0;
    // All its octets, where `length` can't count them (a mapped file above
    // 2 GiB, whose length is then 0); else 0.
    int64_t size = 0;
};

// An encoding as handed to qorDecode.
struct BerBuffer {
    uint32_t length;
    const uint8_t* data;
};
