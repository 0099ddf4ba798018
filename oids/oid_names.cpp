#include "oids/oid_names.h"

std::string_view OidNames::find(std::span<const uint8_t> encoded) const
{
    if (!user_.empty()) {
        if (const auto found = user_.find(encoded); found != user_.end()) return found->second;
    }
    return findBuiltinOidName(encoded);
}

void OidNames::add(std::span<const uint8_t> encoded, std::string_view name)
{
    user_.insert_or_assign(std::vector<uint8_t>(encoded.begin(), encoded.end()), std::string(name));
}
