#include "render/renderers.h"

#include "render/number_text.h"
#include "render/string_text.h"

namespace {

// Indexed by universal tag. EXTERNAL, ENUMERATED, EMBEDDED PDV, SEQUENCE,
// SET and CHARACTER STRING have no readable form: they show in hexadecimal.
constexpr ContentsRenderer kRenderers[] = {
    {0, nullptr},   // 0 end-of-contents: never rendered
    {1, booleanText},
    {2, integerText},  // PDU 23 when the contents have 5 octets or more
    {3, bitStringText},
    {4, octetStringText},
    {5, nullText},
    {6, objectIdentifierText},
    {20, copiedText},  // ObjectDescriptor
    {0, nullptr},   // EXTERNAL
    {8, realValueText},
    {0, nullptr},   // ENUMERATED
    {0, nullptr},   // EMBEDDED PDV
    {19, utf8StringText},
    {7, relativeOidText},
    {24, copiedText},  // TIME
    {0, nullptr},   // 15
    {0, nullptr},   // SEQUENCE
    {0, nullptr},   // SET
    {9, copiedText},   // NumericString
    {10, copiedText},  // PrintableString
    {11, copiedText},  // TeletexString
    {12, copiedText},  // VideotexString
    {13, ia5StringText},
    {21, utcTimeText},
    {22, generalizedTimeText},
    {14, copiedText},  // GraphicString
    {15, copiedText},  // VisibleString
    {16, copiedText},  // GeneralString
    {17, universalStringText},
    {0, nullptr},   // CHARACTER STRING
    {18, bmpStringText},
    {25, copiedText},  // DATE
    {26, copiedText},  // TIME-OF-DAY
    {27, copiedText},  // DATE-TIME
    {28, copiedText},  // DURATION
    {29, utf8StringText},  // OID-IRI
    {30, utf8StringText},  // RELATIVE-OID-IRI
};

constexpr ContentsRenderer kNone = {0, nullptr};

}  // namespace

const ContentsRenderer& contentsRenderer(int tag)
{
    if (tag < 0 || tag >= static_cast<int>(sizeof kRenderers / sizeof kRenderers[0])) return kNone;
    return kRenderers[tag];
}
