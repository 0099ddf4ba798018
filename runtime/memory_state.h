// Memory-service fields of the run context.
#pragma once

#include <cstdint>

struct RunContext;

using AllocHook = void* (*)(RunContext* context, uint32_t size);
using FreeHook = void (*)(RunContext* context, void* block);

struct MemoryState {
    AllocHook allocHook;
    FreeHook freeHook;
};
