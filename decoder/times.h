// UTCTime and GeneralizedTime read into a TimeRecord; the texts of DATE,
// TIME-OF-DAY, DATE-TIME and DURATION rebuilt in value notation.
#pragma once

#include <cstdint>

#include "decoder/ber_decode.h"

struct StringChain;
struct TimeRecord;
struct TypeRecord;

enum class TimeKind { Utc, Generalized };

uint32_t decodeTimeRecord(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed);
// 0 for a good text, 1 for a bad one; `used` gets the characters read.
int parseTime(const char* text, TimeKind kind, TimeRecord& record, uint16_t& used);
// The text that a TIME-family value stores, rebuilt from the contents in the
// chain into a value block with a final NUL; `size` gets its length. The
// areas go back.
char* storeTimeText(RunContext* context, const TypeRecord& type, StringChain& chain, uint32_t& size);
