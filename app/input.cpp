#include "app/input.h"

#include <cstring>

#include "runtime/context.h"
#include "runtime/services.h"

int loadInput(RunContext* context, std::FILE* stream, uint32_t offset, uint32_t count,
              InputBuffer& buffer)
{
    int32_t spare = buffer.length;
    buffer = {0, nullptr};
    if (std::fseek(stream, 0, SEEK_END) != 0) return LOAD_READ_FAILED;
    long size = std::ftell(stream);
    if (size <= 0) return LOAD_READ_FAILED;
    if (offset >= static_cast<unsigned long>(size)) return LOAD_BAD_OFFSET;
    if (std::fseek(stream, static_cast<long>(offset), SEEK_SET) != 0) return LOAD_READ_FAILED;
    long want = size - static_cast<long>(offset);
    if (count != 0 && count < static_cast<unsigned long>(want)) want = count;
    auto* data = static_cast<uint8_t*>(qorAlloc(context, static_cast<size_t>(want + spare)));
    if (data == nullptr) return LOAD_NO_MEMORY;
    std::memset(data, 0, static_cast<size_t>(want + spare));
    if (std::fread(data, 1, static_cast<size_t>(want), stream) != static_cast<size_t>(want)) {
        qorFree(context, data);
        return LOAD_READ_FAILED;
    }
    buffer = {static_cast<int32_t>(want + spare), data};
    return LOAD_DONE;
}

int hexTextToBinary(RunContext*, const char*, int32_t, InputBuffer& buffer)
{
    buffer = {0, nullptr};
    return LOAD_NOT_HEXADECIMAL;
}
