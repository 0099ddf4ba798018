#include "tagmap/map_builder.h"

#include <algorithm>

std::string atLine(int line, std::string_view message)
{
    std::string text = "line " + std::to_string(line) + ": ";
    text += message;
    return text;
}

TagMapBuilder::TagMapBuilder(TagMap& map) : map_(map)
{
    map_.nodes_.clear();
    map_.names_.clear();
    map_.slots_.clear();
    newNode();  // the root: the level above the records
}

uint32_t TagMapBuilder::newNode()
{
    map_.nodes_.push_back(TagNode{{}, TagMap::kNoChildren, TagMap::kNoNode, 0, 0, TagMap::kNoNode, ValueForm::None});
    info_.emplace_back();
    return static_cast<uint32_t>(map_.nodes_.size() - 1);
}

bool TagMapBuilder::beginType(std::string_view name, int line, std::string& error)
{
    if (inType()) {
        error = atLine(line, "type " + std::string(name) + " begins inside type " + std::string(typeName_) +
                                 "; close it with 'end' first");
        return false;
    }
    auto found = types_.find(name);
    if (found != types_.end()) {
        error = atLine(line, "type " + std::string(name) + " is already defined on line " +
                                 std::to_string(found->second.line));
        return false;
    }
    scope_ = newNode();
    types_.emplace(name, TypeInfo{scope_, line});
    typeName_ = name;
    typeLine_ = line;
    fields_ = 0;
    return true;
}

bool TagMapBuilder::endType(int line, std::string& error)
{
    if (!inType()) {
        error = atLine(line, "'end' without a type to close");
        return false;
    }
    if (fields_ == 0) {
        error = atLine(line, "type " + std::string(typeName_) + " has no fields");
        return false;
    }
    scope_ = 0;
    return true;
}

// Follows one step from `at`, making the node when the map has none yet.
bool TagMapBuilder::step(uint32_t& at, const PathStep& step, int line, std::string& error)
{
    if (!info_[at].typeName.empty()) {
        error = atLine(line, "the path passes through a field of type " + std::string(info_[at].typeName) +
                                 " (line " + std::to_string(info_[at].line) + "); write its fields in the type");
        return false;
    }
    if (step.wildcard) {
        if (map_.nodes_[at].wildcard == TagMap::kNoNode) {
            uint32_t made = newNode();
            map_.nodes_[at].wildcard = made;
            info_[at].hasChildren = true;
        }
        at = map_.nodes_[at].wildcard;
        return true;
    }
    const uint64_t key = childKey(at, step.tagClass, step.number);
    auto found = edgeIndex_.find(key);
    if (found != edgeIndex_.end()) {
        at = found->second;
        return true;
    }
    uint32_t made = newNode();
    edgeIndex_.emplace(key, made);
    edges_.emplace_back(key, made);
    map_.nodes_[at].childSet = at;
    info_[at].hasChildren = true;
    at = made;
    return true;
}

bool TagMapBuilder::addNames(TagNode& node, const std::vector<EnumName>& names, int line, std::string& error)
{
    node.firstName = static_cast<uint32_t>(map_.names_.size());
    node.nameCount = static_cast<uint32_t>(names.size());
    map_.names_.insert(map_.names_.end(), names.begin(), names.end());
    auto first = map_.names_.begin() + node.firstName;
    std::stable_sort(first, map_.names_.end(), [](const EnumName& a, const EnumName& b) { return a.value < b.value; });
    auto twice = std::adjacent_find(first, map_.names_.end(),
                                    [](const EnumName& a, const EnumName& b) { return a.value == b.value; });
    if (twice != map_.names_.end()) {
        error = atLine(line, "value " + std::to_string(twice->value) + " is named twice");
        return false;
    }
    return true;
}

bool TagMapBuilder::addField(const std::vector<PathStep>& path, std::string_view field, ValueForm form,
                             std::string_view typeName, const std::vector<EnumName>& names,
                             std::string_view valuesList, int line, std::string& error)
{
    uint32_t at = scope_;
    for (const PathStep& one : path) {
        if (!step(at, one, line, error)) return false;
    }
    NodeInfo& info = info_[at];
    if (info.line != 0) {
        error = atLine(line, "this path is already named on line " + std::to_string(info.line));
        return false;
    }
    if (!typeName.empty() && info.hasChildren) {
        error = atLine(line, "a field of type " + std::string(typeName) +
                                 " cannot also have fields of its own here; write them in the type");
        return false;
    }
    info.line = line;
    info.typeName = typeName;
    info.valuesList = valuesList;
    TagNode& node = map_.nodes_[at];
    node.field = field == "-" ? std::string_view{} : field;
    node.form = form;
    ++fields_;
    return names.empty() || addNames(node, names, line, error);
}

bool TagMapBuilder::addValues(std::string_view list, const std::vector<EnumName>& names, int line,
                              std::string& error)
{
    ValuesInfo& values = values_[list];
    if (values.names.empty()) values.line = line;
    for (const EnumName& name : names) {
        for (const EnumName& known : values.names) {
            if (known.value == name.value) {
                error = atLine(line, "value " + std::to_string(name.value) + " of " + std::string(list) +
                                         " is named twice");
                return false;
            }
        }
        values.names.push_back(name);
    }
    return true;
}

bool TagMapBuilder::finish(std::string& error)
{
    if (inType()) {
        error = atLine(typeLine_, "type " + std::string(typeName_) + " is not closed with 'end'");
        return false;
    }
    for (size_t i = 0; i < info_.size(); ++i) {
        const NodeInfo& info = info_[i];
        TagNode& node = map_.nodes_[i];
        if (!info.typeName.empty()) {
            auto type = types_.find(info.typeName);
            if (type == types_.end()) {
                error = atLine(info.line, "unknown type " + std::string(info.typeName));
                return false;
            }
            // Shared, not copied: a type that contains itself makes a cycle
            // in the graph, which each lookup follows one step at a time.
            node.childSet = map_.nodes_[type->second.node].childSet;
            node.wildcard = map_.nodes_[type->second.node].wildcard;
        }
        if (!info.valuesList.empty()) {
            auto values = values_.find(info.valuesList);
            if (values == values_.end()) {
                error = atLine(info.line, "unknown value list " + std::string(info.valuesList));
                return false;
            }
            ValuesInfo& list = values->second;
            if (!list.placed) {
                std::vector<EnumName> names = list.names;
                if (!addNames(node, names, list.line, error)) return false;
                list.first = node.firstName;
                list.placed = true;
            }
            node.firstName = list.first;
            node.nameCount = static_cast<uint32_t>(list.names.size());
        }
    }
    if (map_.nodes_.size() <= 1) {
        error = "the map names no fields";
        return false;
    }
    map_.setEdges(edges_);
    map_.placeFields();
    return true;
}
