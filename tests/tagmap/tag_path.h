// The node at the end of a path of element tags, or null: how a listing
// walks a tag map, one child per element.
#pragma once

#include <initializer_list>
#include <string>

#include "tagmap/tag_map.h"

struct Step {
    int tagClass;
    uint32_t number;
};

constexpr int U = kClassUniversal;
constexpr int A = kClassApplication;
constexpr int C = kClassContext;
constexpr int P = kClassPrivate;

inline const TagNode* at(const TagMap& map, std::initializer_list<Step> path)
{
    const TagNode* node = map.root();
    for (const Step& step : path) node = map.child(node, step.tagClass, step.number);
    return node;
}

// A node's field and form, "<none>" where the path leads nowhere.
struct Named {
    std::string field;
    ValueForm form = ValueForm::None;
    bool operator==(const Named&) const = default;
};

inline Named named(const TagNode* node)
{
    return node != nullptr ? Named{std::string(node->field), node->form} : Named{"<none>"};
}
