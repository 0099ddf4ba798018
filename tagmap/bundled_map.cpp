#include "tagmap/bundled_map.h"

#include "tagmap/map_parser.h"

bool loadBundledMap(std::string_view shortName, TagMap& map, std::string& error)
{
    for (size_t i = 0; i < kBundledMapCount; ++i) {
        const BundledMap& bundled = kBundledMaps[i];
        if (shortName != bundled.name) continue;
        std::string_view text(reinterpret_cast<const char*>(bundled.text.octets), bundled.text.size);
        return parseTagMap(text, std::string(bundled.name) + " (bundled)", map, error);
    }
    error = "no bundled tag map named " + std::string(shortName);
    return false;
}

bool loadTagMap(std::string_view argument, TagMap& map, std::string& error)
{
    if (argument.find_first_of("/.") == std::string_view::npos) {
        for (size_t i = 0; i < kBundledMapCount; ++i) {
            if (argument == kBundledMaps[i].name) return loadBundledMap(argument, map, error);
        }
    }
    return loadTagMapFile(std::string(argument), map, error);
}
