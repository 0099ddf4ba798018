// The run: from the command line to the exit status.
#pragma once

#include <cstdint>
#include <cstdio>

#include "app/input.h"
#include "app/options.h"
#include "app/text_input.h"
#include "diagnose/tally.h"
#include "runtime/extensions.h"
#include "runtime/buffers.h"
#include "runtime/extensions.h"
#include "tagmap/tag_map.h"

struct RunContext;
class RunExtensionsScope;

using LayoutPrinter = void (*)(RunContext* context, InputBuffer& buffer);

// What runDriver holds for one run.
struct DriverState {
    const char* inputName;
    const char* outputName;
    const char* repairName;
    uint32_t offset;
    uint32_t count;
    bool binaryInput;
    InputForm form;
    LayoutPrinter printer;
    bool outputOpened;
    std::FILE* inputFile;
    std::FILE* presetInput;  // the input of a run inside the process
    int32_t result;
    InputBuffer buffer;
    DecodedInput decoded;  // -pem and -base64
    char nameFromStdin[256];  // the input name read by the "-" option
    RunExtensionsScope* extensions;  // the run's extension settings and tables
    DiagnoseTally tally;             // what the run found wrong
    const char* tagMapName;  // -tags: a file or a bundled map's name
    TagMap tagMap;           // what -tags loaded, for the length of the run
    InputRange range;        // +offset,num in 32 and in 64 bits
    int threads;             // -threads; 0: one a CPU
    RecordRange records;     // -records
};

int runDriver(RunContext* context, int argc, char** argv);
// The same run with the input taken from `input` (an open stream, left
// open) instead of the named file; for runs inside the process.
int runDriverOn(RunContext* context, int argc, char** argv, std::FILE* input);
