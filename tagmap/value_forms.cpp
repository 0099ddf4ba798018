#include "tagmap/value_forms.h"

#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "runtime/decimal.h"

namespace {

constexpr char kUpperHex[] = "0123456789ABCDEF";
constexpr char kLowerHex[] = "0123456789abcdef";
// Telephony BCD nibbles 0-E; F is the filler.
constexpr char kTbcdDigits[] = "0123456789*#abc";
constexpr uint8_t kFiller = 0xF;

// The writers below write at `out`, which has valueTextBound(octets.size())
// characters of room (every text of every form fits it; the decimal writer's
// whole-word stores too), and return the end, or null when the octets don't
// fit the form.

char* put(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// Two's complement, big-endian, 1 to 8 octets.
bool twosComplement(Octets octets, int64_t& value)
{
    if (octets.empty() || octets.size() > 8) return false;
    uint64_t bits = (octets[0] & 0x80) != 0 ? ~uint64_t{0} : 0;
    for (uint8_t octet : octets) bits = bits << 8 | octet;
    value = static_cast<int64_t>(bits);
    return true;
}

char* putHex(Octets octets, char* out)
{
    for (uint8_t octet : octets) {
        out[0] = kUpperHex[octet >> 4];
        out[1] = kUpperHex[octet & 0xF];
        out += 2;
    }
    return out;
}

// TBCD digits, the earlier one in the low nibble. The filler may only be
// the high nibble of the last octet (an odd count of digits).
[[gnu::always_inline]] inline char* putTbcdDigits(Octets octets, char* out)
{
    if (octets.empty()) return nullptr;
    const size_t last = octets.size() - 1;
    for (size_t i = 0; i < last; ++i) {
        const uint8_t low = octets[i] & 0xF;
        const uint8_t high = octets[i] >> 4;
        if (low == kFiller || high == kFiller) return nullptr;
        out[0] = kTbcdDigits[low];
        out[1] = kTbcdDigits[high];
        out += 2;
    }
    const uint8_t low = octets[last] & 0xF;
    const uint8_t high = octets[last] >> 4;
    if (low == kFiller) return nullptr;
    *out++ = kTbcdDigits[low];
    if (high != kFiller) *out++ = kTbcdDigits[high];
    return out;
}

constexpr const char* kNatures[] = {"unknown number",    "international number", "national number",
                                    "network-specific number", "subscriber number", nullptr,
                                    "abbreviated number", nullptr};

const char* planName(unsigned plan)
{
    switch (plan) {
        case 0: return "unknown plan";
        case 1: return "E.164";
        case 3: return "X.121";
        case 4: return "F.69";
        case 6: return "E.212";
        case 8: return "national plan";
        case 9: return "private plan";
        default: return nullptr;
    }
}

[[gnu::always_inline]] inline char* putInteger(Octets octets, char* out)
{
    int64_t value;
    if (twosComplement(octets, value)) return putSignedDecimal(out, value);
    // Beyond 8 octets (a counter of 128 bits, say): hexadecimal.
    if (octets.empty()) return nullptr;
    return putHex(octets, put(out, "0x"));
}

// As the IA5String rendering: printable ASCII as is, the backslash doubled,
// any other octet as \xNN.
char* putText(Octets octets, char* out)
{
    for (uint8_t octet : octets) {
        if (octet >= 0x20 && octet <= 0x7E) {
            *out++ = static_cast<char>(octet);
            if (octet == '\\') *out++ = '\\';
        } else {
            out[0] = '\\';
            out[1] = 'x';
            out[2] = kLowerHex[octet >> 4];
            out[3] = kLowerHex[octet & 0xF];
            out += 4;
        }
    }
    return out;
}

// An AddressString: octet 1 = extension bit (set), nature of address, numbering
// plan; then TBCD digits. International E.164 is written `+digits`, the rest
// as digits with nature and plan named.
char* putIsdn(Octets octets, char* out)
{
    if (octets.size() < 2 || (octets[0] & 0x80) == 0) return nullptr;
    const unsigned nature = (octets[0] >> 4) & 7;
    const unsigned plan = octets[0] & 0xF;
    const bool e164International = nature == 1 && plan == 1;
    if (e164International) *out++ = '+';
    out = putTbcdDigits(octets.subspan(1), out);
    if (out == nullptr || e164International) return out;
    out = put(out, " (");
    out = kNatures[nature] != nullptr ? put(out, kNatures[nature]) : putDecimal(put(out, "nature "), nature);
    out = put(out, ", ");
    out = planName(plan) != nullptr ? put(out, planName(plan)) : putDecimal(put(out, "plan "), plan);
    *out++ = ')';
    return out;
}

// Each octet's two BCD digits as two characters, high nibble first.
inline constexpr std::array<char, 512> kNibbleChars = [] {
    std::array<char, 512> chars{};
    for (int i = 0; i < 256; ++i) {
        chars[2 * i] = static_cast<char>('0' + (i >> 4));
        chars[2 * i + 1] = static_cast<char>('0' + (i & 0xF));
    }
    return chars;
}();

// A BCD octet of two digits 0 to 9 within [low, high]: such an octet
// orders as its number does, so a field's range is an octet range (and a
// high bound below 0xA0 keeps the high digit a digit).
constexpr bool bcdWithin(uint8_t octet, uint8_t low, uint8_t high)
{
    return ((octet & 0xF) <= 9) & (octet >= low) & (octet <= high);
}

// Writes an octet's two BCD digits at `at`, high digit first.
inline void putBcdPair(char* at, uint8_t octet)
{
    std::memcpy(at, &kNibbleChars[2 * octet], 2);
}

// YY MM DD hh mm ss S hh mm: local time, then its offset from UTC, into
// "20YY-MM-DD hh:mm:ss Shh:mm".
[[gnu::always_inline]] inline char* putBcdTimestamp(Octets octets, char* out)
{
    if (octets.size() != 9 || (octets[6] != '+' && octets[6] != '-')) return nullptr;
    const uint8_t* o = octets.data();
    const bool fits = bcdWithin(o[0], 0x00, 0x99) & bcdWithin(o[1], 0x01, 0x12) & bcdWithin(o[2], 0x01, 0x31) &
                      bcdWithin(o[3], 0x00, 0x23) & bcdWithin(o[4], 0x00, 0x59) & bcdWithin(o[5], 0x00, 0x59) &
                      bcdWithin(o[7], 0x00, 0x14) & bcdWithin(o[8], 0x00, 0x59);
    if (!fits) return nullptr;
    constexpr char kShape[] = "20..-..-.. ..:..:.. ...:..";
    std::memcpy(out, kShape, sizeof kShape - 1);
    putBcdPair(out + 2, o[0]);
    putBcdPair(out + 5, o[1]);
    putBcdPair(out + 8, o[2]);
    putBcdPair(out + 11, o[3]);
    putBcdPair(out + 14, o[4]);
    putBcdPair(out + 17, o[5]);
    out[20] = static_cast<char>(o[6]);
    putBcdPair(out + 21, o[7]);
    putBcdPair(out + 24, o[8]);
    return out + sizeof kShape - 1;
}

char* putDotted(Octets four, char* out)
{
    out = putDecimal(out, four[0]);
    for (size_t i = 1; i < 4; ++i) {
        *out++ = '.';
        out = putDecimal(out, four[i]);
    }
    return out;
}

char* putIpv4(Octets octets, char* out)
{
    return octets.size() == 4 ? putDotted(octets, out) : nullptr;
}

// RFC 5952: lower case, no leading zeros, the longest run of two or more zero
// groups as `::` (the first such run on a tie), IPv4-mapped addresses with
// the IPv4 part dotted.
char* putIpv6(Octets octets, char* out)
{
    if (octets.size() != 16) return nullptr;
    unsigned groups[8];
    for (int i = 0; i < 8; ++i) groups[i] = static_cast<unsigned>(octets[2 * i]) << 8 | octets[2 * i + 1];
    const bool mapped = groups[0] == 0 && groups[1] == 0 && groups[2] == 0 && groups[3] == 0 && groups[4] == 0 &&
                        groups[5] == 0xFFFF;
    if (mapped) return putDotted(octets.subspan(12), put(out, "::ffff:"));
    int bestStart = -1;
    int bestLength = 1;
    for (int i = 0; i < 8;) {
        int j = i;
        while (j < 8 && groups[j] == 0) ++j;
        if (j - i > bestLength) {
            bestStart = i;
            bestLength = j - i;
        }
        i = j == i ? i + 1 : j;
    }
    for (int i = 0; i < 8; ++i) {
        if (i == bestStart) {
            out = put(out, "::");
            i += bestLength - 1;
            continue;
        }
        if (i != 0 && i != bestStart + bestLength) *out++ = ':';
        bool started = false;
        for (int shift = 12; shift >= 0; shift -= 4) {
            unsigned nibble = (groups[i] >> shift) & 0xF;
            if (nibble != 0 || started || shift == 0) {
                *out++ = kLowerHex[nibble];
                started = true;
            }
        }
    }
    return out;
}

// Octet 1: MCC digit 2 | digit 1; octet 2: MNC digit 3 (F for two digits) |
// MCC digit 3; octet 3: MNC digit 2 | digit 1.
char* putPlmnId(Octets octets, char* out)
{
    if (octets.size() != 3) return nullptr;
    const uint8_t digits[6] = {static_cast<uint8_t>(octets[0] & 0xF), static_cast<uint8_t>(octets[0] >> 4),
                               static_cast<uint8_t>(octets[1] & 0xF), static_cast<uint8_t>(octets[2] & 0xF),
                               static_cast<uint8_t>(octets[2] >> 4),  static_cast<uint8_t>(octets[1] >> 4)};
    const int mncDigits = digits[5] == kFiller ? 2 : 3;
    for (int i = 0; i < 3 + mncDigits; ++i) {
        if (digits[i] > 9) return nullptr;
    }
    out = put(out, "MCC ");
    for (int i = 0; i < 3; ++i) *out++ = static_cast<char>('0' + digits[i]);
    out = put(out, " MNC ");
    for (int i = 3; i < 3 + mncDigits; ++i) *out++ = static_cast<char>('0' + digits[i]);
    return out;
}

// Without a map (or names for the value): the number.
[[gnu::always_inline]] inline char* putEnumerated(Octets octets, const TagMap* map, const TagNode* node, char* out)
{
    int64_t value;
    if (!twosComplement(octets, value)) return nullptr;
    const std::string_view name = map != nullptr ? map->valueName(*node, value) : std::string_view();
    return name.empty() ? putSignedDecimal(out, value) : put(out, name);
}

// A writer's text in a ValueText: in place when it has the room every text
// needs, else made in a block of that room and copied when it fits.
template <typename Write>
bool intoValueText(Octets octets, ValueText& out, Write write)
{
    const size_t room = valueTextBound(octets.size());
    out.length = 0;
    if (out.capacity >= room) {
        const char* end = write(out.text);
        if (end == nullptr) return false;
        out.length = static_cast<size_t>(end - out.text);
        return true;
    }
    const std::unique_ptr<char[]> block(new (std::nothrow) char[room]);
    if (block == nullptr) return false;
    const char* end = write(block.get());
    if (end == nullptr || static_cast<size_t>(end - block.get()) > out.capacity) return false;
    out.length = static_cast<size_t>(end - block.get());
    std::memcpy(out.text, block.get(), out.length);
    return true;
}

[[gnu::always_inline]] inline char* putForm(ValueForm form, const TagMap* map, const TagNode* node, Octets octets,
                                             char* out)
{
    switch (form) {
        case ValueForm::Hex: return putHex(octets, out);
        case ValueForm::Integer: return putInteger(octets, out);
        case ValueForm::Enumerated: return putEnumerated(octets, map, node, out);
        case ValueForm::Text: return putText(octets, out);
        case ValueForm::Tbcd: return putTbcdDigits(octets, out);
        case ValueForm::Isdn: return putIsdn(octets, out);
        case ValueForm::BcdTimestamp: return putBcdTimestamp(octets, out);
        case ValueForm::Ipv4: return putIpv4(octets, out);
        case ValueForm::Ipv6: return putIpv6(octets, out);
        case ValueForm::PlmnId: return putPlmnId(octets, out);
        case ValueForm::None: break;
    }
    return nullptr;
}

}  // namespace

char* putHexText(Octets octets, char* out)
{
    return putHex(octets, out);
}

char* putFormText(const TagMap& map, const TagNode& node, Octets octets, char* out)
{
    return putForm(node.form, &map, &node, octets, out);
}

bool formText(ValueForm form, Octets octets, ValueText& out)
{
    return intoValueText(octets, out, [&](char* at) { return putForm(form, nullptr, nullptr, octets, at); });
}

bool valueText(const TagMap& map, const TagNode& node, Octets octets, ValueText& out)
{
    return intoValueText(octets, out, [&](char* at) { return putFormText(map, node, octets, at); });
}

const char* valueFormName(ValueForm form)
{
    switch (form) {
        case ValueForm::Hex: return "hex";
        case ValueForm::Integer: return "integer";
        case ValueForm::Enumerated: return "enumerated";
        case ValueForm::Text: return "text";
        case ValueForm::Tbcd: return "tbcd";
        case ValueForm::Isdn: return "isdn";
        case ValueForm::BcdTimestamp: return "bcd-timestamp";
        case ValueForm::Ipv4: return "ipv4";
        case ValueForm::Ipv6: return "ipv6";
        case ValueForm::PlmnId: return "plmn-id";
        case ValueForm::None: break;
    }
    return "";
}
