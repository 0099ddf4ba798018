#include "runtime/catalog.h"

#include <array>

namespace {

constexpr ToolMessage kRows[] = {
    {.code = kNoMemory,
     .withParameters = "QT001S: Memory could not be allocated.",
     .withoutParameters = "QT001S: Memory could not be allocated.",
     .hearing = Hearing::Never,
     .ending = Ending::Yes,
     .internalError = true},
    // Failures of the program itself that it never raises; they would end
    // the run unheard.
    {.code = 2, .hearing = Hearing::Never, .ending = Ending::Yes, .internalError = true},
    {.code = 3, .hearing = Hearing::Never, .ending = Ending::Yes, .internalError = true},
    {.code = 95, .hearing = Hearing::Never, .ending = Ending::Yes},
    // A premature end is fatal, except while a look-ahead probes.
    {.code = kPrematureEnd,
     .withParameters = "QT017E: Value misencoded, premature end of encoding encountered.",
     .withoutParameters = "QT017E: Value misencoded, premature end of encoding encountered.",
     .hearing = Hearing::UnlessQuiet,
     .ending = Ending::UnlessProbing,
     .lineFeedInFront = true,
     .arguments = Arguments::RecordTail},
    // Misencodings that this program never raises, kept with their class.
    {.code = 18, .hearing = Hearing::UnlessQuiet, .lineFeedInFront = true},
    {.code = 19, .hearing = Hearing::UnlessQuiet, .lineFeedInFront = true},
    {.code = 21, .hearing = Hearing::UnlessQuiet},
    {.code = 74, .hearing = Hearing::UnlessQuiet},
    {.code = kBadHugeInteger,
     .withParameters = "QT029E: Invalid HUGE INTEGER value: %s.",
     .withoutParameters = "QT029E: Invalid HUGE INTEGER value."},
    {.code = kLengthOverrun,
     .withParameters = "QT035E: Value misencoded, length, %ld (%#x), longer than remaining data length, %ld "
                       "(%#x); continuing as if length were %ld:",
     .withoutParameters = "QT035E: Value misencoded, length longer than remaining data length",
     .hearing = Hearing::UnlessQuiet,
     .lineFeedInFront = true,
     .arguments = Arguments::LengthAndRest},
    // The two end-of-contents findings stand in front of the rest of their
    // line, which begins with its own line feed.
    {.code = kMissingEoc,
     .withParameters = "QT036E: Value misencoded, expected EOC not found for indefinite length encoding.",
     .withoutParameters = "QT036E: Value misencoded, expected EOC not found for indefinite length encoding.",
     .hearing = Hearing::UnlessQuiet,
     .lineFeedInFront = true,
     .lineFeedBehind = false},
    {.code = kEocNonZero,
     .withParameters = "QT037E: Value misencoded, EOC with non-zero second octet encountered.",
     .withoutParameters = "QT037E: Value misencoded, EOC with non-zero second octet encountered.",
     .hearing = Hearing::UnlessQuiet,
     .lineFeedInFront = true,
     .lineFeedBehind = false},
    {.code = kHeaderOverrun,
     .withParameters = "QT038E: Value misencoded, length of a tag-length pair, %ld (%#x), longer than remaining "
                       "data length, %ld (%#x):",
     .withoutParameters = "QT038E: Value misencoded, length of a tag-length pair longer than remaining length",
     .hearing = Hearing::UnlessQuiet,
     .lineFeedInFront = true,
     .arguments = Arguments::HeaderAndRest},
    // The input can't be had: the run ends.
    {.code = kCannotOpen,
     .withParameters = "QT045E: Input file cannot be open, %s.",
     .withoutParameters = "QT045E: Input file cannot be open.",
     .hearing = Hearing::UnlessQuiet,
     .ending = Ending::Yes},
    {.code = kReadFailed,
     .withParameters = "QT046E: Error reading from input file, %s.",
     .withoutParameters = "QT046E: Error reading from input file.",
     .hearing = Hearing::UnlessQuiet,
     .ending = Ending::Yes},
    {.code = kBadOffset,
     .withParameters = "QT047E: Invalid offset into input file, %ld.",
     .withoutParameters = "QT047E: Invalid offset into input file.",
     .hearing = Hearing::UnlessQuiet,
     .ending = Ending::Yes},
    {.code = kBadCount,
     .withParameters = "QT048E: Invalid number of bytes to be read from input file, %ld.",
     .withoutParameters = "QT048E: Invalid number of bytes to be read from input file.",
     .hearing = Hearing::UnlessQuiet,
     .ending = Ending::Yes},
    // The octets read up to the bad character are still listed.
    {.code = kNonHexadecimal,
     .withParameters = "QT049E: Input text file, %s, with encoding contains non-hexadecimal characters.",
     .withoutParameters = "QT049E: Input text file with encoding contains non-hexadecimal characters."},
    {.code = kTagZero,
     .withParameters = "QT073E: Value misencoded, a tag of '00' encountered.",
     .withoutParameters = "QT073E: Value misencoded, a tag of '00' encountered.",
     .hearing = Hearing::UnlessQuiet,
     .lineFeedInFront = true,
     .lineFeedBehind = false},
};

// The catalog indexed by code, built once from the rows above; a code
// without a row is always heard and goes on.
constexpr std::array<ToolMessage, TOOL_CATALOG_SIZE> buildCatalog()
{
    std::array<ToolMessage, TOOL_CATALOG_SIZE> table{};
    for (int code = 0; code < TOOL_CATALOG_SIZE; ++code) table[code] = {.code = code};
    for (const ToolMessage& row : kRows) table[row.code] = row;
    return table;
}

constexpr std::array<ToolMessage, TOOL_CATALOG_SIZE> kCatalog = buildCatalog();
constexpr ToolMessage kOutside = {.code = -1};

}  // namespace

const ToolMessage& toolRow(int code)
{
    if (code < 0 || code >= TOOL_CATALOG_SIZE) return kOutside;
    return kCatalog[code];
}

const char* toolMessage(int code, bool hasParameters)
{
    const ToolMessage& row = toolRow(code);
    return hasParameters ? row.withParameters : row.withoutParameters;
}
