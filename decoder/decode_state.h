// Decoder fields of the run context, and the entries that the control
// table's init function stores in RunState.
#pragma once

#include <cstdint>

struct RunContext;
struct BerBuffer;
struct ControlTable;
struct DecodeCall;
struct ErrorFrame;

using DecoderEntry = int (*)(RunContext* context, int pdu, BerBuffer* buffer, void** value, uint32_t flags);
using EncoderEntry = int (*)(RunContext* context);
using ConstraintEntry = void (*)(RunContext* context, int pdu, void* value, const ControlTable* table);
using RealEntry = uint32_t (*)(DecodeCall& call, int32_t length, bool constructed);
// Whether a time text has the properties of its masks.
using TimePropertiesEntry = bool (*)(RunContext* context, const char* text, const uint32_t* masks, int maskCount);

// Entries that the control table's init function fills.
struct DecoderHooks {
    DecoderEntry decoderEntry;
    EncoderEntry encoderEntry;
    ConstraintEntry constraintEntry;
    RealEntry realEntry;
    const uint32_t* timeMasks;
    TimePropertiesEntry timePropertiesEntry;
    // Copies of three memory services, written by the start of the context
    // after the init function: what the constraint checker may use.
    void* (*allocValue)(RunContext* context, uint32_t size, uint32_t spare);
    void* (*allocScratch)(RunContext* context, uint32_t size);
    void (*unlock)(RunContext* context, void* handle, bool release);
};

// Bits of DecodeState::decodeMode.
constexpr uint32_t MODE_PRINT_ERRORS = 0x0010;
constexpr uint32_t MODE_CAPTURE_HEADER = 0x0100;
constexpr uint32_t MODE_RELAXED = 0x0400;
constexpr uint32_t MODE_CHECKING = 0x2000;

constexpr uint32_t HEADER_CAPTURE_LIMIT = 130;

// The state of one decode: input cursor, recovery, error raising. Meaningful
// only during a call of qorDecode.
struct DecodeState {
    ErrorFrame* errorFrames;
    char* errorTextPtr;
    int32_t runtimeResult;
    int32_t currentPdu;
    const ControlTable* decodeTable;
    uint32_t decodeMode;
    const uint8_t* inputBase;
    uint32_t inputOffset;
    uint32_t inputLength;
    int32_t pduRemaining;
    uint32_t headerOctets;
    uint8_t headerCapture[HEADER_CAPTURE_LIMIT];
    int32_t consumedOctets;
    uint32_t valueBytes;
    uint32_t decoding;
    uint32_t stringNesting;
    int32_t pendingEntry;
    const void* pendingArgument;
};
