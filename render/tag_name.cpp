#include "render/tag_name.h"

#include <cstdio>
#include <cstring>

#include "app/signal.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tlv/reader.h"

namespace {

constexpr const char* kUniversalNames[] = {
    nullptr,             "BOOLEAN",         "INTEGER",         "BIT STRING",
    "OCTET STRING",      "NULL",            "OBJECT IDENTIFIER", "ObjectDescriptor",
    "EXTERNAL",          "REAL",            "ENUMERATED",      "EMBEDDED PDV",
    "UTF8String",        "RELATIVE-OID",    "TIME",            nullptr,
    "SEQUENCE",          "SET",             "NumericString",   "PrintableString",
    "TeletexString",     "VideotexString",  "IA5String",       "UTCTime",
    "GeneralizedTime",   "GraphicString",   "VisibleString",   "GeneralString",
    "UniversalString",   "CHARACTER STRING", "BMPString",      "DATE",
    "TIME-OF-DAY",       "DATE-TIME",       "DURATION",        "OID-IRI",
    "RELATIVE-OID-IRI",
};
constexpr int32_t kLastUniversal = 36;

char* copyText(RunContext* context, const char* text)
{
    size_t length = std::strlen(text);
    auto* block = static_cast<char*>(qorAlloc(context, length + 1));
    if (block != nullptr) std::memcpy(block, text, length + 1);
    return block;
}

}  // namespace

const char* universalTagName(int32_t tag)
{
    if (tag < 0 || tag > kLastUniversal) return nullptr;
    return kUniversalNames[tag];
}

const char* tagNameText(RunContext* context, const uint8_t* element, int32_t available, TagNameBuffer& buffer)
{
    if (available == 0) return nullptr;
    int tagClassOf = tagClass(context, element, available);
    int32_t number = tagNumber(context, element, available);
    if (number == -1) return nullptr;
    if (tagClassOf == 0 && number == 0) {
        // Universal tag 0 is the end-of-contents; its second octet must be 0.
        if (available < 2 || element[1] != 0) {
            signalError(context, 37, 0, 0);
            return nullptr;
        }
        return "END-OF-CONTENTS";
    }
    if (tagClassOf == 0 && universalTagName(number) != nullptr) return universalTagName(number);
    // "[%s%ld]": the class word and the number in brackets.
    const char* word = tagClassOf == 1 ? "APPLICATION " : tagClassOf == 3 ? "PRIVATE " : "";
    char* made = buffer.text;
    size_t used = std::strlen(word) + 1;
    made[0] = '[';
    std::memcpy(made + 1, word, used - 1);
    char digits[24];
    char* end = digits + sizeof digits;
    char* start = decimalDigits(end, number);
    std::memcpy(made + used, start, static_cast<size_t>(end - start));
    used += static_cast<size_t>(end - start);
    made[used++] = ']';
    made[used] = '\0';
    return made;
}

char* tagName(RunContext* context, const uint8_t* element, int32_t available)
{
    TagNameBuffer buffer;
    const char* name = tagNameText(context, element, available, buffer);
    if (name == nullptr) return nullptr;
    char* text = copyText(context, name);
    if (text == nullptr) signalError(context, 1, 0, 0);
    return text;
}
