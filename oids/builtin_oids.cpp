#include "oids/builtin_oids.h"

#include <iterator>

namespace {

struct BuiltinRow {
    uint16_t offset;  // of the row's contents octets in kBuiltinOctets
    uint8_t length;
    std::string_view name;
};

// kBuiltinOctets and kBuiltinRows, written by oids/generator from oids.txt.
#include "oids/builtin_oid_rows.inc"

constexpr std::span<const uint8_t> octetsOf(const BuiltinRow& row)
{
    return {kBuiltinOctets + row.offset, row.length};
}

// The binary search needs the rows in strictly increasing order; two rows
// with the same octets would make the name depend on the search path.
constexpr bool rowsAreStrictlyOrdered()
{
    for (size_t i = 1; i < std::size(kBuiltinRows); ++i) {
        if (compareOidOctets(octetsOf(kBuiltinRows[i - 1]), octetsOf(kBuiltinRows[i])) >= 0) return false;
    }
    return true;
}

static_assert(rowsAreStrictlyOrdered(), "the built-in OID rows are sorted by their octets, without repeats");
static_assert(std::size(kBuiltinRows) >= 400, "the built-in table names at least 400 OIDs");

}  // namespace

size_t builtinOidCount()
{
    return std::size(kBuiltinRows);
}

OidName builtinOid(size_t index)
{
    const BuiltinRow& row = kBuiltinRows[index];
    return {octetsOf(row), row.name};
}

std::string_view findBuiltinOidName(std::span<const uint8_t> encoded)
{
    size_t low = 0;
    size_t high = std::size(kBuiltinRows);
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        const int order = compareOidOctets(octetsOf(kBuiltinRows[middle]), encoded);
        if (order == 0) return kBuiltinRows[middle].name;
        if (order < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return {};
}
