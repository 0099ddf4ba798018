// The routine of each kind of type record, and the size of a value slot.
#pragma once

#include <cstdint>

#include "decoder/ber_decode.h"

struct RunContext;
struct TypeRecord;

KindRoutine kindRoutine(RunContext* context, uint32_t kind);
uint32_t valueSlotSize(const TypeRecord& type);
