// Memory-service fields of the run context.
#pragma once

#include <cstdint>

struct RunContext;
struct BlockTable;
struct ScratchChunk;

using AllocHook = void* (*)(RunContext* context, uint32_t size);
using FreeHook = void (*)(RunContext* context, void* block);

struct MemoryState {
    AllocHook allocHook;
    FreeHook freeHook;
    const uint8_t* inputStart;
    uint32_t inputSize;
    uint32_t valueTotal;      // bytes handed out, each request rounded up
    uint32_t valueAlignment;  // 8
    // The index word in front of a scratch block, padded to 8 so that the
    // block behind it is aligned for any record.
    uint32_t scratchHeader;
    BlockTable* scratchTable;
    BlockTable* valueTables;  // head of the chain of value heaps
    ScratchChunk* scratchArena;
    uint32_t scratchUsers;
};
