// -utf8: UTF8String, BMPString and UniversalString values as UTF-8 text.
// A character is written as it is when it is a Unicode scalar value (no
// surrogate, nothing above U+10FFFF) from a well-formed sequence (RFC 3629:
// the shortest form) and not a control: C0, DEL, C1, and the line and
// paragraph separators and bidirectional formatting characters that would
// break or reorder the listing's line. Everything else keeps the escape
// that the listing gives it without -utf8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "render/string_text.h"

struct RunContext;

// Whether -utf8 is in force for the run.
bool utf8TextWanted(const RunContext* context);

// Whether `octets` are well-formed UTF-8 throughout (RFC 3629).
bool isValidUtf8(std::span<const uint8_t> octets);

// The text of `count` units of a string in `form` (octets for CHARS_UTF8),
// as above; a block from qorAlloc in `result`, or null when none could be had.
void utf8ReadableText(RunContext* context, char*& result, const void* units, CharForm form, uint32_t count);

// The characters of UTF-8 text (octets that don't continue a sequence), and
// the octets of its first `characters` characters.
size_t utf8Characters(const char* text, size_t size);
size_t utf8PrefixOctets(const char* text, size_t size, size_t characters);
