#include "json/json_element.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "app/signal.h"
#include "diagnose/diagnose.h"
#include "json/error_capture.h"
#include "json/json_text.h"
#include "json/tag_fields.h"
#include "meaning/oid_naming.h"
#include "render/contents.h"
#include "render/tag_name.h"
#include "render/universal_tags.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/output_line.h"
#include "tagmap/field_value.h"
#include "tlv/element.h"
#include "tlv/reader.h"

namespace {

bool noShort(const RunContext* context)
{
    return (context->toolFlags & TLV_NO_SHORT) != 0;
}

// ,"class":..,"tag":..,"constructed":.. of an element whose identifier
// runs off the data.
void writeClassAndTag(RunContext* context, const Element& element)
{
    char fields[64];
    qorWrite(context, fields, static_cast<size_t>(putClassTagAndForm(fields, element) - fields));
}

// The identifier's fields, made once for the short identifiers.
const TagFields& tagFieldsOf(RunContext* context, const Element& element, TagFields& made)
{
    if (const TagFields* known = knownTagFields(context, element)) return *known;
    makeTagFields(context, element, made);
    return made;
}

// ,"octets":..: an element whose header runs off the data, as far as there
// are octets.
void writeOctets(RunContext* context, const Element& element)
{
    writeJsonLiteral(context, ",\"octets\":");
    writeJsonHex(context, element.whole);
}

// ,"name":.. of an OBJECT IDENTIFIER that -oids names. A name from an
// -oidfile that isn't UTF-8 can't stand in JSON and is left out.
void writeOidName(RunContext* context, const Element& element)
{
    const std::string_view name = oidNameOf(context, element);
    if (name.empty() || !isValidUtf8(name.data(), name.size())) return;
    writeJsonLiteral(context, ",\"name\":");
    writeJsonString(context, name.data(), name.size());
}

// ,"field":.. of an element the map names; a name that isn't UTF-8 can't
// stand in JSON and is left out.
void writeFieldName(RunContext* context, const JsonField* field)
{
    if (field == nullptr || field->node == nullptr) return;
    const std::string_view name = field->node->field;
    if (name.empty() || !isValidUtf8(name.data(), name.size())) return;
    writeJsonLiteral(context, ",\"field\":");
    writeJsonString(context, name.data(), name.size());
}

// ,"value":.. (the contents in the map's form) or ,"value_error":"not FORM"
// when the octets don't fit it. Contents beyond kJsonValueLimit get neither
// unless -noshort, as their "hex" is cut.
void writeFormValue(RunContext* context, const JsonField* field, OctetView contents)
{
    if (field == nullptr || field->node == nullptr || field->node->form == ValueForm::None) return;
    if (!noShort(context) && contents.size() > kJsonValueLimit) return;
    const auto count = static_cast<size_t>(contents.size());
    // A CDR field's text fits on the stack; longer contents get a block.
    char small[1024];
    std::unique_ptr<char[]> large;
    char* buffer = small;
    size_t capacity = valueTextBound(count);
    if (capacity > sizeof small) {
        large.reset(new (std::nothrow) char[capacity]);
        buffer = large.get();
        if (buffer == nullptr) return;
    }
    const FieldValue value =
        fieldValue(*field->map, field->node, false, Octets(contents.data(), count), buffer, capacity);
    if (value.shown == FieldValue::Shown::Form) {
        // An enumerated name from a map file need not be UTF-8.
        if (!isValidUtf8(value.text.data(), value.text.size())) return;
        writeJsonLiteral(context, ",\"value\":");
        writeJsonString(context, value.text.data(), value.text.size());
    } else if (value.shown == FieldValue::Shown::Hex) {
        // "not tbcd", as the readable layouts' note says it.
        char note[48] = "not ";
        const size_t nameSize = std::min(std::strlen(value.formName), sizeof note - 4);
        std::memcpy(note + 4, value.formName, nameSize);
        writeJsonLiteral(context, ",\"value_error\":");
        writeJsonString(context, note, 4 + nameSize);
    }
}

// ,"hex":"..": octets on a line, cut at kJsonValueLimit unless -noshort;
// returns whether they were cut.
[[gnu::always_inline]] inline bool putLimitedHex(OutputLine& line, bool noShort, OctetView octets)
{
    const bool cut = !noShort && octets.size() > kJsonValueLimit;
    if (cut) octets = octets.first(kJsonValueLimit);
    line.text(",\"hex\":\"", 8);
    line.hexDigits(octets.data(), 2 * octets.size());
    line.character('"');
    return cut;
}

// The value of a primitive element with a definite length that the input
// holds: its readable text where its type has one, its contents, and with
// -tags its value in the map's form.
void writeValue(RunContext* context, ErrorCapture& errors, const Element& element, const UniversalTag* row,
                const JsonField* field)
{
    bool cut = false;
    bool failed = false;
    // Types without a readable form show their octets alone; rendering them
    // would give those octets back.
    if (hasReadableForm(row)) {
        Rendered value = renderContents(context, element, row);
        failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
        context->toolFlags &= ~TLV_VALUE_FAILED;
        if (!failed && value.present() && !value.hexForm()) {
            const char* text = value.text();
            const size_t size = std::strlen(text);
            const bool longText = !noShort(context) && size > static_cast<size_t>(kJsonValueLimit);
            const size_t kept = longText ? utf8Prefix(text, size, kJsonValueLimit) : size;
            // A text that isn't UTF-8 can't stand in JSON: the hex carries it.
            if (isValidUtf8(text, kept)) {
                writeJsonLiteral(context, ",\"text\":");
                writeJsonString(context, text, kept);
                cut = longText;
            }
        }
        if (!failed) writeOidName(context, element);
    }
    if (writeLimitedHex(context, element.contents())) cut = true;
    if (field != nullptr) writeFormValue(context, field, element.contents());
    if (cut) writeJsonLiteral(context, ",\"truncated\":true");
    if (failed) {
        // Under -diagnose the decoder's own reason says why.
        const char* reason = countShownFailure(context, element, row);
        errors.add(kValueFailedCode, reason != nullptr ? reason : kValueFailedText);
    }
}

}  // namespace

bool writeLimitedHex(RunContext* context, OctetView octets)
{
    OutputLine line(context, 2 * static_cast<size_t>(std::min(octets.size(), kJsonValueLimit)) + 10);
    return putLimitedHex(line, noShort(context), octets);
}

int writeElementOpening(RunContext* context, ErrorCapture& errors, const Element& element,
                        const RisingNumber& offset, bool sibling, bool& indefinite, const JsonField* field)
{
    const auto place = reinterpret_cast<intptr_t>(element.start());
    const int32_t available = element.available();
    // The fields up to the value are composed in place, as one line's are,
    // with the contents' hexadecimal where that is all the value shows.
    const bool definite = definiteAndHeld(element);
    const int32_t hexMost = definite && !element.constructed ? std::min(element.length, kJsonValueLimit) : 0;
    OutputLine line(context, OutputLine::kMadeMost + 2 * static_cast<size_t>(hexMost) + 32);
    line.made([&offset, sibling](char* out) {
        if (sibling) *out++ = ',';
        return offset.put(put(out, "{\"offset\":"));
    });
    if (element.firstOctet() == 0) {
        line.finish();
        signalError(context, kTagZero, 0, 0);
    }
    indefinite = false;
    if (element.identifier == LENGTH_TRUNCATED) {
        line.finish();
        writeClassAndTag(context, element);
        writeOctets(context, element);
        signalError(context, kPrematureEnd, place, available);
        return kLevelEnds;
    }
    if (element.identifier == 0) return 0;

    indefinite = element.lengthOctet() == 0x80;
    const bool headerRunsOff = element.header > available || element.length == LENGTH_TRUNCATED;
    TagFields made;
    const TagFields& tag = tagFieldsOf(context, element, made);
    line.made([&element, &tag, headerRunsOff, indefinite = indefinite](char* out) {
        out = putJsonNumber(put(out, ",\"header\":"), element.header);
        if (!headerRunsOff) {
            out = put(out, ",\"length\":");
            out = indefinite ? put(out, "null") : putJsonNumber(out, element.length);
        }
        return putTagFields(out, tag);
    });
    if (field != nullptr) {
        // The field name stands behind "type".
        line.finish();
        writeFieldName(context, field);
    }
    if (indefinite && !headerRunsOff) line.text(",\"indefinite\":true", 18);
    if (definite && !headerRunsOff && !element.constructed && field == nullptr && !hasReadableForm(tag.row)) {
        if (putLimitedHex(line, noShort(context), element.contents())) line.text(",\"truncated\":true", 17);
        if (!errors.empty()) return 0;
        line.character('}');
        return kObjectClosed;
    }
    line.finish();

    if (headerRunsOff) {
        writeOctets(context, element);
        if (element.header > available) {
            signalError(context, kHeaderOverrun, element.header, available);
        } else {
            signalError(context, kPrematureEnd, place, available);
        }
        return kLevelEnds;
    }
    if (!indefinite && element.length > element.room()) {
        // The walk takes what there is and ends the level, as the listing does.
        signalError(context, kLengthOverrun, element.length, element.room());
        writeLimitedHex(context, element.behindHeader());
        return kLevelEnds;
    }
    // A constructed element gets its elements from the walk; a primitive one
    // in the indefinite form has no count of contents octets to show.
    if (element.constructed || indefinite) return 0;
    writeValue(context, errors, element, tag.row, field);
    return 0;
}
