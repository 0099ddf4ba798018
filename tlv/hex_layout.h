// The hexadecimal-TLV layout: every element on one line, in octets.
#pragma once

#include <cstdint>

#include "runtime/buffers.h"

struct RunContext;

void printHexLayout(RunContext* context, InputBuffer& buffer);
int printHexElement(RunContext* context, const uint8_t* element, int32_t available, int depth,
                    bool& indefinite, bool& titles);
