#include "runtime/catalog.h"

#include <array>

namespace {

constexpr ToolMessage kRows[] = {
    {.code = kNoMemory,
     .withParameters = "QT001S: Memory could not be allocated.",
     .withoutParameters = "QT001S: Memory could not be allocated.",
     .hearing = SignalHearing::Never,
     .ending = SignalEnding::Yes,
     .internalError = true},
    // Failures of the program itself that it never raises; they would end
    // the run unheard.
    {.code = 2, .hearing = SignalHearing::Never, .ending = SignalEnding::Yes, .internalError = true},
    {.code = 3, .hearing = SignalHearing::Never, .ending = SignalEnding::Yes, .internalError = true},
    {.code = 95, .hearing = SignalHearing::Never, .ending = SignalEnding::Yes},
    // A premature end is fatal, except while a look-ahead probes.
    {.code = kPrematureEnd,
     .withParameters = "QT017E: Value misencoded, premature end of encoding encountered.",
     .withoutParameters = "QT017E: Value misencoded, premature end of encoding encountered.",
     .hearing = SignalHearing::UnlessQuiet,
     .ending = SignalEnding::UnlessProbing,
     .lineFeedInFront = true,
     .arguments = SignalArguments::RecordTail},
    // Misencodings that this program never raises, kept with their class.
    {.code = 18, .hearing = SignalHearing::UnlessQuiet, .lineFeedInFront = true},
    {.code = 19, .hearing = SignalHearing::UnlessQuiet, .lineFeedInFront = true},
    {.code = 21, .hearing = SignalHearing::UnlessQuiet},
    {.code = 74, .hearing = SignalHearing::UnlessQuiet},
    {.code = kBadHugeInteger,
     .withParameters = "QT029E: Invalid HUGE INTEGER value: %s.",
     .withoutParameters = "QT029E: Invalid HUGE INTEGER value."},
    {.code = kLengthOverrun,
     .withParameters = "QT035E: Value misencoded, length, %ld (%#x), longer than remaining data length, %ld "
                       "(%#x); continuing as if length were %ld:",
     .withoutParameters = "QT035E: Value misencoded, length longer than remaining data length",
     .hearing = SignalHearing::UnlessQuiet,
     .lineFeedInFront = true,
     .arguments = SignalArguments::LengthAndRest},
    // The two end-of-contents findings stand in front of the rest of their
    // line, which begins with its own line feed.
    {.code = kMissingEoc,
     .withParameters = "QT036E: Value misencoded, expected EOC not found for indefinite length encoding.",
     .withoutParameters = "QT036E: Value misencoded, expected EOC not found for indefinite length encoding.",
     .hearing = SignalHearing::UnlessQuiet,
     .lineFeedInFront = true,
     .lineFeedBehind = false},
    {.code = kEocNonZero,
     .withParameters = "QT037E: Value misencoded, EOC with non-zero second octet encountered.",
     .withoutParameters = "QT037E: Value misencoded, EOC with non-zero second octet encountered.",
     .hearing = SignalHearing::UnlessQuiet,
     .lineFeedInFront = true,
     .lineFeedBehind = false},
    {.code = kHeaderOverrun,
     .withParameters = "QT038E: Value misencoded, length of a tag-length pair, %ld (%#x), longer than remaining "
                       "data length, %ld (%#x):",
     .withoutParameters = "QT038E: Value misencoded, length of a tag-length pair longer than remaining length",
     .hearing = SignalHearing::UnlessQuiet,
     .lineFeedInFront = true,
     .arguments = SignalArguments::HeaderAndRest},
    // The input can't be had: the run ends.
    {.code = kCannotOpen,
     .withParameters = "QT045E: Input file cannot be open, %s.",
     .withoutParameters = "QT045E: Input file cannot be open.",
     .hearing = SignalHearing::UnlessQuiet,
     .ending = SignalEnding::Yes},
    {.code = kReadFailed,
     .withParameters = "QT046E: Error reading from input file, %s.",
     .withoutParameters = "QT046E: Error reading from input file.",
     .hearing = SignalHearing::UnlessQuiet,
     .ending = SignalEnding::Yes},
    {.code = kBadOffset,
     .withParameters = "QT047E: Invalid offset into input file, %ld.",
     .withoutParameters = "QT047E: Invalid offset into input file.",
     .hearing = SignalHearing::UnlessQuiet,
     .ending = SignalEnding::Yes},
    {.code = kBadCount,
     .withParameters = "QT048E: Invalid number of bytes to be read from input file, %ld.",
     .withoutParameters = "QT048E: Invalid number of bytes to be read from input file.",
     .hearing = SignalHearing::UnlessQuiet,
     .ending = SignalEnding::Yes},
    // The octets read up to the bad character are still listed.
    {.code = kNonHexadecimal,
     .withParameters = "QT049E: Input text file, %s, with encoding contains non-hexadecimal characters.",
     .withoutParameters = "QT049E: Input text file with encoding contains non-hexadecimal characters."},
    {.code = kTagZero,
     .withParameters = "QT073E: Value misencoded, a tag of '00' encountered.",
     .withoutParameters = "QT073E: Value misencoded, a tag of '00' encountered.",
     .hearing = SignalHearing::UnlessQuiet,
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
