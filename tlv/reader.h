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
// available octets on entry.
const uint8_t* nextElementOf(RunContext* context, const Element& element, int32_t& count);
const uint8_t* firstInsideOf(RunContext* context, const Element& element, int32_t& count);
