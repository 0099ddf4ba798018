// What the options beyond the listing's own set for one run: tables loaded
// from files and the switches of the readable layouts. The driver owns it;
// the context points at it for the length of the run (null: none given).
#pragma once

class OidNames;
class TagMap;
struct DiagnoseTally;

struct RunExtensions {
    const OidNames* oidNames = nullptr;  // -oids, -oidfile: names of OBJECT IDENTIFIERs
    bool digEncapsulated = false;        // -dig: list BER inside OCTET and BIT STRINGs
    bool utf8Text = false;               // -utf8: international text as UTF-8
    const TagMap* tagMap = nullptr;      // -tags: field names and value forms
    DiagnoseTally* tally = nullptr;      // what the run found wrong, counted always
    bool diagnose = false;               // -diagnose or -check: reasons, summary and verdict
    bool check = false;                  // -check: no listing, the summary and the verdict
};

// Whether an option changes what the readable layouts show of an element:
// without one they take their plain road.
inline bool showsMore(const RunExtensions* extensions)
{
    return extensions != nullptr && (extensions->oidNames != nullptr || extensions->digEncapsulated ||
                                     extensions->utf8Text || extensions->tagMap != nullptr);
}

// -dig: whether the walks look into strings for BER.
inline bool digsIn(const RunExtensions* extensions)
{
    return extensions != nullptr && extensions->digEncapsulated;
}
