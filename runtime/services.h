// Memory services: plain blocks for the tool, and for the decoder the blocks
// of a decoded value (a value heap), scratch blocks that live for one decode
// (the scratch table), and small work areas inside them (the scratch stack).
#pragma once

#include <cstddef>
#include <cstdint>

struct RunContext;
struct ControlTable;

struct ScratchChunk {
    ScratchChunk* previous;
    uint8_t* cursor;
    uint8_t* end;
    void* handle;
};

struct ServiceTable {
    const uint8_t* (*svcOpenInput)(RunContext*, const uint8_t** input, uint32_t* length);
    uint32_t (*svcCloseInput)(RunContext*, const uint8_t** input, uint32_t used);
    void (*svcInputExhausted)(RunContext*);
    void (*svcOpenValues)(RunContext*);
    uint32_t (*svcCloseValues)(RunContext*, void** root);
    void* (*svcAllocValue)(RunContext*, uint32_t size, uint32_t spare);
    void (*svcOpenScratch)(RunContext*);
    void (*svcCloseScratch)(RunContext*);
    void* (*svcAllocScratch)(RunContext*, uint32_t size);
    void* (*svcLock)(RunContext*, void* handle);
    void (*svcUnlock)(RunContext*, void* handle, bool release);
    void (*svcFreeBlock)(RunContext*, void* block);
    int (*svcFreeValue)(RunContext*, int pdu, void* value, const ControlTable* table);
    void (*svcDropValues)(RunContext*, void*, void*, void*);
    void* (*svcMapValue)(RunContext*, void* value, uint32_t size);
    void (*svcUnmapValue)(RunContext*, void* value);
    void (*svcGetMemoryHooks)(RunContext*, void* (**allocHook)(RunContext*, uint32_t),
                              void (**freeHook)(RunContext*, void*));
};

// Fills the process's one table and sets the context's memory functions to
// their start values.
const ServiceTable* svcInstall(RunContext* context);

// Plain blocks; every caller tests for null. The contents are not cleared.
void* qorAlloc(RunContext* context, size_t size);
void qorFree(RunContext* context, void* block);
// A block for the decoder; raises 0008S when none can be had.
void* allocChecked(RunContext* context, uint32_t size, bool clear);
// What the memory services refuse, numbered as the services number it.
enum class MemoryFault : int {
    InputOverrun = 0,   // more input used than was handed over
    ZeroBytes = 2,      // a request for no bytes
    BlockTooLarge = 3,  // a request beyond a 32-bit block
};
// A refusal of the memory services turned into a runtime failure.
[[noreturn]] void raiseMemoryError(RunContext* context, MemoryFault fault, int64_t argument);

// svcFreeValue's answer to a PDU number that names no type.
constexpr int FREE_BAD_PDU = 33;

// Releases a value that qorDecode handed back: 0, FREE_BAD_PDU for a PDU
// number that names no type (nothing is released), QOR_NULL_CONTEXT for a
// null context.
int qorFreeValue(RunContext* context, int pdu, void* value);

// Short-lived work areas of a decode.
void* scratchStackPush(RunContext* context, uint32_t size);
void scratchStackPop(RunContext* context, void* mark);
void scratchStackEnd(RunContext* context);
