#include "oids/dotted_oid.h"

#include <limits>

namespace {

constexpr uint64_t kMaxArc = std::numeric_limits<uint64_t>::max();

// X.690 8.19.2: a subidentifier in base 128, most significant group first,
// the continuation bit set on every octet but the last.
void appendSubidentifier(uint64_t value, std::vector<uint8_t>& out)
{
    uint8_t groups[10];
    int count = 0;
    do {
        groups[count++] = static_cast<uint8_t>(value & 0x7F);
        value >>= 7;
    } while (value != 0);
    while (count > 1) out.push_back(static_cast<uint8_t>(groups[--count] | 0x80));
    out.push_back(groups[0]);
}

// Reads the arc that starts at `at`, up to the next dot or the end.
DottedOidFault readArc(std::string_view dotted, size_t& at, uint64_t& arc)
{
    const size_t start = at;
    arc = 0;
    while (at < dotted.size() && dotted[at] != '.') {
        const char c = dotted[at];
        if (c < '0' || c > '9') return DottedOidFault::NotDigit;
        const auto digit = static_cast<uint64_t>(c - '0');
        if (arc > (kMaxArc - digit) / 10) return DottedOidFault::ArcTooLarge;
        arc = arc * 10 + digit;
        ++at;
    }
    if (at == start) return DottedOidFault::EmptyArc;
    if (dotted[start] == '0' && at - start > 1) return DottedOidFault::LeadingZero;
    return DottedOidFault::None;
}

DottedOidFault checkFirstArcs(uint64_t first, uint64_t second)
{
    if (first > 2) return DottedOidFault::FirstArc;
    if (first < 2 && second >= 40) return DottedOidFault::SecondArc;
    if (first == 2 && second > kMaxArc - 80) return DottedOidFault::ArcTooLarge;
    return DottedOidFault::None;
}

DottedOidFault encodeArcs(std::string_view dotted, std::vector<uint8_t>& out)
{
    if (dotted.empty()) return DottedOidFault::Empty;
    size_t at = 0;
    uint64_t first = 0;
    uint64_t arc = 0;
    for (int index = 0;; ++index) {
        if (const auto fault = readArc(dotted, at, arc); fault != DottedOidFault::None) return fault;
        if (index == 0) {
            first = arc;
        } else if (index == 1) {
            if (const auto fault = checkFirstArcs(first, arc); fault != DottedOidFault::None) return fault;
            appendSubidentifier(first * 40 + arc, out);
        } else {
            appendSubidentifier(arc, out);
        }
        if (at == dotted.size()) return index == 0 ? DottedOidFault::TooFewArcs : DottedOidFault::None;
        ++at;  // the dot
    }
}

}  // namespace

DottedOidFault parseDottedOid(std::string_view dotted, std::vector<uint8_t>& out)
{
    out.clear();
    const DottedOidFault fault = encodeArcs(dotted, out);
    if (fault != DottedOidFault::None) out.clear();
    return fault;
}

bool encodeDottedOid(std::string_view dotted, std::vector<uint8_t>& out)
{
    return parseDottedOid(dotted, out) == DottedOidFault::None;
}

std::string_view dottedOidFaultText(DottedOidFault fault)
{
    switch (fault) {
    case DottedOidFault::None: return "no fault";
    case DottedOidFault::Empty: return "the OBJECT IDENTIFIER is missing";
    case DottedOidFault::EmptyArc: return "an arc is empty (a leading, trailing or doubled dot)";
    case DottedOidFault::NotDigit: return "an arc holds a character other than a decimal digit";
    case DottedOidFault::LeadingZero: return "an arc has a leading zero";
    case DottedOidFault::TooFewArcs: return "an OBJECT IDENTIFIER has at least two arcs";
    case DottedOidFault::FirstArc: return "the first arc is 0, 1 or 2";
    case DottedOidFault::SecondArc: return "the second arc is below 40 under the arcs 0 and 1";
    case DottedOidFault::ArcTooLarge: return "an arc passes 64 bits";
    }
    return "unknown fault";
}

bool isWellFormedOidContents(std::span<const uint8_t> contents)
{
    if (contents.empty() || (contents.back() & 0x80) != 0) return false;
    bool startsSubidentifier = true;
    for (const uint8_t octet : contents) {
        if (startsSubidentifier && octet == 0x80) return false;
        startsSubidentifier = (octet & 0x80) == 0;
    }
    return true;
}
