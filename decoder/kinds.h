// The routine of each kind of type record.
#pragma once

#include <cstdint>

#include "decoder/ber_decode.h"

struct RunContext;

// The routine for `kind`; a kind that has none raises 0056S with code 4
// when it runs.
KindRoutine kindRoutine(RunContext* context, uint32_t kind);
