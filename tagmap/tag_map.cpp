#include "tagmap/tag_map.h"

#include <algorithm>

namespace {

constexpr uint64_t kEmptyKey = UINT64_MAX;

// Fibonacci hashing: the key's top bits after one multiplication.
inline uint64_t slotOf(uint64_t key, uint32_t mask)
{
    return ((key * 0x9E3779B97F4A7C15ull) >> 32) & mask;
}

}  // namespace

const TagMap::Slot* TagMap::find(uint64_t key) const
{
    if (slots_.empty()) return nullptr;
    for (uint64_t at = slotOf(key, slotMask_);; at = (at + 1) & slotMask_) {
        const Slot& slot = slots_[at];
        if (slot.key == key) return &slot;
        if (slot.key == kEmptyKey) return nullptr;
    }
}

const TagNode* TagMap::child(const TagNode* parent, int tagClass, uint32_t tagNumber) const
{
    if (parent == nullptr) return nullptr;
    if (parent->childSet != kNoChildren && tagNumber <= kLargestTagNumber) {
        const Slot* slot = find(childKey(parent->childSet, tagClass, tagNumber));
        if (slot != nullptr) return &nodes_[slot->node];
    }
    // A SEQUENCE OF: every element that has no entry of its own is the `*` one.
    if (parent->wildcard != kNoNode) return &nodes_[parent->wildcard];
    return nullptr;
}

std::string_view TagMap::valueName(const TagNode& node, int64_t value) const
{
    const EnumName* first = names_.data() + node.firstName;
    const EnumName* last = first + node.nameCount;
    const EnumName* found =
        std::lower_bound(first, last, value, [](const EnumName& name, int64_t v) { return name.value < v; });
    return found != last && found->value == value ? found->name : std::string_view{};
}

// Builds the probe table once every edge is known: at most half full, so a
// probe ends after a step or two.
void TagMap::setEdges(const std::vector<std::pair<uint64_t, uint32_t>>& edges)
{
    size_t size = 16;
    while (size < 2 * edges.size()) size *= 2;
    slots_.assign(size, Slot{kEmptyKey, 0});
    slotMask_ = static_cast<uint32_t>(size - 1);
    for (const auto& [key, node] : edges) {
        uint64_t at = slotOf(key, slotMask_);
        while (slots_[at].key != kEmptyKey) at = (at + 1) & slotMask_;
        slots_[at] = Slot{key, node};
    }
}
