// The hexadecimal-TLV layout: every element on one line, in octets.
#pragma once

#include <cstdint>

#include "runtime/buffers.h"

struct RunContext;
struct Element;
struct RecordStretch;

void printHexLayout(RunContext* context, InputBuffer& buffer);
// Lists a stretch of records; false when the listing ended inside it.
bool listHexStretch(RunContext* context, const RecordStretch& stretch);
int printHexElement(RunContext* context, const Element& element, int depth, bool& indefinite, bool& titles);
