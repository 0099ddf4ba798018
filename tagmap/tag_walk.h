// The tag map's nodes along a walk: one per open level, found from the
// parent's node once per element. A fixed array, so a walk of any length
// asks for no memory.
#pragma once

#include <cstdint>

#include "tagmap/tag_map.h"

class TagWalk {
public:
    // Levels 0 to kLevels - 2 hold elements; the walks go 256 deep.
    static constexpr int kLevels = 258;

    explicit TagWalk(const TagMap& map) : map_(map) { nodes_[0] = map.root(); }

    // The node of an element at `level` (0: a top-level record), looked up
    // in the node of the element that holds it; it becomes the parent of
    // the elements inside. A tag number of -1 (an identifier that ends
    // early) is one the map can't know.
    const TagNode* enter(int level, int tagClass, int32_t tagNumber)
    {
        entered_ = nullptr;
        if (level < 0 || level + 1 >= kLevels) return nullptr;
        const TagNode* node =
            tagNumber < 0 ? nullptr : map_.child(nodes_[level], tagClass, static_cast<uint32_t>(tagNumber));
        nodes_[level + 1] = node;
        entered_ = node;
        return node;
    }
    // The node that the last enter() found, at whatever level.
    const TagNode* entered() const { return entered_; }
    // The node that the last enter() at `level` found.
    const TagNode* node(int level) const
    {
        return level < 0 || level + 1 >= kLevels ? nullptr : nodes_[level + 1];
    }
    const TagMap& map() const { return map_; }

private:
    const TagMap& map_;
    const TagNode* nodes_[kLevels];
    const TagNode* entered_ = nullptr;
};
