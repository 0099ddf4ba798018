// Memory services: plain blocks for the tool, and the process-wide table of
// memory and input operations that the decoder reaches memory through.
#pragma once

#include <cstddef>
#include <cstdint>

struct RunContext;

struct ServiceTable {
    void* (*allocBlock)(size_t size);
    void (*freeBlock)(void* block);
};

// Fills the process's one table and sets the context's memory functions to
// their start values.
const ServiceTable* svcInstall(RunContext* context);

// Plain blocks; every caller tests for null. The contents are not cleared.
void* qorAlloc(RunContext* context, size_t size);
void qorFree(RunContext* context, void* block);
