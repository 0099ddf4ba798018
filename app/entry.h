// The process's entry: owns the run context, prints the banner, runs the
// driver and ends with its exit status.
#pragma once

#include <cstddef>
#include <cstdint>

struct OutStream;

// `console` is where the context's standard output goes: the process's
// standard output, or a sink for runs inside the process.
int runEntry(int argc, char** argv, OutStream* console);

// A whole run inside the process: the input is `size` octets at `data`
// (the input name of the arguments is only shown), the output goes to
// `console`.
int runEntryOnBuffer(int argc, char** argv, const uint8_t* data, size_t size, OutStream* console);
