// The memory services behind the decoder.
#include "runtime/services.h"

#include <gtest/gtest.h>

#include <string>

#include "decoder/errors.h"
#include "runtime/runtime_catalog.h"
#include "tests/test_context.h"

namespace {

struct ServicesTest : ::testing::Test {
    TestContext run;
    RunContext* context = run.get();
    const ServiceTable* services = context->services;

    // Runs `body` as a decode would, with a failure caught where the
    // decode's recovery point would be.
    template <typename Body>
    int32_t underRecovery(Body body)
    {
        context->decode.runtimeResult = 0;
        try {
            body();
        } catch (const DecodeFailure& failure) {
            return failure.code;
        }
        return 0;
    }
};

TEST_F(ServicesTest, ValueHeapGrowsByDoublingAndDropsEverything)
{
    services->svcOpenValues(context);
    BlockTable* table = context->memory.valueTables;
    EXPECT_EQ(0, table->capacityLog2);
    services->svcAllocValue(context, 3, 0);
    services->svcAllocValue(context, 9, 0);
    EXPECT_EQ(1, context->memory.valueTables->capacityLog2);
    services->svcAllocValue(context, 1, 0);
    EXPECT_EQ(2, context->memory.valueTables->capacityLog2);
    EXPECT_EQ(3, context->memory.valueTables->count);
    EXPECT_EQ(8u + 16u + 8u, context->memory.valueTotal);  // rounded to 8
    services->svcDropValues(context, nullptr, nullptr, nullptr);
    void* root = &root;
    EXPECT_EQ(0u, services->svcCloseValues(context, &root));
    EXPECT_EQ(nullptr, root);
    EXPECT_EQ(nullptr, context->memory.valueTables);
}

TEST_F(ServicesTest, ZeroBytesAreRefused)
{
    services->svcOpenValues(context);
    EXPECT_EQ(18, underRecovery([&] { services->svcAllocValue(context, 0, 0); }));
    EXPECT_EQ(0, context->memory.valueTables->count);
    services->svcDropValues(context, nullptr, nullptr, nullptr);
    services->svcCloseValues(context, nullptr);
    EXPECT_EQ("D0083S: Zero bytes of memory requested.\n", std::string(context->errorText));
}

TEST_F(ServicesTest, ScratchEntriesReleasedAtTheEndAreTakenBack)
{
    services->svcOpenScratch(context);
    void* first = services->svcAllocScratch(context, 10);
    void* second = services->svcAllocScratch(context, 10);
    EXPECT_EQ(2, context->memory.scratchTable->count);
    services->svcUnlock(context, second, true);
    EXPECT_EQ(2, context->memory.scratchTable->count);  // kept until the next allocation
    services->svcAllocScratch(context, 10);
    EXPECT_EQ(2, context->memory.scratchTable->count);
    services->svcUnlock(context, first, true);  // in the middle: the entry stays
    services->svcAllocScratch(context, 10);
    EXPECT_EQ(3, context->memory.scratchTable->count);
    services->svcCloseScratch(context);  // releases each live block once
    EXPECT_EQ(nullptr, context->memory.scratchTable);
}

TEST_F(ServicesTest, ScratchStackChunks)
{
    services->svcOpenScratch(context);
    void* small = scratchStackPush(context, 100);
    void* next = scratchStackPush(context, 100);
    EXPECT_EQ(static_cast<uint8_t*>(small) + 104, next);  // aligned to 8 within one chunk
    void* large = scratchStackPush(context, 6000);         // a chunk of its own
    EXPECT_NE(context->memory.scratchArena, nullptr);
    scratchStackPop(context, large);
    scratchStackPop(context, next);
    void* again = scratchStackPush(context, 100);
    EXPECT_EQ(next, again);
    services->svcCloseScratch(context);
}

TEST_F(ServicesTest, FreeValueCodes)
{
    EXPECT_EQ(33, qorFreeValue(context, 0, nullptr));
    EXPECT_EQ(33, qorFreeValue(context, 31, nullptr));
    EXPECT_EQ(0, qorFreeValue(context, 4, nullptr));
    EXPECT_EQ(6, qorFreeValue(nullptr, 4, nullptr));
}

}  // namespace
