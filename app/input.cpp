#include "app/input.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "runtime/context.h"
#include "runtime/services.h"

namespace {

constexpr size_t kLineSize = 1024;
constexpr size_t kReadChunk = 64 * 1024;
// readToEnd: more octets than 32-bit lengths hold.
constexpr int kLoadTooLarge = -1;
constexpr long kSpoolFrom = 64L << 20;

// Lengths are 32-bit: what is kept of an input, spare octets and a text's
// line room included, stays below 2 GiB.
long largestInput(int32_t spare)
{
    return 0x7FFFFFFF - spare - 2048;
}

bool isWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Frees the memory of a load that fails.
class LoadBlock {
public:
    LoadBlock(RunContext* context, uint8_t* block) : context_(context), block_(block) {}
    ~LoadBlock() { qorFree(context_, block_); }
    LoadBlock(const LoadBlock&) = delete;
    LoadBlock& operator=(const LoadBlock&) = delete;
    uint8_t* get() const { return block_; }
    uint8_t* release()
    {
        uint8_t* block = block_;
        block_ = nullptr;
        return block;
    }

private:
    RunContext* context_;
    uint8_t* block_;
};

// Text input with an offset or a count: the digits to pass over and to keep
// are counted line by line, white space not counted.
int selectDigits(RunContext* context, std::FILE* stream, uint32_t& offset, uint32_t count, long want, char* memory,
                 long& stored, long& consumed)
{
    auto* line = static_cast<char*>(qorAlloc(context, kLineSize));
    if (line == nullptr) return LOAD_NO_MEMORY;
    while (true) {
        if (count != 0 && static_cast<uint32_t>(stored) >= count) break;
        if (count == 0 && offset == 0) break;
        if (consumed >= want) break;
        if (std::fgets(line, static_cast<int>(kLineSize), stream) == nullptr) break;
        size_t length = std::strlen(line);
        consumed += static_cast<long>(length);
        for (size_t i = 0; i < length; ++i) {
            if (count != 0 && static_cast<uint32_t>(stored) >= count) break;
            if (isWhiteSpace(line[i])) continue;
            if (offset != 0) {
                --offset;
            } else {
                memory[stored++] = line[i];
            }
        }
    }
    qorFree(context, line);
    return LOAD_DONE;
}

// A regular binary file without spare octets is mapped instead of read: the
// octets aren't copied once more. The mapping is read-only: nothing writes
// into an input that isn't its own heap copy (the repair loads with spare
// octets, so it always has one).
// The mapping of a large input is read in as the listing goes, and let go
// behind it: only a small one is read in at once.
constexpr long kPopulateAtMost = 256L << 20;

bool mapInput(std::FILE* stream, long skip, long want, InputBuffer& buffer)
{
    int descriptor = fileno(stream);
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || want <= 0) return false;
    const long page = sysconf(_SC_PAGESIZE);
    const long base = skip / page * page;
    const size_t length = static_cast<size_t>(want + (skip - base));
    const int populate = want <= kPopulateAtMost ? MAP_POPULATE : 0;
    void* map = mmap(nullptr, length, PROT_READ, MAP_PRIVATE | populate, descriptor, base);
    if (map == MAP_FAILED) return false;
    if (populate == 0) madvise(map, length, MADV_SEQUENTIAL);
    buffer.length = want <= INT32_MAX ? static_cast<int32_t>(want) : 0;
    buffer.size = want <= INT32_MAX ? 0 : want;
    buffer.data = static_cast<uint8_t*>(map) + (skip - base);
    buffer.mapBase = map;
    buffer.mapLength = length;
    return true;
}

// A block that grows as a stream is read into it.
struct GrowingBlock {
    uint8_t* data = nullptr;
    size_t used = 0;
    size_t capacity = 0;
};

bool makeRoom(RunContext* context, GrowingBlock& block, size_t wanted)
{
    if (block.capacity - block.used >= wanted) return true;
    size_t capacity = block.capacity == 0 ? kReadChunk : block.capacity;
    while (capacity - block.used < wanted) capacity *= 2;
    auto* data = static_cast<uint8_t*>(qorAlloc(context, capacity));
    if (data == nullptr) return false;
    if (block.used != 0) std::memcpy(data, block.data, block.used);
    qorFree(context, block.data);
    block.data = data;
    block.capacity = capacity;
    return true;
}

// A pipe, a FIFO or a terminal can't be positioned: it is read to its end.
// The first `skip` octets are passed over, at most `keep` are kept (0: all),
// and the block keeps `spare` octets of room behind them; more than `limit`
// octets kept is a failed read, as a file too large is.
int readToEnd(RunContext* context, std::FILE* stream, long skip, long keep, long limit, int32_t spare,
              GrowingBlock& block, long& total)
{
    total = 0;
    uint8_t passed[4096];
    while (true) {
        size_t room = kReadChunk;
        uint8_t* into = passed;
        if (total >= skip) {
            if (!makeRoom(context, block, kReadChunk + static_cast<size_t>(spare))) return LOAD_NO_MEMORY;
            into = block.data + block.used;
            if (keep != 0 && static_cast<long>(block.used + room) > keep) {
                room = static_cast<size_t>(keep - static_cast<long>(block.used));
            }
        } else {
            room = static_cast<size_t>(skip - total < static_cast<long>(sizeof passed) ? skip - total : sizeof passed);
        }
        if (room == 0) return LOAD_DONE;
        const size_t got = std::fread(into, 1, room, stream);
        total += static_cast<long>(got);
        if (into != passed) block.used += got;
        if (static_cast<long>(block.used) > limit) return kLoadTooLarge;
        if (got < room) return std::ferror(stream) == 0 ? LOAD_DONE : LOAD_READ_FAILED;
    }
}

// A binary pipe longer than 32-bit lengths hold goes on into an unlinked
// temporary file ($TMPDIR, else /tmp), which is mapped as a large file is:
// memory holds the stretches being listed, the disk the rest.
// Why a pipe can't be listed: its temporary file can't be made or written.
int spoolFailed(const std::string& folder)
{
    std::fprintf(stderr,
                 "qortlv: a pipe longer than %ld MiB goes on into a temporary file in %s ($TMPDIR), which "
                 "couldn't be written: %s.\n",
                 kSpoolFrom >> 20, folder.c_str(), std::strerror(errno));
    return LOAD_READ_FAILED;
}

int spoolToFile(std::FILE* stream, const GrowingBlock& block, long keep, InputBuffer& buffer)
{
    const char* tmpdir = std::getenv("TMPDIR");
    const std::string folder = tmpdir != nullptr && *tmpdir != '\0' ? tmpdir : "/tmp";
    std::string name = folder + "/qortlv-XXXXXX";
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) return spoolFailed(folder);
    unlink(name.c_str());
    std::FILE* spool = fdopen(descriptor, "w+b");
    if (spool == nullptr) {
        close(descriptor);
        return spoolFailed(folder);
    }
    bool good = std::fwrite(block.data, 1, block.used, spool) == block.used;
    long kept = static_cast<long>(block.used);
    std::vector<uint8_t> chunk(kReadChunk);
    bool readFailed = false;
    while (good && (keep == 0 || kept < keep)) {
        size_t room = chunk.size();
        if (keep != 0 && keep - kept < static_cast<long>(room)) room = static_cast<size_t>(keep - kept);
        const size_t got = std::fread(chunk.data(), 1, room, stream);
        readFailed = std::ferror(stream) != 0;
        good = !readFailed && std::fwrite(chunk.data(), 1, got, spool) == got;
        kept += static_cast<long>(got);
        if (got < room) break;
    }
    good = good && std::fflush(spool) == 0;
    if (!good && !readFailed) {
        std::fclose(spool);
        return spoolFailed(folder);
    }
    good = good && mapInput(spool, 0, kept, buffer);
    std::fclose(spool);  // the mapping keeps the file until it goes
    return good ? LOAD_DONE : LOAD_READ_FAILED;
}

int loadUnpositioned(RunContext* context, std::FILE* stream, uint32_t offset, uint32_t count, InputBuffer& buffer,
                     int32_t spare)
{
    const bool text = (context->toolFlags & TLV_TEXT_INPUT) != 0;
    const long skip = text ? 0 : static_cast<long>(offset);
    const long keep = text ? 0 : static_cast<long>(count);
    GrowingBlock block;
    long total = 0;
    // A long binary pipe isn't held in memory: past kSpoolFrom it goes to a file.
    const bool spools = !text && spare == 0;
    const long limit = spools ? kSpoolFrom : largestInput(spare);
    const int read = readToEnd(context, stream, skip, keep, limit, spare, block, total);
    LoadBlock memory(context, block.data);
    if (read == kLoadTooLarge && spools) return spoolToFile(stream, block, keep, buffer);
    if (read == kLoadTooLarge) return LOAD_READ_FAILED;
    if (read != LOAD_DONE) return read;
    if (total <= 0) return LOAD_READ_FAILED;
    if (skip >= total) return LOAD_BAD_OFFSET;
    if (!text) {
        std::memset(block.data + block.used, 0, static_cast<size_t>(spare));
        buffer = {static_cast<int32_t>(block.used) + spare, memory.release()};
        return LOAD_DONE;
    }
    // Text is loaded as from a file: the same offsets, counts and checks.
    std::FILE* inMemory = fmemopen(block.data, block.used, "r");
    if (inMemory == nullptr) return LOAD_NO_MEMORY;
    buffer.length = spare;
    const int result = loadInput(context, inMemory, offset, count, buffer);
    std::fclose(inMemory);
    return result;
}

}  // namespace

void releaseInput(RunContext* context, InputBuffer& buffer)
{
    if (buffer.mapBase != nullptr) {
        munmap(buffer.mapBase, buffer.mapLength);
    } else {
        qorFree(context, buffer.data);
    }
    buffer = {0, nullptr};
}

int loadInput(RunContext* context, std::FILE* stream, uint32_t offset, uint32_t count, InputBuffer& buffer)
{
    InputRange range;
    range.offset = offset;
    range.count = count;
    range.wideOffset = offset;
    range.wideCount = count;
    return loadInputRange(context, stream, range, buffer);
}

int loadInputRange(RunContext* context, std::FILE* stream, InputRange& range, InputBuffer& buffer)
{
    const bool text = (context->toolFlags & TLV_TEXT_INPUT) != 0;
    uint32_t offset = range.offset;
    const uint32_t count = range.count;
    const int32_t spare = buffer.length;
    buffer = {0, nullptr};
    if (std::fseek(stream, 0, SEEK_END) != 0) {
        if (errno == ESPIPE) return loadUnpositioned(context, stream, offset, count, buffer, spare);
        return LOAD_READ_FAILED;
    }
    const long size = std::ftell(stream);
    if (size <= 0) return LOAD_READ_FAILED;
    // A binary file larger than 32-bit lengths hold is mapped whole and
    // listed in stretches; its range is read in 64 bits. A directory's size
    // reads as enormous, and its mapping fails.
    range.wide = !text && spare == 0 && size > largestInput(0);
    const auto clamp = [](uint64_t value) { return value > INT64_MAX ? INT64_MAX : static_cast<long>(value); };
    const long skip = text ? 0 : range.wide ? clamp(range.wideOffset) : static_cast<long>(offset);
    const long limit = range.wide ? clamp(range.wideCount) : static_cast<long>(count);
    if (skip >= size) return LOAD_BAD_OFFSET;
    if (std::fseek(stream, skip, SEEK_SET) != 0) return LOAD_READ_FAILED;
    long want = size - skip;
    if (limit != 0 && limit < want) want = limit;
    if (range.wide) return mapInput(stream, skip, want, buffer) ? LOAD_DONE : LOAD_READ_FAILED;
    // A larger input can't be read.
    if (want > largestInput(spare)) return LOAD_READ_FAILED;

    if (!text && spare == 0 && mapInput(stream, skip, want, buffer)) return LOAD_DONE;

    // One allocation for the input; text keeps room for a whole line read
    // at the write position.
    size_t extra = text ? 1024 + static_cast<size_t>(want < 1024 ? want : 1024) : 0;
    size_t bytes = static_cast<size_t>(want) + static_cast<size_t>(spare) + extra;
    LoadBlock memory(context, static_cast<uint8_t*>(qorAlloc(context, bytes)));
    if (memory.get() == nullptr) return LOAD_NO_MEMORY;
    // Binary input fills its octets by reading: only what lies behind them
    // (the spare octets) needs clearing.
    size_t cleared = text ? 0 : static_cast<size_t>(want);
    std::memset(memory.get() + cleared, 0, bytes - cleared);

    if (!text) {
        if (std::fread(memory.get(), 1, static_cast<size_t>(want), stream) != static_cast<size_t>(want)) {
            return LOAD_READ_FAILED;
        }
        buffer = {static_cast<int32_t>(want + spare), memory.release()};
        return LOAD_DONE;
    }

    auto* characters = reinterpret_cast<char*>(memory.get());
    long stored = 0;
    long consumed = 0;
    if (offset != 0 || count != 0) {
        int result = selectDigits(context, stream, offset, count, want, characters, stored, consumed);
        if (result != LOAD_DONE) return result;
        if (offset != 0) return LOAD_BAD_OFFSET;
        if (count != 0 && static_cast<long>(count) != stored) return LOAD_SHORT_TEXT;
    }
    while (consumed < want) {
        if (std::fgets(characters + stored, static_cast<int>(kLineSize), stream) == nullptr) break;
        auto length = static_cast<long>(std::strlen(characters + stored));
        stored += length;
        consumed += length;
    }
    if (stored < want) want = stored;
    return hexTextToBinary(context, characters, static_cast<int32_t>(want), buffer);
}

int hexTextToBinary(RunContext* context, const char* text, int32_t length, InputBuffer& buffer)
{
    buffer = {0, nullptr};
    size_t bytes = (static_cast<size_t>(length) + 1) / 2;
    LoadBlock memory(context, static_cast<uint8_t*>(qorAlloc(context, bytes > 0 ? bytes : 1)));
    if (memory.get() == nullptr) return LOAD_NO_MEMORY;
    std::memset(memory.get(), 0, bytes > 0 ? bytes : 1);
    uint8_t* octets = memory.get();
    int32_t done = 0;
    int32_t at = 0;
    int result = LOAD_DONE;
    while (true) {
        while (at < length && isWhiteSpace(text[at])) ++at;
        if (at >= length) break;
        int high = hexDigit(text[at++]);
        if (high < 0) {
            result = LOAD_NOT_HEXADECIMAL;
            break;
        }
        while (at < length && isWhiteSpace(text[at])) ++at;
        if (at >= length) {
            // An odd last digit is the high half of a last octet.
            octets[done++] = static_cast<uint8_t>(high << 4);
            break;
        }
        int low = hexDigit(text[at++]);
        if (low < 0) {
            result = LOAD_NOT_HEXADECIMAL;
            // The begun octet stays, with 0 as its low half, unless it
            // would be the only one.
            if (done > 0) octets[done++] = static_cast<uint8_t>(high << 4);
            break;
        }
        octets[done++] = static_cast<uint8_t>(high << 4 | low);
    }
    if (done == 0 && result == LOAD_NOT_HEXADECIMAL) return result;
    buffer = {done, memory.release()};
    return result;
}
