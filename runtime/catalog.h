// The tool catalog: the messages that the user reads in the listing.
#pragma once

#include <cstdint>

struct ToolMessage {
    int32_t code;
    const char* withParameters;
    const char* withoutParameters;
};

constexpr int TOOL_CATALOG_SIZE = 96;  // codes 0 to 95
constexpr int TOOL_PREFIX_LENGTH = 8;  // "QT045E: "

// One of the two texts of a row; null for a code without a text.
const char* toolMessage(int code, bool hasParameters);
