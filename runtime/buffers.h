// Buffers of octets that cross subsystems.
#pragma once

#include <cstdint>

// The whole input in memory, owned by the driver (or the repair).
struct InputBuffer {
    int32_t length;
    uint8_t* data;
};

// An encoding as handed to qorDecode.
struct BerBuffer {
    uint32_t length;
    const uint8_t* data;
};
