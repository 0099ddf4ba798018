// Reading a tag map from its text. The format is described in
// tagmap/FORMAT.md and at the top of data/3gpp-ps.tags.
#pragma once

#include <string>
#include <string_view>

#include "tagmap/tag_map.h"

// Parses `text` into `map`. The map's names are views into `text`, which
// must outlive it. On failure, `error` reads "<fileName>: line N: what".
bool parseTagMap(std::string_view text, std::string_view fileName, TagMap& map, std::string& error);

// Reads the file at `path` into the map, which keeps the file's text.
bool loadTagMapFile(const std::string& path, TagMap& map, std::string& error);
