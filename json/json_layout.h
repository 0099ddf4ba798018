// The JSON Lines layout (-json): one JSON object a line for each top-level
// record, in input order, for programs to read. The walk goes exactly as far
// as the hexadecimal layout's walk and meets the same misencodings; what the
// listing would print as messages the objects carry as errors.
#pragma once

#include "runtime/buffers.h"

struct RunContext;
struct RecordStretch;

void printJsonLayout(RunContext* context, InputBuffer& buffer);
// Lists a stretch of records; false when the listing ended inside it.
bool listJsonStretch(RunContext* context, const RecordStretch& stretch);
