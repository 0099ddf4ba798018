#include "runtime/services.h"

#include <cstdlib>

#include "runtime/context.h"

namespace {

void* processAlloc(size_t size)
{
    return std::malloc(size);
}

void processFree(void* block)
{
    std::free(block);
}

void* forwardAlloc(RunContext* context, uint32_t size)
{
    return context->allocFn(size);
}

void forwardFree(RunContext* context, void* block)
{
    context->freeFn(block);
}

constexpr ServiceTable kServices = {processAlloc, processFree};

}  // namespace

const ServiceTable* svcInstall(RunContext* context)
{
    context->allocFn = processAlloc;
    context->freeFn = processFree;
    context->memory.allocHook = forwardAlloc;
    context->memory.freeHook = forwardFree;
    return &kServices;
}

void* qorAlloc(RunContext* context, size_t size)
{
    return context->memory.allocHook(context, static_cast<uint32_t>(size));
}

void qorFree(RunContext* context, void* block)
{
    if (block != nullptr) context->memory.freeHook(context, block);
}
