#include "tlv/repair.h"

#include <sys/stat.h>

#include <cstdio>

#include "app/input.h"
#include "app/text_input.h"
#include "app/signal.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tlv/hex_layout.h"
#include "tlv/end_cache.h"
#include "tlv/reader.h"

namespace {

constexpr int32_t kSpareOctets = 16;
constexpr int32_t kMaximumRepairs = 1000;

// What the repair changes of the run, put back however it ends.
class RepairScope {
public:
    explicit RepairScope(RunContext* context)
        : context_(context), flags_(context->toolFlags), override_(context->printOverride),
          jumpTarget_(context->jumpTarget)
    {
    }
    ~RepairScope()
    {
        context_->toolFlags = flags_;
        context_->printOverride = override_;
        context_->jumpTarget = jumpTarget_;
        context_->state->repairOctets = nullptr;
        context_->state->repairSize = 0;
    }
    RepairScope(const RepairScope&) = delete;
    RepairScope& operator=(const RepairScope&) = delete;

private:
    RunContext* context_;
    uint32_t flags_;
    PrintOverride override_;
    bool jumpTarget_;
};

// The repaired records, written whole or reported.
void writeRecords(RunContext* context, const char* name, const uint8_t* data, int32_t length)
{
    qorFlush(context);
    std::FILE* out = std::fopen(name, "wb");
    if (out == nullptr) {
        context->state->lastError = kCannotOpen;
        return;
    }
    size_t written = length > 0 ? std::fwrite(data, 1, static_cast<size_t>(length), out) : 0;
    struct stat status {};
    const bool regular = fstat(fileno(out), &status) == 0 && S_ISREG(status.st_mode);
    if (std::fclose(out) != 0 || written != static_cast<size_t>(length > 0 ? length : 0)) {
        context->state->lastError = kWriteFailed;
        if (regular) std::remove(name);  // nothing half-written stays behind; a device stays
    }
}

// The octet at `place` of the repair's own buffer, writable; null for a
// place outside it.
uint8_t* writableOctet(const RunContext* context, const uint8_t* place)
{
    const RunState* state = context->state;
    if (state->repairOctets == nullptr) return nullptr;
    auto offset = reinterpret_cast<uintptr_t>(place) - reinterpret_cast<uintptr_t>(state->repairOctets);
    if (offset >= static_cast<uintptr_t>(state->repairSize)) return nullptr;
    return state->repairOctets + offset;
}

// The records have taken in spare octets: one repair however many.
void countSpareOctetsTaken(RunContext* context, int32_t fullLength, const InputBuffer& buffer, int32_t& total)
{
    if (fullLength - buffer.length < context->state->spareTail) ++total;
}

}  // namespace

int silentPrint(RunContext*, const char*, va_list)
{
    return 0;
}

void repairPasses(RunContext* context, InputBuffer& buffer, int32_t& total)
{
    RunState* state = context->state;
    context->toolFlags |= TLV_FIX_ENCODING;
    while (total < kMaximumRepairs) {
        state->lastError = 0;
        qorPrint(context, "\nFIXING THE INPUT ENCODING\n");
        state->fixupCount = 0;
        printHexLayout(context, buffer);
        if (state->fixupCount == 0) break;
        total += state->fixupCount;
    }
}

int repairEncoding(RunContext* context, const char* inputName, const char* outputName)
{
    RepairScope scope(context);
    RunState* state = context->state;
    if ((context->toolFlags & TLV_TRACE_FIXUPS) == 0) context->printOverride = silentPrint;
    state->fixupCount = 0;
    state->spareTail = 0;
    state->lastError = 0;
    context->jumpTarget = true;

    int32_t total = 0;
    int32_t fullLength = 0;
    InputBuffer buffer = {0, nullptr};
    std::FILE* input = nullptr;
    struct Release {
        RunContext* context;
        InputBuffer& buffer;
        std::FILE*& input;
        ~Release()
        {
            if (input != nullptr) std::fclose(input);
            releaseInput(context, buffer);
        }
    } release{context, buffer, input};

    try {
        input = std::fopen(inputName, "rb");
        if (input == nullptr) return kCannotOpen;
        buffer.length = kSpareOctets;
        if (loadRepairInput(context, input, buffer) != 0) return kReadFailed;
        // The one buffer that the repair writes into: its own heap block.
        state->repairOctets = buffer.data;
        state->repairSize = buffer.length;
        // The zero octets behind the input are a reserve for missing
        // end-of-contents, kept only when the first element is indefinite.
        if (contentLength(context, buffer.data, buffer.length) == LENGTH_INDEFINITE) {
            state->spareTail = kSpareOctets;
        } else {
            buffer.length -= kSpareOctets;
        }
        std::fclose(input);
        input = nullptr;
        fullLength = buffer.length;
        repairPasses(context, buffer, total);
        countSpareOctetsTaken(context, fullLength, buffer, total);
        if (total != 0) writeRecords(context, outputName, buffer.data, buffer.length);
    } catch (const ToolJump& jump) {
        if (input != nullptr) {
            std::fclose(input);
            input = nullptr;
        }
        if (toolRow(jump.value).internalError) {
            state->fixupCount = total;
            return state->lastError;
        }
        if (buffer.data == nullptr) {
            state->fixupCount = total;
            return state->lastError;
        }
        int32_t length = fullLength - state->spareTail;
        if (state->fixupCount > 0) {
            // What was repaired may read further now.
            total += state->fixupCount;
            buffer.length = fullLength;
            try {
                repairPasses(context, buffer, total);
            } catch (const ToolJump&) {
                return state->lastError;  // nothing is written
            }
            countSpareOctetsTaken(context, fullLength, buffer, total);
            length = buffer.length;
        }
        if (total != 0) writeRecords(context, outputName, buffer.data, length);
    }
    state->fixupCount = total;
    return state->lastError;
}

bool probeElements(RunContext* context, const uint8_t* element, int32_t count)
{
    if (count <= 0) return false;
    for (int i = 0; i < 3; ++i) {
        const uint8_t* cursor = element;
        int32_t remaining = count;
        if (readIdentifier(context, cursor, remaining) < 1) return false;
        cursor = element;
        remaining = count;
        int32_t length = readHeader(context, cursor, remaining);
        if (length == LENGTH_TRUNCATED || (length != LENGTH_INDEFINITE && length > count)) return false;
        int32_t inner = count;
        const uint8_t* inside = firstInside(context, element, inner);
        if (inside != nullptr && inner != 0 && !probeElements(context, inside, inner)) return false;
        element = nextElement(context, element, count);
        if (element == nullptr || count == 0) return true;
    }
    return true;
}

LengthRepair repairLongFormLength(RunContext* context, const uint8_t* element, int32_t available,
                                  int32_t identifier, int32_t header)
{
    LengthRepair repair = {false, false, header, LENGTH_TRUNCATED, 0};
    RunState* state = context->state;
    if ((context->toolFlags & TLV_FIX_ENCODING) == 0 || state->fixupCount >= kMaximumRepairs) return repair;
    if (element[0] == 0 || identifier + 1 >= available) return repair;
    // The octet behind a length of 00 looks like a long-form length.
    if (element[identifier] != 0x00 || (element[identifier + 1] & 0x80) == 0) return repair;
    uint8_t* lengthOctet = writableOctet(context, element + identifier);
    if (lengthOctet == nullptr) return repair;

    const uint32_t savedFlags = context->toolFlags;
    const uint32_t savedState = state->stateFlags;
    context->toolFlags |= TLV_QUIET_ERRORS;
    state->stateFlags |= STATE_PROBING;
    if (!probeElements(context, element, available)) {
        *lengthOctet = 0x81;
        clearEndCache(context);
        repair.header = identifier + 2;
        if (repair.header > available) {
            *lengthOctet = 0x00;
            clearEndCache(context);
            repair.header = header;
        } else {
            const uint8_t* cursor = element;
            int32_t remaining = available;
            repair.length = readHeader(context, cursor, remaining);
            repair.shown = repair.length;
            repair.lengthSet = true;
            if (repair.length == LENGTH_TRUNCATED || repair.length > available - repair.header) {
                *lengthOctet = 0x00;
                clearEndCache(context);
                repair.header = header;
            } else {
                qorPrint(context,
                         "\nPossible invalid length in the long form; continuing as if '81' were used instead of '00':");
                ++state->fixupCount;
                repair.applied = true;
            }
        }
    }
    context->toolFlags = savedFlags;
    state->stateFlags = savedState;
    return repair;
}

void showOriginalLength(RunContext* context, const uint8_t* element, int32_t identifier, bool original)
{
    uint8_t* lengthOctet = writableOctet(context, element + identifier);
    if (lengthOctet != nullptr) *lengthOctet = original ? 0x00 : 0x81;
}

void printRepairOutcome(RunContext* context, int result, const char* inputName, const char* repairName)
{
    const int32_t count = context->state->fixupCount;
    if (result == 0 && count == 0) {
        qorPrint(context, "\nEncoding is valid, no fixups were made, no output file was created.");
    } else if (result == 0) {
        qorPrint(context, "\nRecords were fixed and saved in file: '%s'.\nThe total number of fixups was: '%d'.",
                 repairName, count);
    } else if (result == kCannotOpen || result == kReadFailed) {
        qorPrint(context, "\nError reading from input file: '%s'.", inputName);
    } else if (result == kWriteFailed) {
        qorPrint(context, "\nError writing to the output file: '%s'.", repairName);
    } else if (count == 0) {
        qorPrint(context, "\nEncoding is invalid, no fixups were made, no output file was created.");
    } else {
        qorPrint(context,
                 "\nEncoding is partially fixed and saved in file: '%s'.\nThe total number of fixups was: '%d'.",
                 repairName, count);
    }
}
