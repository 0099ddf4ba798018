#include "render/universal_tags.h"

#include "render/number_text.h"
#include "render/string_text.h"
#include "render/text_block.h"

namespace {

// EXTERNAL, ENUMERATED, EMBEDDED PDV, SEQUENCE, SET and CHARACTER STRING have
// no readable form: they show in hexadecimal. INTEGER is PDU 23 when its
// contents have 5 octets or more. Long names break in front of "String",
// "Time", "STRING", "IDENTIFIER" or "Descriptor" (but BMPString, IA5String
// and UTCTime stand whole).
constexpr UniversalTag kTags[kLastUniversalTag + 1] = {
    {"END-OF-CONTENTS", 0, false, 0, nullptr},
    {"BOOLEAN", 0, false, 1, booleanText},
    {"INTEGER", 0, true, 2, integerText},
    {"BIT STRING", 0, false, 3, bitStringText},
    {"OCTET STRING", 0, false, 4, octetStringText},
    {"NULL", 0, false, 5, nullText},
    {"OBJECT IDENTIFIER", 7, false, 6, objectIdentifierText},
    {"ObjectDescriptor", 6, false, 20, copiedText},
    {"EXTERNAL", 0, false, 0, nullptr},
    {"REAL", 0, true, 8, realValueText},
    {"ENUMERATED", 0, false, 0, nullptr},
    {"EMBEDDED PDV", 0, false, 0, nullptr},
    {"UTF8String", 4, false, 19, utf8StringText},
    {"RELATIVE-OID", 0, false, 7, relativeOidText},
    {"TIME", 0, false, 24, copiedText},
    {"", 0, false, 0, nullptr},
    {"SEQUENCE", 0, false, 0, nullptr},
    {"SET", 0, false, 0, nullptr},
    {"NumericString", 7, false, 9, copiedText},
    {"PrintableString", 9, false, 10, copiedText},
    {"TeletexString", 7, false, 11, copiedText},
    {"VideotexString", 8, false, 12, copiedText},
    {"IA5String", 0, false, 13, ia5StringText},
    {"UTCTime", 0, true, 21, utcTimeText},
    {"GeneralizedTime", 11, true, 22, generalizedTimeText},
    {"GraphicString", 7, false, 14, copiedText},
    {"VisibleString", 7, false, 15, copiedText},
    {"GeneralString", 7, false, 16, copiedText},
    {"UniversalString", 9, false, 17, universalStringText},
    {"CHARACTER STRING", 10, false, 0, nullptr},
    {"BMPString", 0, false, 18, bmpStringText},
    {"DATE", 0, false, 25, copiedText},
    {"TIME-OF-DAY", 0, false, 26, copiedText},
    {"DATE-TIME", 0, false, 27, copiedText},
    {"DURATION", 0, false, 28, copiedText},
    {"OID-IRI", 0, false, 29, utf8StringText},
    {"RELATIVE-OID-IRI", 0, false, 30, utf8StringText},
};

// The split points stand where the names say.
constexpr bool splitsAt(int tag, std::string_view rest)
{
    return kTags[tag].name.substr(kTags[tag].split) == rest;
}
static_assert(splitsAt(6, "IDENTIFIER") && splitsAt(7, "Descriptor") && splitsAt(12, "String") &&
              splitsAt(18, "String") && splitsAt(19, "String") && splitsAt(20, "String") && splitsAt(21, "String") &&
              splitsAt(24, "Time") && splitsAt(25, "String") && splitsAt(26, "String") && splitsAt(27, "String") &&
              splitsAt(28, "String") && splitsAt(29, "STRING"));

}  // namespace

const UniversalTag* universalTag(int32_t number)
{
    if (number < 0 || number > kLastUniversalTag) return nullptr;
    return &kTags[number];
}
