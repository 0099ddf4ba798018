// Memory-service fields of the run context.
#pragma once

#include <cstdint>

struct RunContext;
struct ScratchChunk;

struct BlockEntry {
    void* block;
    uint32_t size;  // 0 marks a released scratch block
    uint32_t spare;
};

// A table of blocks that grows by doubling in place of itself.
struct BlockTable {
    BlockTable* next;       // older table in the chain
    BlockTable** backLink;  // the field that points at this table
    int32_t count;
    uint8_t capacityLog2;
    BlockEntry entries[1];
};

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
    // The first tables of a value heap and of a scratch table, of one entry
    // each, kept in the context instead of the heap; a bit per table in use.
    BlockTable firstTables[2];
    uint32_t firstTablesInUse;
};
