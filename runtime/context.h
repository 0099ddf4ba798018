// The run context: the one record that carries everything of a run.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "decoder/decode_state.h"
#include "runtime/memory_state.h"

struct RunContext;
struct ControlTable;
struct ServiceTable;
struct OutStream;
struct RecordSpan;
struct EndCache;
struct RunExtensions;
class TagWalk;

// Bits of toolFlags.
constexpr uint32_t TLV_SYNTAX_LAYOUT = 0x2;
constexpr uint32_t TLV_TEXT_INPUT = 0x4;
constexpr uint32_t TLV_NO_SHORT = 0x8;
constexpr uint32_t TLV_NO_ADDITION = 0x10;
constexpr uint32_t TLV_NO_TITLES = 0x20;
constexpr uint32_t TLV_NO_CDR_HEADERS = 0x40;
constexpr uint32_t TLV_TOOL_RUN = 0x80;
constexpr uint32_t TLV_QUIET_ERRORS = 0x100;
constexpr uint32_t TLV_VALUE_FAILED = 0x200;
constexpr uint32_t TLV_DIAGNOSE = 0x40000;       // -diagnose: reasons, and the walk goes on past a failed value
constexpr uint32_t TLV_FIX_ENCODING = 0x800000;
constexpr uint32_t TLV_TRACE_FIXUPS = 0x1000000;
constexpr uint32_t TLV_PEM_INPUT = 0x10000000;     // -pem: the repair decodes its input
constexpr uint32_t TLV_BASE64_INPUT = 0x20000000;  // -base64: likewise
constexpr uint32_t TLV_JSON_LAYOUT = 0x40000000;   // -json: standard output carries JSON lines only

// Bits of RunState::stateFlags.
constexpr uint32_t STATE_PROBING = 0x1;  // a premature end (17) is not fatal
// A worker that lists a stretch of records ahead of the listing: any report
// it would make ends its stretch there, for the listing to redo in order.
constexpr uint32_t STATE_STRETCH_WORKER = 0x2;
constexpr uint32_t STATE_STRETCH_FAULT = 0x4;  // the worker's record jumped

// The decoder side installs no signal handler; this bit stays set.
constexpr uint32_t DECODER_NO_TRAPPING = 0x200;

// Result codes of the start and output operations.
constexpr int QOR_NULL_CONTEXT = 6;
constexpr int QOR_BAD_TABLE_VERSION = 7;
constexpr int QOR_NO_STATE_MEMORY = 8;
constexpr int QOR_NULL_TABLE = 20;
constexpr int QOR_RULES_NOT_LINKED = 23;
constexpr int QOR_OPEN_FAILED = 27;
constexpr int QOR_ALREADY_OPEN = 28;
constexpr int QOR_CLOSE_FAILED = 46;

constexpr uint16_t CONTROL_TABLE_VERSION = 15;

using AllocFn = void* (*)(size_t size);
using FreeFn = void (*)(void* block);
// `first` is a pointer or a number, `second` a number (see signalError).
using ErrorHook = int (*)(RunContext* context, int code, intptr_t first, long second);
using PrintOverride = int (*)(RunContext* context, const char* format, va_list args);

// A fatal tool error unwinds to the frame that set jumpTarget: runDriver,
// or the repair while it runs. jumpTarget tells whether such a frame exists.
struct ToolJump {
    int value;
};

// Told of the end of every top-level record while a layout lists, with
// where the record's element begins; a listing in stretches keeps its place
// by it.
class RecordWatch {
public:
    virtual void recordDone(RunContext* context, const uint8_t* record) = 0;

protected:
    ~RecordWatch() = default;
};

struct RunState {
    uint16_t tableFlags;
    uint16_t linkedRules;      // bit 0: BER
    uint16_t linkedRuleCount;
    uint32_t maxStringNesting;
    uint32_t maxStructureNesting;
    uint32_t stateFlags;
    int32_t lastError;
    int32_t fixupCount;
    int32_t spareTail;
    uint8_t* repairOctets;     // the repair's own copy of the input, while it runs
    int32_t repairSize;        // its octets, the spare ones included
    char* longErrorText;
    DecoderHooks hooks;        // entries filled by the control table's init
};

struct RunContext {
    // Memory functions and output.
    AllocFn allocFn;
    FreeFn freeFn;
    uint32_t lineWidth;
    uint32_t padByteSpec;
    OutStream* outStream;

    // Table, rules and flags.
    const ControlTable* controlTable;
    int32_t encodingRules;
    uint32_t decoderFlags;
    char errorText[512];

    // Memory services and decoder state.
    MemoryState memory;
    DecodeState decode;

    // Tool fields.
    uint32_t toolFlags;
    ErrorHook errorHook;
    RecordSpan* recordSpan;
    EndCache* endCache;  // where indefinite elements end, while a layout prints
    TagWalk* tagWalk;    // the tag map's nodes of the open levels, while a layout prints with -tags
    bool jumpTarget;
    OutStream* savedOutStream;
    PrintOverride printOverride;
    const ServiceTable* services;
    AllocFn stateAllocFn;
    FreeFn stateFreeFn;
    RunState* state;
    const RunExtensions* extensions;  // options beyond the listing's own; null: none
    RecordWatch* recordWatch;         // null: nobody asks
};

// The context is cleared byte for byte at start, so it must stay plain data.
static_assert(std::is_trivially_copyable_v<RunContext>);
static_assert(std::is_trivially_copyable_v<RunState>);

int qorStartContext(RunContext* context, const ControlTable* table);
void qorStopContext(RunContext* context);
int qorGetRules(const RunContext* context);
int qorSetRules(RunContext* context, int rules);
void setErrorHook(RunContext* context, ErrorHook hook);

// The built-in table that the entry starts every context with.
const ControlTable* builtinControlTable();
