// qorDecode of arbitrary octets as each PDU of the built-in table: the
// first octet chooses the PDU.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "decoder/decoder.h"
#include "runtime/context.h"

namespace {

RunContext* startedContext()
{
    static RunContext context;
    static bool started = qorStartContext(&context, builtinControlTable()) == 0;
    if (!started) std::abort();
    return &context;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    RunContext* context = startedContext();
    int pdu = data[0] % 32;  // 0 and 31 are out of range
    BerBuffer buffer = {static_cast<uint32_t>(size - 1), data + 1};
    void* value = nullptr;
    if (qorDecode(context, pdu, buffer, value) == 0) {
        if (qorFreeValue(context, pdu, value) != 0) std::abort();
    } else if (value != nullptr) {
        std::abort();  // a failed decode hands nothing back
    }
    return 0;
}
