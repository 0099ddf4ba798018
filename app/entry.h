// The process's entry: owns the run context, prints the banner, runs the
// driver and ends with its exit status.
#pragma once

struct OutStream;

// `console` is where the context's standard output goes: the process's
// standard output, or a sink for runs inside the process.
int runEntry(int argc, char** argv, OutStream* console);
