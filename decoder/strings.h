// Everything whose contents have a length of their own: the bit and octet
// strings, the character strings, the identifiers, the long INTEGER and the
// text of the time types, primitive or in constructed segments.
#pragma once

#include <cstddef>
#include <cstdint>

#include "decoder/ber_decode.h"

// The octets gathered from a primitive encoding or from all segments, in
// areas from the decode's scratch stack: the size of a value isn't known
// before a constructed encoding has been read to its end. All areas but the
// newest are full; the chain runs from the newest to the oldest.
struct StringArea {
    StringArea* previous;
    uint32_t spare;
    uint8_t data[1024];
};

struct StringChain {
    StringArea* lastArea = nullptr;
    uint32_t areaOffset = kAreaStart;  // next free offset in lastArea
    int32_t dataOctets = 0;

    static constexpr uint32_t kAreaStart = offsetof(StringArea, data);
    static constexpr uint32_t kAreaSize = sizeof(StringArea);
    static constexpr uint32_t kAreaEnd = kAreaStart + sizeof(StringArea::data);
};

// Copies the chain, oldest octets first, into `target` of dataOctets
// octets, and gives the areas back to the scratch stack.
void drainChain(RunContext* context, StringChain& chain, uint8_t* target);
// The chain as the text of a value, in a value block with a final NUL;
// `size` gets its length. The areas go back.
char* storeText(RunContext* context, StringChain& chain, uint32_t& size);

uint32_t readStringBody(DecodeCall& call, StringChain& chain, uint32_t& unusedBits, int32_t length,
                        int32_t& eocPending, bool constructed);
uint32_t decodeCounted(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);
uint32_t decodeText(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);
// The number of characters of a UTF-8 text, or 0 for an ill-formed one.
uint32_t checkUtf8(const uint8_t* text, uint32_t length);
// Returns only when the text is an acceptable OID-IRI (absolute) or
// RELATIVE-OID-IRI.
void checkOidIri(RunContext* context, const char* text, uint32_t length, bool absolute);
