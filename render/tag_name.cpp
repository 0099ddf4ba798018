#include "render/tag_name.h"

#include <cstring>

#include "app/signal.h"
#include "render/universal_tags.h"
#include "runtime/decimal.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tlv/element.h"

namespace {

// "[%s%ld]": the class word and the number in brackets.
int bracketedName(uint8_t tagClass, int32_t number, TagNameBuffer& buffer)
{
    constexpr std::string_view kWords[] = {"", "APPLICATION ", "", "PRIVATE "};
    const std::string_view word = kWords[tagClass & 3];
    char* made = buffer.text;
    made[0] = '[';
    std::memcpy(made + 1, word.data(), word.size());
    int used = 1 + static_cast<int>(word.size());
    used = static_cast<int>(putSignedDecimal(made + used, number) - made);
    made[used++] = ']';
    made[used] = '\0';
    return used;
}

}  // namespace

const char* universalTagName(int32_t tag)
{
    const UniversalTag* row = tag >= 1 ? universalTag(tag) : nullptr;
    return row != nullptr && !row->name.empty() ? row->name.data() : nullptr;
}

TagText elementTagNameSlow(RunContext* context, const Element& element, TagNameBuffer& buffer)
{
    TagText name;
    if (element.available() == 0) return name;
    if (element.tagNumber == -1) {
        signalError(context, kPrematureEnd, 0, 0);
        return name;
    }
    if (element.tagClass == CLASS_UNIVERSAL) {
        const UniversalTag* row = universalTag(element.tagNumber);
        // Universal tag 0 is the end-of-contents; its second octet must be 0.
        if (element.tagNumber == 0 && !element.secondOctetZero()) {
            signalError(context, kEocNonZero, 0, 0);
            return name;
        }
        if (row != nullptr && !row->name.empty()) {
            name.text = row->name.data();
            name.length = static_cast<int>(row->name.size());
            name.row = row;
            return name;
        }
    }
    if (element.tagClass == CLASS_CONTEXT && element.tagNumber >= 0 && element.tagNumber < 256) {
        name.text = kContextNames.text[element.tagNumber];
        name.length = kContextNames.length[element.tagNumber];
        return name;
    }
    name.length = bracketedName(element.tagClass, element.tagNumber, buffer);
    name.text = buffer.text;
    return name;
}

const char* tagNameText(RunContext* context, const uint8_t* element, int32_t available, TagNameBuffer& buffer)
{
    return elementTagName(context, readElement(element, available), buffer).text;
}

char* tagName(RunContext* context, const uint8_t* element, int32_t available)
{
    TagNameBuffer buffer;
    TagText name = elementTagName(context, readElement(element, available), buffer);
    if (name.text == nullptr) return nullptr;
    auto* text = static_cast<char*>(qorAlloc(context, static_cast<size_t>(name.length) + 1));
    if (text == nullptr) {
        signalError(context, kNoMemory, 0, 0);
        return nullptr;
    }
    std::memcpy(text, name.text, static_cast<size_t>(name.length) + 1);
    return text;
}
