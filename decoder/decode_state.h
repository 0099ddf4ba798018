// Decoder fields of the run context, and the entries that the control
// table's init function stores in RunState.
#pragma once

#include <cstdint>

struct RunContext;
struct BerBuffer;

using DecoderEntry = int (*)(RunContext* context, int pdu, BerBuffer* buffer, void** value);
using EncoderEntry = int (*)(RunContext* context);

// Entries that the control table's init function fills.
struct DecoderHooks {
    DecoderEntry decoderEntry;
    EncoderEntry encoderEntry;
};

// The state of one decode: input cursor, recovery, error raising.
struct DecodeState {
    int32_t runtimeResult;
};
