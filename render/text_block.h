// Text blocks of the rendering: each a block from qorAlloc that the caller
// frees with qorFree.
#pragma once

#include <cstddef>
#include <cstdint>

#include "render/contents.h"

struct RunContext;

// `count` octets as upper-case hexadecimal, two digits each, in a new block.
char* hexText(RunContext* context, const uint8_t* octets, int32_t count);

// Copies the NUL-terminated text of a value slot into a new block.
int copyDecodedString(RunContext* context, const void* value, char*& result);

// A TextMaker that copies the decoded text as it stands.
int copiedText(RunContext* context, const RenderInput& input, const void* value, char*& text);

// How many of `count` octets a text needs: a line shows at most 1024
// characters of a value unless nothing is truncated, so a text of 513
// octets in hexadecimal is truncated exactly as the whole one would be.
int32_t shownOctets(const RunContext* context, int32_t count);

// A new block from qorAlloc holding `length` characters and a terminator.
char* newText(RunContext* context, const char* text, size_t length);

// Owns a block from qorAlloc for the life of a scope.
class OwnedText {
public:
    OwnedText(RunContext* context, char* text) : context_(context), text_(text) {}
    ~OwnedText();
    OwnedText(const OwnedText&) = delete;
    OwnedText& operator=(const OwnedText&) = delete;
    const char* get() const { return text_; }

private:
    RunContext* context_;
    char* text_;
};
