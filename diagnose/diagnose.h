// -diagnose in the layouts: why a value failed to decode, the octets of a
// time value that the decoder normalised, and whether the walk may go on
// past a failed value.
#pragma once

#include <cstddef>
#include <cstdint>

#include "diagnose/tally.h"
#include "tlv/octet_view.h"

struct RunContext;
struct Element;
struct UniversalTag;

// The decomposed layout has no indentation: its notes stand under " hl=".
constexpr int kDecomposedNoteIndent = 9;

// After renderContents set TLV_VALUE_FAILED: clears it, counts the failure,
// and under -diagnose keeps the reason for writeFailureNote. Returns true
// when the level ends at this element: always without -diagnose, and under
// it for a failed value whose end the walk can't trust.
bool failedValueEndsLevel(RunContext* context, const Element& element, const UniversalTag* row);

// For a layout that shows everything behind a failed value (JSON): counts
// the failure; under -diagnose the decoder's reason, else null.
const char* countShownFailure(RunContext* context, const Element& element, const UniversalTag* row);
// The reason kept by failedValueEndsLevel, on a line of its own behind
// `indent` blanks; nothing when there is none.
void writeFailureNote(RunContext* context, int indent);

// Under -diagnose, behind the line of a UTCTime or GeneralizedTime: its
// octets as encoded, when the decoder's text isn't them.
void showEncodedTime(RunContext* context, const Element& element, int indent);

// For the hexadecimal layout and -check, which render nothing: renders a
// universal value that has a readable form only to see whether it fails,
// then as failedValueEndsLevel (the reason line when `printReason`).
bool diagnoseValue(RunContext* context, const Element& element, int indent, bool printReason);

// Counts an element of the walk (a record at the top level).
inline void countElement(RunContext* context, bool record)
{
    DiagnoseTally* tally = runTally(context);
    if (tally == nullptr) return;
    ++tally->elements;
    if (record) ++tally->records;
}

// The elements in `octets`, read one header after the other: a constructed
// element's contents are its inner elements, an end-of-contents counts for
// nothing, and the count stops where a header or a primitive length can't
// be followed.
uint64_t countElementsIn(OctetView octets);

// The decoder's own text of why `element` doesn't decode as the built-in
// type of `row`, into `text` (no line end); the decoder's result code, or
// 0 when the element decodes (then `text` says what else failed).
int32_t decodeFailureText(RunContext* context, const Element& element, const UniversalTag& row, char* text,
                          size_t capacity);
