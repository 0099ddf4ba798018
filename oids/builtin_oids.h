// The built-in names of OBJECT IDENTIFIERs. The list is oids/oids.txt; the
// build turns it into a constant table of contents octets and names, sorted
// by the octets, so that an OID of the input is named by a binary search on
// the octets it already has, with no text conversion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

struct OidName {
    std::span<const uint8_t> encoded;  // the contents octets of the OID
    std::string_view name;
};

// Orders contents octets as the table is sorted: octet by octet, a prefix
// before the longer OIDs that start with it. Negative, zero or positive.
constexpr int compareOidOctets(std::span<const uint8_t> left, std::span<const uint8_t> right)
{
    const size_t common = left.size() < right.size() ? left.size() : right.size();
    for (size_t i = 0; i < common; ++i) {
        if (left[i] != right[i]) return left[i] < right[i] ? -1 : 1;
    }
    if (left.size() == right.size()) return 0;
    return left.size() < right.size() ? -1 : 1;
}

size_t builtinOidCount();
// The rows in the order of their octets.
OidName builtinOid(size_t index);
// The built-in name of an OID; empty when the table has none.
std::string_view findBuiltinOidName(std::span<const uint8_t> encoded);
