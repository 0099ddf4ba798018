// Everything whose contents have a length of their own: the bit and octet
// strings, the character strings, the identifiers, the long INTEGER and the
// text of the time types, primitive or in constructed segments.
#pragma once

#include <cstdint>
#include <string>

#include "decoder/ber_decode.h"

// The octets gathered from a primitive encoding or from all segments.
struct StringChain {
    std::string octets;
};

uint32_t readStringBody(DecodeCall& call, StringChain& chain, uint32_t& unusedBits, int32_t length,
                        int32_t& eocPending, bool constructed);
uint32_t decodeCounted(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);
uint32_t decodeText(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);
// The number of characters of a UTF-8 text, or 0 for an ill-formed one.
uint32_t checkUtf8(const uint8_t* text, uint32_t length);
// Returns only when the text is an acceptable OID-IRI (absolute) or
// RELATIVE-OID-IRI.
void checkOidIri(RunContext* context, const char* text, uint32_t length, bool absolute);
