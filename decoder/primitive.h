// The routines of BOOLEAN, NULL, INTEGER and REAL: primitive, definite, and
// well formed by the strict reading of BER.
#pragma once

#include <cstdint>

#include "decoder/ber_decode.h"

uint32_t decodeSimple(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);
uint32_t decodeReal(DecodeCall& call, int32_t length, bool constructed);

// A REAL's contents (first octet included) as a double; returns the catalog
// entry of the finding raised, or 0.
int32_t parseRealContents(const uint8_t* octets, int32_t length, double& result);
