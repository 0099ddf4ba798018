// Builds a TagMap from the parsed lines of a map: paths into nodes, named
// types into shared child sets, value lists into enumerated names. Each call
// that can fail returns false with a message that names the line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tagmap/tag_map.h"

// One step of a path: a tag, or `*` for every element of a SEQUENCE OF.
struct PathStep {
    bool wildcard;
    int tagClass;
    uint32_t number;
};

class TagMapBuilder {
public:
    explicit TagMapBuilder(TagMap& map);

    // Where the following paths start: the records' level, or a type's fields.
    bool beginType(std::string_view name, int line, std::string& error);
    bool endType(int line, std::string& error);
    bool inType() const { return scope_ != 0; }
    int typeLine() const { return typeLine_; }

    // One field: its path in the current scope, its name, its form; for a
    // field of a named type `typeName` is set and the form is None; for an
    // enumerated form either `names` or `valuesList` may be given.
    bool addField(const std::vector<PathStep>& path, std::string_view field, ValueForm form, std::string_view typeName,
                  const std::vector<EnumName>& names, std::string_view valuesList, int line, std::string& error);
    bool addValues(std::string_view list, const std::vector<EnumName>& names, int line, std::string& error);

    // Resolves the references and builds the probe table.
    bool finish(std::string& error);

private:
    struct NodeInfo {
        int line = 0;  // of the line that names the field; 0 for a step on the way
        std::string_view typeName;
        std::string_view valuesList;
        bool hasChildren = false;
    };
    struct TypeInfo {
        uint32_t node;
        int line;
    };
    struct ValuesInfo {
        std::vector<EnumName> names;
        int line;
        uint32_t first = 0;
        bool placed = false;
    };

    uint32_t newNode();
    bool step(uint32_t& at, const PathStep& step, int line, std::string& error);
    bool addNames(TagNode& node, const std::vector<EnumName>& names, int line, std::string& error);

    TagMap& map_;
    std::vector<NodeInfo> info_;
    std::vector<std::pair<uint64_t, uint32_t>> edges_;
    std::unordered_map<uint64_t, uint32_t> edgeIndex_;
    std::unordered_map<std::string_view, TypeInfo> types_;
    std::unordered_map<std::string_view, ValuesInfo> values_;
    uint32_t scope_ = 0;  // the node paths start from: 0 the root, else a type's node
    std::string_view typeName_;
    int typeLine_ = 0;
    size_t fields_ = 0;
};

// "line N: " before a message.
std::string atLine(int line, std::string_view message);
