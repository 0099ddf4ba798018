// What a tag map says of one element: its field name and its value in the
// map's form. The layouts (syntax, decomposed, JSON) ask this one function
// and only place the answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tagmap/value_forms.h"

struct FieldValue {
    enum class Shown : uint8_t {
        Layout,  // no form applies (unknown element, constructed, no form): the layout's own contents
        Form,    // `text` is the value in the node's form
        Hex,     // the octets don't fit the form: `text` is their hexadecimal, `formName` the form
    };
    // The element's node, or null when the map doesn't know the element;
    // the parent to pass for the elements inside it.
    const TagNode* node = nullptr;
    std::string_view field;  // empty: the map gives no name
    Shown shown = Shown::Layout;
    std::string_view text;          // into the caller's buffer
    const char* formName = nullptr;  // for Hex: "tbcd", "bcd-timestamp"...

    bool named() const { return !field.empty(); }
};

// The node of an element inside `parent` (map.root() for a top-level record;
// null: the parent is unknown, so is the element) by its tag.
const TagNode* fieldNode(const TagMap& map, const TagNode* parent, int tagClass, int32_t tagNumber);

// The field and value of an element whose node is known (null: Layout, no
// name). `contents` are the primitive element's contents octets; `buffer`
// takes the text and needs valueTextBound(contents.size()) characters: a
// smaller one gives Layout, as a constructed element does.
FieldValue fieldValue(const TagMap& map, const TagNode* node, bool constructed, Octets contents, char* buffer,
                      size_t capacity);

// Both in one call, for a layout that keeps the parent's node itself (JSON):
// keep the answer's `node` as the parent of the element's own elements.
inline FieldValue describeField(const TagMap& map, const TagNode* parent, int tagClass, int32_t tagNumber,
                                bool constructed, Octets contents, char* buffer, size_t capacity)
{
    return fieldValue(map, fieldNode(map, parent, tagClass, tagNumber), constructed, contents, buffer, capacity);
}
