// Output: the one road for all text of a run.
//
// qorPrint formats into the run buffer of the current stream; the buffer is
// written out when full, when the stream changes, before every exit, and at
// the end of every record when the output is a terminal (qorFlush).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "runtime/context.h"

// Characters a stream writes in place of its own buffer (growInto): not
// cleared when they grow, unlike a string's.
struct GrownText {
    std::unique_ptr<char[]> data;
    size_t capacity = 0;
    size_t size = 0;  // what was written, once the growth ended

    void reserve(size_t wanted);
};

struct OutStream {
    static constexpr size_t kCapacity = 64 * 1024;

    std::FILE* file;     // null for an in-memory sink
    std::string* sink;   // receives the text when file is null
    bool ownsFile;       // closed by closeOutputFile / qorStopContext
    bool terminal;       // flush at the end of every record
    bool failed;         // a write failed: what follows is dropped, the release reports it
    // A text that the buffer is, growing instead of being written out (a
    // worker's listing of a stretch, handed over whole); null: none.
    GrownText* grown;
    size_t used;
    size_t capacity;     // of `buffer`
    char* buffer;        // `storage`, or the grown text's characters
    char storage[kCapacity];
};

// Streams for the entry and for in-process runs.
OutStream* outStreamForFile(std::FILE* file, bool ownsFile);
OutStream* outStreamForSink(std::string* sink);
// The stream's buffer becomes `text` (cleared), which grows as the stream
// is written; endGrowth leaves in it what was written.
void growInto(OutStream* stream, GrownText* text);
void endGrowth(OutStream* stream);
// Writes out what is buffered; closes the file if owned; frees the stream.
// Returns false when a write on the way, or closing, failed.
bool outStreamRelease(OutStream* stream);

int qorPrint(RunContext* context, const char* format, ...) __attribute__((format(printf, 2, 3)));
int qorPrintV(RunContext* context, const char* format, va_list args);
// Pre-formatted text: same override, same character count as qorPrint("%s").
int qorWriteSlow(RunContext* context, const char* text, size_t length);
inline int qorWrite(RunContext* context, const char* text, size_t length)
{
    OutStream* stream = context->outStream;
    if (context->printOverride == nullptr && stream->used + length <= stream->capacity) {
        std::memcpy(stream->buffer + stream->used, text, length);
        stream->used += length;
        return static_cast<int>(length);
    }
    return qorWriteSlow(context, text, length);
}
// Room for `length` characters in the run buffer, to be filled by the
// caller; null when the output goes elsewhere (an override, or a text
// larger than the buffer), and the caller uses qorWrite instead.
char* qorReserveSlow(RunContext* context, size_t length);
inline char* qorReserve(RunContext* context, size_t length)
{
    OutStream* stream = context->outStream;
    if (context->printOverride == nullptr && stream->used + length <= stream->capacity) {
        char* room = stream->buffer + stream->used;
        stream->used += length;
        return room;
    }
    return qorReserveSlow(context, length);
}
// Ends a reservation at `end`: what lies behind it is given back.
inline void qorGiveBack(RunContext* context, char* end)
{
    context->outStream->used = static_cast<size_t>(end - context->outStream->buffer);
}
// Blanks: what "%*s" with an empty string prints for a width, negative widths
// by their absolute value.
int qorBlanksSlow(RunContext* context, int width);
inline int qorBlanks(RunContext* context, int width)
{
    if (width < 0) width = -width;
    OutStream* stream = context->outStream;
    if (context->printOverride == nullptr && stream->used + static_cast<size_t>(width) <= stream->capacity) {
        std::memset(stream->buffer + stream->used, ' ', static_cast<size_t>(width));
        stream->used += static_cast<size_t>(width);
        return width;
    }
    return qorBlanksSlow(context, width);
}
void qorFlush(RunContext* context);
// `digits` upper-case hexadecimal digits of `octets`, two an octet, high half
// first; an odd count ends on the high half of the last octet.
int qorWriteHexDigits(RunContext* context, const uint8_t* octets, int32_t digits);
// A decimal number, as "%ld" prints it, without parsing a format.
int qorWriteDecimal(RunContext* context, long value);
// Listing text made elsewhere (by a worker), written as it stands: no print
// override, no formatting.
void qorWriteBlock(RunContext* context, const char* text, size_t length);
// Listing text held in the run buffer and not yet written out.
inline size_t qorBuffered(const RunContext* context)
{
    return context->outStream->used;
}
// At the end of a record: flushes when the output is a terminal.
// `record` is where the record's element begins.
void qorRecordDone(RunContext* context, const uint8_t* record);

int openOutputFile(RunContext* context, const char* path);
int closeOutputFile(RunContext* context);

// Formats like vsnprintf, with the conventions of the listing: "%E" and "%e"
// give at least three exponent digits, "%I64d" is a signed 64-bit decimal.
// Appends to `out` and returns the characters produced.
int formatAppend(std::string& out, const char* format, va_list args);

// The same into a new string.
std::string formatText(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The two upper-case hexadecimal digits of each octet.
struct HexPairs {
    char pair[256][2];
};
inline constexpr HexPairs kHexPairs = [] {
    constexpr char digits[] = "0123456789ABCDEF";
    HexPairs pairs{};
    for (int octet = 0; octet < 256; ++octet) {
        pairs.pair[octet][0] = digits[octet >> 4];
        pairs.pair[octet][1] = digits[octet & 0xF];
    }
    return pairs;
}();
inline const char* hexPair(uint8_t octet)
{
    return kHexPairs.pair[octet];
}
// The digit pairs of `count` octets at `out`, four octets to a store.
inline void putHexPairs(char* out, const uint8_t* octets, int32_t count)
{
    auto pairOf = [](uint8_t octet) {
        uint16_t pair;
        std::memcpy(&pair, kHexPairs.pair[octet], 2);
        return static_cast<uint64_t>(pair);
    };
    int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        // Little-endian: the first pair in the lowest octets.
        const uint64_t four = pairOf(octets[i]) | pairOf(octets[i + 1]) << 16 | pairOf(octets[i + 2]) << 32 |
                              pairOf(octets[i + 3]) << 48;
        std::memcpy(out + 2 * i, &four, 8);
    }
    for (; i < count; ++i) std::memcpy(out + 2 * i, kHexPairs.pair[octets[i]], 2);
}
