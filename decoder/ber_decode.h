// The BER decode of one PDU of the control table: the entry, the reading of
// tags and lengths under the decoder's own limits, and the input cursor.
#pragma once

#include <cstdint>

struct RunContext;
struct BerBuffer;
struct TypeRecord;

// What berDecodeType hands to the routine of a type's kind.
struct DecodeCall {
    void* value;  // the value slot
    RunContext* context;
    const TypeRecord* type;
    int32_t total;      // octets, or bits for a BIT STRING, read so far
    int32_t remaining;  // what the enclosing definite length still allows
    uint32_t offset;
    uint8_t unit;       // 0: bits (BIT STRING), 1: octets
    bool bounded;       // `remaining` is in force
};

// The routine of a kind; returns the octets it consumed behind the header.
using KindRoutine = uint32_t (*)(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);

int qorBerDecode(RunContext* context, int pdu, BerBuffer* buffer, void** value, uint32_t flags);
int berEncoderPresent(RunContext* context);
int berDecodePdu(RunContext* context, int pdu, void** value);
uint32_t berDecodeType(DecodeCall& call, uint16_t tag, int32_t length, int32_t& eocPending, bool constructed);
// Reads a tag and a length; returns the octets of the header.
uint32_t berReadHeader(RunContext* context, uint16_t& tag, int32_t& length, int32_t& eocPending, bool& constructed,
                       bool keepEoc);
uint16_t berReadTag(RunContext* context, bool& constructed, uint32_t& octets);
int32_t berReadLength(RunContext* context, uint32_t& octets);
uint32_t berSkipEoc(RunContext* context, int32_t& eocPending);

// The input cursor: octets at inputOffset, under the PDU's definite length.
uint8_t inputByte(RunContext* context);
void inputCopy(RunContext* context, uint32_t count, uint8_t* target);
void inputSkip(RunContext* context, uint32_t count);
// Raises what taking `count` octets would raise, without taking them.
void inputRequire(RunContext* context, uint32_t count);
// The next octet without taking it; raises at the end of the input.
uint8_t inputPeek(RunContext* context);
