// The constant description of the built-in types that the decoder walks.
#pragma once

#include <cstdint>

struct RunContext;

struct ControlTable {
    uint16_t version;  // must be 15
    uint16_t flags;
    uint16_t linkedRules;
    void (*init)(RunContext* context);
};
