// The reports of misencodings during a -json run: instead of printing them
// into the listing, the error hook keeps each one's code and text until the
// element they belong to is closed, which carries them as error objects.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "runtime/context.h"

struct OutStream;

class ErrorCapture {
public:
    // Installs the capturing hook on `context`; the destructor puts back the
    // hook that was there.
    explicit ErrorCapture(RunContext* context);
    ~ErrorCapture();
    ErrorCapture(const ErrorCapture&) = delete;
    ErrorCapture& operator=(const ErrorCapture&) = delete;

    bool empty() const { return errors_.empty(); }
    // Whether a code that ends the run was reported (and so is kept).
    bool heardEnding() const { return heardEnding_; }
    // An error that the run meets without a report: its catalog text.
    void addUnreported(int code);
    // An error of this layout's own, with its text.
    void add(int code, const char* text);
    // Writes ,"errors":[{"code":..,"text":".."},..] and forgets them.
    void writeErrors();

private:
    static int hook(RunContext* context, int code, intptr_t first, long second);
    void capture(int code, intptr_t first, long second);

    struct Kept {
        int code;
        std::string text;
    };
    RunContext* context_;
    ErrorHook savedHook_;
    OutStream* sink_;      // where the listing's message printer writes one text
    std::string message_;  // what the sink received
    std::vector<Kept> errors_;
    bool heardEnding_ = false;
};
