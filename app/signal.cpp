#include "app/signal.h"

#include <cstring>

#include "diagnose/tally.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "tlv/record_span.h"

namespace {

// Whether the message hook hears of a code of this row now.
bool isHeard(const RunContext* context, const ToolMessage& row)
{
    return row.hearing == SignalHearing::Always ||
           (row.hearing == SignalHearing::UnlessQuiet && (context->toolFlags & TLV_QUIET_ERRORS) == 0);
}

// Whether a code of this row ends the run now.
bool endsRun(const RunContext* context, const ToolMessage& row)
{
    return row.ending == SignalEnding::Yes ||
           (row.ending == SignalEnding::UnlessProbing && (context->state->stateFlags & STATE_PROBING) == 0);
}

// The catalog texts are formats chosen at run time.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
int printCatalogText(RunContext* context, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    int count = qorPrintV(context, format, args);
    va_end(args);
    return count;
}
#pragma GCC diagnostic pop

// Behind a premature end: the rest of the bad record, up to 76 digits.
void printRecordTail(RunContext* context, intptr_t first, long second)
{
    const RecordSpan* span = context->recordSpan;
    if (second == 0 || span == nullptr || span->start == nullptr) return;
    const auto* place = reinterpret_cast<const uint8_t*>(first);
    if (place <= span->start || place >= span->start + span->total) return;
    long count = span->total - context->state->spareTail - (place - span->start);
    if (count <= 0) count = second;
    if (count == 0) return;
    qorWrite(context, " Last invalid record is:\n", 25);
    char digits[76];
    long shown = 0;
    while (shown < count && shown * 2 < 76) {
        std::memcpy(digits + shown * 2, hexPair(place[shown]), 2);
        ++shown;
    }
    qorWrite(context, digits, static_cast<size_t>(shown * 2));
    if (shown < count) qorWrite(context, "...", 3);
}

// The text of a signal with a pointer or a length, in the form of its row.
void printArguments(RunContext* context, const ToolMessage& row, const char* text, intptr_t first, long second)
{
    switch (row.arguments) {
        case SignalArguments::RecordTail:
            printCatalogText(context, text);
            printRecordTail(context, first, second);
            return;
        case SignalArguments::LengthAndRest:
            printCatalogText(context, text, static_cast<long>(first), static_cast<unsigned>(first), second,
                             static_cast<unsigned>(second), second);
            return;
        case SignalArguments::HeaderAndRest:
            printCatalogText(context, text, static_cast<long>(first), static_cast<unsigned>(first), second,
                             static_cast<unsigned>(second));
            return;
        case SignalArguments::Text:
            break;
    }
    const auto* argument = reinterpret_cast<const char*>(first);
    size_t length = second != 0 ? static_cast<size_t>(second) : std::strlen(argument);
    std::string shortened;
    if (length > 30) shortened = "\n";  // a long value stands on a line of its own
    shortenForMessage(shortened, argument, length);
    printCatalogText(context, text, shortened.c_str());
}

// The position and length of the nearest line end, tab or comment start.
bool findBreak(const char* text, size_t from, size_t length, size_t& at)
{
    static constexpr const char* kBreaks[] = {"\r\n", "\n", "\r", "\t", "--", "/*"};
    bool found = false;
    at = length;
    for (const char* mark : kBreaks) {
        size_t markLength = std::strlen(mark);
        for (size_t i = from; i + markLength <= at; ++i) {
            if (std::memcmp(text + i, mark, markLength) == 0) {
                at = i;
                found = true;
                break;
            }
        }
    }
    return found;
}

bool isWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

}  // namespace

void jumpToTarget(RunContext* context, int value)
{
    // A worker's record that jumps is handed back, whatever closes behind it.
    if (context != nullptr && context->state != nullptr &&
        (context->state->stateFlags & STATE_STRETCH_WORKER) != 0) {
        context->state->stateFlags |= STATE_STRETCH_FAULT;
    }
    throw ToolJump{value};
}

int signalError(RunContext* context, int code, intptr_t first, long second)
{
    context->state->lastError = code;
    const ToolMessage& row = toolRow(code);
    if (isHeard(context, row)) {
        // A worker ahead of the listing hands the record back instead.
        if ((context->state->stateFlags & STATE_STRETCH_WORKER) != 0) jumpToTarget(context, code);
        bool silentRepair = (context->toolFlags & TLV_FIX_ENCODING) != 0 &&
                            (context->toolFlags & TLV_TRACE_FIXUPS) == 0;
        if (!silentRepair && context->errorHook != nullptr) {
            context->errorHook(context, code, first, second);
            countReport(context, code);
        }
    }
    if (endsRun(context, row) && (context->toolFlags & TLV_TOOL_RUN) != 0 && context->jumpTarget) {
        jumpToTarget(context, code);
    }
    return code;
}

int printToolError(RunContext* context, int code, intptr_t first, long second)
{
    const ToolMessage& row = toolRow(code);
    const char* text = first != 0 || second != 0 ? row.withParameters : row.withoutParameters;
    if (text == nullptr) return code;
    if ((context->toolFlags & TLV_TOOL_RUN) != 0) text += TOOL_PREFIX_LENGTH;
    if (row.lineFeedInFront) qorWrite(context, "\n", 1);

    if (first == 0) {
        if (second != 0) {
            printCatalogText(context, text, second);
        } else {
            printCatalogText(context, text);
        }
    } else {
        printArguments(context, row, text, first, second);
    }
    if (row.lineFeedBehind) qorWrite(context, "\n", 1);
    return code;
}

void shortenForMessage(std::string& output, const char* text, size_t length)
{
    constexpr size_t kLimit = 72;
    size_t start = output.size();  // a leading line feed doesn't count
    size_t position = 0;
    while (true) {
        size_t at = 0;
        bool found = findBreak(text, position, length, at);
        size_t stretch = at - position;
        size_t used = output.size() - start;
        if (used + stretch + (found ? 1 : 0) > kLimit) {
            size_t fits = kLimit > used ? kLimit - used : 0;
            if (fits > stretch) fits = stretch;
            output.append(text + position, fits);
            if (position + fits < length) output += "... ";
            return;
        }
        output.append(text + position, stretch);
        position = at;
        if (position >= length) return;
        if (!found) return;
        skipComments(text, length, position);
        if (position >= length) return;
        if (output.size() == start || output.back() != ' ') output += ' ';
    }
}

void skipComments(const char* text, size_t length, size_t& position)
{
    while (true) {
        while (position < length && isWhiteSpace(text[position])) ++position;
        if (position + 1 >= length) return;
        if (text[position] == '-' && text[position + 1] == '-') {
            size_t end = length;
            for (size_t i = position + 2; i < length; ++i) {
                if (text[i] == '\n') {
                    end = i + 1;
                    break;
                }
                if (i + 1 < length && text[i] == '-' && text[i + 1] == '-') {
                    end = i + 2;
                    break;
                }
            }
            position = end;
        } else if (text[position] == '/' && text[position + 1] == '*') {
            size_t end = length;
            for (size_t i = position + 2; i + 1 < length; ++i) {
                if (text[i] == '*' && text[i + 1] == '/') {
                    end = i + 2;
                    break;
                }
            }
            position = end;
        } else {
            return;
        }
    }
}
