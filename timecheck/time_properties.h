// Whether the text of a DATE, TIME-OF-DAY, DATE-TIME or DURATION value is a
// time value of the ISO 8601 form that its property masks demand.
#pragma once

#include <cstdint>

struct RunContext;

// Bits of a time property mask.
constexpr uint32_t TP_DATE = 0x0002;
constexpr uint32_t TP_TIME_OF_DAY = 0x0004;
constexpr uint32_t TP_DATE_TIME = 0x0008;
constexpr uint32_t TP_INTERVAL = 0x0010;
constexpr uint32_t TP_YEAR_OR_HOURS = 0x0080;
constexpr uint32_t TP_MONTH_OR_MINUTES_OR_DURATION = 0x0100;
constexpr uint32_t TP_DAY_OR_SECONDS = 0x0200;
constexpr uint32_t TP_LOCAL_TIME = 0x0400;
constexpr uint32_t TP_BASIC_YEAR = 0x1000;

// True when the text passes. A failure leaves the entry of the failure in
// pendingEntry and its reason in pendingArgument and returns false, or is
// raised at once (a component out of its range).
bool qorCheckTimeProperties(RunContext* context, const char* text, const uint32_t* masks, int maskCount);
