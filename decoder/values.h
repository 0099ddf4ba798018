// The memory forms of decoded values, as qorDecode hands them back and the
// text makers read them.
#pragma once

#include <cstdint>

// BIT STRING (length in bits), OCTET STRING, IA5String, UniversalString and
// BMPString (length in characters). An empty value has a null pointer.
struct CountedValue {
    uint32_t length;
    const void* data;
};

// OBJECT IDENTIFIER and RELATIVE-OID: the contents octets as encoded.
struct EncodedOid {
    uint16_t length;
    const uint8_t* octets;
};

// INTEGER of five octets or more: big-endian two's complement as encoded.
struct HugeInteger {
    uint16_t length;
    const uint8_t* octets;
};

// UTCTime and GeneralizedTime.
struct TimeRecord {
    uint16_t year;
    uint16_t month;
    uint16_t day;
    uint16_t hour;
    uint16_t minute;
    uint16_t second;
    uint16_t millisec;
    int16_t mindiff;  // minutes from UTC, negative behind it
    uint8_t utc;      // not 0 when the value ends in Z
};

// The character strings of KIND_TEXT and the TIME family: a pointer to a
// NUL-terminated text.
using TextValue = const char*;
