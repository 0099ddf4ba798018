#include "decoder/strings.h"

#include <cstring>
#include <string_view>

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "decoder/times.h"
#include "decoder/values.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"
#include "runtime/services.h"

namespace {

constexpr int32_t kOpenBound = 0x7fffffff;
constexpr uint16_t kBitStringTag = 3;
constexpr uint16_t kOctetStringTag = 4;
constexpr uint32_t kHugeIntegerLimit = 4096;

bool isIri(const TypeRecord& type)
{
    return type.stringCode == 35 || type.stringCode == 36;
}

void checkHugeInteger(RunContext* context, const uint8_t* octets, int32_t length)
{
    if (length == 0) reportError(context, RT_MISENCODED);
    if (length >= 2 && ((octets[0] == 0x00 && (octets[1] & 0x80) == 0) || (octets[0] == 0xFF && (octets[1] & 0x80) != 0))) {
        reportError(context, RT_INTEGER_NEEDLESSLY_LONG);
    }
    if (static_cast<uint32_t>(length) > kHugeIntegerLimit) reportError(context, RT_INTEGER_LENGTH, length);
}

// Appends `count` octets of the input to the chain, taking areas as they
// fill.
void appendToChain(RunContext* context, StringChain& chain, uint32_t count)
{
    while (count > 0) {
        if (chain.lastArea == nullptr || chain.areaOffset == StringChain::kAreaEnd) {
            auto* area = static_cast<StringArea*>(scratchStackPush(context, StringChain::kAreaSize));
            area->previous = chain.lastArea;
            chain.lastArea = area;
            chain.areaOffset = StringChain::kAreaStart;
        }
        uint32_t room = StringChain::kAreaEnd - chain.areaOffset;
        uint32_t take = count < room ? count : room;
        inputCopy(context, take, reinterpret_cast<uint8_t*>(chain.lastArea) + chain.areaOffset);
        chain.areaOffset += take;
        chain.dataOctets += static_cast<int32_t>(take);
        count -= take;
    }
}

uint32_t readPrimitive(DecodeCall& call, StringChain& chain, uint32_t& unusedBits, int32_t length)
{
    RunContext* context = call.context;
    const int32_t contents = length;
    uint32_t count = 0;
    if (call.unit == 0 && length > 0) {
        count = inputByte(context);
        if (count > 7) reportError(context, RT_UNUSED_BITS_RANGE);
        unusedBits = count;
        --length;
    }
    // The checks of a segment read it where it stands in the input.
    const uint8_t* segment = context->decode.inputBase + context->decode.inputOffset;
    appendToChain(context, chain, static_cast<uint32_t>(length));
    call.total += call.unit == 0 ? 8 * length : length;
    if (isIri(*call.type)) {
        checkOidIri(context, reinterpret_cast<const char*>(segment), static_cast<uint32_t>(length),
                    call.type->stringCode == 35);
    }
    if (call.type->kind == KIND_HUGE_INTEGER) checkHugeInteger(context, segment, length);
    if (call.unit == 0) {
        if (length == 0 && count > 0) reportError(context, RT_UNUSED_BITS_RANGE, count);
        if (length > 0) {
            // The unused bits of the last octet are zero in the value.
            uint8_t& last = reinterpret_cast<uint8_t*>(chain.lastArea)[chain.areaOffset - 1];
            last = static_cast<uint8_t>(last & (0xFF << count));
            call.total -= static_cast<int32_t>(count);
        }
    }
    return static_cast<uint32_t>(contents);
}

uint32_t readConstructed(DecodeCall& call, StringChain& chain, uint32_t& unusedBits, int32_t length,
                         int32_t& eocPending)
{
    RunContext* context = call.context;
    const TypeRecord& type = *call.type;
    if (isIri(type) || type.kind == KIND_TIME_TEXT) reportError(context, RT_EXPECTED_PRIMITIVE);
    const bool indefinite = length < 0;
    int32_t bound = !indefinite ? length : call.bounded ? call.remaining : kOpenBound;
    // The end-of-contents pairs that enclosing levels wait for stay theirs.
    const int32_t ownedFrom = eocPending - (indefinite ? 1 : 0);
    DecodeState& decode = context->decode;
    if (++decode.stringNesting > context->state->maxStringNesting) reportError(context, RT_STRING_NESTING);
    const bool wasBounded = call.bounded;
    const uint16_t segmentTag = call.unit == 0 ? kBitStringTag : kOctetStringTag;
    int32_t consumed = 0;
    int32_t endOctets = 0;
    bool anyOctets = false;
    while (true) {
        int32_t above = eocPending - ownedFrom;
        int32_t owned = above;
        endOctets = static_cast<int32_t>(berSkipEoc(context, owned));
        eocPending = ownedFrom + owned;
        if (endOctets != 0) break;
        if (consumed >= bound) break;
        if (unusedBits != 0) reportError(context, RT_UNUSED_BITS_NOT_ZERO);
        uint16_t tag = 0;
        int32_t segmentLength = 0;
        bool segmentConstructed = false;
        consumed += static_cast<int32_t>(berReadHeader(context, tag, segmentLength, eocPending, segmentConstructed, true));
        if (tag != segmentTag) reportError(context, RT_TAG_MISMATCH, tag | (static_cast<int64_t>(segmentTag) << 16));
        int32_t needed = segmentLength < 0 ? 2 : segmentLength;
        if (call.bounded && needed > bound - consumed) reportError(context, RT_INCONSISTENT_LENGTHS);
        if (segmentLength >= 0) {
            call.bounded = true;
            call.remaining = segmentLength;
        } else {
            call.remaining = bound - consumed - 2;
        }
        const int32_t before = call.total;
        consumed += static_cast<int32_t>(readStringBody(call, chain, unusedBits, segmentLength, eocPending, segmentConstructed));
        if (call.total != before) anyOctets = true;
    }
    --decode.stringNesting;
    call.bounded = wasBounded;
    call.remaining = bound;
    if (consumed > bound) reportError(context, RT_INCONSISTENT_LENGTHS);
    consumed += endOctets;
    if (call.remaining <= kOpenBound - endOctets) call.remaining += endOctets;
    if (eocPending > ownedFrom) reportError(context, RT_EXPECTED_EOC);
    if (call.unit == 0 && bound != 0 && !anyOctets) reportError(context, RT_INCONSISTENT_LENGTHS);
    return static_cast<uint32_t>(consumed);
}

// The length and the data pointer of a counted value, at their widths.
void storeCounted(DecodeCall& call, uint32_t length, void* data)
{
    const TypeRecord& type = *call.type;
    if (type.lengthWidth == 2) {
        if (length > 0xFFFF) reportError(call.context, RT_SIZE_TOO_LONG, length);
        auto* value = static_cast<EncodedOid*>(call.value);
        value->length = static_cast<uint16_t>(length);
        value->octets = static_cast<const uint8_t*>(data);
    } else {
        auto* value = static_cast<CountedValue*>(call.value);
        value->length = length;
        value->data = data;
    }
}

// The code units of a BMPString or UniversalString, big-endian on the wire,
// in machine order in the value.
void storeUnits(DecodeCall& call, StringChain& chain, int width)
{
    RunContext* context = call.context;
    const auto bytes = static_cast<size_t>(chain.dataOctets);
    if (bytes % static_cast<size_t>(width) != 0) reportError(context, RT_CHARACTER_WIDTH, static_cast<int64_t>(bytes));
    const auto characters = static_cast<uint32_t>(bytes / static_cast<size_t>(width));
    if (characters == 0) {
        storeCounted(call, 0, nullptr);
        return;
    }
    void* array = context->services->svcAllocValue(context, characters * static_cast<uint32_t>(width), 0);
    // The areas in order, in one scratch block.
    auto* wire = static_cast<uint8_t*>(context->services->svcAllocScratch(context, static_cast<uint32_t>(bytes)));
    drainChain(context, chain, wire);
    for (uint32_t i = 0; i < characters; ++i) {
        uint32_t unit = 0;
        for (int k = 0; k < width; ++k) unit = (unit << 8) | wire[i * static_cast<uint32_t>(width) + static_cast<uint32_t>(k)];
        if (width == 2) {
            static_cast<uint16_t*>(array)[i] = static_cast<uint16_t>(unit);
        } else {
            static_cast<uint32_t*>(array)[i] = unit;
        }
    }
    context->services->svcUnlock(context, wire, true);
    storeCounted(call, characters, array);
}

bool isContinuation(uint8_t octet)
{
    return (octet & 0xC0) == 0x80;
}

// One arc of an OID-IRI: ASCII unreserved characters and UTF-8 sequences of
// the permitted code points.
bool arcCharactersValid(std::string_view arc)
{
    bool digitsOnly = !arc.empty();
    for (char c : arc) digitsOnly = digitsOnly && c >= '0' && c <= '9';
    if (digitsOnly) return arc.size() == 1 || arc[0] != '0';
    size_t at = 0;
    while (at < arc.size()) {
        auto c = static_cast<uint8_t>(arc[at]);
        if (c < 0x80) {
            bool ok = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
                      c == '.' || c == '_' || c == '~';
            if (!ok) return false;
            ++at;
            continue;
        }
        int octets = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 0;
        if (octets == 0 || c >= 0xF8 || at + static_cast<size_t>(octets) > arc.size()) return false;
        uint32_t point = c & (0x7F >> octets);
        for (int k = 1; k < octets; ++k) {
            auto next = static_cast<uint8_t>(arc[at + static_cast<size_t>(k)]);
            if (!isContinuation(next)) return false;
            point = (point << 6) | (next & 0x3F);
        }
        bool permitted = (point >= 0xA0 && point <= 0xDFFE) || (point >= 0xF900 && point <= 0xFDCF) ||
                         (point >= 0xFDF0 && point <= 0xFFEF) || (point >= 0xE1000 && point <= 0xEFFFD);
        if (point >= 0x10000 && point < 0xE0000 && (point & 0xFFFF) < 0xFFFE) permitted = true;
        if (!permitted) return false;
        at += static_cast<size_t>(octets);
    }
    return true;
}

// The argument of an OID-IRI failure is at most 127 characters: a longer
// text is cut to 124 and "...".
[[noreturn]] void refuseIri(RunContext* context, int32_t entry, std::string_view text)
{
    constexpr size_t kLongest = 127;
    char argument[kLongest + 1];
    const bool cut = text.size() > kLongest;
    const size_t kept = cut ? kLongest - 3 : text.size();
    std::memcpy(argument, text.data(), kept);
    std::strcpy(argument + kept, cut ? "..." : "");
    reportError(context, entry, ErrorArgument::ofText(argument));
}

bool isSmallNumber(std::string_view arc, int lowest, int highest)
{
    if (arc.empty() || arc.size() > 2 || (arc.size() == 2 && arc[0] == '0')) return false;
    int value = 0;
    for (char c : arc) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + (c - '0');
    }
    return value >= lowest && value <= highest;
}

bool isSecondArc(std::string_view arc, int root)
{
    if (arc.size() == 1 && arc[0] >= '0' && arc[0] <= '9') return true;
    if (arc.size() == 2 && (arc[0] == '1' || arc[0] == '2' || arc[0] == '3') && arc[1] >= '0' && arc[1] <= '9') {
        return true;
    }
    static constexpr std::string_view kRoot0[] = {"Recommendation", "Administration", "Network-Operator",
                                                  "Identified-Organization", "R-Recommendation"};
    static constexpr std::string_view kRoot1[] = {"Standard", "Registration-Authority", "Member-Body",
                                                  "Identified-Organization"};
    if (root == 0) {
        for (std::string_view name : kRoot0) {
            if (arc == name) return true;
        }
    } else {
        for (std::string_view name : kRoot1) {
            if (arc == name) return true;
        }
    }
    return false;
}

}  // namespace

void drainChain(RunContext* context, StringChain& chain, uint8_t* target)
{
    uint32_t end = static_cast<uint32_t>(chain.dataOctets);
    uint32_t used = chain.areaOffset - StringChain::kAreaStart;
    while (chain.lastArea != nullptr) {
        StringArea* area = chain.lastArea;
        std::memcpy(target + end - used, area->data, used);
        end -= used;
        chain.lastArea = area->previous;
        scratchStackPop(context, area);
        used = sizeof area->data;
    }
    chain.areaOffset = StringChain::kAreaStart;
    chain.dataOctets = 0;
}

char* storeText(RunContext* context, StringChain& chain, uint32_t& size)
{
    size = static_cast<uint32_t>(chain.dataOctets);
    auto* text = static_cast<char*>(context->services->svcAllocValue(context, size + 1, 0));  // cleared
    drainChain(context, chain, reinterpret_cast<uint8_t*>(text));
    return text;
}

uint32_t checkUtf8(const uint8_t* text, uint32_t length)
{
    uint32_t characters = 0;
    uint32_t at = 0;
    while (at < length) {
        uint8_t lead = text[at];
        if (lead < 0x80) {
            ++at;
        } else {
            if (lead < 0xC0) return 0;
            int ones = 0;
            while (ones < 8 && (lead & (0x80 >> ones)) != 0) ++ones;
            if (ones > 6) return 0;
            if (at + static_cast<uint32_t>(ones) > length) return 0;
            for (int k = 1; k < ones; ++k) {
                if (!isContinuation(text[at + static_cast<uint32_t>(k)])) return 0;
            }
            at += static_cast<uint32_t>(ones);
        }
        ++characters;
    }
    return characters;
}

void checkOidIri(RunContext* context, const char* text, uint32_t length, bool absolute)
{
    std::string_view whole(text, length);
    if (length < (absolute ? 2u : 1u)) refuseIri(context, RT_OID_IRI, whole);
    std::string_view rest = whole;
    if (absolute) {
        if (whole[0] != '/' || whole[1] == '/') refuseIri(context, RT_OID_IRI, whole);
        rest = whole.substr(1);
        size_t slash = rest.find('/');
        std::string_view first = rest.substr(0, slash);
        int root = first == "0" || first == "ITU-T" ? 0 : first == "1" || first == "ISO" ? 1
                 : first == "2" || first == "Joint-ISO-ITU-T" ? 2 : -1;
        if (root >= 0) {
            if (slash == std::string_view::npos) return;
            rest = rest.substr(slash + 1);
            size_t next = rest.find('/');
            std::string_view second = rest.substr(0, next);
            if (second.empty()) refuseIri(context, RT_OID_IRI, whole);
            if (root != 2) {
                if (!isSecondArc(second, root)) refuseIri(context, RT_OID_IRI_ARC, second);
                if (root == 0 && (second == "0" || second == "Recommendation") && next != std::string_view::npos) {
                    std::string_view after = rest.substr(next + 1);
                    std::string_view third = after.substr(0, after.find('/'));
                    if (third.empty()) refuseIri(context, RT_OID_IRI, whole);
                    bool letter = third.size() == 1 && third[0] >= 'A' && third[0] <= 'Z';
                    if (!letter && !isSmallNumber(third, 1, 26)) refuseIri(context, RT_OID_IRI_ARC, third);
                }
            }
            if (next == std::string_view::npos) return;
            rest = rest.substr(next + 1);
        }
    }
    // The remaining arcs, separated by "/".
    while (true) {
        size_t slash = rest.find('/');
        std::string_view arc = rest.substr(0, slash);
        if (arc.empty()) refuseIri(context, RT_OID_IRI, whole);
        if (!arcCharactersValid(arc)) refuseIri(context, RT_OID_IRI_ARC, arc);
        if (slash == std::string_view::npos) return;
        rest = rest.substr(slash + 1);
    }
}

uint32_t readStringBody(DecodeCall& call, StringChain& chain, uint32_t& unusedBits, int32_t length,
                        int32_t& eocPending, bool constructed)
{
    if (!constructed) return readPrimitive(call, chain, unusedBits, length);
    return readConstructed(call, chain, unusedBits, length, eocPending);
}

uint32_t decodeCounted(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed)
{
    RunContext* context = call.context;
    const TypeRecord& type = *call.type;
    const bool identifier = type.kind == KIND_OBJECT_IDENTIFIER || type.kind == KIND_RELATIVE_OID;
    if (identifier && constructed) reportError(context, RT_OID_CONSTRUCTED);
    call.unit = type.kind == KIND_BIT_STRING ? 0 : 1;
    StringChain chain;
    uint32_t unusedBits = 0;
    uint32_t consumed = readStringBody(call, chain, unusedBits, length, eocPending, constructed);
    if (type.kind == KIND_BMP_TEXT || type.kind == KIND_UNIVERSAL_TEXT) {
        storeUnits(call, chain, type.kind == KIND_BMP_TEXT ? 2 : 4);
        return consumed;
    }
    auto total = static_cast<uint32_t>(call.total);
    if (identifier && total == 0) reportError(context, RT_MISENCODED);
    if (type.lengthWidth == 2 && total > 0xFFFF) reportError(context, RT_SIZE_TOO_LONG, total);
    void* data = nullptr;
    if (chain.dataOctets > 0) {
        data = context->services->svcAllocValue(context, static_cast<uint32_t>(chain.dataOctets), 0);
        drainChain(context, chain, static_cast<uint8_t*>(data));
    } else {
        scratchStackPop(context, chain.lastArea);
    }
    storeCounted(call, total, data);
    return consumed;
}

uint32_t decodeText(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed)
{
    RunContext* context = call.context;
    const TypeRecord& type = *call.type;
    call.unit = 1;
    StringChain chain;
    uint32_t unusedBits = 0;
    uint32_t consumed = readStringBody(call, chain, unusedBits, length, eocPending, constructed);
    uint32_t size = 0;
    char* text = type.kind == KIND_TIME_TEXT ? storeTimeText(context, type, chain, size)
                                             : storeText(context, chain, size);
    *static_cast<char**>(call.value) = text;
    if (std::memchr(text, '\0', size) != nullptr) reportError(context, RT_EMBEDDED_NUL);
    if (type.stringCode == 12 && size > 0 && checkUtf8(reinterpret_cast<const uint8_t*>(text), size) == 0) {
        reportError(context, RT_BAD_UTF8);
    }
    return consumed;
}
