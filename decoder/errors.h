// Raising a decode failure: the text of the failure with where the decoder
// was, the first result code, and the unwinding to the decode's recovery
// point.
#pragma once

#include <cstddef>
#include <cstdint>

struct RunContext;

// A link of the chain that says where in the value the decoder was.
struct ErrorFrame {
    ErrorFrame* previous;
    const char* fieldName;
    const char* typeName;
    int32_t number;     // the PDU number, on the root frame
    int32_t frameKind;  // 0 a type, 2 a root
};

constexpr int32_t FRAME_TYPE = 0;
constexpr int32_t FRAME_ROOT = 2;

// Pushes a frame for the life of a scope.
class FramePush {
public:
    FramePush(RunContext* context, ErrorFrame& frame);
    ~FramePush();
    FramePush(const FramePush&) = delete;
    FramePush& operator=(const FramePush&) = delete;

private:
    RunContext* context_;
    ErrorFrame* saved_;
};

// The argument of a failure: a number, a text, or a character.
struct ErrorArgument {
    int64_t number = 0;
    const char* text = nullptr;
    bool present = false;

    ErrorArgument() = default;
    ErrorArgument(int64_t value) : number(value), present(true) {}  // NOLINT: a number is the usual argument
    static ErrorArgument ofText(const char* value)
    {
        ErrorArgument argument;
        argument.text = value;
        argument.present = true;
        return argument;
    }
};

// What unwinds to the decode's recovery point; the code is in runtimeResult.
struct DecodeFailure {
    int32_t code;
};

// Builds the text of a failure into errorText and unwinds. Doesn't return.
[[noreturn]] void reportError(RunContext* context, int32_t entry, ErrorArgument argument = {});

// The text of a failure of catalog `entry`; returns 0 when it fit in
// `capacity` octets, non-zero when it was cut.
int buildErrorText(RunContext* context, char* buffer, size_t capacity, int32_t entry, int32_t pdu,
                   const ErrorArgument& argument);
