// The value forms of a tag map: each writes the text of an element's
// contents into the caller's buffer (without a heap block when the buffer
// has valueTextBound's room, as the layouts' buffers have), and fails when
// the octets do not fit the form (a bad digit, a wrong length) or the text
// does not fit the buffer; the caller then shows the octets in hexadecimal
// with a note.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "tagmap/tag_map.h"

using Octets = std::span<const uint8_t>;

// Room enough for the text of `count` octets in any form, an enumerated
// value's name included (the parser refuses longer names).
constexpr size_t kLongestValueName = 64;
constexpr size_t valueTextBound(size_t count) { return 4 * count + kLongestValueName + 8; }

// Where a form writes: `length` characters at `text`, no terminator.
struct ValueText {
    char* text;
    size_t capacity;
    size_t length;
};

// A form applied to the octets, without a map: an enumerated value is its
// number. False also for ValueForm::None.
bool formText(ValueForm form, Octets octets, ValueText& out);

// The node's form applied to the octets; false also for ValueForm::None.
bool valueText(const TagMap& map, const TagNode& node, Octets octets, ValueText& out);

// The same for writers that have the room ready: the text at `out`, which
// has valueTextBound(octets.size()) characters (the writers store whole
// words within it); returns the end, or null when the octets don't fit the
// form. The hexadecimal always fits.
char* putFormText(const TagMap& map, const TagNode& node, Octets octets, char* out);
char* putHexText(Octets octets, char* out);

// The short name of a form as maps write it ("tbcd"), for notes.
const char* valueFormName(ValueForm form);
