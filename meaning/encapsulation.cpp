#include "meaning/encapsulation.h"

#include <array>

#include "meaning/utf8_text.h"
#include "oids/dotted_oid.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output_line.h"
#include "tlv/element.h"
#include "tlv/walker.h"

namespace {

constexpr int32_t kBitStringTag = 3;
constexpr int32_t kOctetStringTag = 4;
constexpr int32_t kLastAssignedTag = 36;  // DURATION, X.680 (2021)

// The form a universal tag allows: X.690 8.1.2.5 and the clauses of each
// type (the strings may be segmented under BER, the others not).
enum class Forms : uint8_t { Either, PrimitiveOnly, ConstructedOnly, Unassigned };

constexpr Forms formsOf(int32_t tag)
{
    switch (tag) {
        case 0:   // end-of-contents, handled on its own
        case 15:  // reserved
            return Forms::Unassigned;
        case 1: case 2: case 5: case 6: case 9: case 10: case 13: case 14:
        case 31: case 32: case 33: case 34: case 35: case 36:
            return Forms::PrimitiveOnly;
        case 8: case 11: case 16: case 17: case 29:
            return Forms::ConstructedOnly;
        default:
            return tag > kLastAssignedTag ? Forms::Unassigned : Forms::Either;
    }
}

template <typename Allowed>
bool everyOctet(OctetView contents, Allowed&& allowed)
{
    for (int32_t i = 0; i < contents.size(); ++i) {
        if (!allowed(contents.data()[i])) return false;
    }
    return true;
}

bool printableCharacter(uint8_t c)
{
    // X.680 41.4, table 10.
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) return true;
    switch (c) {
        case ' ': case '\'': case '(': case ')': case '+': case ',': case '-': case '.': case '/': case ':':
        case '=': case '?':
            return true;
        default:
            return false;
    }
}

bool minimalInteger(OctetView contents)
{
    if (contents.empty()) return false;
    if (contents.size() == 1) return true;
    const uint8_t first = contents.data()[0];
    const uint8_t second = contents.data()[1];
    // X.690 8.3.2: the first nine bits are not all equal.
    return !((first == 0x00 && (second & 0x80) == 0) || (first == 0xFF && (second & 0x80) != 0));
}

// The primitive universal types that a DER value carried in a string is
// found to be on its own: BOOLEAN, INTEGER, BIT STRING, OCTET STRING, NULL,
// OBJECT IDENTIFIER, ENUMERATED, UTF8String, PrintableString, IA5String,
// the two times, VisibleString and BMPString. The rest (T.61 and the other
// old string types, REAL, the date and time types) still count as elements
// but make no contents BER by themselves.
constexpr bool telling(int32_t tag)
{
    switch (tag) {
        case 1: case 2: case 3: case 4: case 5: case 6: case 10: case 12: case 19: case 22: case 23: case 24:
        case 26: case 30:
            return true;
        default:
            return false;
    }
}

// The rules of a primitive universal element's contents.
bool primitiveContentsHold(int32_t tag, OctetView contents)
{
    const int32_t size = contents.size();
    switch (tag) {
        case 1: return size == 1;                                  // BOOLEAN, 8.2.1
        case 2: case 10: return minimalInteger(contents);          // INTEGER, ENUMERATED
        case 3:                                                    // BIT STRING, 8.6.2
            return size >= 1 && contents.data()[0] <= 7 && (size > 1 || contents.data()[0] == 0);
        case 5: return size == 0;                                  // NULL, 8.8.2
        case 6: case 13: return isWellFormedOidContents({contents.data(), static_cast<size_t>(size)});
        case 12: return isValidUtf8({contents.data(), static_cast<size_t>(size)});
        case 18: return everyOctet(contents, [](uint8_t c) { return (c >= '0' && c <= '9') || c == ' '; });
        case 19: return everyOctet(contents, printableCharacter);
        case 22: return everyOctet(contents, [](uint8_t c) { return c < 0x80; });
        case 26: return everyOctet(contents, [](uint8_t c) { return c >= 0x20 && c <= 0x7E; });
        case 23: case 24:                                          // UTCTime, GeneralizedTime
            return size >= 10 && everyOctet(contents, [](uint8_t c) {
                       return (c >= '0' && c <= '9') || c == 'Z' || c == '+' || c == '-' || c == '.' || c == ',';
                   });
        case 28: return size % 4 == 0;                             // UniversalString
        case 30: return size % 2 == 0;                             // BMPString
        default: return true;
    }
}

// The identifier octets at `cursor`, in their shortest form (X.690 8.1.2.4:
// a tag of 31 or more, no leading 0x80, here at most four octets behind
// the first).
bool readTag(const uint8_t*& cursor, const uint8_t* limit, uint8_t& tagClass, bool& constructed, int32_t& tag)
{
    const uint8_t first = *cursor++;
    tagClass = first >> 6;
    constructed = (first & CONSTRUCTED_BIT) != 0;
    tag = first & HIGH_TAG_MASK;
    if (tag != HIGH_TAG_MASK) return true;
    if (cursor >= limit || *cursor == 0x80) return false;
    tag = 0;
    for (int octets = 0; octets < 4; ++octets) {
        if (cursor >= limit) return false;
        const uint8_t octet = *cursor++;
        tag = (tag << 7) | (octet & 0x7F);
        if ((octet & 0x80) == 0) return tag >= HIGH_TAG_MASK;
    }
    return false;
}

// The length octets at `cursor`: LENGTH_INDEFINITE or a length that fits
// before `limit`, in its shortest form (X.690 10.1 asks that of DER; BER
// producers keep it too). -2 for anything else.
int32_t readLength(const uint8_t*& cursor, const uint8_t* limit)
{
    if (cursor >= limit) return -2;
    const uint8_t first = *cursor++;
    if (first == 0x80) return LENGTH_INDEFINITE;
    int32_t length = first;
    if ((first & 0x80) != 0) {
        const int count = first & 0x7F;
        if (count > 3 || limit - cursor < count || *cursor == 0) return -2;
        length = 0;
        for (int i = 0; i < count; ++i) length = (length << 8) | *cursor++;
        if (length < 0x80) return -2;
    }
    return length <= limit - cursor ? length : -2;
}

struct Frame {
    const uint8_t* end;  // the end of a definite element, or the limit around an indefinite one
    bool indefinite;
};

}  // namespace

bool holdsBer(OctetView whole, bool bitString, int levels)
{
    if (whole.size() < 2 || levels <= 0) return false;
    if (levels > MAX_WALK_DEPTH) levels = MAX_WALK_DEPTH;
    std::array<Frame, MAX_WALK_DEPTH> open{};
    int depth = 0;
    const uint8_t* cursor = whole.data();
    const uint8_t* const end = whole.end();
    bool meaningful = false;  // a constructed element, or a telling universal one
    bool constructedSeen = false;
    int topLevel = 0;
    bool primitiveAtTop = false;
    while (true) {
        while (depth > 0 && !open[depth - 1].indefinite && cursor == open[depth - 1].end) --depth;
        if (depth == 0 && cursor == end) break;
        const uint8_t* limit = depth > 0 ? open[depth - 1].end : end;
        if (limit - cursor < 2) return false;
        if (cursor[0] == 0) {
            // An end-of-contents closes the indefinite element around it, and nothing else.
            if (cursor[1] != 0 || depth == 0 || !open[depth - 1].indefinite) return false;
            cursor += 2;
            --depth;
            continue;
        }
        uint8_t tagClass = 0;
        bool constructed = false;
        int32_t tag = 0;
        if (!readTag(cursor, limit, tagClass, constructed, tag)) return false;
        const int32_t length = readLength(cursor, limit);
        if (length == -2 || (length == LENGTH_INDEFINITE && !constructed)) return false;
        if (tagClass == CLASS_UNIVERSAL) {
            const Forms forms = formsOf(tag);
            if (forms == Forms::Unassigned || (forms == Forms::PrimitiveOnly && constructed) ||
                (forms == Forms::ConstructedOnly && !constructed)) {
                return false;
            }
            if (telling(tag)) meaningful = true;
        } else if (depth == 0 && !constructed) {
            return false;  // a bare tagged octet run at the top is what noise looks like
        }
        // Several values side by side are records, each constructed; a lone
        // value may be primitive.
        if (depth == 0) {
            ++topLevel;
            if (!constructed) primitiveAtTop = true;
            if (topLevel > 1 && primitiveAtTop) return false;
        }
        if (constructed) {
            meaningful = true;
            constructedSeen = true;
            if (length != 0 && depth + 1 >= levels) return false;  // its contents would lie past the walk
            open[depth++] = length == LENGTH_INDEFINITE ? Frame{limit, true} : Frame{cursor + length, false};
            continue;
        }
        if (tagClass == CLASS_UNIVERSAL && !primitiveContentsHold(tag, OctetView(cursor, length))) return false;
        cursor += length;
    }
    return meaningful && (!bitString || constructedSeen);
}

OctetView encapsulatedContents(const RunContext* context, const Element& element, int levels)
{
    if (context == nullptr || context->extensions == nullptr || !context->extensions->digEncapsulated) return {};
    if (element.identifier != 1 || element.constructed || element.tagClass != CLASS_UNIVERSAL) return {};
    if (element.tagNumber != kBitStringTag && element.tagNumber != kOctetStringTag) return {};
    if (element.headerOverruns() || element.length < 0 || element.lengthOverruns()) return {};
    OctetView contents = element.contents();
    const bool bitString = element.tagNumber == kBitStringTag;
    if (bitString) {
        // X.690 8.6.2.2: the unused bits come first; BER inside fills whole octets.
        uint8_t unused = 0;
        if (!contents.getOctet(unused) || unused != 0) return {};
    }
    return holdsBer(contents, bitString, levels) ? contents : OctetView();
}

bool printEncapsulationMark(RunContext* context, const Element& element, int levels, bool decomposed)
{
    if (encapsulatedContents(context, element, levels).empty()) return false;
    OutputLine line(context, kEncapsulationMarkLength + 1);
    if (decomposed) line.character(':');
    line.text(kEncapsulationMark, kEncapsulationMarkLength);
    return true;
}
