#include "timecheck/time_properties.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "decoder/errors.h"
#include "runtime/context.h"
#include "runtime/runtime_catalog.h"
#include "runtime/services.h"

namespace {

constexpr size_t kReasonSize = 256;

// A failure of the check, whose reason is already in pendingEntry and
// pendingArgument. It is the parser's way out of its nested reads and never
// leaves qorCheckTimeProperties, which answers false as its callers expect;
// it is no recovery point. Out-of-range components raise through
// reportError instead, to the decode's recovery point.
struct CheckFailed {};

class TimeParser {
public:
    TimeParser(RunContext* context, const char* text, const uint32_t* masks, int maskCount)
        : context_(context), text_(text), length_(static_cast<uint32_t>(std::strlen(text))), masks_(masks),
          maskCount_(maskCount)
    {
        current_ = length_ > 0 ? text_[0] : '\0';
        position_ = length_ > 0 ? 1 : 0;
    }

    void check()
    {
        const uint32_t first = masks_[0];
        if ((first & TP_DATE_TIME) != 0) {
            parseDate();
            expect('T', "'T' designator for", "time");
            parseTimeOfDay(maskCount_ > 1 ? masks_[1] : first);
        } else if ((first & TP_DATE) != 0) {
            parseDate();
        } else if ((first & TP_TIME_OF_DAY) != 0) {
            parseTimeOfDay(first);
        } else {
            parseDuration();
        }
        if (current_ != '\0') fail("extra characters at the end of time value: \"%s\"", text_ + position_ - 1);
    }

private:
    RunContext* context_;
    const char* text_;
    uint32_t position_;  // the index behind `current_`
    uint32_t length_;
    char current_;
    const uint32_t* masks_;
    int maskCount_;

    void advance()
    {
        if (position_ < length_) {
            current_ = text_[position_++];
        } else {
            current_ = '\0';
            position_ = length_ + 1;
        }
    }

    // The reason, in a scratch block that lives until the end of the decode.
    char* reason(const char* format, va_list args)
    {
        auto* block = static_cast<char*>(context_->services->svcAllocScratch(context_, kReasonSize));
        std::vsnprintf(block, kReasonSize, format, args);
        return block;
    }

    [[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 2, 3)))
    {
        va_list args;
        va_start(args, format);
        char* text = reason(format, args);
        va_end(args);
        context_->decode.pendingEntry = RT_PROPERTY_SETTINGS;
        context_->decode.pendingArgument = text;
        throw CheckFailed{};
    }

    [[noreturn]] void raise(const char* format, ...) __attribute__((format(printf, 2, 3)))
    {
        va_list args;
        va_start(args, format);
        char* text = reason(format, args);
        va_end(args);
        reportError(context_, RT_PROPERTY_SETTINGS, ErrorArgument::ofText(text));
    }

    // The run of digits at `current_`; its count, and its value in `value`.
    int readDigits(uint32_t& value)
    {
        value = 0;
        int count = 0;
        while (current_ >= '0' && current_ <= '9') {
            uint64_t next = static_cast<uint64_t>(value) * 10 + static_cast<uint64_t>(current_ - '0');
            if (next > 0xFFFFFFFFu) reportError(context_, RT_INTEGER_TOO_LONG_UNSIGNED, static_cast<int64_t>(next));
            value = static_cast<uint32_t>(next);
            ++count;
            advance();
        }
        return count;
    }

    void expect(char separator, const char* what, const char* name)
    {
        if (current_ == '\0') fail("expected %s %s component but found end of value", what, name);
        if (current_ != separator) fail("expected %s %s component but found \"%c\"", what, name, current_);
        advance();
    }

    uint32_t component(const char* name, int digits)
    {
        if (current_ == '\0') fail("expected digits for %s component but found end of value", name);
        if (current_ < '0' || current_ > '9') fail("expected digits for %s component but found \"%c\"", name, current_);
        uint32_t value = 0;
        int count = readDigits(value);
        if (count != digits) fail("the %s component shall have %s%d digit(s)", name, count < digits ? "at least " : "", digits);
        return value;
    }

    void inRange(const char* name, uint32_t value, uint32_t lowest, uint32_t highest)
    {
        if (value < lowest || value > highest) {
            raise("the %s component shall be between %u and %u", name, lowest, highest);
        }
    }

    static uint32_t daysIn(uint32_t year, uint32_t month)
    {
        static constexpr uint32_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        return month == 2 && leap ? 29 : kDays[month - 1];
    }

    void parseDate()
    {
        uint32_t year = component("year", 4);
        if (year < 1582) fail("the %s component of the time value is %s", "year", "in proleptic Gregorian Calendar");
        expect('-', "\"-\" separator for", "month");
        uint32_t month = component("month", 2);
        inRange("month", month, 1, 12);
        expect('-', "\"-\" separator for", "day of the month");
        uint32_t day = component("day of the month", 2);
        uint32_t last = daysIn(year, month);
        if (day < 1 || day > last) raise("the day of the month %u shall be between 1 and %u", day, last);
    }

    void parseTimeOfDay(uint32_t mask)
    {
        uint32_t hours = component("hours", 2);
        inRange("hours", hours, 0, 24);
        expect(':', "\":\" separator for", "minutes");
        uint32_t minutes = component("minutes", 2);
        inRange("minutes", minutes, 0, 59);
        expect(':', "\":\" separator for", "seconds");
        uint32_t seconds = component("seconds", 2);
        inRange("seconds", seconds, 0, 60);
        // 24:00:00 is the end of the day and nothing later.
        if (hours == 24 && minutes != 0) raise("the %s in the value representing the end of day shall contain only zeros", "minutes");
        if (hours == 24 && seconds != 0) raise("the %s in the value representing the end of day shall contain only zeros", "seconds");
        if ((mask & TP_LOCAL_TIME) != 0 && (current_ == 'Z' || current_ == '+' || current_ == '-')) {
            fail("the value shall specify %s time only", "local");
        }
    }

    void parseDuration()
    {
        expect('P', "\"P\" designator for", "duration");
        char allowed[8] = ".,YMDW";  // a 'T' opens the time part; it is no designator
        char previous = '\0';
        bool inTime = false;
        bool finished = false;
        int designators = 0;
        while (!finished) {
            if (previous != '.' && current_ == 'T') {
                inTime = true;
                std::strcpy(allowed, ".,HMS");
                previous = 'T';
                advance();
            }
            const bool leadingZero = current_ == '0';
            uint32_t value = 0;
            int digits = readDigits(value);
            if (leadingZero && digits > 1 && previous != '.') {
                fail("the integral part of a designation shall not contain leading zeros");
            }
            if (digits == 0) {
                if (previous == '.' || previous == 'T') fail("expected one or more digits");
                break;
            }
            if (current_ == '\0') fail("expected one of \"%s\" characters but found end of value", allowed);
            if (std::strchr(allowed, current_) == nullptr) {
                fail("expected one of \"%s\" characters but found \"%c\"", allowed, current_);
            }
            const char designator = current_;
            if (designator == '.' || designator == ',') {
                advance();
                std::memmove(allowed, allowed + 2, std::strlen(allowed + 2) + 1);
                previous = '.';
                continue;
            }
            ++designators;
            if (designator == 'D') {
                advance();
                finished = current_ != 'T';
                previous = designator;
                continue;
            }
            switch (designator) {
                case 'Y': std::strcpy(allowed, ".,MD"); break;
                case 'M': std::strcpy(allowed, inTime ? ".,S" : ".,D"); break;
                case 'H': std::strcpy(allowed, ".,MS"); break;
                default: finished = true; break;  // 'W', 'S'
            }
            if (previous == '.') finished = true;  // a fraction belongs to the last component
            previous = designator;
            advance();
        }
        if (designators == 0) fail("at least one number and its designator shall be present in the duration");
    }
};

}  // namespace

bool qorCheckTimeProperties(RunContext* context, const char* text, const uint32_t* masks, int maskCount)
{
    if (text == nullptr || masks == nullptr || maskCount <= 0) return true;
    TimeParser parser(context, text, masks, maskCount);
    try {
        parser.check();
    } catch (const CheckFailed&) {
        return false;
    }
    return true;
}
