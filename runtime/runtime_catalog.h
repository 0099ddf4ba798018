// The runtime catalog: the failures of the decoder, the constraint pass and
// the memory services, each with its text, result code and flags.
#pragma once

#include <cstdint>

struct RuntimeMessage {
    const char* text;
    int32_t resultCode;
    uint32_t flags;  // low four bits: form of the argument; 0x40: no location
};

constexpr uint32_t MESSAGE_FORM_MASK = 0x0F;
// The forms of the argument, as the text behind a failure shows it.
enum ArgumentForm : uint32_t {
    FORM_NONE = 0,
    FORM_FIELD = 1,       // a field's name in double quotes, or #number
    FORM_TAG_PAIR = 2,    // the tag read, and the one expected above it
    FORM_SIGNED = 3,
    FORM_UNSIGNED = 4,
    FORM_DOUBLE = 5,
    FORM_QUOTED = 6,      // a string in single quotes, cut when long
    FORM_CHARACTER = 7,
    FORM_QUOTED_TOO = 8,  // the same as FORM_QUOTED
    FORM_BARE = 9,        // a string as it is, cut when long
};
constexpr uint32_t MESSAGE_FATAL = 0x20;
constexpr uint32_t MESSAGE_NO_LOCATION = 0x40;

// The entries that a decode in this program can reach.
enum RuntimeEntry : int32_t {
    RT_NO_MESSAGE = 0,
    RT_PDU_RANGE,                // 0003S
    RT_NULL_POINTER,             // 0006S
    RT_VERSION,                  // 0007S
    RT_OUT_OF_MEMORY,            // 0008S
    RT_BAD_OID,                  // 0010S
    RT_TIME_RANGE,               // 0012S
    RT_TIME_DAY,
    RT_TIME_HOUR,
    RT_TIME_MILLISECOND,
    RT_TIME_MINUTE,
    RT_TIME_MONTH,
    RT_TIME_SECOND,
    RT_TAG_NEEDLESSLY_LONG,      // 0018E
    RT_TAG_TOO_LONG,             // 0019E
    RT_EXPONENT_NEEDLESSLY_LONG, // 0020E
    RT_EXPONENT_TOO_LONG,        // 0021E
    RT_INTEGER_NEEDLESSLY_LONG,  // 0022E
    RT_INTEGER_TOO_LONG,         // 0023E, signed
    RT_INTEGER_TOO_LONG_UNSIGNED,
    RT_LENGTH_TOO_LONG,          // 0026S
    RT_SIZE_TOO_LONG,            // 0027S
    RT_NONSTANDARD_EOC,          // 0028E
    RT_INCONSISTENT_LENGTHS,     // 0031S
    RT_TAG_MISMATCH,             // 0033E
    RT_PDU_TAG_MISMATCH,         // 0034E
    RT_UNUSED_BITS_RANGE,        // 0035E
    RT_UNUSED_BITS_NOT_ZERO,     // 0036E
    RT_MISENCODED,               // 0037E
    RT_MANTISSA_DIGITS,          // 0038E
    RT_EXPONENT_DIGITS,          // 0039E
    RT_INVALID_NR1,              // 0040E
    RT_INVALID_NR2,
    RT_INVALID_NR3,
    RT_REAL_ZERO_CONTENTS,       // 0043E
    RT_RESERVED_REAL,            // 0044E
    RT_EMBEDDED_NUL,             // 0046E
    RT_EXPECTED_EOC,             // 0050S
    RT_PRIMITIVE_INDEFINITE,     // 0051S
    RT_EXPECTED_PRIMITIVE,       // 0053S
    RT_TAG_LEADING_OCTETS,       // 0055E
    RT_CANNOT_HAPPEN,            // 0056S
    RT_NEGATIVE_LENGTH,          // 0057S
    RT_EXPECTED_TAG_FOUND_EOC,   // 0058E
    RT_ALPHABET,                 // 0064S
    RT_NULL_TABLE,               // 0073S
    RT_END_OF_INPUT,             // 0081S
    RT_ZERO_BYTES,               // 0083S
    RT_BLOCK_TOO_LARGE,          // 0084S
    RT_REAL_TOO_LARGE,           // 0099E
    RT_RULES_NOT_LINKED,         // 0103S
    RT_REAL_NOT_LINKED,          // 0112S
    RT_BAD_UTF8,                 // 0120S
    RT_PDU_END_OF_INPUT,         // 0122S
    RT_CHARACTER_WIDTH,          // 0136E
    RT_OID_CONSTRUCTED,          // 0137E
    RT_INTEGER_LENGTH,           // 0144E, signed
    RT_INTEGER_LENGTH_UNSIGNED,
    RT_STRING_NESTING,           // 0184E
    RT_PROPERTY_SETTINGS,        // 0326S
    RT_OID_IRI,                  // 0334E
    RT_OID_IRI_ARC,              // 0335E
    RT_HINDMOST,
    RT_ENTRY_COUNT
};

const RuntimeMessage& runtimeMessage(int32_t entry);
