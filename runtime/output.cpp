// qorPrint and the output file.
#include "runtime/output.h"

#include <unistd.h>

#include <cstdarg>
#include <cstring>
#include <new>

#include "runtime/context.h"
#include "runtime/decimal.h"
#include "runtime/output_line.h"

namespace {

// A file that failed a write (a full disk) takes nothing more: the run goes
// on to its end, and the release reports the loss.
void writeOut(OutStream* stream, const char* text, size_t length)
{
    if (length == 0 || stream->failed) return;
    if (stream->file != nullptr) {
        if (std::fwrite(text, 1, length, stream->file) != length) stream->failed = true;
    } else if (stream->sink != nullptr) {
        stream->sink->append(text, length);
    }
}

// A grown text takes at least `wanted` characters more.
void grow(OutStream* stream, size_t wanted)
{
    GrownText& text = *stream->grown;
    text.size = stream->used;
    text.reserve(stream->used + wanted);
    stream->buffer = text.data.get();
    stream->capacity = text.capacity;
}

// The stream writes into its own buffer again, empty.
void useOwnBuffer(OutStream* stream)
{
    stream->grown = nullptr;
    stream->used = 0;
    stream->capacity = OutStream::kCapacity;
    stream->buffer = stream->storage;
}

void drain(OutStream* stream)
{
    if (stream->grown != nullptr) return;  // it stays where it was written
    writeOut(stream, stream->buffer, stream->used);
    stream->used = 0;
    if (stream->file != nullptr && !stream->failed && std::fflush(stream->file) != 0) stream->failed = true;
}

void append(OutStream* stream, const char* text, size_t length)
{
    if (stream->used + length > stream->capacity && stream->grown != nullptr) grow(stream, length);
    if (stream->used + length > stream->capacity) {
        drain(stream);
        if (length > stream->capacity) {
            writeOut(stream, text, length);
            return;
        }
    }
    std::memcpy(stream->buffer + stream->used, text, length);
    stream->used += length;
}

// True when the format has a conversion that glibc prints differently from
// the listing's conventions (exponents, "%I64d").
bool needsOwnFormatter(const char* format)
{
    for (const char* p = std::strchr(format, '%'); p != nullptr; p = std::strchr(p, '%')) {
        ++p;
        if (*p == '%') {
            ++p;
            continue;
        }
        while (*p != '\0' && std::strchr("-+ #0123456789.*hlzL", *p) != nullptr) ++p;
        if (*p == 'I' || *p == 'e' || *p == 'E' || *p == 'g' || *p == 'G') return true;
    }
    return false;
}

int callOverride(RunContext* context, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    int result = context->printOverride(context, format, args);
    va_end(args);
    return result;
}

bool overridden(const RunContext* context)
{
    return context->controlTable != nullptr && context->printOverride != nullptr;
}

}  // namespace

namespace {

// A stream on its own buffer, empty, writing to `file` or else `sink`.
OutStream* newStream(std::FILE* file, std::string* sink, bool ownsFile)
{
    auto* stream = new (std::nothrow) OutStream;
    if (stream == nullptr) return nullptr;
    stream->file = file;
    stream->sink = sink;
    stream->ownsFile = ownsFile;
    stream->terminal = file != nullptr && isatty(fileno(file)) != 0;
    stream->failed = false;
    useOwnBuffer(stream);
    return stream;
}

}  // namespace

OutStream* outStreamForFile(std::FILE* file, bool ownsFile)
{
    return newStream(file, nullptr, ownsFile);
}

OutStream* outStreamForSink(std::string* sink)
{
    return newStream(nullptr, sink, false);
}

void GrownText::reserve(size_t wanted)
{
    if (wanted <= capacity) return;
    size_t larger = capacity < 4096 ? 4096 : 2 * capacity;
    while (larger < wanted) larger *= 2;
    std::unique_ptr<char[]> more(new char[larger]);
    if (size != 0) std::memcpy(more.get(), data.get(), size);
    data = std::move(more);
    capacity = larger;
}

void growInto(OutStream* stream, GrownText* text)
{
    drain(stream);
    stream->grown = text;
    stream->used = 0;
    text->size = 0;
    text->reserve(4096);
    stream->buffer = text->data.get();
    stream->capacity = text->capacity;
}

void endGrowth(OutStream* stream)
{
    if (stream->grown == nullptr) return;
    stream->grown->size = stream->used;
    useOwnBuffer(stream);
}

bool outStreamRelease(OutStream* stream)
{
    if (stream == nullptr) return true;
    drain(stream);
    bool good = true;
    if (stream->file != nullptr) {
        good = !stream->failed && std::ferror(stream->file) == 0;
        if (stream->ownsFile && std::fclose(stream->file) != 0) good = false;
    }
    delete stream;
    return good;
}

int qorPrintV(RunContext* context, const char* format, va_list args)
{
    if (overridden(context)) return context->printOverride(context, format, args);
    OutStream* stream = context->outStream;
    if (needsOwnFormatter(format)) {
        std::string text;
        int count = formatAppend(text, format, args);
        append(stream, text.data(), text.size());
        return count;
    }
    va_list again;
    va_copy(again, args);
    size_t room = stream->capacity - stream->used;
    int count = std::vsnprintf(stream->buffer + stream->used, room, format, args);
    if (count >= 0 && static_cast<size_t>(count) < room) {
        stream->used += static_cast<size_t>(count);
    } else if (count > 0) {
        std::string text(static_cast<size_t>(count) + 1, '\0');
        std::vsnprintf(text.data(), text.size(), format, again);
        append(stream, text.data(), static_cast<size_t>(count));
    }
    va_end(again);
    return count;
}

int qorPrint(RunContext* context, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    int count = qorPrintV(context, format, args);
    va_end(args);
    return count;
}

int qorWriteSlow(RunContext* context, const char* text, size_t length)
{
    if (overridden(context)) return callOverride(context, "%.*s", static_cast<int>(length), text);
    append(context->outStream, text, length);
    return static_cast<int>(length);
}

char* qorReserveSlow(RunContext* context, size_t length)
{
    OutStream* stream = context->outStream;
    if (overridden(context) || (length > OutStream::kCapacity && stream->grown == nullptr)) return nullptr;
    if (stream->used + length > stream->capacity && stream->grown != nullptr) grow(stream, length);
    if (stream->used + length > stream->capacity) drain(stream);
    char* room = stream->buffer + stream->used;
    stream->used += length;
    return room;
}

int qorWriteHexDigits(RunContext* context, const uint8_t* octets, int32_t digits)
{
    constexpr int32_t kChunkOctets = 4096;
    char chunk[2 * kChunkOctets];
    for (int32_t done = 0; done < digits;) {
        const int32_t take = digits - done < 2 * kChunkOctets ? digits - done : 2 * kChunkOctets;
        char* out = qorReserve(context, static_cast<size_t>(take));
        char* target = out != nullptr ? out : chunk;
        const uint8_t* from = octets + done / 2;
        const int32_t pairs = take / 2;
        putHexPairs(target, from, pairs);
        if ((take & 1) != 0) target[take - 1] = hexPair(from[pairs])[0];
        if (out == nullptr) qorWrite(context, chunk, static_cast<size_t>(take));
        done += take;
    }
    return digits > 0 ? digits : 0;
}

int qorBlanksSlow(RunContext* context, int width)
{
    static constexpr char kBlanks[] = "                                                                ";
    constexpr int kChunk = sizeof kBlanks - 1;
    if (width < 0) width = -width;
    if (overridden(context)) return callOverride(context, "%*s", width, "");
    for (int left = width; left > 0; left -= kChunk) {
        append(context->outStream, kBlanks, static_cast<size_t>(left < kChunk ? left : kChunk));
    }
    return width;
}

int qorWriteDecimal(RunContext* context, long value)
{
    char digits[24];
    return qorWrite(context, digits, static_cast<size_t>(putSignedDecimal(digits, value) - digits));
}

void qorFlush(RunContext* context)
{
    if (context != nullptr && context->outStream != nullptr) drain(context->outStream);
}

void qorWriteBlock(RunContext* context, const char* text, size_t length)
{
    append(context->outStream, text, length);
}

void qorRecordDone(RunContext* context, const uint8_t* record)
{
    if (context->recordWatch != nullptr) context->recordWatch->recordDone(context, record);
    if (context->outStream->terminal) drain(context->outStream);
}

int openOutputFile(RunContext* context, const char* path)
{
    if (context == nullptr) return QOR_NULL_CONTEXT;
    if (context->savedOutStream != nullptr) return QOR_ALREADY_OPEN;
    // Text written so far belongs in front of the redirection.
    qorFlush(context);
    std::FILE* file = std::fopen(path, "wt");
    if (file == nullptr) return QOR_OPEN_FAILED;
    OutStream* stream = outStreamForFile(file, true);
    if (stream == nullptr) {
        std::fclose(file);
        return QOR_OPEN_FAILED;
    }
    context->savedOutStream = context->outStream;
    context->outStream = stream;
    return 0;
}

int closeOutputFile(RunContext* context)
{
    if (context == nullptr) return QOR_NULL_CONTEXT;
    if (context->savedOutStream == nullptr) return 0;
    if (!outStreamRelease(context->outStream)) {
        // The stream is gone all the same; go back to the one before it.
        context->outStream = context->savedOutStream;
        context->savedOutStream = nullptr;
        return QOR_CLOSE_FAILED;
    }
    context->outStream = context->savedOutStream;
    context->savedOutStream = nullptr;
    return 0;
}

int OutputLine::rightAlignedWide(int width, unsigned long value)
{
    if (begin_ == nullptr) {
        char digits[24];
        const auto count = static_cast<int>(putDecimal(digits, value) - digits);
        return (count < width ? qorBlanks(context_, width - count) : 0) +
               qorWrite(context_, digits, static_cast<size_t>(count));
    }
    // The digits in place, moved behind the blanks they need.
    const auto count = static_cast<int>(putDecimal(at_, value) - at_);
    const int field = count > width ? count : width;
    std::memmove(at_ + field - count, at_, static_cast<size_t>(count));
    std::memset(at_, ' ', static_cast<size_t>(field - count));
    at_ += field;
    return field;
}
