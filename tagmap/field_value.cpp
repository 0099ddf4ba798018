#include "tagmap/field_value.h"

const TagNode* fieldNode(const TagMap& map, const TagNode* parent, int tagClass, int32_t tagNumber)
{
    if (tagNumber < 0) return nullptr;
    return map.child(parent, tagClass, static_cast<uint32_t>(tagNumber));
}

FieldValue fieldValue(const TagMap& map, const TagNode* node, bool constructed, Octets contents, char* buffer,
                      size_t capacity)
{
    FieldValue answer;
    answer.node = node;
    if (node == nullptr) return answer;
    answer.field = node->field;
    // A form says how primitive contents read; a constructed element's
    // contents are elements of their own.
    if (constructed || node->form == ValueForm::None || capacity < valueTextBound(contents.size())) return answer;
    ValueText out{buffer, capacity, 0};
    if (valueText(map, *node, contents, out)) {
        answer.shown = FieldValue::Shown::Form;
    } else {
        // The bound leaves room for the hexadecimal of any contents.
        formText(ValueForm::Hex, contents, out);
        answer.shown = FieldValue::Shown::Hex;
        answer.formName = valueFormName(node->form);
    }
    answer.text = std::string_view(buffer, out.length);
    return answer;
}
