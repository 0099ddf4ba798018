// The decomposed-TLV layout: one line an element with its offset, depth,
// header length, length, form, name and value.
#pragma once

#include <cstdint>

#include "runtime/buffers.h"

struct RunContext;
struct Element;
struct RecordStretch;

void printDecomposedLayout(RunContext* context, InputBuffer& buffer);
// Lists a stretch of PDUs; false when the listing ended inside it.
bool listDecomposedStretch(RunContext* context, const RecordStretch& stretch);
int printDecomposedElement(RunContext* context, const Element& element, int depth, long offset, bool& indefinite);
// Walks the elements with their offsets from the start of each PDU; depth 1
// is the top level.
void walkDecomposed(RunContext* context, const uint8_t* element, int32_t& count, long& offset, int depth);
