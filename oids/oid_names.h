// Names of OBJECT IDENTIFIERs for a listing: the names a user loads
// (-oidfile), then the built-in table. A user name replaces the built-in
// name of the same OID.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "oids/builtin_oids.h"

class OidNames {
public:
    // The name of the OID whose contents octets are `encoded`; empty when it
    // has none. The view lives as long as this object and its names.
    std::string_view find(std::span<const uint8_t> encoded) const;

    // Names an OID; a later name for the same octets replaces the earlier.
    void add(std::span<const uint8_t> encoded, std::string_view name);
    size_t userCount() const { return user_.size(); }

private:
    // Orders octet vectors and looks them up by a span, without a copy.
    struct OctetsLess {
        using is_transparent = void;
        bool operator()(std::span<const uint8_t> left, std::span<const uint8_t> right) const
        {
            return compareOidOctets(left, right) < 0;
        }
    };
    std::map<std::vector<uint8_t>, std::string, OctetsLess> user_;
};
