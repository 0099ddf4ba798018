// -check: the walk of the hexadecimal layout without a listing, every
// universal value with a readable form decoded; only the summary is written.
// And the element printers of -diagnose for the hexadecimal and syntax
// layouts, chosen once a run.
#pragma once

#include "runtime/buffers.h"

struct RunContext;
struct Element;

void checkLayout(RunContext* context, InputBuffer& buffer);

// The element of the check: what the hexadecimal layout reports of it, then
// its value; 0 to go on, 1 to end the level.
int checkElement(RunContext* context, const Element& read, int depth, bool& indefinite, bool& titles);

// printHexElement and printSyntaxElement with the element counted; for the
// hexadecimal layout the value checked and its failure told, for the syntax
// layout the octets of a normalised time value shown.
int printHexDiagnosed(RunContext* context, const Element& read, int depth, bool& indefinite, bool& titles);
int printSyntaxDiagnosed(RunContext* context, const Element& read, int depth, bool& indefinite, bool& titles);
// printDecomposedElement with the element counted (a record when `record`)
// and the octets of a normalised time value shown.
int printDecomposedDiagnosed(RunContext* context, const Element& read, int depth, long offset, bool& indefinite,
                             bool record);
