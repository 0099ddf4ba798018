// -dig: OCTET STRINGs and BIT STRINGs whose contents are BER themselves (an
// extension value in a certificate, the key in a SubjectPublicKeyInfo, the
// eContent of a CMS message). The listings walk into such contents as into
// a constructed element.
//
// Random octets parse as BER more often than one would think, so the test
// is strict: every octet belongs to a complete element; identifier and
// length octets in their shortest form; no universal tag that X.680 leaves
// unassigned, none in a form its type forbids; the primitive universal
// types whose contents have rules (BOOLEAN, INTEGER, NULL, OBJECT
// IDENTIFIER, the character strings and the times) keep them; at the top
// level only universal or constructed elements, and either one element or
// several constructed ones; at least one constructed element or one of the
// universal types that DER values inside strings are (see `telling`); and
// in a BIT STRING at least one constructed element (a bare EC point starts
// with 02, 03 or 04). Random strings of 16 to 64 octets pass about five
// times in 100,000, nearly all as a lone INTEGER, ENUMERATED, OCTET STRING
// or OBJECT IDENTIFIER whose length happens to fit.
#pragma once

#include <cstdint>

#include "tlv/octet_view.h"

struct RunContext;
struct Element;

// What the string holds for the listing, when `whole` is its contents
// (OCTET STRING) or its contents behind the unused-bits octet (BIT STRING):
// whether they are one or more elements as the header above describes, nested
// fewer than `levels` deep (the top level counts one).
bool holdsBer(OctetView whole, bool bitString, int levels);

// The octets that -dig lists as BER inside `element`: the contents of a
// primitive universal OCTET STRING, or those of a BIT STRING behind an
// unused-bits octet of 0, when they pass holdsBer within `levels`; empty
// otherwise, and always when -dig is not given. `levels` is how many
// nesting levels the walk can still show below the element.
OctetView encapsulatedContents(const RunContext* context, const Element& element, int levels);

// The contents column's text for a string that encapsulates BER.
constexpr char kEncapsulationMark[] = "encapsulates BER";
constexpr int32_t kEncapsulationMarkLength = sizeof kEncapsulationMark - 1;

// Writes the mark in place of the value of a string that encapsulates BER,
// behind a ":" in the decomposed layout, and says whether it did; the walk
// then lists encapsulatedContents one level deeper.
bool printEncapsulationMark(RunContext* context, const Element& element, int levels, bool decomposed);
