// The fields of an element object that its identifier octets decide:
// ,"class":..,"tag":..,"constructed":..,"type":.. as one piece of text. For
// the identifiers of one and two octets (tag numbers up to 127), which
// nearly every element has, the pieces are made once and looked up.
#pragma once

#include <cstdint>
#include <cstring>

struct RunContext;
struct Element;
struct UniversalTag;

struct TagFields {
    // The longest: ,"class":"application","tag":-2147483648,
    // "constructed":false,"type":"[APPLICATION -2147483648]"
    char text[128];
    uint8_t length;
    const UniversalTag* row;  // the universal tag's row, for the value's text
};

// The fields' text at `out`, which needs room for the whole of
// TagFields::text; returns the end. Whole-word copies of a fixed size beat
// a copy of the exact length for texts of 50 to 70 characters.
inline char* putTagFields(char* out, const TagFields& fields)
{
    static_assert(sizeof fields.text == 128);
    std::memcpy(out, fields.text, 64);
    if (fields.length > 64) std::memcpy(out + 64, fields.text + 64, 64);
    return out + fields.length;
}

// ,"class":..,"tag":..,"constructed":.. at `out` (the tag number when the
// identifier octets reach it); returns the end. Needs 64 chars.
char* putClassTagAndForm(char* out, const Element& element);

// Makes the fields of a readable element (identifier octets complete).
void makeTagFields(RunContext* context, const Element& element, TagFields& fields);

// The fields made once of a readable element whose identifier has one or
// two octets; null for a longer one.
const TagFields* knownTagFields(RunContext* context, const Element& element);
