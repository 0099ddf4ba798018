// The built-in control table.
#include "decoder/control_table.h"
#include "runtime/context.h"

namespace {

int berDecoderNotReady(RunContext*, int, BerBuffer*, void** value)
{
    if (value != nullptr) *value = nullptr;
    return 18;
}

void initBuiltinTable(RunContext* context)
{
    RunState* state = context->state;
    state->linkedRules = 0x1;  // BER alone
    state->linkedRuleCount = 1;
    state->hooks.decoderEntry = berDecoderNotReady;
}

constexpr ControlTable kBuiltinTable = {CONTROL_TABLE_VERSION, 0, 0x1, initBuiltinTable};

}  // namespace

const ControlTable* builtinControlTable()
{
    return &kBuiltinTable;
}
