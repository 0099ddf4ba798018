// The tool's own reading of BER identifier and length octets. Every
// operation works on a position (cursor, remaining), says how far it got,
// and never reads past `remaining`.
#pragma once

#include <cstdint>

#include "tlv/element.h"

struct RunContext;


int32_t readIdentifier(RunContext* context, const uint8_t*& cursor, int32_t& remaining);
int32_t readLengthOctets(RunContext* context, const uint8_t*& cursor, int32_t& remaining);
int32_t readHeader(RunContext* context, const uint8_t*& cursor, int32_t& remaining);
int32_t headerLength(RunContext* context, const uint8_t* element, int32_t count);
int32_t contentLength(RunContext* context, const uint8_t* element, int32_t count);
const uint8_t* nextElement(RunContext* context, const uint8_t* element, int32_t& count);
const uint8_t* firstInside(RunContext* context, const uint8_t* element, int32_t& count);
bool isConstructed(RunContext* context, const uint8_t* element, int32_t count);
int tagClass(RunContext* context, const uint8_t* element, int32_t count);
int32_t tagNumber(RunContext* context, const uint8_t* element, int32_t count);
uint32_t readBigEndian(int count, const uint8_t* octets);

// nextElement and firstInside of an element already read; `count` is its
// available octets on entry. Inline for a definite length that the data
// holds, where there is nothing to find and nothing to report.
const uint8_t* nextElementOfSlow(RunContext* context, const Element& element, int32_t& count);
const uint8_t* firstInsideOfSlow(RunContext* context, const Element& element, int32_t& count);
inline bool definiteAndHeld(const Element& element)
{
    return element.readable() && element.length >= 0 && element.length <= element.room();
}
inline const uint8_t* nextElementOf(RunContext* context, const Element& element, int32_t& count)
{
    if (count != 0 && definiteAndHeld(element)) {
        count -= element.header + element.length;
        return count == 0 ? nullptr : element.start() + element.header + element.length;
    }
    return nextElementOfSlow(context, element, count);
}
inline const uint8_t* firstInsideOf(RunContext* context, const Element& element, int32_t& count)
{
    if (count == 0 || !element.constructed) return nullptr;
    if (definiteAndHeld(element)) {
        count = element.length;
        return count == 0 ? nullptr : element.start() + element.header;
    }
    return firstInsideOfSlow(context, element, count);
}

// The octets of an element's enclosing contents from the element on: its
// `whole`, or for an open-ended element those up to the end-of-contents
// that ends them, found without a report.
OctetView enclosingContents(RunContext* context, const Element& element);
