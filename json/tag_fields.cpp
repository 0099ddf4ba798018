#include "json/tag_fields.h"

#include <array>
#include <cstring>
#include <string_view>

#include "render/tag_name.h"
#include "runtime/output.h"
#include "tlv/element.h"

namespace {

constexpr int64_t kExactLimit = int64_t{1} << 53;  // doubles hold every integer up to here

constexpr std::string_view kClassFields[] = {
    ",\"class\":\"universal\"",
    ",\"class\":\"application\"",
    ",\"class\":\"context\"",
    ",\"class\":\"private\"",
};

// "00" to "99": two digits a step.
constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

char* put(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

int digitCount(uint64_t value)
{
    int count = 1;
    while (value >= 10000) {
        value /= 10000;
        count += 4;
    }
    if (value >= 1000) return count + 3;
    if (value >= 100) return count + 2;
    return value >= 10 ? count + 1 : count;
}

// The digits of a non-negative value, two at a time from the right, in
// place.
char* putDigits(char* out, uint64_t value)
{
    char* end = out + digitCount(value);
    char* at = end;
    while (value >= 100) {
        at -= 2;
        std::memcpy(at, &kDigitPairs[2 * (value % 100)], 2);
        value /= 100;
    }
    if (value >= 10) {
        std::memcpy(at - 2, &kDigitPairs[2 * value], 2);
    } else {
        at[-1] = static_cast<char>('0' + value);
    }
    return end;
}

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

char* putJsonNumber(char* out, int64_t value)
{
    const bool exact = value <= kExactLimit && value >= -kExactLimit;
    if (!exact) *out++ = '"';
    if (value < 0) {
        *out++ = '-';
        out = putDigits(out, 0 - static_cast<uint64_t>(value));
    } else {
        out = putDigits(out, static_cast<uint64_t>(value));
    }
    if (!exact) *out++ = '"';
    return out;
}

void makeTagFields(RunContext* context, const Element& element, TagFields& fields)
{
    char* out = put(fields.text, kClassFields[element.tagClass & 3]);
    out = put(out, ",\"tag\":");
    out = putJsonNumber(out, element.tagNumber);
    out = put(out, element.constructed ? ",\"constructed\":true" : ",\"constructed\":false");
    fields.row = nullptr;
    if (element.tagClass == CLASS_UNIVERSAL && element.tagNumber == 0) {
        // A tag of 00 where no end-of-contents belongs has no name; asking
        // for one would report its second octet, which the hexadecimal
        // layout doesn't.
        out = put(out, ",\"name\":null");
    } else {
        TagNameBuffer buffer;
        const TagText name = elementTagName(context, element, buffer);
        // The names are letters, digits, blanks, '-' and brackets: nothing
        // that JSON escapes.
        out = put(out, ",\"name\":\"");
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
