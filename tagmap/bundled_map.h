// The tag maps built into the binary, chosen by a short name (`3gpp-ps`).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tagmap/tag_map.h"

struct BundledMap {
    const char* name;  // the file's stem in data/
    struct {
        const unsigned char* octets;
        size_t size;
    } text;
};

// Generated at build time from data/*.tags (tagmap/embed_maps.cmake).
extern const BundledMap kBundledMaps[];
extern const size_t kBundledMapCount;

// The bundled map of that short name into `map`; false with a message when
// there is none of that name, or (a build fault) it does not parse.
bool loadBundledMap(std::string_view shortName, TagMap& map, std::string& error);

// What `-tags <argument>` loads: a bundled map when the argument is one's
// short name and holds no `/` or `.`, otherwise the file of that name.
bool loadTagMap(std::string_view argument, TagMap& map, std::string& error);
