// A tag map: field names and value forms for the elements of a record,
// found by the tag path from the top-level record down.
//
// The map is a trie of nodes. The listing walks elements depth-first and
// keeps, for each open level, the node of that element (or null when the map
// does not know it); `child` then finds the next element's node with one
// probe of a flat hash table, and one more for the `*` entry of a SEQUENCE OF.
// A field of a named type shares the type's children, so a type written once
// serves every field of that type, also recursively.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

// The exit status of a run whose tag map cannot be read or is malformed.
constexpr int kTagMapStatus = 82;

// How a primitive element's contents are shown.
enum class ValueForm : uint8_t {
    None,          // constructed, or no form given: the layout's own rendering
    Hex,
    Integer,
    Enumerated,
    Text,
    Tbcd,
    Isdn,
    BcdTimestamp,
    Ipv4,
    Ipv6,
    PlmnId,
};

// The tag classes as the identifier octet's top two bits give them.
constexpr int kClassUniversal = 0;
constexpr int kClassApplication = 1;
constexpr int kClassContext = 2;
constexpr int kClassPrivate = 3;

struct EnumName {
    int64_t value;
    std::string_view name;
};

struct TagNode {
    // Empty for a step the map names no field at. A name is followed by ": "
    // and readable for TagMap::kFieldReach octets from its start.
    std::string_view field;
    uint32_t childSet;       // the key space of the children; kNoChildren for a leaf
    uint32_t wildcard;       // index of the `*` child, or kNoNode
    uint32_t firstName;      // the enumerated names, in TagMap::names_
    uint32_t nameCount;
    // The children of context-specific tags below kDirectNumbers, by number,
    // in TagMap::direct_ from here; kNoNode when the children have none.
    uint32_t direct;
    ValueForm form;
};

class TagMap {
public:
    static constexpr uint32_t kNoNode = UINT32_MAX;
    static constexpr uint32_t kNoChildren = UINT32_MAX;

    // The level above the top-level records: child(root(), ...) finds a record.
    const TagNode* root() const { return nodes_.empty() ? nullptr : &nodes_[0]; }

    // The node of an element with this tag inside `parent`, or null. A null
    // parent (an element the map does not know) gives null.
    const TagNode* child(const TagNode* parent, int tagClass, uint32_t tagNumber) const;

    // The name the map gives an enumerated value of `node`, or empty.
    std::string_view valueName(const TagNode& node, int64_t value) const;

    // Keeps the text the names are views into.
    void keepText(std::unique_ptr<char[]> text) { text_ = std::move(text); }

    size_t nodeCount() const { return nodes_.size(); }

    // How far a field name can be read in one move: the name and ": " are
    // copied as 32 octets when they are no longer.
    static constexpr size_t kFieldReach = 32;
    bool empty() const { return nodes_.size() <= 1; }

private:
    friend class TagMapBuilder;

    struct Slot {
        uint64_t key;    // childSet << 32 ^ class << 30 ^ number, hashed; kEmptyKey when free
        uint32_t node;
    };
    static constexpr uint64_t kEmptyKey = UINT64_MAX;

    // Fibonacci hashing: the key's top bits after one multiplication.
    static uint64_t slotOf(uint64_t key, uint32_t mask) { return ((key * 0x9E3779B97F4A7C15ull) >> 32) & mask; }
    // Inline: the listing asks once per element.
    const Slot* find(uint64_t key) const
    {
        if (slots_.empty()) return nullptr;
        for (uint64_t at = slotOf(key, slotMask_);; at = (at + 1) & slotMask_) {
            const Slot& slot = slots_[at];
            if (slot.key == key) return &slot;
            if (slot.key == kEmptyKey) return nullptr;
        }
    }
    void setEdges(const std::vector<std::pair<uint64_t, uint32_t>>& edges);
    // Moves the field names into fields_, each behind the one before with ": ".
    void placeFields();

    std::vector<TagNode> nodes_;
    std::vector<Slot> slots_;
    std::vector<uint32_t> direct_;  // blocks of kDirectNumbers node indexes
    std::vector<EnumName> names_;
    uint32_t slotMask_ = 0;
    std::unique_ptr<char[]> text_;  // the map's text when it was read from a file; views point into it
    std::unique_ptr<char[]> fields_;  // every field name and ": ", and kFieldReach octets behind the last
};

// The key of one child in the table: the child set, the class, the number.
// Tag numbers of 2^30 and above share keys with other classes, so the table
// refuses them (no listing shows one in a CDR).
constexpr uint64_t childKey(uint32_t childSet, int tagClass, uint32_t tagNumber)
{
    return (static_cast<uint64_t>(childSet) << 32) | (static_cast<uint64_t>(tagClass & 3) << 30) |
           (tagNumber & 0x3FFFFFFFu);
}
constexpr uint32_t kLargestTagNumber = 0x3FFFFFFFu;
// The context-specific tag numbers that CDR fields have: looked up by
// number, without the probe table.
constexpr uint32_t kDirectNumbers = 64;

inline const TagNode* TagMap::child(const TagNode* parent, int tagClass, uint32_t tagNumber) const
{
    if (parent == nullptr) return nullptr;
    if (parent->direct != kNoNode && tagClass == kClassContext && tagNumber < kDirectNumbers) {
        const uint32_t node = direct_[parent->direct + tagNumber];
        if (node != kNoNode) return &nodes_[node];
    } else if (parent->childSet != kNoChildren && tagNumber <= kLargestTagNumber) {
        const Slot* slot = find(childKey(parent->childSet, tagClass, tagNumber));
        if (slot != nullptr) return &nodes_[slot->node];
    }
    // A SEQUENCE OF: every element that has no entry of its own is the `*` one.
    if (parent->wildcard != kNoNode) return &nodes_[parent->wildcard];
    return nullptr;
}
