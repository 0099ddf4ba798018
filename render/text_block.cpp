#include "render/text_block.h"

#include <cstring>

#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"

char* hexText(RunContext* context, const uint8_t* octets, int32_t count)
{
    auto* text = static_cast<char*>(qorAlloc(context, static_cast<size_t>(count) * 2 + 1));
    if (text == nullptr) return nullptr;
    putHexPairs(text, octets, count);
    text[2 * count] = '\0';
    return text;
}

int copyDecodedString(RunContext* context, const void* value, char*& result)
{
    const char* source = *static_cast<const char* const*>(value);
    if (source == nullptr) source = "";
    size_t length = std::strlen(source);
    result = static_cast<char*>(qorAlloc(context, length + 1));
    if (result == nullptr) return 1;
    std::memcpy(result, source, length + 1);
    return 0;
}

int copiedText(RunContext* context, const RenderInput&, const void* value, char*& text)
{
    return copyDecodedString(context, value, text);
}

char* newText(RunContext* context, const char* text, size_t length)
{
    auto* block = static_cast<char*>(qorAlloc(context, length + 1));
    if (block == nullptr) return nullptr;
    std::memcpy(block, text, length);
    block[length] = '\0';
    return block;
}

OwnedText::~OwnedText()
{
    qorFree(context_, text_);
}

int32_t shownOctets(const RunContext* context, int32_t count)
{
    constexpr int32_t kMostShown = 513;
    if ((context->toolFlags & TLV_NO_SHORT) != 0) return count;
    return count < kMostShown ? count : kMostShown;
}
