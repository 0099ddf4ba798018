// Start and stop of the run context.
#include "runtime/context.h"

#include <cstdio>
#include <cstring>

#include "decoder/control_table.h"
#include "runtime/output.h"
#include "runtime/services.h"

namespace {

// The process's standard output, shared by every context.
OutStream* standardOutput()
{
    static OutStream* stream = outStreamForFile(stdout, false);
    return stream;
}

void releaseState(RunContext* context)
{
    context->stateFreeFn(context->state);
    context->state = nullptr;
    context->controlTable = nullptr;
}

}  // namespace

int qorStartContext(RunContext* context, const ControlTable* table)
{
    if (context == nullptr) return QOR_NULL_CONTEXT;
    std::memset(static_cast<void*>(context), 0, sizeof *context);
    context->decoderFlags = DECODER_NO_TRAPPING;
    context->services = svcInstall(context);
    context->lineWidth = 35;
    context->padByteSpec = 0;
    context->outStream = standardOutput();
    context->stateAllocFn = context->allocFn;
    context->stateFreeFn = context->freeFn;

    auto* state = static_cast<RunState*>(context->stateAllocFn(sizeof(RunState)));
    if (state == nullptr) return QOR_NO_STATE_MEMORY;
    std::memset(static_cast<void*>(state), 0, sizeof *state);
    context->state = state;

    if (table == nullptr) {
        releaseState(context);
        return QOR_NULL_TABLE;
    }
    if (table->version != CONTROL_TABLE_VERSION) {
        releaseState(context);
        return QOR_BAD_TABLE_VERSION;
    }
    context->controlTable = table;
    if (table->initFn != nullptr) table->initFn(context);
    qorSetRules(context, 0);
    state->tableFlags = table->flags;
    state->maxStringNesting = 10;
    state->maxStructureNesting = 64;
    // The constraint checker reaches memory through RunState.
    state->hooks.allocValue = context->services->svcAllocValue;
    state->hooks.allocScratch = context->services->svcAllocScratch;
    state->hooks.unlock = context->services->svcUnlock;
    return 0;
}

void qorStopContext(RunContext* context)
{
    if (context == nullptr || context->controlTable == nullptr) return;
    if (context->savedOutStream != nullptr) {
        outStreamRelease(context->outStream);
        context->outStream = context->savedOutStream;
        context->savedOutStream = nullptr;
    }
    qorFlush(context);
    context->stateFreeFn(context->state->longErrorText);
    releaseState(context);
}

int qorGetRules(const RunContext* context)
{
    return context == nullptr ? -1 : context->encodingRules;
}

int qorSetRules(RunContext* context, int rules)
{
    if (context == nullptr) return QOR_NULL_CONTEXT;
    const RunState* state = context->state;
    bool linked = rules == 0 && state != nullptr && (state->linkedRules & 0x1) != 0 &&
                  (state->hooks.encoderEntry != nullptr || state->hooks.decoderEntry != nullptr);
    if (!linked) return QOR_RULES_NOT_LINKED;
    context->encodingRules = 0;
    return 0;
}

void setErrorHook(RunContext* context, ErrorHook hook)
{
    context->errorHook = hook;
}
