#include "runtime/services.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"

namespace {

constexpr uint32_t kChunkMinimum = 5120;  // usable bytes of a scratch stack chunk
// The index word in front of a scratch block, padded so that the block
// behind it is aligned for any record.
constexpr uint32_t kScratchHeader = 8;
constexpr uint32_t kChunkHead = (sizeof(ScratchChunk) + 7) / 8 * 8;  // the head in front of the usable bytes
constexpr uint32_t kChunkLargest = 0x7fffffff - kChunkHead - kScratchHeader;

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

size_t tableBytes(uint8_t capacityLog2)
{
    return sizeof(BlockTable) + (static_cast<size_t>(1) << capacityLog2) * sizeof(BlockEntry) - sizeof(BlockEntry);
}

// Every decode opens a value heap and a scratch table, and most never
// grow them: their first tables of one entry stand in the context, so that
// a decode asks the heap only for the blocks of its value and its scratch.
BlockTable* newTable(RunContext* context)
{
    MemoryState& memory = context->memory;
    for (size_t i = 0; i < std::size(memory.firstTables); ++i) {
        if ((memory.firstTablesInUse & (1u << i)) == 0) {
            memory.firstTablesInUse |= 1u << i;
            BlockTable* table = &memory.firstTables[i];
            std::memset(static_cast<void*>(table), 0, sizeof *table);
            return table;
        }
    }
    auto* table = static_cast<BlockTable*>(allocChecked(context, static_cast<uint32_t>(tableBytes(0)), true));
    table->capacityLog2 = 0;
    return table;
}

void releaseTable(RunContext* context, BlockTable* table)
{
    MemoryState& memory = context->memory;
    for (size_t i = 0; i < std::size(memory.firstTables); ++i) {
        if (table == &memory.firstTables[i]) {
            memory.firstTablesInUse &= ~(1u << i);
            return;
        }
    }
    memory.freeHook(context, table);
}

// Doubles a full table: the new one takes the old one's place in the chain.
BlockTable* grow(RunContext* context, BlockTable* table)
{
    uint8_t log2 = static_cast<uint8_t>(table->capacityLog2 + 1);
    auto* larger = static_cast<BlockTable*>(allocChecked(context, static_cast<uint32_t>(tableBytes(log2)), true));
    std::memcpy(static_cast<void*>(larger), table, tableBytes(table->capacityLog2));
    larger->capacityLog2 = log2;
    releaseTable(context, table);
    if (larger->backLink != nullptr) *larger->backLink = larger;
    if (larger->next != nullptr) larger->next->backLink = &larger->next;
    return larger;
}

bool isFull(const BlockTable* table)
{
    return table->count >= (1 << table->capacityLog2);
}

// Input.
const uint8_t* svcOpenInput(RunContext* context, const uint8_t** input, uint32_t* length)
{
    context->memory.inputStart = *input;
    context->memory.inputSize = *length;
    return *input;
}

uint32_t svcCloseInput(RunContext* context, const uint8_t** input, uint32_t used)
{
    if (used > context->memory.inputSize) raiseMemoryError(context, MemoryFault::InputOverrun, used);
    *input = context->memory.inputStart + used;
    return context->memory.inputSize - used;
}

void svcInputExhausted(RunContext* context)
{
    reportError(context, RT_END_OF_INPUT);
}

// The value heap.
void svcOpenValues(RunContext* context)
{
    MemoryState& memory = context->memory;
    memory.valueTotal = 0;
    BlockTable* table = newTable(context);
    table->next = memory.valueTables;
    table->backLink = &memory.valueTables;
    if (table->next != nullptr) table->next->backLink = &table->next;
    memory.valueTables = table;
}

void releaseTables(RunContext* context, bool releaseBlocks)
{
    MemoryState& memory = context->memory;
    while (memory.valueTables != nullptr) {
        BlockTable* table = memory.valueTables;
        if (releaseBlocks) {
            for (int32_t i = table->count - 1; i >= 0; --i) memory.freeHook(context, table->entries[i].block);
        }
        memory.valueTables = table->next;
        releaseTable(context, table);
    }
}

uint32_t svcCloseValues(RunContext* context, void** root)
{
    releaseTables(context, false);
    if (context->memory.valueTotal == 0 && root != nullptr) *root = nullptr;
    return context->memory.valueTotal;
}

void* svcAllocValue(RunContext* context, uint32_t size, uint32_t)
{
    MemoryState& memory = context->memory;
    if (size == 0) raiseMemoryError(context, MemoryFault::ZeroBytes, 0);
    uint64_t rounded = (static_cast<uint64_t>(size) + memory.valueAlignment - 1) / memory.valueAlignment *
                       memory.valueAlignment;
    if (rounded == 0 || rounded > 0x7fffffff) raiseMemoryError(context, MemoryFault::BlockTooLarge, size);
    BlockTable* table = memory.valueTables;
    if (isFull(table)) table = grow(context, table);
    void* block = allocChecked(context, size, true);
    table->entries[table->count++] = {block, size, 0};
    memory.valueTotal += static_cast<uint32_t>(rounded);
    return block;
}

void svcDropValues(RunContext* context, void*, void*, void*)
{
    releaseTables(context, true);
    context->memory.valueTotal = 0;
}

// The scratch table.
void svcOpenScratch(RunContext* context)
{
    MemoryState& memory = context->memory;
    memory.scratchTable = nullptr;
    memory.valueAlignment = 8;
    memory.scratchHeader = kScratchHeader;
    memory.scratchTable = newTable(context);
}

// A scratch block; `clear` zero-fills it. The chunks of the scratch stack
// aren't cleared whole: each area is cleared when it is pushed.
void* allocScratchBlock(RunContext* context, uint32_t size, bool clear)
{
    MemoryState& memory = context->memory;
    if (size == 0) raiseMemoryError(context, MemoryFault::ZeroBytes, 0);
    // The header and the block are one request, counted in 32 bits.
    if (size > 0x7fffffff - memory.scratchHeader) raiseMemoryError(context, MemoryFault::BlockTooLarge, size);
    BlockTable* table = memory.scratchTable;
    // Entries released at the end of the table are taken back.
    while (table->count > 0 && table->entries[table->count - 1].size == 0) --table->count;
    if (isFull(table)) {
        table->backLink = nullptr;
        table->next = nullptr;
        table = grow(context, table);
        memory.scratchTable = table;
    }
    auto* block = static_cast<uint8_t*>(allocChecked(context, memory.scratchHeader + size, clear));
    auto index = static_cast<uint32_t>(table->count);
    std::memcpy(block, &index, sizeof index);
    table->entries[table->count++] = {block, size, 0};
    return block + memory.scratchHeader;
}

void* svcAllocScratch(RunContext* context, uint32_t size)
{
    return allocScratchBlock(context, size, true);
}

void svcCloseScratch(RunContext* context)
{
    MemoryState& memory = context->memory;
    BlockTable* table = memory.scratchTable;
    if (table == nullptr) return;
    for (int32_t i = table->count - 1; i >= 0; --i) {
        if (table->entries[i].size != 0) memory.freeHook(context, table->entries[i].block);
    }
    releaseTable(context, table);
    memory.scratchTable = nullptr;
    memory.scratchArena = nullptr;
}

void* svcLock(RunContext*, void* handle)
{
    return handle;
}

void svcUnlock(RunContext* context, void* handle, bool release)
{
    if (!release || handle == nullptr) return;
    MemoryState& memory = context->memory;
    uint8_t* block = static_cast<uint8_t*>(handle) - memory.scratchHeader;
    uint32_t index;
    std::memcpy(&index, block, sizeof index);
    BlockTable* table = memory.scratchTable;
    if (table != nullptr && index < static_cast<uint32_t>(table->count) && table->entries[index].block == block) {
        table->entries[index].size = 0;
        memory.freeHook(context, block);
    }
}

void svcFreeBlock(RunContext* context, void* block)
{
    context->memory.freeHook(context, block);
}

bool hasLengthAndPointer(uint32_t kind)
{
    switch (kind) {
        case KIND_BIT_STRING: case KIND_OCTET_STRING: case KIND_COUNTED_TEXT: case KIND_BMP_TEXT:
        case KIND_UNIVERSAL_TEXT: case KIND_HUGE_INTEGER: case KIND_OBJECT_IDENTIFIER: case KIND_RELATIVE_OID:
            return true;
        default:
            return false;
    }
}

// Releases what a value of `type` at `offset` of `block` holds beyond the
// block itself. An indirect type is followed once, to the block it points
// at, which is walked as the direct form and then released; the walk goes
// no deeper, since the built-in types hold nothing but flat data.
int freeDependents(RunContext* context, const TypeRecord& type, void* block, size_t offset)
{
    const ServiceTable* services = context->services;
    auto* slot = static_cast<uint8_t*>(services->svcLock(context, block)) + offset;
    void* pointed = nullptr;
    bool indirect = (type.typeFlags & TF_INDIRECT) != 0;
    if (indirect) {
        std::memcpy(&pointed, slot, sizeof pointed);
        services->svcUnlock(context, block, false);
        if (pointed == nullptr) return 0;
        slot = static_cast<uint8_t*>(services->svcLock(context, pointed));
    }
    if (hasLengthAndPointer(type.kind)) {
        void* data = nullptr;
        std::memcpy(&data, slot + type.dataOffset, sizeof data);
        if (data != nullptr) services->svcFreeBlock(context, data);
    }
    if (indirect) {
        services->svcUnlock(context, pointed, false);
        services->svcFreeBlock(context, pointed);
    } else {
        services->svcUnlock(context, block, false);
    }
    return 0;
}

int svcFreeValue(RunContext* context, int pdu, void* value, const ControlTable* table)
{
    context->decode.decodeTable = table;
    if (table == nullptr || pdu <= 0 || pdu > table->pduCount || table->pduMap[pdu - 1] == NO_PDU) {
        return FREE_BAD_PDU;
    }
    if (value == nullptr) return 0;
    int result = freeDependents(context, typeOfPdu(*table, pdu), value, 0);
    if (result == 0) context->services->svcFreeBlock(context, value);
    return result;
}

void* svcMapValue(RunContext*, void* value, uint32_t)
{
    return value;
}

void svcUnmapValue(RunContext*, void*) {}

void svcGetMemoryHooks(RunContext* context, void* (**allocHook)(RunContext*, uint32_t),
                       void (**freeHook)(RunContext*, void*))
{
    if (allocHook != nullptr) *allocHook = context->memory.allocHook;
    if (freeHook != nullptr) *freeHook = context->memory.freeHook;
}

constexpr ServiceTable kServices = {
    svcOpenInput,    svcCloseInput,  svcInputExhausted, svcOpenValues, svcCloseValues, svcAllocValue,
    svcOpenScratch,  svcCloseScratch, svcAllocScratch,  svcLock,       svcUnlock,      svcFreeBlock,
    svcFreeValue,    svcDropValues,  svcMapValue,       svcUnmapValue, svcGetMemoryHooks,
};

}  // namespace

const ServiceTable* svcInstall(RunContext* context)
{
    context->allocFn = processAlloc;
    context->freeFn = processFree;
    context->memory.allocHook = forwardAlloc;
    context->memory.freeHook = forwardFree;
    context->memory.valueAlignment = 8;
    context->memory.scratchHeader = kScratchHeader;
    return &kServices;
}

void* qorAlloc(RunContext* context, size_t size)
{
    // The hooks count in 32 bits: a larger request is one that can't be met.
    if (size > UINT32_MAX) return nullptr;
    void* (*allocHook)(RunContext*, uint32_t) = nullptr;
    context->services->svcGetMemoryHooks(context, &allocHook, nullptr);
    return allocHook(context, static_cast<uint32_t>(size));
}

void qorFree(RunContext* context, void* block)
{
    if (block == nullptr) return;
    void (*freeHook)(RunContext*, void*) = nullptr;
    context->services->svcGetMemoryHooks(context, nullptr, &freeHook);
    freeHook(context, block);
}

void* allocChecked(RunContext* context, uint32_t size, bool clear)
{
    void* block = context->memory.allocHook(context, size);
    if (block == nullptr) reportError(context, RT_OUT_OF_MEMORY, static_cast<int64_t>(size));
    if (clear) std::memset(block, 0, size);
    return block;
}

void raiseMemoryError(RunContext* context, MemoryFault fault, int64_t argument)
{
    switch (fault) {
        case MemoryFault::InputOverrun: reportError(context, RT_END_OF_INPUT);
        case MemoryFault::ZeroBytes: reportError(context, RT_ZERO_BYTES);
        case MemoryFault::BlockTooLarge: break;
    }
    reportError(context, RT_BLOCK_TOO_LARGE, argument);
}

int qorFreeValue(RunContext* context, int pdu, void* value)
{
    if (context == nullptr) return QOR_NULL_CONTEXT;
    return context->services->svcFreeValue(context, pdu, value, context->controlTable);
}

void* scratchStackPush(RunContext* context, uint32_t size)
{
    MemoryState& memory = context->memory;
    ScratchChunk* chunk = memory.scratchArena;
    if (chunk != nullptr) {
        auto* start = reinterpret_cast<uint8_t*>(chunk) + kChunkHead;
        size_t used = static_cast<size_t>(chunk->cursor - start);
        chunk->cursor = start + (used + 7) / 8 * 8;
        if (chunk->cursor <= chunk->end && static_cast<size_t>(chunk->end - chunk->cursor) >= size) {
            uint8_t* area = chunk->cursor;
            std::memset(area, 0, size);
            chunk->cursor += size;
            return area;
        }
    }
    // A chunk is one scratch block, counted in 32 bits with its head.
    if (size > kChunkLargest) raiseMemoryError(context, MemoryFault::BlockTooLarge, size);
    uint32_t usable = size > kChunkMinimum ? size : kChunkMinimum;
    void* handle = context->services == &kServices ? allocScratchBlock(context, usable + kChunkHead, false)
                                                          : context->services->svcAllocScratch(context, usable + kChunkHead);
    auto* fresh = static_cast<ScratchChunk*>(context->services->svcLock(context, handle));
    fresh->previous = chunk;
    fresh->handle = handle;
    auto* area = reinterpret_cast<uint8_t*>(fresh) + kChunkHead;
    fresh->end = area + usable;
    fresh->cursor = area + size;
    memory.scratchArena = fresh;
    std::memset(area, 0, size);
    return area;
}

void scratchStackPop(RunContext* context, void* mark)
{
    if (mark == nullptr) return;
    MemoryState& memory = context->memory;
    ScratchChunk* chunk = memory.scratchArena;
    auto* target = static_cast<uint8_t*>(mark);
    // Chunks that the mark doesn't lie in are given back whole.
    while (chunk != nullptr && chunk->previous != nullptr &&
           !(target >= reinterpret_cast<uint8_t*>(chunk) + kChunkHead && target <= chunk->end)) {
        ScratchChunk* older = chunk->previous;
        context->services->svcUnlock(context, chunk->handle, true);
        chunk = older;
    }
    memory.scratchArena = chunk;
    if (chunk != nullptr) chunk->cursor = target;
}

void scratchStackEnd(RunContext* context)
{
    MemoryState& memory = context->memory;
    if (memory.scratchArena != nullptr && memory.scratchUsers > 0) {
        if (--memory.scratchUsers == 0) memory.scratchArena = nullptr;
    } else if (memory.scratchArena == nullptr) {
        memory.scratchUsers = 0;
    }
}
