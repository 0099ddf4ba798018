// The -oidfile reader and the name lookups on any octets: the input is read
// as a names file, as the contents of an OBJECT IDENTIFIER, and as a dotted
// OID. A file with a fault adds no name and points at one of its lines.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <vector>

#include "oids/dotted_oid.h"
#include "oids/oid_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::span<const uint8_t> octets(data, size);

    OidNames names;
    OidFileError error;
    const int status = loadOidText(text, "fuzz", names, error);
    if (status != 0) {
        size_t lines = 1;
        for (const char c : text) lines += c == '\n';
        if (status != kOidFileStatus || names.userCount() != 0) std::abort();
        if (error.line < 1 || static_cast<size_t>(error.line) > lines || error.message.empty()) std::abort();
    }
    names.find(octets);

    std::vector<uint8_t> encoded;
    if (encodeDottedOid(text, encoded)) {
        if (!isWellFormedOidContents(encoded)) std::abort();
        names.find(encoded);
    }
    return 0;
}
