// The syntax-TLV layout: type name, length and readable contents in three
// columns, with a title line for each nesting level.
#pragma once

#include <cstdint>

#include "runtime/buffers.h"

struct RunContext;
struct Element;
struct RecordStretch;
struct UniversalTag;
class Rendered;

void printSyntaxLayout(RunContext* context, InputBuffer& buffer);
// Lists a stretch of records; false when the listing ended inside it.
bool listSyntaxStretch(RunContext* context, const RecordStretch& stretch);
int printSyntaxElement(RunContext* context, const Element& element, int depth, bool& indefinite, bool& titles);
// Prints a rendered value, truncated at column 79 unless it keeps its width;
// returns the characters printed.
int printRendered(RunContext* context, const Rendered& value, const UniversalTag* row, int column);
