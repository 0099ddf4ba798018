// OBJECT IDENTIFIERs between their dotted text and their BER contents.
//
// The dotted form is the one of RFC 4512's numericoid: decimal arcs joined
// by dots, each arc "0" or a digit 1-9 followed by digits (no leading zero,
// so that every OID has one spelling), at least two arcs. X.690 8.19 packs
// the first two arcs into one subidentifier, 40 * first + second, which is
// why the first arc is 0, 1 or 2 and, under 0 and 1, the second is below 40.
// Arcs are read as unsigned 64-bit numbers; the first subidentifier must fit
// in 64 bits as well.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

enum class DottedOidFault {
    None,
    Empty,         // no text at all
    EmptyArc,      // a leading, trailing or doubled dot
    NotDigit,      // a character other than a digit or a dot
    LeadingZero,   // an arc such as "01"
    TooFewArcs,    // a single arc
    FirstArc,      // the first arc is above 2
    SecondArc,     // the second arc is 40 or more under the arcs 0 and 1
    ArcTooLarge,   // an arc, or the first subidentifier, passes 64 bits
};

// Replaces `out` with the contents octets of the OID written in `dotted`;
// leaves it empty on a fault.
DottedOidFault parseDottedOid(std::string_view dotted, std::vector<uint8_t>& out);
bool encodeDottedOid(std::string_view dotted, std::vector<uint8_t>& out);

// What is wrong, in a few words, for a diagnostic.
std::string_view dottedOidFaultText(DottedOidFault fault);

// Whether `contents` is a complete OBJECT IDENTIFIER of X.690 8.19: at least
// one subidentifier, none that starts with the padding octet 0x80, the last
// octet without its continuation bit.
bool isWellFormedOidContents(std::span<const uint8_t> contents);
