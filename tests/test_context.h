// A started run context whose output goes to a string, for unit tests.
#pragma once

#include <string>

#include "app/signal.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"

class TestContext {
public:
    TestContext()
    {
        started_ = qorStartContext(&context_, builtinControlTable());
        sink_ = outStreamForSink(&output_);
        context_.outStream = sink_;
        setErrorHook(&context_, printToolError);
        context_.toolFlags |= TLV_TOOL_RUN;
    }
    ~TestContext()
    {
        qorStopContext(&context_);
        outStreamRelease(sink_);
    }
    TestContext(const TestContext&) = delete;
    TestContext& operator=(const TestContext&) = delete;

    RunContext* get() { return &context_; }
    int started() const { return started_; }
    // What was printed so far; the buffer is written out first.
    const std::string& output()
    {
        qorFlush(&context_);
        return output_;
    }
    int lastError() const { return context_.state->lastError; }
    // The text of a block from qorAlloc, which is freed.
    std::string take(char* text)
    {
        std::string copy = text != nullptr ? text : "<null>";
        qorFree(&context_, text);
        return copy;
    }

private:
    RunContext context_{};
    std::string output_;
    OutStream* sink_ = nullptr;
    int started_ = -1;
};
