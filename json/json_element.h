// One element as a JSON object of the -json layout: its fields, and its
// value unless it is a constructed element that the walk goes into.
#pragma once

#include <cstdint>

#include "tlv/octet_view.h"

struct RunContext;
struct Element;
struct TagNode;
class ErrorCapture;
class RisingNumber;
class TagMap;

// What -tags knows of an element: its node in the map (null: unknown).
struct JsonField {
    const TagMap* map;
    const TagNode* node;
};

// Contents beyond this many octets are cut in "hex" and "text" (with
// "truncated": true) unless -noshort is given.
constexpr int32_t kJsonValueLimit = 65536;

// The code of an error object for a value whose contents don't decode as
// their universal type says; the listing has no message for it.
constexpr int kValueFailedCode = 18;
inline constexpr char kValueFailedText[] = "Value misencoded, contents do not decode as their type.";

// Writes `{"offset":..` and the fields of `element` up to its elements or
// value; reports the misencodings that the hexadecimal layout reports for
// it, in the same order. Returns 0 when the walk goes on with the element
// (goes inside, then steps over it), 1 when its level ends here; sets
// `indefinite` for an indefinite length. The object stays open. `field` is
// null without -tags; with it, a known element gets "field" and its value
// in the map's form.
// `sibling`: an element of the same array stands in front (a comma first).
// kObjectClosed: the element's value is all it has, and nothing was
// reported: its object is closed already.
constexpr int kLevelEnds = 1;
constexpr int kObjectClosed = 2;
int writeElementOpening(RunContext* context, ErrorCapture& errors, const Element& element,
                        const RisingNumber& offset, bool sibling, bool& indefinite, const JsonField* field);

// ,"hex":"..": octets, cut at kJsonValueLimit unless -noshort; returns
// whether they were cut.
bool writeLimitedHex(RunContext* context, OctetView octets);
