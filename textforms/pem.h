// PEM text (RFC 7468, with the encapsulated headers of RFC 1421): every
// block from its "-----BEGIN label-----" line to its "-----END" line, the
// base64 between them decoded. Text outside the blocks is passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "textforms/base64.h"

struct PemBlock {
    const char* label;  // inside the text of the BEGIN line
    size_t labelLength;
    size_t octetStart;  // where its octets begin in the output
    size_t octetLength;
    long beginLine;
};

// Decodes every block of `text` into `out` (room for `length` octets), one
// after the other, and appends them to `blocks`. Returns the fault, None
// when every block decoded.
TextFaultAt decodePemText(const char* text, size_t length, uint8_t* out, std::vector<PemBlock>& blocks);
