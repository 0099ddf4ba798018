#include "tlv/field_columns.h"

#include "diagnose/diagnose.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output.h"
#include "runtime/output_line.h"
#include "render/contents.h"
#include "tagmap/field_value.h"
#include "tlv/element.h"
#include "tlv/syntax_layout.h"

namespace {

constexpr size_t kInPlaceLimit = 4096;  // longer values are made apart and copied
// Between a field name and its value in the syntax layout; before the value
// in the decomposed one. All three are beginnings of one text, so the
// in-place writer moves it whole and keeps as much as the separator has.
constexpr char kSeparatorText[2] = {':', ' '};
constexpr std::string_view kFieldSeparator(kSeparatorText, 2);
constexpr std::string_view kValueSeparator(kSeparatorText, 1);
constexpr std::string_view kNoSeparator(kSeparatorText, 0);

// Room for a value's text: on the stack for the contents a CDR field has,
// a block of its own for longer ones.
class FieldBuffer {
public:
    explicit FieldBuffer(size_t count) : capacity_(valueTextBound(count))
    {
        if (capacity_ <= sizeof small_) {
            text_ = small_;
            return;
        }
        large_.reset(new (std::nothrow) char[capacity_]);
        text_ = large_.get();
        if (text_ == nullptr) capacity_ = 0;  // the layout's own contents then
    }
    char* text() { return text_; }
    size_t capacity() const { return capacity_; }

private:
    char small_[512];
    std::unique_ptr<char[]> large_;
    char* text_ = nullptr;
    size_t capacity_;
};

// What the map says of the element; nothing for contents that the layout
// can't show whole (a length beyond the data).
FieldValue describe(const RunContext* context, const Element& element, int level, bool bad, FieldBuffer& buffer)
{
    const TagWalk& walk = *context->tagWalk;
    const bool whole = !bad && element.length >= 0 && !element.lengthOverruns();
    const OctetView contents = whole ? element.contents() : OctetView();
    const Octets octets(contents.data(), static_cast<size_t>(contents.size()));
    return fieldValue(walk.map(), walk.node(level), element.constructed || !whole, octets, buffer.text(),
                      buffer.capacity());
}

// " (not FORM)" into `note`; returns its length.
size_t formNote(const char* formName, char* note, size_t capacity)
{
    const size_t nameSize = std::min(std::strlen(formName), capacity - 7);
    std::memcpy(note, " (not ", 6);
    std::memcpy(note + 6, formName, nameSize);
    note[6 + nameSize] = ')';
    return nameSize + 7;
}

}  // namespace

char* putHexWithNote(char* at, const RunContext* context, const TagNode& node, Octets octets, int column)
{
    const size_t length = static_cast<size_t>(putHexText(octets, at) - at);
    char note[kNoteRoom];
    const size_t noteSize = formNote(valueFormName(node.form), note, sizeof note);
    const NotedCut kept = notedCut(context, length, noteSize, column);
    at += kept.text;
    if (kept.noteWhole) at = static_cast<char*>(std::memcpy(at, "...", 3)) + 3;
    at = static_cast<char*>(std::memcpy(at, note, kept.note)) + kept.note;
    if (kept.cut && !kept.noteWhole) at = static_cast<char*>(std::memcpy(at, "...", 3)) + 3;
    return at;
}

namespace {

// The formed value, or the hexadecimal with " (not FORM)" behind it, cut at
// the end of the line as the layouts cut their own values; a cut keeps the
// note whole when the line has room for it.
void printFieldText(RunContext* context, const FieldValue& value, int column)
{
    char note[kNoteRoom];
    const size_t noteSize = value.shown == FieldValue::Shown::Hex ? formNote(value.formName, note, sizeof note) : 0;
    const NotedCut kept = notedCut(context, value.text.size(), noteSize, column);
    OutputLine line(context, value.text.size() + noteSize + 3);
    line.text(value.text.data(), kept.text);
    if (kept.noteWhole) line.text("...", 3);
    line.text(note, std::min(kept.note, noteSize));  // the compiler sees the note's bound
    if (kept.cut && !kept.noteWhole) line.text("...", 3);
}

// The contents as both layouts show them behind `separator`; the field's
// form in place of the layout's value where it applies. The `hex` form is
// what the layouts show for tagged octets already, and a universal type
// (the OBJECT IDENTIFIER of a ManagementExtension) reads better as the
// layout shows it: `hex` keeps the layout's value.
[[gnu::noinline]] bool printContents(RunContext* context, const Element& element, const FieldValue& field,
                                     const UniversalTag* row, int column, bool bad, std::string_view separator)
{
    const bool layoutValue = field.shown == FieldValue::Shown::Layout || field.node->form == ValueForm::Hex;
    if (layoutValue && printOctetsAsTheyAre(context, element, row, column, separator)) return bad;
    Rendered value = renderContents(context, element, row);
    if (!value.present()) {
        // A failed value with nothing to show is told at its own element
        // under -diagnose, as without a map.
        const bool diagnosed = (context->toolFlags & (TLV_DIAGNOSE | TLV_VALUE_FAILED)) == (TLV_DIAGNOSE | TLV_VALUE_FAILED);
        return diagnosed ? failedValueEndsLevel(context, element, row) || bad : bad;
    }
    const bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
    if (!element.constructed || failed) {
        column += qorWrite(context, separator.data(), separator.size());
        if (failed || field.shown == FieldValue::Shown::Layout || field.node->form == ValueForm::Hex) {
            printRendered(context, value, row, column);
        } else {
            printFieldText(context, field, column);
        }
    }
    if (failed) bad = failedValueEndsLevel(context, element, row) || bad;
    return bad;
}

// A field name; a step that the map names nothing at has an empty view,
// whose pointer may be null.
int writeField(RunContext* context, std::string_view field)
{
    return field.empty() ? 0 : qorWrite(context, field.data(), field.size());
}

// A form that the layouts show in place of their own value (see
// printContents for `hex`).
bool formApplies(const TagNode& node)
{
    return node.form != ValueForm::None && node.form != ValueForm::Hex;
}

// The common case, written straight into the run buffer: a primitive,
// tagged (not universal) element of a definite length with a form of its
// own. For such an element the layout's value is its octets in hexadecimal
// and can't fail, so it isn't made at all. False when the value takes the
// general road (the output goes elsewhere, or the value is long).
[[gnu::always_inline]] inline bool printInPlace(RunContext* context, const TagMap& map, const TagNode& node,
                                                const Element& element, int column, std::string_view separator)
{
    const size_t most = separator.size() + fieldValueRoom(element);
    if (most > kInPlaceLimit) return false;
    char* const begin = qorReserve(context, most);
    if (begin == nullptr) return false;
    std::memcpy(begin, kSeparatorText, sizeof kSeparatorText);  // `separator` is its beginning
    column += static_cast<int>(separator.size());
    qorGiveBack(context, putFieldValue(begin + separator.size(), context, map, node, heldOctets(element), column));
    return true;
}

// A form on a universal type, an empty value, a length beyond the data, a
// long value: the value made apart, the layout's value where it fails. The
// field name, if any, is written.
[[gnu::noinline]] bool printFieldRarely(RunContext* context, const Element& element, int level,
                                        const UniversalTag* row, int column, bool bad, std::string_view separator)
{
    FieldBuffer buffer(static_cast<size_t>(bad ? 0 : element.contents().size()));
    const FieldValue field = describe(context, element, level, bad, buffer);
    return printContents(context, element, field, row, column, bad, separator);
}

}  // namespace

TagWalkScope::TagWalkScope(RunContext* context) : context_(context), saved_(context->tagWalk)
{
    const RunExtensions* extensions = context->extensions;
    if (extensions != nullptr && extensions->tagMap != nullptr && !extensions->tagMap->empty()) {
        walk_.emplace(*extensions->tagMap);
        context->tagWalk = &*walk_;
    }
}

TagWalkScope::~TagWalkScope()
{
    context_->tagWalk = saved_;
}

std::string_view tagField(const RunContext* context, int level)
{
    const TagNode* node = context->tagWalk->node(level);
    return node != nullptr ? node->field : std::string_view();
}

bool printSyntaxFieldContents(RunContext* context, const Element& element, int level, const UniversalTag* row,
                              int column, bool bad)
{
    const TagNode* node = context->tagWalk->node(level);
    if (node == nullptr) return printContents(context, element, FieldValue(), row, column, bad, kNoSeparator);
    column += writeField(context, node->field);
    if (nothingToShow(element, row, bad)) return bad;
    const std::string_view separator = node->field.empty() ? kNoSeparator : kFieldSeparator;
    if (formInPlace(*node, element, row, bad) &&
        printInPlace(context, context->tagWalk->map(), *node, element, column, separator)) {
        return bad;
    }
    if (element.constructed || !formApplies(*node)) {
        // The layout's own contents.
        return printContents(context, element, FieldValue(), row, column, bad, separator);
    }
    return printFieldRarely(context, element, level, row, column, bad, separator);
}

bool printDecomposedFieldContents(RunContext* context, const Element& element, int level, const UniversalTag* row,
                                  int column, bool bad)
{
    const TagNode* node = context->tagWalk->node(level);
    if (node == nullptr) return printContents(context, element, FieldValue(), row, column, bad, kValueSeparator);
    if (formInPlace(*node, element, row, bad) &&
        printInPlace(context, context->tagWalk->map(), *node, element, column, kValueSeparator)) {
        return bad;
    }
    if (nothingToShow(element, row, bad)) return bad;
    if (element.constructed || !formApplies(*node)) {
        return printContents(context, element, FieldValue(), row, column, bad, kValueSeparator);
    }
    return printFieldRarely(context, element, level, row, column, bad, kValueSeparator);
}
