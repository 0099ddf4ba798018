// The fields of an element object that its identifier octets decide:
// ,"class":..,"tag":..,"constructed":..,"type":.. as one piece of text. For
// the identifiers of one and two octets (tag numbers up to 127), which
// nearly every element has, the pieces are made once and looked up.
#pragma once

#include <cstdint>

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

// ,"class":..,"tag":..,"constructed":.. at `out` (the tag number when the
// identifier octets reach it); returns the end. Needs 64 chars.
char* putClassTagAndForm(char* out, const Element& element);

// Makes the fields of a readable element (identifier octets complete).
void makeTagFields(RunContext* context, const Element& element, TagFields& fields);

// The fields made once of a readable element whose identifier has one or
// two octets; null for a longer one.
const TagFields* knownTagFields(RunContext* context, const Element& element);
