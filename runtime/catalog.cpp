#include "runtime/catalog.h"

#include <array>

namespace {

constexpr ToolMessage kRows[] = {
    {1, "QT001S: Memory could not be allocated.", "QT001S: Memory could not be allocated."},
    {17, "QT017E: Value misencoded, premature end of encoding encountered.",
     "QT017E: Value misencoded, premature end of encoding encountered."},
    {29, "QT029E: Invalid HUGE INTEGER value: %s.", "QT029E: Invalid HUGE INTEGER value."},
    {35,
     "QT035E: Value misencoded, length, %ld (%#x), longer than remaining data length, %ld (%#x); "
     "continuing as if length were %ld:",
     "QT035E: Value misencoded, length longer than remaining data length"},
    {36, "QT036E: Value misencoded, expected EOC not found for indefinite length encoding.",
     "QT036E: Value misencoded, expected EOC not found for indefinite length encoding."},
    {37, "QT037E: Value misencoded, EOC with non-zero second octet encountered.",
     "QT037E: Value misencoded, EOC with non-zero second octet encountered."},
    {38,
     "QT038E: Value misencoded, length of a tag-length pair, %ld (%#x), longer than remaining "
     "data length, %ld (%#x):",
     "QT038E: Value misencoded, length of a tag-length pair longer than remaining length"},
    {45, "QT045E: Input file cannot be open, %s.", "QT045E: Input file cannot be open."},
    {46, "QT046E: Error reading from input file, %s.", "QT046E: Error reading from input file."},
    {47, "QT047E: Invalid offset into input file, %ld.", "QT047E: Invalid offset into input file."},
    {48, "QT048E: Invalid number of bytes to be read from input file, %ld.",
     "QT048E: Invalid number of bytes to be read from input file."},
    {49, "QT049E: Input text file, %s, with encoding contains non-hexadecimal characters.",
     "QT049E: Input text file with encoding contains non-hexadecimal characters."},
    {73, "QT073E: Value misencoded, a tag of '00' encountered.",
     "QT073E: Value misencoded, a tag of '00' encountered."},
};

// The catalog indexed by code, built once from the rows above.
constexpr std::array<ToolMessage, TOOL_CATALOG_SIZE> buildCatalog()
{
    std::array<ToolMessage, TOOL_CATALOG_SIZE> table{};
    for (int code = 0; code < TOOL_CATALOG_SIZE; ++code) table[code] = {code, nullptr, nullptr};
    for (const ToolMessage& row : kRows) table[row.code] = row;
    return table;
}

constexpr std::array<ToolMessage, TOOL_CATALOG_SIZE> kCatalog = buildCatalog();

}  // namespace

const char* toolMessage(int code, bool hasParameters)
{
    if (code < 0 || code >= TOOL_CATALOG_SIZE) return nullptr;
    const ToolMessage& row = kCatalog[code];
    return hasParameters ? row.withParameters : row.withoutParameters;
}
