// The one road for faults of the input and the encoding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "runtime/catalog.h"  // the codes by name

struct RunContext;

// Reports a fault by its code and the run's flags; returns the code unless
// the fault is fatal during a run, in which case it unwinds to jumpTarget.
int signalError(RunContext* context, int code, intptr_t first, long second);

// The tool's message hook, stored in errorHook by the entry.
int printToolError(RunContext* context, int code, intptr_t first, long second);

// Copies a text into a message: one line of at most 72 characters, with line
// ends and comments taken out.
void shortenForMessage(std::string& output, const char* text, size_t length);

// Moves `position` past white space and ASN.1 comments ("--", "/* */").
void skipComments(const char* text, size_t length, size_t& position);

// A fatal tool error: unwinds to the frame of jumpTarget with `value`.
[[noreturn]] void jumpToTarget(RunContext* context, int value);
