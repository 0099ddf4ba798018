// Repair of two known misencodings, found by printing: a long-form length
// whose first octet was written as 00 where 81 belongs, and end-of-contents
// octets missing at the very end of the input. Pass after pass of the
// hexadecimal listing over the same buffer; the repaired records go to a
// file.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "runtime/buffers.h"

struct RunContext;

// Returns the repair's result; fixupCount holds the repairs made.
int repairEncoding(RunContext* context, const char* inputName, const char* outputName);
void repairPasses(RunContext* context, InputBuffer& buffer, int32_t& total);
// Whether up to three elements read well as they stand.
bool probeElements(RunContext* context, const uint8_t* element, int32_t count);
// The print override of a repair without trace: nothing is shown.
int silentPrint(RunContext* context, const char* format, va_list args);
// The outcome message of a repair, by its result and count.
void printRepairOutcome(RunContext* context, int result, const char* inputName, const char* repairName);

// What the repair step of the hexadecimal printer found for one element.
struct LengthRepair {
    bool applied;       // 00 was taken for 81
    bool lengthSet;     // `length` and `shown` hold the reading with 81
    int32_t header;
    int32_t length;
    int32_t shown;
};

// The repair step of the hexadecimal printer, for an element whose first
// length octet stands at `lengthOctet`.
LengthRepair repairLongFormLength(RunContext* context, const uint8_t* element, int32_t available,
                                  int32_t identifier, int32_t header);
// While the length octets of a repaired element are printed, its first
// length octet holds 00 again.
void showOriginalLength(RunContext* context, const uint8_t* element, int32_t identifier, bool original);
