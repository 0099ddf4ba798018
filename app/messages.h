// The driver's messages by name: the faults of the command line and of the
// output file, each of which ends the run with its number as the value.
#pragma once

enum DriverMessage : int {
    kInternalError1 = 1,  // "Internal error #1.": the memory ran out
    kInternalError2 = 2,
    kInternalError3 = 3,
    kNoInputName = 4,
    kInputNameMissing = 5,  // "-binary" or "-text" with no name behind
    kOutputNameMissing = 6,
    kUnknownParameter = 7,
    kTooManyInputNames = 8,
    kStdinReadFailed = 9,
    kTooManyOutputNames = 10,
    kOutputOpenFailed = 11,
    kBadOffsetText = 12,  // "+off": not a decimal number
    kBadCountText = 13,   // "+off,num": not a decimal number
    kPadByteMissing = 14,
    kBadPadByte = 15,
};
