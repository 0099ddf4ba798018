// Base64 and PEM text into octets: the first octet picks the form, the rest
// is the text. The octets stay within the room of one octet a character,
// and the blocks follow one another inside them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "textforms/base64.h"
#include "textforms/pem.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1) return 0;
    const auto* text = reinterpret_cast<const char*>(data + 1);
    const size_t length = size - 1;
    std::vector<uint8_t> out(length);
    if ((data[0] & 1) == 0) {
        size_t written = 0;
        decodeBase64Text(text, length, out.data(), written);
        if (written > length) std::abort();
        return 0;
    }
    std::vector<PemBlock> blocks;
    decodePemText(text, length, out.data(), blocks);
    size_t end = 0;
    for (const PemBlock& block : blocks) {
        if (block.octetStart != end || block.label < text || block.label + block.labelLength > text + length) {
            std::abort();
        }
        end = block.octetStart + block.octetLength;
    }
    if (end > length) std::abort();
    return 0;
}
