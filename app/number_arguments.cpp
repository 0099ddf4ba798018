#include "app/number_arguments.h"

#include <cstring>
#include <string>

uint64_t wideDecimal(const char* text, size_t count)
{
    uint64_t value = 0;
    for (size_t i = 0; i < count && text[i] >= '0' && text[i] <= '9'; ++i) {
        const auto digit = static_cast<uint64_t>(text[i] - '0');
        if (value > (UINT64_MAX - digit) / 10) return UINT64_MAX;
        value = value * 10 + digit;
    }
    return value;
}

bool parseCount(const char* text, uint64_t& value)
{
    if (*text < '0' || *text > '9') return false;
    const char* end = text;
    while (*end >= '0' && *end <= '9') ++end;
    if (*end != '\0' || end - text > 18) return false;
    value = wideDecimal(text, static_cast<size_t>(end - text));
    return true;
}

bool parseRecordRange(const char* text, RecordRange& range)
{
    const char* dash = std::strchr(text, '-');
    uint64_t first = 0;
    uint64_t last = 0;
    if (dash == nullptr) {
        if (!parseCount(text, first)) return false;
        last = first;
    } else {
        const std::string head(text, static_cast<size_t>(dash - text));
        if (!parseCount(head.c_str(), first)) return false;
        if (dash[1] != '\0' && !parseCount(dash + 1, last)) return false;
    }
    if (first < 1 || (last != 0 && last < first) || first > INT32_MAX || last > INT32_MAX) return false;
    range.first = static_cast<long>(first);
    range.last = static_cast<long>(last);
    return true;
}
