// The hexadecimal-TLV layout: every element on one line, in octets.
#pragma once

#include <cstdint>

#include "runtime/buffers.h"

struct RunContext;
struct Element;

void printHexLayout(RunContext* context, InputBuffer& buffer);
int printHexElement(RunContext* context, const Element& element, int depth, bool& indefinite, bool& titles);
