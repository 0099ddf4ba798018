#include "diagnose/diagnose.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "decoder/decoder.h"
#include "diagnose/tally.h"
#include "render/contents.h"
#include "render/universal_tags.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output_line.h"
#include "tlv/element.h"
#include "tlv/reader.h"

namespace {

constexpr int32_t kUtcTimeTag = 23;
constexpr int32_t kGeneralizedTimeTag = 24;
constexpr size_t kReasonSize = 600;

bool diagnosing(const RunContext* context)
{
    return (context->toolFlags & TLV_DIAGNOSE) != 0;
}

// A line of its own: the line feed in front, as every line of the listing.
void writeNoteLine(RunContext* context, int indent, std::string_view label, std::string_view text)
{
    OutputLine line(context, static_cast<size_t>(indent) + label.size() + text.size() + 1);
    line.character('\n');
    line.blanks(indent);
    line.text(label.data(), label.size());
    line.text(text.data(), text.size());
}

// The key of a failure in the summary: the decoder's message code, the
// text up to its colon.
void failureKey(const char* text, int32_t result, char* key, size_t capacity)
{
    if (result == 0) {
        std::snprintf(key, capacity, "%s", "no text");
        return;
    }
    size_t length = std::strcspn(text, ":");
    if (length == 0 || length >= capacity) length = 0;
    std::memcpy(key, text, length);
    key[length] = '\0';
}

// The end of a failed value can be trusted when it is definite and within
// its parent; a constructed one is entered, and the walk finds its end.
bool trustedEnd(const Element& element)
{
    return element.constructed || element.length >= 0;
}

// A fault of the structure has been reported by the walk: no value failed.
bool structureFault(const Element& element)
{
    return !element.readable() || element.headerOverruns() || element.length == LENGTH_TRUNCATED ||
           element.lengthOverruns();
}

// What the walk would go through if the level didn't end here.
uint64_t elementsHidden(RunContext* context, const Element& element)
{
    if (!trustedEnd(element)) return 0;
    const int32_t from = element.constructed ? element.header : element.header + element.length;
    return countElementsIn(enclosingContents(context, element).from(from));
}

// A failed value: counted, and its reason kept under -diagnose. Whether the
// level ends. A layout that goes on behind every failed value (`shownAll`)
// hides nothing behind it.
bool failedValue(RunContext* context, const Element& element, const UniversalTag* row, bool shownAll = false)
{
    if (structureFault(element)) return true;
    DiagnoseTally* tally = runTally(context);
    if (!diagnosing(context)) {
        if (tally != nullptr) {
            ++tally->failedValues;
            if (!shownAll) tally->hiddenElements += elementsHidden(context, element);
        }
        return true;
    }
    char ownReason[kReasonSize];
    char* reason = tally != nullptr ? tally->note : ownReason;
    const size_t reasonSize = tally != nullptr ? sizeof tally->note : sizeof ownReason;
    int32_t result = -1;
    if (row != nullptr && row->pdu != 0) {
        result = decodeFailureText(context, element, *row, reason, reasonSize);
    } else {
        std::snprintf(reason, reasonSize, "%s",
                      "primitive contents in the indefinite form without their end-of-contents");
    }
    if (tally != nullptr) {
        char key[sizeof FailureCount::key];
        if (result < 0) {
            std::snprintf(key, sizeof key, "%s", "missing EOC");
        } else {
            failureKey(reason, result, key, sizeof key);
        }
        ++tally->failedValues;
        tally->countFailure(key, result);
        tally->notePending = true;
    }
    return !trustedEnd(element);
}

// The contents of a UTCTime or GeneralizedTime as the decoder's text would
// show them if it changed nothing: a GeneralizedTime with seconds and a
// zone but no fraction gets ".000", which says no more than the encoding.
bool timeNormalised(int32_t tag, std::string_view encoded, std::string_view shown)
{
    if (tag == kUtcTimeTag) return shown != encoded;
    if (encoded.find_first_of("Zz+-") == std::string_view::npos) return true;  // a local time
    if (encoded.size() > 14 && std::string_view("Zz+-").find(encoded[14]) != std::string_view::npos) {
        if (shown.size() != encoded.size() + 4) return true;
        return shown.substr(0, 14) != encoded.substr(0, 14) || shown.substr(14, 4) != ".000" ||
               shown.substr(18) != encoded.substr(14);
    }
    return shown != encoded;
}

}  // namespace

bool failedValueEndsLevel(RunContext* context, const Element& element, const UniversalTag* row)
{
    context->toolFlags &= ~TLV_VALUE_FAILED;
    return failedValue(context, element, row);
}

const char* countShownFailure(RunContext* context, const Element& element, const UniversalTag* row)
{
    failedValue(context, element, row, true);
    DiagnoseTally* tally = runTally(context);
    if (tally == nullptr || !tally->notePending) return nullptr;
    tally->notePending = false;
    return tally->note;
}

void writeFailureNote(RunContext* context, int indent)
{
    DiagnoseTally* tally = runTally(context);
    if (tally == nullptr || !tally->notePending) return;
    tally->notePending = false;
    writeNoteLine(context, indent, "Not decoded: ", tally->note);
}

void showEncodedTime(RunContext* context, const Element& element, int indent)
{
    if (element.tagClass != CLASS_UNIVERSAL || element.constructed || element.length < 0 || element.lengthOverruns()) {
        return;
    }
    if (element.tagNumber != kUtcTimeTag && element.tagNumber != kGeneralizedTimeTag) return;
    // The printer's text is gone by now; a time value is made again.
    const Rendered value = renderContents(context, element, universalTag(element.tagNumber));
    if ((context->toolFlags & TLV_VALUE_FAILED) != 0) {
        context->toolFlags &= ~TLV_VALUE_FAILED;
        return;
    }
    if (!value.present() || value.hexForm()) return;
    const OctetView contents = element.contents();
    const std::string_view encoded(reinterpret_cast<const char*>(contents.data()), static_cast<size_t>(contents.size()));
    if (!timeNormalised(element.tagNumber, encoded, std::string_view(value.text(), value.textSize()))) return;
    writeNoteLine(context, indent, "As encoded: ", encoded);
}

bool diagnoseValue(RunContext* context, const Element& element, int indent, bool printReason)
{
    if (element.tagClass != CLASS_UNIVERSAL || !element.readable()) return false;
    const UniversalTag* row = universalTag(element.tagNumber);
    if (row == nullptr || row->pdu == 0) return false;
    if (element.indefinite() && element.emptyIndefinite()) return false;
    Rendered value = renderContents(context, element, row);
    if ((context->toolFlags & TLV_VALUE_FAILED) == 0) return false;
    context->toolFlags &= ~TLV_VALUE_FAILED;
    const bool ends = failedValue(context, element, row);
    if (printReason) {
        writeFailureNote(context, indent);
    } else if (DiagnoseTally* tally = runTally(context); tally != nullptr) {
        tally->notePending = false;
    }
    return ends;
}

uint64_t countElementsIn(OctetView octets)
{
    uint64_t count = 0;
    while (!octets.empty()) {
        if (octets.startsWithEndOfContents()) {
            octets = octets.from(2);
            continue;
        }
        const Element element = readElement(octets);
        if (!element.readable() || element.headerOverruns() || element.length == LENGTH_TRUNCATED) break;
        ++count;
        if (element.constructed) {
            octets = octets.from(element.header);
            continue;
        }
        if (element.length < 0 || element.lengthOverruns()) break;
        octets = octets.from(element.header + element.length);
    }
    return count;
}

int32_t decodeFailureText(RunContext* context, const Element& element, const UniversalTag& row, char* text,
                          size_t capacity)
{
    int pdu = valuePdu(row, element.length);
    BerBuffer buffer = {static_cast<uint32_t>(element.available()), element.start()};
    void* value = nullptr;
    const int32_t result = qorDecode(context, pdu, buffer, value);
    if (result == 0) {
        qorFreeValue(context, pdu, value);
        std::snprintf(text, capacity, "%s", "the value decodes, but its text could not be made");
        return 0;
    }
    // A text too long for the context's own field is in a block of its own.
    const char* made = context->state != nullptr && context->state->longErrorText != nullptr
                           ? context->state->longErrorText
                           : context->errorText;
    size_t length = std::strlen(made);
    while (length > 0 && (made[length - 1] == '\n' || made[length - 1] == '\r')) --length;
    if (length >= capacity) length = capacity - 1;
    // The argument may quote the input: its control octets would break the line.
    for (size_t i = 0; i < length; ++i) {
        const auto octet = static_cast<unsigned char>(made[i]);
        text[i] = octet < 0x20 || octet == 0x7F ? '.' : made[i];
    }
    text[length] = '\0';
    return result;
}
