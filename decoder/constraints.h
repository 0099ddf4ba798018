// The constraint pass: whether a decoded value is a value of its type.
#pragma once

#include <cstdint>

struct RunContext;
struct ControlTable;
struct TypeRecord;

void qorCheckConstraints(RunContext* context, int pdu, void* value, const ControlTable* table);
// False on the first octet outside the type's permitted alphabet, which
// `bad` receives.
bool checkAlphabet(const TypeRecord& type, const uint8_t* text, uint32_t length, uint8_t& bad);
// 0 for the octets of an object identifier that end a subidentifier, else
// IDENTIFIER_UNFINISHED.
constexpr int IDENTIFIER_UNFINISHED = 5;
int checkIdentifier(const uint8_t* octets, uint32_t length);
