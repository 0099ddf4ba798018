#include "tlv/hex_layout.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "app/signal.h"
#include "diagnose/check.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/output_line.h"
#include "runtime/services.h"
#include "tlv/end_cache.h"
#include "tlv/reader.h"
#include "tlv/record_span.h"
#include "tlv/repair.h"
#include "tlv/walker.h"

namespace {

constexpr int kContentsEnd = 75;  // contents are cut at this column

// Owns the RecordSpan of a listing; gone however the listing ends.
class RecordSpanScope {
public:
    RecordSpanScope(RunContext* context, const uint8_t* data, int64_t length) : context_(context)
    {
        auto* span = static_cast<RecordSpan*>(qorAlloc(context, sizeof(RecordSpan)));
        if (span == nullptr) signalError(context, kNoMemory, 0, 0);
        if (span != nullptr) *span = {length, data};
        context->recordSpan = span;
    }
    ~RecordSpanScope()
    {
        qorFree(context_, context_->recordSpan);
        context_->recordSpan = nullptr;
    }
    RecordSpanScope(const RecordSpanScope&) = delete;
    RecordSpanScope& operator=(const RecordSpanScope&) = delete;

private:
    RunContext* context_;
};

// What follows the identifier: the indefinite length octet, and "?" for an
// element that is reported or repaired.
std::string_view identifierSuffix(bool indefinite, bool flagged)
{
    if (indefinite) return flagged ? " ?80" : " 80";
    return flagged ? " ?" : " ";
}

// Walks a stretch; gives back the octets the walk left, as walkRecords does.
int32_t walkHexStretch(RunContext* context, const RecordStretch& stretch)
{
    // The span is the whole input's: a report tells a record's tail by it.
    RecordSpanScope span(context, stretch.data - stretch.offset, stretch.offset + stretch.reach);
    EndCacheScope ends(context);
    RecordSteps records(stretch);
    int32_t count = stretch.length;
    bool titles = false;
    const bool diagnose = (context->toolFlags & TLV_DIAGNOSE) != 0;
    walkRecordsWith(context, stretch.data, count, titles, diagnose ? printHexDiagnosed : printHexElement, records);
    return count;
}

}  // namespace

void printHexLayout(RunContext* context, InputBuffer& buffer)
{
    const int32_t count = walkHexStretch(context, wholeInputStretch(context, buffer, true));
    // The repair writes what the last pass could walk.
    if (count != 0 && (context->toolFlags & TLV_FIX_ENCODING) != 0 && context->state->fixupCount == 0) {
        buffer.length -= count;
    }
}

bool listHexStretch(RunContext* context, const RecordStretch& stretch)
{
    return walkHexStretch(context, stretch) == 0;
}

int printHexElement(RunContext* context, const Element& read, int depth, bool& indefinite, bool&)
{
    const int indent = 2 * depth;
    const uint8_t* element = read.start();
    const int32_t available = read.available();
    if (read.firstOctet() == 0) signalError(context, kTagZero, 0, 0);
    indefinite = false;
    bool stop = true;
    bool repaired = false;
    int32_t length = LENGTH_TRUNCATED;
    int32_t shown = 0;

    const int32_t identifier = read.identifier;
    if (identifier == LENGTH_TRUNCATED) {
        qorWrite(context, "\n", 1);
        dumpOctets(context, element, available, indent, "");
        signalError(context, kPrematureEnd, reinterpret_cast<intptr_t>(element), available);
        return 1;
    }
    if (identifier == 0) return 0;

    const uint8_t first = read.lengthOctet();
    if (first == 0x80) indefinite = true;
    int32_t header = read.header;
    if (header > available) {
        signalError(context, kHeaderOverrun, header, available);
    } else {
        LengthRepair repair = {false, false, header, LENGTH_TRUNCATED, 0};
        if ((context->toolFlags & TLV_FIX_ENCODING) != 0) {
            repair = repairLongFormLength(context, element, available, identifier, header);
        }
        repaired = repair.applied;
        header = repair.header;
        length = repair.lengthSet ? repair.length : read.length;
        shown = repair.lengthSet ? repair.shown : read.length;
        if (length == LENGTH_TRUNCATED) {
            signalError(context, kPrematureEnd, reinterpret_cast<intptr_t>(element), available);
        } else if (!indefinite && length > available - header) {
            signalError(context, kLengthOverrun, length, available - header);
            length = available - header;
        } else {
            stop = false;
            qorWrite(context, "\n", 1);
        }
    }

    // The line: identifier, length octets, contents. What could be reported
    // about the element has been; from here on the line is written whole.
    const int32_t lengthEnd = header < available ? header : available;
    const bool noShort = (context->toolFlags & TLV_NO_SHORT) != 0;
    const int64_t contentsBound = noShort && shown > 0 ? 2 * static_cast<int64_t>(shown) : kContentsEnd;
    const int64_t most = 2 * static_cast<int64_t>(indent) + 2 * static_cast<int64_t>(lengthEnd) + 40 + contentsBound;
    OutputLine line(context, most > INT32_MAX ? SIZE_MAX : static_cast<size_t>(most));
    const std::string_view suffix = identifierSuffix(indefinite, stop || repaired);
    int column = line.blanks(indent) + line.hexDigits(element, 2 * identifier) + line.text(suffix.data(), suffix.size());
    if (!indefinite) {
        if (repaired) showOriginalLength(context, element, identifier, true);
        column += line.hexDigits(read.whole.from(identifier).data(), 2 * (lengthEnd - identifier));
        if (repaired) showOriginalLength(context, element, identifier, false);
        if ((first & 0x80) != 0) {
            column += line.character('(') + line.decimal(shown) + line.character(')');
        }
    }
    if (stop && length == LENGTH_TRUNCATED) return 1;
    if (!stop && indefinite && read.emptyIndefinite()) {
        line.character('\n');
        line.blanks(indent);
        line.text("00 00", 5);
        return 0;
    }
    if (read.constructed && !stop) return 0;
    if (header > available) return stop ? 1 : 0;

    // A primitive element in the indefinite form has no count to show.
    if (shown < 0) return stop ? 1 : 0;
    if (shown > available - header) shown = available - header;
    int32_t digits = 2 * shown;
    bool truncated = false;
    if (!noShort) {
        int32_t limit = kContentsEnd - column;
        if (digits > limit) {
            digits = limit > 0 ? limit : 0;
            truncated = true;
        }
    }
    if (digits == 0 && truncated) {
        // No room left on the line: only mark what is left out.
        line.text(" ...", 4);
    } else if (digits > 0) {
        // Whole octets: an odd limit shows one digit more.
        line.character(' ');
        line.hexDigits(read.whole.from(header).data(), 2 * ((digits + 1) / 2));
        if (truncated) line.text("...", 3);
    }
    return stop ? 1 : 0;
}
