// A started context whose memory hooks count the blocks held, and can be
// told to refuse a request, so that tests see every block a decode takes
// and gives back.
#pragma once

#include "tests/test_context.h"

class CountingContext : public TestContext {
public:
    CountingContext()
    {
        live = 0;
        requests = 0;
        failAt = -1;
        get()->memory.allocHook = [](RunContext* context, uint32_t size) -> void* {
            if (requests++ == failAt) return nullptr;
            void* block = context->allocFn(size);
            if (block != nullptr) ++live;
            return block;
        };
        get()->memory.freeHook = [](RunContext* context, void* block) {
            if (block != nullptr) --live;
            context->freeFn(block);
        };
    }

    // Blocks from the hooks not yet given back.
    static inline long live = 0;
    // Requests made so far; the one numbered failAt (from 0) gets null.
    static inline long requests = 0;
    static inline long failAt = -1;
};
