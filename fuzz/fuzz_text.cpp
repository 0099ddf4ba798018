// The loading of hexadecimal text with an offset and a count: the first
// four octets give them, the rest is the text.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "app/input.h"
#include "runtime/context.h"
#include "runtime/services.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 5) return 0;
    RunContext context;
    if (qorStartContext(&context, builtinControlTable()) != 0) std::abort();
    context.toolFlags |= TLV_TEXT_INPUT;
    const uint32_t offset = data[0] | (data[1] << 8);
    const uint32_t count = data[2] | (data[3] << 8);
    std::FILE* stream = fmemopen(const_cast<uint8_t*>(data + 4), size - 4, "r");
    if (stream != nullptr) {
        InputBuffer buffer = {0, nullptr};
        int result = loadInput(&context, stream, offset, count, buffer);
        if (result != 0 && result != 49 && buffer.data != nullptr) std::abort();
        releaseInput(&context, buffer);
        std::fclose(stream);
    }
    qorStopContext(&context);
    return 0;
}
