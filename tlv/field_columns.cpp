#include "tlv/field_columns.h"

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

constexpr int kLineEnd = 79;      // where the layouts cut a value
constexpr int kCopyLimit = 1024;  // the longest value shown when the line width doesn't count

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
    const OctetView contents = bad || element.indefinite() ? OctetView() : element.contents();
    const Octets octets(contents.data(), static_cast<size_t>(contents.size()));
    return fieldValue(walk.map(), walk.node(level), element.constructed || bad, octets, buffer.text(),
                      buffer.capacity());
}

// The formed value, or the hexadecimal with " (not FORM)" behind it, cut at
// the end of the line as the layouts cut their own values; a cut keeps the
// note whole when the line has room for it.
void printFieldText(RunContext* context, const FieldValue& value, int column)
{
    char note[32];  // " (not bcd-timestamp)" is the longest
    size_t noteSize = 0;
    if (value.shown == FieldValue::Shown::Hex) {
        const size_t nameSize = std::min<size_t>(std::strlen(value.formName), sizeof note - 7);
        std::memcpy(note, " (not ", 6);
        std::memcpy(note + 6, value.formName, nameSize);
        note[6 + nameSize] = ')';
        noteSize = nameSize + 7;
    }
    const size_t size = value.text.size() + noteSize;
    size_t shown = size;
    bool cut = false;
    if ((context->toolFlags & TLV_NO_SHORT) == 0) {
        int room = kLineEnd - column;
        if (context->lineWidth == 0 || context->lineWidth > static_cast<uint32_t>(kCopyLimit)) room = kCopyLimit;
        if (size > static_cast<size_t>(room > 0 ? room : 0)) {
            cut = true;
            shown = room <= 3 ? 0 : static_cast<size_t>(room - 3);
        }
    }
    OutputLine line(context, size + 3);
    if (cut && noteSize > 0 && shown >= noteSize) {
        line.text(value.text.data(), shown - noteSize);
        line.text("...", 3);
        line.text(note, noteSize);
        return;
    }
    const size_t fromText = std::min(shown, value.text.size());
    line.text(value.text.data(), fromText);
    line.text(note, shown - fromText);
    if (cut) line.text("...", 3);
}

// The contents as both layouts show them behind `separator`; the field's
// form in place of the layout's value where it applies. The `hex` form is
// what the layouts show for tagged octets already, and a universal type
// (the OBJECT IDENTIFIER of a ManagementExtension) reads better as the
// layout shows it: `hex` keeps the layout's value.
bool printContents(RunContext* context, const Element& element, const FieldValue& field, const UniversalTag* row,
                   int column, bool bad, std::string_view separator)
{
    Rendered value = renderContents(context, element, row);
    if (!value.present()) return bad;
    const bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
    if (!element.constructed || failed) {
        column += qorWrite(context, separator.data(), separator.size());
        if (failed || field.shown == FieldValue::Shown::Layout || field.node->form == ValueForm::Hex) {
            printRendered(context, value, row, column);
        } else {
            printFieldText(context, field, column);
        }
    }
    if (failed) {
        context->toolFlags &= ~TLV_VALUE_FAILED;
        bad = true;
    }
    return bad;
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
    FieldBuffer buffer(static_cast<size_t>(bad || element.constructed ? 0 : element.contents().size()));
    const FieldValue field = describe(context, element, level, bad, buffer);
    if (field.named()) column += qorWrite(context, field.field.data(), field.field.size());
    return printContents(context, element, field, row, column, bad, field.named() ? ": " : "");
}

bool printDecomposedFieldContents(RunContext* context, const Element& element, int level, const UniversalTag* row,
                                  int column, bool bad)
{
    FieldBuffer buffer(static_cast<size_t>(bad || element.constructed ? 0 : element.contents().size()));
    const FieldValue field = describe(context, element, level, bad, buffer);
    return printContents(context, element, field, row, column, bad, ":");
}
