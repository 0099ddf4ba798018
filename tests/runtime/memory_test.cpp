// The memory services as a decode uses them: what is held after a decode,
// failed or not, the links of the block tables, the scratch table and
// stack, the refusals of sizes, and the release of a value by its type.
#include "runtime/services.h"

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "decoder/decoder.h"
#include "decoder/errors.h"
#include "runtime/runtime_catalog.h"
#include "tests/runtime/counting_context.h"

namespace {

using Octets = std::vector<uint8_t>;

struct MemoryTest : ::testing::Test {
    CountingContext run;
    RunContext* context = run.get();
    const ServiceTable* services = context->services;
    void* value = nullptr;

    int decode(int pdu, const Octets& octets)
    {
        BerBuffer buffer = {static_cast<uint32_t>(octets.size()), octets.data()};
        return qorDecode(context, pdu, buffer, value);
    }
    // Runs `body` where a decode's recovery point would catch its failure.
    template <typename Body>
    int32_t underRecovery(Body body)
    {
        context->decode.runtimeResult = 0;
        context->decode.currentPdu = 0;
        context->decode.errorTextPtr = context->errorText;
        try {
            body();
        } catch (const DecodeFailure& failure) {
            return failure.code;
        }
        return 0;
    }
    void TearDown() override { EXPECT_EQ(0, CountingContext::live) << "blocks left behind"; }
};

// Decodes of each memory form, and the blocks the value holds after it: the
// slot, and the block behind its pointer when there is one. Those in
// segments or with a text rebuilt also take scratch blocks and block tables
// on the way.
const struct {
    const char* what;
    int pdu;
    Octets octets;
    long blocks;
} kDecodes[] = {
    {"INTEGER in its slot", 2, {0x02, 0x01, 0x05}, 1},
    {"empty OCTET STRING, null pointer", 4, {0x04, 0x00}, 1},
    {"OCTET STRING", 4, {0x04, 0x01, 0x41}, 2},
    {"OCTET STRING in segments", 4,
     {0x24, 0x80, 0x04, 0x01, 0x41, 0x24, 0x80, 0x04, 0x01, 0x42, 0x00, 0x00, 0x00, 0x00}, 2},
    {"OBJECT IDENTIFIER", 6, {0x06, 0x01, 0x2A}, 2},
    {"long INTEGER", 23, {0x02, 0x05, 0x01, 0x02, 0x03, 0x04, 0x05}, 2},
    {"IA5String", 13, {0x16, 0x01, 0x41}, 2},
    {"PrintableString", 10, {0x13, 0x02, 'O', 'K'}, 2},
    {"BMPString", 18, {0x1E, 0x04, 0x00, 0x41, 0x00, 0xE9}, 2},
    {"UniversalString", 17, {0x1C, 0x04, 0x00, 0x00, 0x00, 0x41}, 2},
    {"indirect text", 19, {0x0C, 0x01, 0x41}, 2},
    {"indirect empty text", 19, {0x0C, 0x00}, 2},
    {"indirect time text", 24, {0x0E, 0x01, 0x41}, 2},
    {"DATE", 25, {0x1F, 0x1F, 0x08, '2', '0', '1', '6', '0', '2', '2', '9'}, 2},
    {"DURATION", 28, {0x1F, 0x22, 0x02, '1', 'Y'}, 2},
    {"UTCTime", 21, {0x17, 0x0D, '1', '6', '0', '2', '2', '6', '1', '2', '3', '0', '4', '5', 'Z'}, 1},
    {"time record", 22, {0x18, 0x0F, '2', '0', '1', '6', '0', '2', '2', '6', '1', '2', '3', '0', '4', '5', 'Z'}, 1},
};

TEST_F(MemoryTest, ADecodeHoldsOnlyItsValueAndTheReleaseFollowsTheTypeRecord)
{
    for (const auto& row : kDecodes) {
        ASSERT_EQ(0, decode(row.pdu, row.octets)) << row.what;
        EXPECT_EQ(row.blocks, CountingContext::live) << row.what;
        EXPECT_EQ(nullptr, context->memory.valueTables) << row.what;
        EXPECT_EQ(nullptr, context->memory.scratchTable) << row.what;
        EXPECT_EQ(0u, context->memory.firstTablesInUse) << row.what << ": the first tables are free again";
        EXPECT_EQ(0, qorFreeValue(context, row.pdu, value)) << row.what;
        EXPECT_EQ(0, CountingContext::live) << row.what << ": qorFreeValue leaves nothing";
    }
}

TEST_F(MemoryTest, EveryRefusedRequestFailsTheDecodeAndReleasesAll)
{
    for (const auto& row : kDecodes) {
        CountingContext::requests = 0;
        ASSERT_EQ(0, decode(row.pdu, row.octets)) << row.what;
        const long needed = CountingContext::requests;
        ASSERT_EQ(0, qorFreeValue(context, row.pdu, value));
        for (long refused = 0; refused < needed; ++refused) {
            CountingContext::requests = 0;
            CountingContext::failAt = refused;
            EXPECT_EQ(8, decode(row.pdu, row.octets)) << row.what << ", request " << refused;
            EXPECT_EQ(nullptr, value);
            EXPECT_EQ(0, CountingContext::live) << row.what << ", request " << refused;
            EXPECT_EQ(0, std::string(context->errorText).rfind("D0008S: Out of memory; bytes requested: ", 0))
                << context->errorText;
        }
        CountingContext::failAt = -1;
    }
}

TEST_F(MemoryTest, AChainOfValueHeapsKeepsItsLinksThroughGrowth)
{
    services->svcOpenValues(context);
    services->svcAllocValue(context, 8, 0);
    services->svcOpenValues(context);  // the context's two first tables are taken
    services->svcAllocValue(context, 8, 0);
    BlockTable* older = context->memory.valueTables;
    services->svcOpenValues(context);  // this one comes from the heap
    services->svcAllocValue(context, 8, 0);
    services->svcAllocValue(context, 8, 0);  // the head table grows
    BlockTable* head = context->memory.valueTables;
    EXPECT_EQ(older, head->next);
    EXPECT_EQ(&head->next, older->backLink);
    services->svcDropValues(context, nullptr, nullptr, nullptr);
    void* root = &root;
    EXPECT_EQ(0u, services->svcCloseValues(context, &root));
    EXPECT_EQ(nullptr, root);
    EXPECT_EQ(0u, context->memory.firstTablesInUse);
}

TEST_F(MemoryTest, SizesThatAreRefused)
{
    services->svcOpenValues(context);
    services->svcOpenScratch(context);
    const uint8_t octets[4] = {};
    const uint8_t* input = octets;
    uint32_t length = 4;
    services->svcOpenInput(context, &input, &length);
    const std::string tooLarge =
        "D0084S: Attempt made to allocate a block of memory greater than 'qorblock'; bytes requested = ";
    const struct {
        const char* what;
        std::function<void()> request;
        int code;
        std::string text;
    } rows[] = {
        {"value of 0", [&] { services->svcAllocValue(context, 0, 0); }, 18, "D0083S: Zero bytes of memory requested.\n"},
        {"value rounded beyond 2 GB", [&] { services->svcAllocValue(context, 0x7ffffff9, 0); }, 18,
         tooLarge + "2147483641.\n"},
        {"value of 4 GB less one", [&] { services->svcAllocValue(context, 0xffffffff, 0); }, 18,
         tooLarge + "4294967295.\n"},
        {"scratch of 0", [&] { services->svcAllocScratch(context, 0); }, 18, "D0083S: Zero bytes of memory requested.\n"},
        {"scratch of 4 GB less one", [&] { services->svcAllocScratch(context, 0xffffffff); }, 18,
         tooLarge + "4294967295.\n"},
        {"scratch stack area of 4 GB less 16", [&] { scratchStackPush(context, 0xfffffff0); }, 18,
         tooLarge + "4294967280.\n"},
        {"input used beyond its end", [&] { services->svcCloseInput(context, &input, 5); }, 4,
         "D0081S: End of input reached before message was fully decoded.\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.code, underRecovery(row.request)) << row.what;
        EXPECT_EQ(row.text, context->errorText) << row.what;
    }
    EXPECT_EQ(0, context->memory.valueTables->count) << "nothing was handed out";
    EXPECT_EQ(0, context->memory.scratchTable->count);
    services->svcCloseValues(context, nullptr);
    services->svcCloseScratch(context);

    EXPECT_EQ(nullptr, qorAlloc(context, static_cast<size_t>(UINT32_MAX) + 17));
}

TEST_F(MemoryTest, ScratchBlocksReleasedAtTheEndAreTakenBack)
{
    services->svcOpenScratch(context);
    // Allocating and releasing in turn keeps the table at one entry.
    for (int i = 0; i < 10; ++i) services->svcUnlock(context, services->svcAllocScratch(context, 40), true);
    EXPECT_EQ(1, context->memory.scratchTable->count);

    void* first = services->svcAllocScratch(context, 40);
    void* middle = services->svcAllocScratch(context, 40);
    services->svcAllocScratch(context, 40);
    services->svcUnlock(context, middle, true);
    EXPECT_EQ(3, context->memory.scratchTable->count) << "an entry in the middle stays";
    EXPECT_EQ(0u, context->memory.scratchTable->entries[1].size);
    services->svcUnlock(context, first, false);  // without the flag nothing is released
    // Closing releases the two live blocks once each and skips the released one.
    services->svcCloseScratch(context);
}

TEST_F(MemoryTest, TheScratchStackTakesChunksOf5120OctetsOrMore)
{
    // Two pushes, and the scratch blocks they take: an area goes into the
    // chunk in hand when it fits behind the cursor aligned to 8.
    const struct {
        uint32_t first;
        uint32_t second;
        int blocks;
    } rows[] = {
        {5000, 120, 1}, {5000, 121, 2}, {5001, 112, 1}, {5001, 113, 2}, {6000, 8, 2}, {100, 6000, 2},
    };
    for (const auto& row : rows) {
        services->svcOpenScratch(context);
        ++context->memory.scratchUsers;
        scratchStackPush(context, row.first);
        scratchStackPush(context, row.second);
        EXPECT_EQ(row.blocks, context->memory.scratchTable->count) << row.first << " then " << row.second;
        scratchStackEnd(context);
        EXPECT_EQ(nullptr, context->memory.scratchArena);
        services->svcCloseScratch(context);
    }
}

TEST_F(MemoryTest, PoppingToAMarkInAnOlderChunkReleasesTheNewer)
{
    services->svcOpenScratch(context);
    ++context->memory.scratchUsers;
    auto* older = static_cast<uint8_t*>(scratchStackPush(context, 5000));
    auto* newer = static_cast<uint8_t*>(scratchStackPush(context, 200));
    const long held = CountingContext::live;
    scratchStackPop(context, newer);
    EXPECT_EQ(held, CountingContext::live) << "the mark lies in the newest chunk";
    scratchStackPop(context, older);
    EXPECT_EQ(held - 1, CountingContext::live);
    EXPECT_EQ(older, scratchStackPush(context, 16)) << "the area at the mark is handed out again";
    scratchStackPop(context, nullptr);  // does nothing
    scratchStackEnd(context);
    services->svcCloseScratch(context);
}

TEST_F(MemoryTest, ReleaseCodes)
{
    ASSERT_EQ(0, decode(4, {0x04, 0x02, 0x41, 0x42}));
    const struct {
        const char* what;
        int pdu;
        void* value;
        int code;
    } rows[] = {
        {"PDU 0", 0, value, 33},
        {"PDU 31", 31, value, 33},
        {"a null value", 4, nullptr, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.code, qorFreeValue(context, row.pdu, row.value)) << row.what;
    }
    EXPECT_EQ(6, qorFreeValue(nullptr, 4, value));
    EXPECT_EQ(2, CountingContext::live) << "a refused release leaves the slot and its octets";
    EXPECT_EQ(0, qorFreeValue(context, 4, value));
}

TEST_F(MemoryTest, AllocCheckedRaisesOutOfMemory)
{
    CountingContext::failAt = CountingContext::requests;
    EXPECT_EQ(8, underRecovery([&] { allocChecked(context, 4096, true); }));
    EXPECT_STREQ("D0008S: Out of memory; bytes requested: 4096.\n", context->errorText);
    CountingContext::failAt = -1;
    void* block = qorAlloc(context, 16);
    ASSERT_NE(nullptr, block);
    qorFree(context, block);
    qorFree(context, nullptr);
}

}  // namespace
