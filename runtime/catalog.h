// The tool catalog: the messages that the user reads in the listing, and
// for every code how the error signal treats it.
#pragma once

#include <cstdint>

// The codes that the program raises or tests, by name. The other codes of
// the catalog are never raised; their rows only keep the class they have.
enum ToolCode : int32_t {
    kNoMemory = 1,         // never shown: the driver's "Internal error #1." stands for it
    kPrematureEnd = 17,    // an element runs past the end of the input
    kBadHugeInteger = 29,
    kLengthOverrun = 35,   // the length is longer than what is left
    kMissingEoc = 36,      // an indefinite length without its end-of-contents
    kEocNonZero = 37,      // end-of-contents whose second octet isn't 00
    kHeaderOverrun = 38,   // the identifier and length octets run past what is left
    kCannotOpen = 45,
    kReadFailed = 46,
    kBadOffset = 47,
    kBadCount = 48,
    kNonHexadecimal = 49,  // text input with a character that isn't a hexadecimal digit
    kWriteFailed = 72,     // the repair's own; its outcome message tells it
    kTagZero = 73,         // an identifier octet 00 where no end-of-contents belongs
};

// Whether the message hook hears of a code.
enum class SignalHearing : uint8_t { Always, UnlessQuiet, Never };
// Whether a code ends the run (by a jump to the driver or the repair).
enum class SignalEnding : uint8_t { No, Yes, UnlessProbing };
// What `first` and `second` of a signal with a pointer or a length carry.
enum class SignalArguments : uint8_t {
    Text,           // `first` a text, `second` its length or 0
    RecordTail,     // `first` the place of a premature end, `second` the octets left
    LengthAndRest,  // the length, the octets left (shown as the length used too)
    HeaderAndRest,  // the header length, the octets left
};

struct ToolMessage {
    int32_t code;
    const char* withParameters = nullptr;  // null: a code without a text
    const char* withoutParameters = nullptr;
    SignalHearing hearing = SignalHearing::Always;
    SignalEnding ending = SignalEnding::No;
    bool lineFeedInFront = false;
    bool lineFeedBehind = true;  // without it, the next output goes on in the same line
    SignalArguments arguments = SignalArguments::Text;
    bool internalError = false;  // the driver says "Internal error #<code>." when it ends a run
};

constexpr int TOOL_CATALOG_SIZE = 96;  // codes 0 to 95
constexpr int TOOL_PREFIX_LENGTH = 8;  // "QT045E: "

// The row of a code; a code outside the catalog gets a row without texts
// that the hook always hears and that doesn't end the run.
const ToolMessage& toolRow(int code);

// One of the two texts of a row; null for a code without a text.
const char* toolMessage(int code, bool hasParameters);
