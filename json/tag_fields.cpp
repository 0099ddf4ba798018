#include "json/tag_fields.h"

#include <array>
#include <cstring>
#include <string_view>

#include "json/json_text.h"
#include "render/tag_name.h"
#include "runtime/output.h"
#include "tlv/element.h"

namespace {

constexpr std::string_view kClassFields[] = {
    ",\"class\":\"universal\"",
    ",\"class\":\"application\"",
    ",\"class\":\"context\"",
    ",\"class\":\"private\"",
};

// Index of a two-octet identifier: class and form, then the tag number.
size_t twoOctetIndex(uint8_t first, uint8_t second)
{
    return (static_cast<size_t>(first >> 5) << 7) | second;
}

// Every one-octet identifier (256, the high-tag-number ones unused) and
// every two-octet one (tag numbers 31 to 127: 8 class-and-form prefixes
// times 128), made once.
struct TagTables {
    std::array<TagFields, 256> one;
    std::array<TagFields, 8 * 128> two;
};

TagTables* makeTables(RunContext* context)
{
    static TagTables tables;
    for (int octet = 0; octet < 256; ++octet) {
        if ((octet & HIGH_TAG_MASK) == HIGH_TAG_MASK) continue;
        // The octet and a short length: a readable identifier of its own.
        const uint8_t octets[2] = {static_cast<uint8_t>(octet), 0};
        makeTagFields(context, readElement(octets, 2), tables.one[octet]);
    }
    for (int prefix = 0; prefix < 8; ++prefix) {
        for (int number = 0; number < 128; ++number) {
            const uint8_t octets[3] = {static_cast<uint8_t>((prefix << 5) | HIGH_TAG_MASK),
                                       static_cast<uint8_t>(number), 0};
            makeTagFields(context, readElement(octets, 3), tables.two[twoOctetIndex(octets[0], octets[1])]);
        }
    }
    return &tables;
}

const TagTables& tagTables(RunContext* context)
{
    static const TagTables* const kTables = makeTables(context);
    return *kTables;
}

}  // namespace

char* putClassTagAndForm(char* out, const Element& element)
{
    out = put(out, kClassFields[element.tagClass & 3]);
    if (element.tagNumber >= 0) {
        out = put(out, ",\"tag\":");
        out = putJsonNumber(out, element.tagNumber);
    }
    return put(out, element.constructed ? ",\"constructed\":true" : ",\"constructed\":false");
}

void makeTagFields(RunContext* context, const Element& element, TagFields& fields)
{
    char* out = putClassTagAndForm(fields.text, element);
    fields.row = nullptr;
    if (element.tagClass == CLASS_UNIVERSAL && element.tagNumber == 0) {
        // A tag of 00 where no end-of-contents belongs has no name; asking
        // for one would report its second octet, which the hexadecimal
        // layout doesn't.
        out = put(out, ",\"type\":null");
    } else {
        TagNameBuffer buffer;
        const TagText name = elementTagName(context, element, buffer);
        // The names are letters, digits, blanks, '-' and brackets: nothing
        // that JSON escapes.
        out = put(out, ",\"type\":\"");
        out = put(out, std::string_view(name.text, static_cast<size_t>(name.length)));
        *out++ = '"';
        fields.row = name.row;
    }
    fields.length = static_cast<uint8_t>(out - fields.text);
}

const TagFields* knownTagFields(RunContext* context, const Element& element)
{
    const uint8_t* octets = element.start();
    if (element.identifier == 1) return &tagTables(context).one[octets[0]];
    if (element.identifier == 2) return &tagTables(context).two[twoOctetIndex(octets[0], octets[1])];
    return nullptr;
}
