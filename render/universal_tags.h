// What the listings know of each universal tag, by tag number: one row a
// tag. Nothing is decided by searching a printed name.
#pragma once

#include <cstdint>
#include <string_view>

#include "render/contents.h"
#include "tlv/element.h"

struct UniversalTag {
    std::string_view name;  // the listing's name; empty: shown as "[n]"
    uint8_t split;          // the syntax layout breaks the name in front of this character; 0: whole
    bool keepsWidth;        // INTEGER, REAL and the time types are shown whole, however long
    uint8_t pdu;            // the type of the built-in table; 0: no readable form
    TextMaker makeText;     // null: shown in hexadecimal
};

constexpr int32_t kLastUniversalTag = 36;

constexpr int kIntegerPdu = 2;
constexpr int kHugeIntegerPdu = 23;
// Contents octets from which an INTEGER is decoded as a huge one: the short
// form holds up to four octets in an i32.
constexpr int32_t kHugeIntegerFrom = 5;

// The type the built-in table decodes a value of `row` as: the row's, but
// the huge INTEGER from kHugeIntegerFrom contents octets on.
constexpr int valuePdu(const UniversalTag& row, int32_t length)
{
    return row.pdu == kIntegerPdu && length >= kHugeIntegerFrom ? kHugeIntegerPdu : row.pdu;
}

// The row of a universal tag from 0 to 36, or null.
const UniversalTag* universalTag(int32_t number);

// Whether a universal type has a readable form; every other type (tagged,
// SEQUENCE, OCTET STRING's kin) shows its contents' octets.
inline bool hasReadableForm(const UniversalTag* row)
{
    return row != nullptr && row->pdu != 0 && row->makeText != nullptr;
}

// Contents that renderContents gives back as the octets they are, with no
// decoder asked: a type without a readable form, of a definite length the
// input holds, not empty. The layouts write them straight from the input.
inline bool showsOctetsAsTheyAre(const Element& element, const UniversalTag* row)
{
    return !hasReadableForm(row) && element.length > 0 && !element.lengthOverruns();
}
