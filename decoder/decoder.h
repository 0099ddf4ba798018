// The table-driven decoder's entry points.
#pragma once

#include "runtime/buffers.h"

struct RunContext;

// Reads one PDU of the built-in table from `buffer`; on 0, `value` points at
// the decoded value's slot (owned by the caller, released with
// qorFreeValue); on any other code no value and no memory is held.
int qorDecode(RunContext* context, int& pdu, BerBuffer& buffer, void*& value);
int qorFreeValue(RunContext* context, int pdu, void* value);
