// Texts of the identifiers, the bit and octet strings, the character strings
// that need escaping, and UTCTime/GeneralizedTime.
#pragma once

#include <cstddef>
#include <cstdint>

#include "render/text_block.h"

struct RunContext;
struct EncodedOid;
struct TimeRecord;

// What an identifier conversion fills: characters with the terminator.
struct OidText {
    int32_t length;
    char* text;
};

// The forms in which escapedText takes a string.
enum CharForm { CHARS_8BIT, CHARS_16BIT, CHARS_32BIT, CHARS_UTF8 };

// Conversion results.
constexpr int OID_DONE = 0;
constexpr int OID_TOO_LONG = 1;      // the text passes 2047 characters
constexpr int OID_MALFORMED = 5;     // empty, or the last octet goes on
constexpr int OID_ARC_TOO_BIG = 33;  // a subidentifier too long or too large

int qorEncodedOidToText(RunContext* context, const EncodedOid& encoded, OidText& text);
int qorEncodedRelOidToText(RunContext* context, const EncodedOid& encoded, OidText& text);

void escapedText(RunContext* context, char*& result, const void* units, CharForm form, uint32_t count);
size_t escapedLength(const void* units, CharForm form, uint32_t count);
int unitWidth(CharForm form);
// The next character of a string and the cursor behind it; never reads at
// or past `end`.
uint32_t nextUnit(const uint8_t*& cursor, const uint8_t* end, CharForm form);
uint32_t nextUtf8Char(const uint8_t*& cursor, const uint8_t* end);

// Writes a time into `text` of 64 characters; returns 0, or 7 for a field
// out of range.
int timeText(RunContext* context, const TimeRecord& record, char* text, bool utcForm);

int objectIdentifierText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int relativeOidText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int bitStringText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int octetStringText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int ia5StringText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int bmpStringText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int universalStringText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int utf8StringText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int utcTimeText(RunContext* context, const RenderInput& input, const void* value, char*& text);
int generalizedTimeText(RunContext* context, const RenderInput& input, const void* value, char*& text);
