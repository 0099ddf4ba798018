#include "tagmap/tag_map.h"

#include <algorithm>
#include <cstring>

std::string_view TagMap::valueName(const TagNode& node, int64_t value) const
{
    const EnumName* first = names_.data() + node.firstName;
    const EnumName* last = first + node.nameCount;
    // Most enumerations number their values from 0 on, without a gap: the
    // value is its own index then (the names are in the order of their values).
    if (value >= 0 && value < node.nameCount && first[value].value == value) return first[value].name;
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
    // A block of direct entries for each set of children with a small
    // context-specific tag; every node with those children points at it.
    std::vector<uint32_t> blockOf(nodes_.size(), kNoNode);
    direct_.clear();
    for (const auto& [key, node] : edges) {
        const auto childSet = static_cast<uint32_t>(key >> 32);
        const auto tagClass = static_cast<int>((key >> 30) & 3);
        const auto number = static_cast<uint32_t>(key & kLargestTagNumber);
        if (tagClass != kClassContext || number >= kDirectNumbers || childSet >= blockOf.size()) continue;
        if (blockOf[childSet] == kNoNode) {
            blockOf[childSet] = static_cast<uint32_t>(direct_.size());
            direct_.resize(direct_.size() + kDirectNumbers, kNoNode);
        }
        direct_[blockOf[childSet] + number] = node;
    }
    for (TagNode& node : nodes_) {
        node.direct = node.childSet < blockOf.size() ? blockOf[node.childSet] : kNoNode;
    }
}

void TagMap::placeFields()
{
    size_t total = kFieldReach;
    for (const TagNode& node : nodes_) total += node.field.empty() ? 0 : node.field.size() + 2;
    fields_ = std::make_unique<char[]>(total);
    char* at = fields_.get();
    for (TagNode& node : nodes_) {
        if (node.field.empty()) continue;
        const size_t size = node.field.size();
        std::memcpy(at, node.field.data(), size);
        std::memcpy(at + size, ": ", 2);
        node.field = std::string_view(at, size);
        at += size + 2;
    }
}
