#include "textforms/pem.h"

#include <cstring>

namespace {

constexpr char kBegin[] = "-----BEGIN ";
constexpr char kEnd[] = "-----END";
constexpr char kDashes[] = "-----";

bool startsWith(const char* line, size_t length, const char* prefix)
{
    const size_t prefixLength = std::strlen(prefix);
    return length >= prefixLength && std::memcmp(line, prefix, prefixLength) == 0;
}

size_t withoutTrailingSpace(const char* line, size_t length)
{
    while (length > 0 && (line[length - 1] == ' ' || line[length - 1] == '\t' || line[length - 1] == '\r')) --length;
    return length;
}

// "-----BEGIN label-----": the label, or false for any other line.
bool beginLine(const char* line, size_t length, PemBlock& block)
{
    length = withoutTrailingSpace(line, length);
    const size_t prefix = sizeof kBegin - 1;
    const size_t suffix = sizeof kDashes - 1;
    if (!startsWith(line, length, kBegin) || length < prefix + suffix) return false;
    if (std::memcmp(line + length - suffix, kDashes, suffix) != 0) return false;
    block.label = line + prefix;
    block.labelLength = length - prefix - suffix;
    return true;
}

// RFC 1421 headers ("Proc-Type: 4,ENCRYPTED", "DEK-Info: ...") open a
// block: a line with a colon, or a folded line behind one. Base64 holds no
// colon.
bool headerLine(const char* line, size_t length, bool afterHeader)
{
    if (std::memchr(line, ':', length) != nullptr) return true;
    return afterHeader && length > 0 && (line[0] == ' ' || line[0] == '\t') &&
           withoutTrailingSpace(line, length) > 0;
}

enum class Where { Outside, Headers, Body };

}  // namespace

TextFaultAt decodePemText(const char* text, size_t length, uint8_t* out, std::vector<PemBlock>& blocks)
{
    TextFaultAt fault = {TextFault::None, 0, 0};
    TextLines lines(text, length);
    const char* line = nullptr;
    size_t lineLength = 0;
    Where where = Where::Outside;
    bool afterHeader = false;
    size_t written = 0;
    PemBlock block{};
    Base64Decoder decoder(out);
    while (lines.next(line, lineLength)) {
        if (where == Where::Outside) {
            if (beginLine(line, lineLength, block)) {
                block.beginLine = lines.number();
                block.octetStart = written;
                decoder = Base64Decoder(out + written);
                where = Where::Headers;
                afterHeader = false;
            }
            continue;
        }
        if (startsWith(line, lineLength, kEnd)) {
            if (!decoder.finish(fault)) return fault;
            block.octetLength = decoder.written();
            written += block.octetLength;
            blocks.push_back(block);
            where = Where::Outside;
            continue;
        }
        if (startsWith(line, lineLength, kBegin)) break;  // the open block has no END line
        if (where == Where::Headers) {
            afterHeader = headerLine(line, lineLength, afterHeader);
            if (afterHeader) continue;
            where = Where::Body;
        }
        if (!decoder.take(line, lineLength, lines.number(), fault)) return fault;
    }
    if (where != Where::Outside) return {TextFault::NoEndLine, block.beginLine, 0};
    if (blocks.empty()) return {TextFault::NoBlock, 0, 0};
    return fault;
}
