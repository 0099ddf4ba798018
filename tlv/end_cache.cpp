#include "tlv/end_cache.h"

#include <cstring>

#include "runtime/context.h"
#include "runtime/services.h"

namespace {

EndCache::Slot* slotOf(EndCache* cache, const uint8_t* contents)
{
    auto key = reinterpret_cast<uintptr_t>(contents);
    return &cache->slots[(key ^ (key >> 13)) % EndCache::kSlots];
}

}  // namespace

EndCacheScope::EndCacheScope(RunContext* context) : context_(context), saved_(context->endCache)
{
    if (saved_ != nullptr) {
        clearEndCache(context);
        return;
    }
    // Without memory for it the walk only goes slower.
    auto* cache = static_cast<EndCache*>(qorAlloc(context, sizeof(EndCache)));
    if (cache != nullptr) std::memset(static_cast<void*>(cache), 0, sizeof(EndCache));
    context->endCache = cache;
}

EndCacheScope::~EndCacheScope()
{
    if (saved_ != nullptr) return;
    if (context_->endCache != nullptr) qorFree(context_, static_cast<void*>(context_->endCache->marks));
    qorFree(context_, context_->endCache);
    context_->endCache = saved_;
}

void clearEndCache(RunContext* context)
{
    EndCache* cache = context->endCache;
    if (cache == nullptr) return;
    if (cache->written) std::memset(cache->slots, 0, sizeof cache->slots);
    cache->markCount = 0;
    cache->marksLost = false;
    cache->written = false;
}

void rememberEnd(RunContext* context, const uint8_t* contents, const uint8_t* end)
{
    if (context->endCache == nullptr) return;
    context->endCache->written = true;
    *slotOf(context->endCache, contents) = {contents, end, end, 0, 0};
}

void rememberNoEnd(RunContext* context, const uint8_t* contents, const uint8_t* limit, size_t firstMark)
{
    EndCache* cache = context->endCache;
    if (cache == nullptr) return;
    cache->written = true;
    *slotOf(cache, contents) = {contents, nullptr, limit, firstMark, cache->markCount};
}

void rememberMark(RunContext* context, const uint8_t* step)
{
    EndCache* cache = context->endCache;
    if (cache == nullptr || cache->marksLost) return;
    if (cache->markCount == cache->markCapacity) {
        size_t capacity = cache->markCapacity == 0 ? 256 : 2 * cache->markCapacity;
        auto* grown = static_cast<const uint8_t**>(qorAlloc(context, capacity * sizeof(const uint8_t*)));
        if (grown == nullptr) {
            cache->marksLost = true;
            return;
        }
        if (cache->markCount != 0) {
            std::memcpy(static_cast<void*>(grown), static_cast<const void*>(cache->marks),
                        cache->markCount * sizeof(const uint8_t*));
        }
        qorFree(context, static_cast<void*>(cache->marks));
        cache->marks = grown;
        cache->markCapacity = capacity;
    }
    cache->marks[cache->markCount++] = step;
}

void forgetMarksFrom(RunContext* context, size_t first)
{
    EndCache* cache = context->endCache;
    if (cache != nullptr && first < cache->markCount) cache->markCount = first;
}

size_t markCount(const RunContext* context)
{
    return context->endCache != nullptr ? context->endCache->markCount : 0;
}

int knownEnd(const RunContext* context, const uint8_t* contents, const uint8_t* limit, const uint8_t*& end,
             const uint8_t*& resume)
{
    if (context->endCache == nullptr) return 0;
    const EndCache::Slot& slot = *slotOf(context->endCache, contents);
    if (slot.contents != contents) return 0;
    if (slot.end != nullptr) {
        if (slot.end > limit) return 0;
        end = slot.end;
        return 1;
    }
    // No end was found in a region at least as large: none lies in this one.
    // A walk of this region takes the same steps up to `limit`.
    const EndCache* cache = context->endCache;
    if (slot.limit < limit || cache->marksLost) return 0;
    size_t low = slot.firstMark;
    size_t high = slot.lastMark;
    while (low < high) {
        size_t middle = low + (high - low) / 2;
        if (cache->marks[middle] <= limit) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    resume = low > slot.firstMark ? cache->marks[low - 1] : contents;
    return -1;
}
