#include "tagmap/value_forms.h"

#include <cstring>
#include <string_view>

#include "runtime/decimal.h"

namespace {

constexpr char kUpperHex[] = "0123456789ABCDEF";
constexpr char kLowerHex[] = "0123456789abcdef";
// Telephony BCD nibbles 0-E; F is the filler.
constexpr char kTbcdDigits[] = "0123456789*#abc";
constexpr uint8_t kFiller = 0xF;

// Appends to the caller's buffer; once something does not fit, every
// further write is dropped and ok() stays false. The place is kept in the
// sink itself (a register), and the length given back when it ends.
class Sink {
public:
    explicit Sink(ValueText& out) : out_(out), at_(out.text), end_(out.text + out.capacity) { out_.length = 0; }
    ~Sink() { out_.length = static_cast<size_t>(at_ - out_.text); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    void put(char c)
    {
        if (at_ != end_) {
            *at_++ = c;
        } else {
            full_ = true;
        }
    }
    void put(std::string_view text)
    {
        if (static_cast<size_t>(end_ - at_) < text.size()) {
            full_ = true;
            return;
        }
        std::memcpy(at_, text.data(), text.size());
        at_ += text.size();
    }
    // In place where there is room for any number's digits; else staged.
    void decimal(uint64_t value)
    {
        constexpr ptrdiff_t kMostDigits = 20;
        if (end_ - at_ >= kMostDigits) {
            at_ = putDecimal(at_, value);
            return;
        }
        char digits[kMostDigits];
        put(std::string_view(digits, static_cast<size_t>(putDecimal(digits, value) - digits)));
    }
    void signedDecimal(int64_t value)
    {
        if (value < 0) put('-');
        decimal(value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value));
    }
    bool ok() const { return !full_; }

private:
    ValueText& out_;
    char* at_;
    char* const end_;
    bool full_ = false;
};

// Two's complement, big-endian, 1 to 8 octets.
bool twosComplement(Octets octets, int64_t& value)
{
    if (octets.empty() || octets.size() > 8) return false;
    uint64_t bits = (octets[0] & 0x80) != 0 ? ~uint64_t{0} : 0;
    for (uint8_t octet : octets) bits = bits << 8 | octet;
    value = static_cast<int64_t>(bits);
    return true;
}

// TBCD digits, the earlier one in the low nibble. The filler may only be
// the high nibble of the last octet (an odd count of digits).
bool tbcdDigits(Octets octets, Sink& sink)
{
    if (octets.empty()) return false;
    for (size_t i = 0; i < octets.size(); ++i) {
        const uint8_t low = octets[i] & 0xF;
        const uint8_t high = octets[i] >> 4;
        if (low == kFiller) return false;
        sink.put(kTbcdDigits[low]);
        if (high == kFiller) {
            if (i + 1 != octets.size()) return false;
        } else {
            sink.put(kTbcdDigits[high]);
        }
    }
    return true;
}

// Plain BCD, tens in the high nibble.
bool bcdOctet(uint8_t octet, unsigned& value)
{
    if ((octet >> 4) > 9 || (octet & 0xF) > 9) return false;
    value = (octet >> 4) * 10u + (octet & 0xFu);
    return true;
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

}  // namespace

bool hexText(Octets octets, ValueText& out)
{
    Sink sink(out);
    for (uint8_t octet : octets) {
        sink.put(kUpperHex[octet >> 4]);
        sink.put(kUpperHex[octet & 0xF]);
    }
    return sink.ok();
}

// Up to 8 octets in decimal; a longer INTEGER (a counter of 128 bits, say)
// in hexadecimal.
bool integerText(Octets octets, ValueText& out)
{
    int64_t value;
    if (twosComplement(octets, value)) {
        Sink sink(out);
        sink.signedDecimal(value);
        return sink.ok();
    }
    if (octets.empty()) return false;
    Sink sink(out);
    sink.put("0x");
    for (uint8_t octet : octets) {
        sink.put(kUpperHex[octet >> 4]);
        sink.put(kUpperHex[octet & 0xF]);
    }
    return sink.ok();
}

// As the IA5String rendering: printable ASCII as is, the backslash doubled,
// any other octet as \xNN.
bool textText(Octets octets, ValueText& out)
{
    Sink sink(out);
    for (uint8_t octet : octets) {
        if (octet >= 0x20 && octet <= 0x7E) {
            sink.put(static_cast<char>(octet));
            if (octet == '\\') sink.put('\\');
        } else {
            sink.put("\\x");
            sink.put(kLowerHex[octet >> 4]);
            sink.put(kLowerHex[octet & 0xF]);
        }
    }
    return sink.ok();
}

bool tbcdText(Octets octets, ValueText& out)
{
    Sink sink(out);
    return tbcdDigits(octets, sink) && sink.ok();
}

// An AddressString: octet 1 = extension bit (set), nature of address, numbering
// plan; then TBCD digits. International E.164 is written `+digits`, the rest
// as digits with nature and plan named.
bool isdnText(Octets octets, ValueText& out)
{
    if (octets.size() < 2 || (octets[0] & 0x80) == 0) return false;
    const unsigned nature = (octets[0] >> 4) & 7;
    const unsigned plan = octets[0] & 0xF;
    Sink sink(out);
    const bool e164International = nature == 1 && plan == 1;
    if (e164International) sink.put('+');
    if (!tbcdDigits(octets.subspan(1), sink)) return false;
    if (!e164International) {
        sink.put(" (");
        if (kNatures[nature] != nullptr) {
            sink.put(kNatures[nature]);
        } else {
            sink.put("nature ");
            sink.decimal(nature);
        }
        sink.put(", ");
        if (planName(plan) != nullptr) {
            sink.put(planName(plan));
        } else {
            sink.put("plan ");
            sink.decimal(plan);
        }
        sink.put(')');
    }
    return sink.ok();
}

// YY MM DD hh mm ss S hh mm: local time, then its offset from UTC.
bool bcdTimestampText(Octets octets, ValueText& out)
{
    if (octets.size() != 9 || (octets[6] != '+' && octets[6] != '-')) return false;
    // YY MM DD hh mm ss, then the offset's hh mm behind the sign octet; each
    // octet's two BCD digits go into "20YY-MM-DD hh:mm:ss Shh:mm" as they stand.
    constexpr size_t kOctet[8] = {0, 1, 2, 3, 4, 5, 7, 8};
    constexpr unsigned kLow[8] = {0, 1, 1, 0, 0, 0, 0, 0};
    constexpr unsigned kHigh[8] = {99, 12, 31, 23, 59, 59, 14, 59};
    constexpr size_t kAt[8] = {2, 5, 8, 11, 14, 17, 21, 24};
    char text[] = "20..-..-.. ..:..:.. ...:..";
    for (int f = 0; f < 8; ++f) {
        unsigned value;
        if (!bcdOctet(octets[kOctet[f]], value) || value < kLow[f] || value > kHigh[f]) return false;
        text[kAt[f]] = static_cast<char>('0' + (octets[kOctet[f]] >> 4));
        text[kAt[f] + 1] = static_cast<char>('0' + (octets[kOctet[f]] & 0xF));
    }
    text[20] = static_cast<char>(octets[6]);
    Sink sink(out);
    sink.put(std::string_view(text, sizeof text - 1));
    return sink.ok();
}

namespace {

void dotted(Octets four, Sink& sink)
{
    for (size_t i = 0; i < 4; ++i) {
        if (i != 0) sink.put('.');
        sink.decimal(four[i]);
    }
}

}  // namespace

bool ipv4Text(Octets octets, ValueText& out)
{
    if (octets.size() != 4) return false;
    Sink sink(out);
    dotted(octets, sink);
    return sink.ok();
}

// RFC 5952: lower case, no leading zeros, the longest run of two or more zero
// groups as `::` (the first such run on a tie), IPv4-mapped addresses with
// the IPv4 part dotted.
bool ipv6Text(Octets octets, ValueText& out)
{
    if (octets.size() != 16) return false;
    unsigned groups[8];
    for (int i = 0; i < 8; ++i) groups[i] = static_cast<unsigned>(octets[2 * i]) << 8 | octets[2 * i + 1];
    Sink sink(out);
    const bool mapped = groups[0] == 0 && groups[1] == 0 && groups[2] == 0 && groups[3] == 0 && groups[4] == 0 &&
                        groups[5] == 0xFFFF;
    if (mapped) {
        sink.put("::ffff:");
        dotted(octets.subspan(12), sink);
        return sink.ok();
    }
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
            sink.put("::");
            i += bestLength - 1;
            continue;
        }
        if (i != 0 && i != bestStart + bestLength) sink.put(':');
        bool started = false;
        for (int shift = 12; shift >= 0; shift -= 4) {
            unsigned nibble = (groups[i] >> shift) & 0xF;
            if (nibble != 0 || started || shift == 0) {
                sink.put(kLowerHex[nibble]);
                started = true;
            }
        }
    }
    return sink.ok();
}

// Octet 1: MCC digit 2 | digit 1; octet 2: MNC digit 3 (F for two digits) |
// MCC digit 3; octet 3: MNC digit 2 | digit 1.
bool plmnIdText(Octets octets, ValueText& out)
{
    if (octets.size() != 3) return false;
    const uint8_t digits[6] = {static_cast<uint8_t>(octets[0] & 0xF), static_cast<uint8_t>(octets[0] >> 4),
                               static_cast<uint8_t>(octets[1] & 0xF), static_cast<uint8_t>(octets[2] & 0xF),
                               static_cast<uint8_t>(octets[2] >> 4),  static_cast<uint8_t>(octets[1] >> 4)};
    const bool twoDigitMnc = digits[5] == kFiller;
    for (int i = 0; i < (twoDigitMnc ? 5 : 6); ++i) {
        if (digits[i] > 9) return false;
    }
    Sink sink(out);
    sink.put("MCC ");
    for (int i = 0; i < 3; ++i) sink.put(static_cast<char>('0' + digits[i]));
    sink.put(" MNC ");
    for (int i = 3; i < (twoDigitMnc ? 5 : 6); ++i) sink.put(static_cast<char>('0' + digits[i]));
    return sink.ok();
}

bool enumeratedText(Octets octets, const TagMap& map, const TagNode& node, ValueText& out)
{
    int64_t value;
    if (!twosComplement(octets, value)) return false;
    Sink sink(out);
    std::string_view name = map.valueName(node, value);
    if (name.empty()) {
        sink.signedDecimal(value);
    } else {
        sink.put(name);
    }
    return sink.ok();
}

bool valueText(const TagMap& map, const TagNode& node, Octets octets, ValueText& out)
{
    switch (node.form) {
        case ValueForm::Hex: return hexText(octets, out);
        case ValueForm::Integer: return integerText(octets, out);
        case ValueForm::Enumerated: return enumeratedText(octets, map, node, out);
        case ValueForm::Text: return textText(octets, out);
        case ValueForm::Tbcd: return tbcdText(octets, out);
        case ValueForm::Isdn: return isdnText(octets, out);
        case ValueForm::BcdTimestamp: return bcdTimestampText(octets, out);
        case ValueForm::Ipv4: return ipv4Text(octets, out);
        case ValueForm::Ipv6: return ipv6Text(octets, out);
        case ValueForm::PlmnId: return plmnIdText(octets, out);
        case ValueForm::None: break;
    }
    out.length = 0;
    return false;
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
