#include "decoder/times.h"

#include <algorithm>
#include <cstring>

#include "decoder/control_table.h"
#include "decoder/errors.h"
#include "decoder/strings.h"
#include "decoder/values.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"
#include "runtime/services.h"

namespace {

// A run of `count` digits, or -1 with the cursor left where it was.
long digits(const char*& cursor, int count)
{
    long value = 0;
    for (int i = 0; i < count; ++i) {
        if (cursor[i] < '0' || cursor[i] > '9') return -1;
        value = value * 10 + (cursor[i] - '0');
    }
    cursor += count;
    return value;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The fraction of the last field filled, in milliseconds.
long fractionMilliseconds(int fields, long v, int n, int kept)
{
    if (n <= kept) {
        for (int i = n; i < kept; ++i) v *= 10;
        switch (fields) {
            case 6: return v;
            case 5: return v * 6;
            case 4: return (v * 18 + 2) / 5;
            default: return (((v * 12 + 2) / 5) * 18 + 2) / 5;
        }
    }
    switch (fields) {
        case 6: {
            long ms = (v + 5) / 10;
            return ms > 999 ? 999 : ms;
        }
        case 5: return (v * 3 + 2) / 5;
        case 4: {
            long ms = (v * 9 + 12) / 25;
            return ms > 3599999 ? 3599999 : ms;
        }
        default: {
            long q = v * 6 / 5;
            long r = v * 6 % 5;
            return (((q * 6 + r + 2) / 5) * 3 + 2) / 5;
        }
    }
}

// The value notation that a TIME-family type stores: '#' takes the next
// octet of the contents, '*' all the rest, anything else stands as it is.
const char* timeNotation(uint16_t stringCode)
{
    switch (stringCode) {
        case 31: return "####-##-##";           // DATE
        case 32: return "##:##:##";             // TIME-OF-DAY
        case 33: return "####-##-##T##:##:##";  // DATE-TIME
        case 34: return "P*";                   // DURATION
        default: return "*";
    }
}

constexpr uint32_t kLongestTimeDigits = 14;  // of DATE-TIME
constexpr size_t kUsualTimeText = 32;         // "YYYYMMDDHHMMSS.fff+hhmm" and room to spare

}  // namespace

int parseTime(const char* text, TimeKind kind, TimeRecord& record, uint16_t& used)
{
    std::memset(&record, 0, sizeof record);
    const char* cursor = text;
    used = 0;
    long year = digits(cursor, kind == TimeKind::Generalized ? 4 : 2);
    if (year < 0) return 1;
    record.year = static_cast<uint16_t>(year);
    uint16_t* fields[] = {&record.month, &record.day, &record.hour, &record.minute, &record.second};
    int filled = 1;
    while (isDigit(*cursor) && filled < 6) {
        long value = digits(cursor, 2);
        if (value < 0) return 1;
        *fields[filled - 1] = static_cast<uint16_t>(value);
        ++filled;
    }
    if (filled < (kind == TimeKind::Generalized ? 3 : 5)) return 1;
    if (kind == TimeKind::Generalized && (*cursor == '.' || *cursor == ',') && filled >= 3) {
        ++cursor;
        static constexpr int kKept[] = {0, 0, 0, 7, 6, 4, 3};
        const int kept = kKept[filled];
        long v = 0;
        int n = 0;
        while (isDigit(*cursor)) {
            if (n <= kept) {
                v = v * 10 + (*cursor - '0');
                ++n;
            }
            ++cursor;
        }
        if (n == 0) return 1;
        long ms = fractionMilliseconds(filled, v, n, kept);
        record.millisec = static_cast<uint16_t>(ms % 1000);
        ms /= 1000;
        if (filled < 6) {
            record.second = static_cast<uint16_t>(ms % 60);
            ms /= 60;
        }
        if (filled < 5) {
            record.minute = static_cast<uint16_t>(ms % 60);
            ms /= 60;
        }
        if (filled < 4) record.hour = static_cast<uint16_t>(ms);
    }
    if (*cursor == '\0') {
        used = static_cast<uint16_t>(cursor - text);
        return kind == TimeKind::Generalized ? 0 : 1;
    }
    if (*cursor == 'Z' || *cursor == 'z') {
        record.utc = 1;
        ++cursor;
    } else if (*cursor == '+' || *cursor == '-') {
        const bool negative = *cursor == '-';
        ++cursor;
        long hours = digits(cursor, 2);
        if (hours < 0 || hours > 23) return 1;
        long minutes = 0;
        if (*cursor != '\0') {
            minutes = digits(cursor, 2);
            if (minutes < 0 || minutes > 59) return 1;
        }
        long total = hours * 60 + minutes;
        record.mindiff = static_cast<int16_t>(negative ? -total : total);
    } else {
        return 1;
    }
    used = static_cast<uint16_t>(cursor - text);
    return 0;
}

uint32_t decodeTimeRecord(DecodeCall& call, int32_t length, int32_t& eocPending, bool constructed)
{
    RunContext* context = call.context;
    call.unit = 1;
    StringChain chain;
    uint32_t unusedBits = 0;
    uint32_t consumed = readStringBody(call, chain, unusedBits, length, eocPending, constructed);
    const TimeKind kind = call.type->kind == KIND_UTC_TIME ? TimeKind::Utc : TimeKind::Generalized;
    auto& record = *static_cast<TimeRecord*>(call.value);
    uint16_t used = 0;
    // The text with a final NUL: on the stack at the length a time usually
    // has, else in a scratch block of the decode, since a fraction may have
    // any number of digits.
    const auto size = static_cast<uint32_t>(chain.dataOctets);
    char usual[kUsualTimeText] = {};
    char* text = size < sizeof usual ? usual
                                     : static_cast<char*>(context->services->svcAllocScratch(context, size + 1));
    drainChain(context, chain, reinterpret_cast<uint8_t*>(text));
    int bad = parseTime(text, kind, record, used);
    int32_t rangeEntry = 0;
    long rangeValue = 0;
    if (bad == 0) {
        const struct {
            int32_t entry;
            long value;
            bool good;
        } checks[] = {
            {RT_TIME_MONTH, record.month, record.month >= 1 && record.month <= 12},
            {RT_TIME_DAY, record.day, record.day >= 1 && record.day <= 31},
            {RT_TIME_HOUR, record.hour, record.hour <= 23},
            {RT_TIME_MINUTE, record.minute, record.minute <= 59},
            {RT_TIME_SECOND, record.second, record.second <= 59},
            {RT_TIME_MILLISECOND, record.millisec,
             kind == TimeKind::Generalized ? record.millisec <= 999 : record.millisec == 0},
        };
        for (const auto& check : checks) {
            if (!check.good) {
                rangeEntry = check.entry;
                rangeValue = check.value;
                break;
            }
        }
    }
    if (used < size || std::memchr(text, '\0', size) != nullptr) reportError(context, RT_MISENCODED);
    if (bad != 0) reportError(context, RT_MISENCODED);
    if (rangeEntry != 0) reportError(context, rangeEntry, rangeValue);
    return consumed;
}

char* storeTimeText(RunContext* context, const TypeRecord& type, StringChain& chain, uint32_t& size)
{
    const char* notation = timeNotation(type.stringCode);
    const char* rest = std::strchr(notation, '*');
    const auto contents = static_cast<uint32_t>(chain.dataOctets);
    if (rest != nullptr) {
        const auto prefix = static_cast<uint32_t>(rest - notation);
        size = prefix + contents;
        auto* text = static_cast<char*>(context->services->svcAllocValue(context, size + 1, 0));  // cleared
        std::memcpy(text, notation, prefix);
        drainChain(context, chain, reinterpret_cast<uint8_t*>(text + prefix));
        return text;
    }
    // A notation without '*' takes a fixed number of digits.
    const auto digitCount = static_cast<uint32_t>(std::count(notation, notation + std::strlen(notation), '#'));
    if (contents != digitCount) reportError(context, RT_TIME_RANGE);
    uint8_t digits[kLongestTimeDigits];
    drainChain(context, chain, digits);
    size = static_cast<uint32_t>(std::strlen(notation));
    auto* text = static_cast<char*>(context->services->svcAllocValue(context, size + 1, 0));  // cleared
    uint32_t taken = 0;
    for (uint32_t i = 0; i < size; ++i) text[i] = notation[i] == '#' ? static_cast<char>(digits[taken++]) : notation[i];
    return text;
}
