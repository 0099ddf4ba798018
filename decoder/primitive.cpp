#include "decoder/primitive.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"
#include "runtime/services.h"

namespace {

// What a REAL parse found wrong, raised last first once it is done.
struct Findings {
    struct Finding {
        int32_t entry;
        int64_t argument;
    };
    Finding items[4] = {};
    int count = 0;

    void add(int32_t entry, int64_t argument = 0)
    {
        if (count < 4) items[count++] = {entry, argument};
    }
    // The first place holds the finding about the text's syntax.
    void setFirst(int32_t entry)
    {
        if (count == 0) count = 1;
        items[0] = {entry, 0};
    }
    bool firstEmpty() const { return count == 0 || items[0].entry == 0; }
    int32_t last() const
    {
        for (int i = count - 1; i >= 0; --i) {
            if (items[i].entry != 0) return items[i].entry;
        }
        return 0;
    }
};

// The digits of a decimal REAL's mantissa from the first non-zero one on:
// the first kKept of them, their count, and where the last non-zero one
// stands. Digits beyond kKept only scale the value, so no copy of the
// contents is kept, however long they are.
struct Mantissa {
    static constexpr uint32_t kKept = 20;
    uint8_t kept[kKept] = {};
    uint32_t count = 0;
    uint32_t significant = 0;  // the count up to the last non-zero digit

    void add(uint8_t digit)
    {
        if (count == 0 && digit == '0') return;
        if (count < kKept) kept[count] = digit;
        ++count;
        if (digit != '0') significant = count;
    }
};

// BER's rule for integers: the first nine bits of the contents are never all
// equal.
bool redundantLead(uint8_t first, uint8_t second)
{
    return (first == 0x00 && (second & 0x80) == 0) || (first == 0xFF && (second & 0x80) != 0);
}

void commonStart(DecodeCall& call, int32_t length, bool constructed)
{
    if (length < 0) reportError(call.context, RT_PRIMITIVE_INDEFINITE);
    if (constructed) reportError(call.context, RT_EXPECTED_PRIMITIVE);
}

int64_t readSignedContents(RunContext* context, int32_t length, int32_t needlessEntry, int32_t tooLongEntry)
{
    uint8_t first = inputByte(context);
    auto value = static_cast<int64_t>(static_cast<int8_t>(first));
    if (length >= 2) {
        uint8_t second = inputByte(context);
        if (redundantLead(first, second)) reportError(context, needlessEntry);
        value = static_cast<int64_t>(static_cast<uint64_t>(value) << 8) | second;
    }
    for (int32_t i = 2; i < length; ++i) {
        if (i >= 8) reportError(context, tooLongEntry, length);
        value = static_cast<int64_t>(static_cast<uint64_t>(value) << 8) | inputByte(context);
    }
    return value;
}

void storeSigned(RunContext* context, void* slot, int width, int64_t value, int32_t tooLongEntry)
{
    if (width == 4) {
        if (value < INT32_MIN || value > INT32_MAX) reportError(context, tooLongEntry, value);
        auto narrow = static_cast<int32_t>(value);
        std::memcpy(slot, &narrow, sizeof narrow);
    } else {
        std::memcpy(slot, &value, sizeof value);
    }
}

// The BER special REAL octets.
bool specialReal(double& result, uint8_t octet)
{
    switch (octet) {
        case 0x40: result = DBL_MAX; return true;
        case 0x41: result = -DBL_MAX; return true;
        case 0x42: {
            uint64_t bits = 0xfff8000000000000ULL;
            std::memcpy(&result, &bits, sizeof result);
            return true;
        }
        case 0x43: {
            uint64_t bits = 0x8000000000000000ULL;
            std::memcpy(&result, &bits, sizeof result);
            return true;
        }
        default: return false;
    }
}

int32_t saturate(int64_t exponent)
{
    return exponent < 0 ? INT32_MIN : INT32_MAX;
}

void parseBinaryReal(double& result, const uint8_t* octets, int32_t length, Findings& findings)
{
    const uint8_t first = octets[0] & 0x7F;
    int32_t at = 1;
    int32_t count = (first & 0x03) + 1;
    if ((first & 0x03) == 3) {
        if (at >= length) {
            findings.add(RT_MISENCODED);
            result = 0;
            return;
        }
        count = octets[at++];
    }
    if (count > length - at) {
        findings.add(RT_MISENCODED);
        result = 0;
        return;
    }
    if (count == 0) findings.add(RT_MISENCODED);
    int64_t exponent = 0;
    int32_t significant = count;
    int32_t start = at;
    if (count > 0) {
        while (significant > 1 && redundantLead(octets[start], octets[start + 1])) {
            ++start;
            --significant;
        }
        if (significant != count) findings.add(RT_EXPONENT_NEEDLESSLY_LONG);
        uint32_t wrapped = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(octets[start])));
        for (int32_t i = 1; i < significant; ++i) wrapped = (wrapped << 8) | octets[start + i];
        exponent = static_cast<int32_t>(wrapped);
    }
    at += count;
    const int baseCode = (first >> 4) & 0x03;
    if (baseCode == 3) {
        findings.add(RT_RESERVED_REAL);
    } else {
        if (significant > 4) {
            findings.add(RT_EXPONENT_TOO_LONG, significant);
            exponent = saturate(static_cast<int8_t>(octets[start]));
        }
        if (baseCode != 0) {
            int64_t product = exponent * (baseCode == 1 ? 3 : 4);
            if (product < INT32_MIN || product > INT32_MAX) {
                findings.add(RT_EXPONENT_TOO_LONG, significant);
                product = saturate(product);
            }
            exponent = product;
        }
    }
    exponent += (first >> 2) & 0x03;  // the scale factor
    int32_t end = length;
    while (end > at && octets[end - 1] == 0) {
        --end;
        exponent += 8;
    }
    double sum = 0;
    double weight = 1;
    for (int32_t i = end - 1; i >= at; --i) {
        sum += octets[i] * weight;
        weight *= 256;
    }
    if (exponent > INT_MAX) exponent = INT_MAX;
    if (exponent < INT_MIN) exponent = INT_MIN;
    result = end > at ? std::ldexp(sum, static_cast<int>(exponent)) : 0;
    if ((octets[0] & 0x40) != 0) result = -result;
}

// 10 to the power `half`, by squaring from the top bit down; stops early
// before the power would pass the largest finite double.
double powerOfTen(uint32_t half)
{
    double power = 1;
    for (int bit = 31; bit >= 0; --bit) {
        if (power > DBL_MAX / power) break;
        power *= power;
        if (((half >> bit) & 1) != 0) {
            if (power > 1.7976931348623158e+307) break;
            power *= 10;
        }
    }
    return power;
}

void scaleByTen(double& value, int64_t scale, Findings& findings)
{
    if (scale == 0) return;
    uint64_t e = static_cast<uint64_t>(scale < 0 ? -scale : scale);
    int leftover = 0;  // +1: one factor in the direction of the scale, -1: against it
    if ((e & 1) != 0) {
        if ((e & 7) == 7) {
            e += 1;
            leftover = -1;
        } else {
            e -= 1;
            leftover = 1;
        }
    }
    double power = powerOfTen(static_cast<uint32_t>(e / 2 > 0xFFFFFFFF ? 0xFFFFFFFF : e / 2));
    for (int i = 0; i < 2; ++i) {
        if (scale < 0) {
            value /= power;
        } else if (std::fabs(value) > DBL_MAX / power) {
            findings.add(RT_REAL_TOO_LARGE);
        } else {
            value *= power;
        }
    }
    bool up = (scale > 0) == (leftover > 0);
    if (leftover != 0) value = up ? value * 10 : value / 10;
}

void parseDecimalReal(double& result, const uint8_t* text, int32_t length, Findings& findings, int form)
{
    int32_t at = 0;
    while (at < length && text[at] == ' ') ++at;
    bool negative = false;
    if (at < length && (text[at] == '+' || text[at] == '-')) negative = text[at++] == '-';
    bool digitSeen = false;
    while (at < length && text[at] == '0') {
        digitSeen = true;
        ++at;
    }
    Mantissa mantissa;
    bool hasMark = false;
    int32_t behindMark = 0;
    while (at < length) {
        uint8_t c = text[at];
        if (c >= '0' && c <= '9') {
            digitSeen = true;
            mantissa.add(c);
            if (hasMark) ++behindMark;
            ++at;
        } else if ((c == '.' || c == ',') && !hasMark) {
            hasMark = true;
            ++at;
        } else {
            break;
        }
    }
    bool hasExponent = false;
    int32_t exponent = 0;
    if (at < length && (text[at] == 'E' || text[at] == 'e')) {
        hasExponent = true;
        ++at;
        bool exponentNegative = false;
        if (at < length && (text[at] == '+' || text[at] == '-')) exponentNegative = text[at++] == '-';
        bool exponentDigit = false;
        uint32_t wrapped = 0;
        while (at < length && text[at] >= '0' && text[at] <= '9') {
            exponentDigit = true;
            wrapped = wrapped * 10 + static_cast<uint32_t>(text[at++] - '0');
        }
        exponent = static_cast<int32_t>(exponentNegative ? 0u - wrapped : wrapped);
        if (!exponentDigit) {
            findings.setFirst(RT_EXPONENT_DIGITS);
        } else if (at < length) {
            findings.setFirst(RT_MISENCODED);
        }
    } else if (at < length) {
        findings.setFirst(RT_MISENCODED);
    }
    // Digits behind the mark that lead the mantissa scale it down too.
    // Trailing zeros scale it up, unless an exponent without a mark keeps
    // the digits as written.
    int64_t scale = static_cast<int64_t>(exponent) - behindMark;
    const uint32_t used = hasExponent && !hasMark ? mantissa.count : mantissa.significant;
    const uint32_t taken = used < Mantissa::kKept ? used : Mantissa::kKept;
    scale += static_cast<int64_t>(mantissa.count - taken);
    double value = 0;
    double weight = 1;
    for (uint32_t i = taken; i-- > 0;) {
        value += (mantissa.kept[i] - '0') * weight;
        weight *= 10;
    }
    if (taken == 0) findings.add(digitSeen ? RT_REAL_ZERO_CONTENTS : RT_MANTISSA_DIGITS);
    scaleByTen(value, scale, findings);
    if (negative) value = -value;
    int found = hasExponent ? 3 : hasMark ? 2 : 1;
    if (findings.firstEmpty() && found != form) {
        findings.setFirst(form == 1 ? RT_INVALID_NR1 : form == 2 ? RT_INVALID_NR2 : RT_INVALID_NR3);
        findings.items[0].argument = found;
    }
    result = value;
}

}  // namespace

uint32_t decodeSimple(DecodeCall& call, int32_t length, int32_t&, bool constructed)
{
    RunContext* context = call.context;
    commonStart(call, length, constructed);
    switch (call.type->kind) {
        case KIND_BOOLEAN: {
            if (length != 1) reportError(context, RT_MISENCODED);
            *static_cast<uint8_t*>(call.value) = inputByte(context) != 0 ? 1 : 0;
            return 1;
        }
        case KIND_NULL:
            if (length != 0) reportError(context, RT_MISENCODED);
            *static_cast<uint8_t*>(call.value) = 0;
            return 0;
        default: {
            if (length == 0) reportError(context, RT_MISENCODED);
            int64_t value = readSignedContents(context, length, RT_INTEGER_NEEDLESSLY_LONG, RT_INTEGER_TOO_LONG);
            storeSigned(context, call.value, call.type->lengthWidth, value, RT_INTEGER_TOO_LONG);
            return static_cast<uint32_t>(length);
        }
    }
}

int32_t parseRealContents(const uint8_t* octets, int32_t length, double& result)
{
    result = 0;
    if (length == 0) return 0;
    const uint8_t first = octets[0];
    Findings findings;
    if (length == 1) {
        if (specialReal(result, first)) return 0;
        if (first == 0x00) return RT_REAL_TOO_LARGE;
        if ((first & 0x80) != 0) return RT_MISENCODED;
        if (first >= 1 && first <= 3) return RT_MANTISSA_DIGITS;
        return RT_RESERVED_REAL;
    }
    if ((first & 0x80) != 0) {
        parseBinaryReal(result, octets, length, findings);
    } else if (first >= 1 && first <= 3) {
        parseDecimalReal(result, octets + 1, length - 1, findings, first);
    } else if (first == 0x40 || first == 0x41) {
        return RT_MISENCODED;
    } else {
        return RT_RESERVED_REAL;
    }
    return findings.last();
}

uint32_t decodeReal(DecodeCall& call, int32_t length, bool constructed)
{
    RunContext* context = call.context;
    commonStart(call, length, constructed);
    double result = 0;
    if (length > 0) {
        // The octets must be there before a block is taken for them.
        inputRequire(context, static_cast<uint32_t>(length));
        auto* copy = static_cast<uint8_t*>(context->services->svcAllocScratch(context, static_cast<uint32_t>(length)));
        inputCopy(context, static_cast<uint32_t>(length), copy);
        const uint8_t first = copy[0];
        int32_t entry = parseRealContents(copy, length, result);
        context->services->svcUnlock(context, copy, true);
        if (entry == RT_RESERVED_REAL && (first & 0x80) == 0) reportError(context, entry, first);
        if (entry != 0) reportError(context, entry);
    }
    std::memcpy(call.value, &result, sizeof result);
    return static_cast<uint32_t>(length);
}
