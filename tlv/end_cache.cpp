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
    // Without memory for it the walk only goes slower.
    auto* cache = static_cast<EndCache*>(qorAlloc(context, sizeof(EndCache)));
    if (cache != nullptr) std::memset(static_cast<void*>(cache), 0, sizeof(EndCache));
    context->endCache = cache;
}

EndCacheScope::~EndCacheScope()
{
    qorFree(context_, context_->endCache);
    context_->endCache = saved_;
}

void clearEndCache(RunContext* context)
{
    if (context->endCache != nullptr) std::memset(context->endCache->slots, 0, sizeof context->endCache->slots);
}

void rememberEnd(RunContext* context, const uint8_t* contents, const uint8_t* end)
{
    if (context->endCache == nullptr) return;
    *slotOf(context->endCache, contents) = {contents, end, end};
}

void rememberNoEnd(RunContext* context, const uint8_t* contents, const uint8_t* limit)
{
    if (context->endCache == nullptr) return;
    *slotOf(context->endCache, contents) = {contents, nullptr, limit};
}

int knownEnd(const RunContext* context, const uint8_t* contents, const uint8_t* limit, const uint8_t*& end)
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
    return slot.limit >= limit ? -1 : 0;
}
