#include "tlv/syntax_layout.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "app/signal.h"
#include "meaning/encapsulation.h"
#include "meaning/oid_naming.h"
#include "meaning/utf8_text.h"
#include "diagnose/check.h"
#include "diagnose/diagnose.h"
#include "render/contents.h"
#include "render/tag_name.h"
#include "render/universal_tags.h"
#include "render/text_block.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output.h"
#include "runtime/output_line.h"
#include "runtime/services.h"
#include "tlv/end_cache.h"
#include "tlv/field_columns.h"
#include "tlv/reader.h"
#include "tlv/walker.h"

namespace {

constexpr int kTypeWidth = 13;
constexpr int kLengthWidth = 8;
constexpr size_t kNameLimit = 12;

// The Type field: the name, maybe broken over two lines; returns its width
// on the element's line. Names are cut to 12 characters, but an
// application tag stands whole.
int printTypeName(OutputLine& line, const TagText& name, bool whole, int indent)
{
    if (name.text == nullptr) return line.text("Unknown", 7);
    std::string_view rest(name.text, static_cast<size_t>(name.length));
    if (whole) return line.text(rest.data(), rest.size());
    const size_t at = name.row != nullptr ? name.row->split : 0;
    if (at > 0) {
        std::string_view front = rest.substr(0, at);
        line.text(front.data(), front.size() < kNameLimit ? front.size() : kNameLimit);
        line.character('\n');
        line.blanks(indent);
        rest = rest.substr(at);
    }
    return line.text(rest.data(), rest.size() < kNameLimit ? rest.size() : kNameLimit);
}

int printLengthField(OutputLine& line, int32_t length, int32_t shown, bool bad)
{
    if (length == LENGTH_INDEFINITE) return line.text("indef", 5);
    if (!bad) return line.decimal(shown);
    if (length != LENGTH_TRUNCATED) return line.character('?') + line.decimal(shown);
    return line.text("???", 3);
}

}  // namespace

bool listSyntaxStretch(RunContext* context, const RecordStretch& stretch)
{
    const uint32_t savedFlags = context->toolFlags;
    context->toolFlags |= TLV_SYNTAX_LAYOUT;
    EndCacheScope ends(context);
    TagWalkScope fields(context);
    RecordSteps records(stretch);
    bool titles = true;
    int32_t count = stretch.length;
    const bool diagnose = (context->toolFlags & TLV_DIAGNOSE) != 0;
    walkRecordsWith(context, stretch.data, count, titles, diagnose ? printSyntaxDiagnosed : printSyntaxElement,
                    records);
    // The flag of a failed value outlives the stretch, as it outlives a record.
    context->toolFlags = (savedFlags & ~TLV_VALUE_FAILED) | (context->toolFlags & TLV_VALUE_FAILED);
    return count == 0;
}

void printSyntaxLayout(RunContext* context, InputBuffer& buffer)
{
    // A listing of its own: a failed value's flag ends with it (a PEM file's
    // next block starts without it).
    const uint32_t savedFlags = context->toolFlags;
    listSyntaxStretch(context, wholeInputStretch(context, buffer, true));
    context->toolFlags = savedFlags;
}

int printSyntaxElement(RunContext* context, const Element& element, int depth, bool& indefinite, bool& titles)
{
    const int indent = 2 * depth;
    TagNameBuffer nameBuffer;
    TagText name = elementTagName(context, element, nameBuffer);
    if (name.text == nullptr) return 1;
    indefinite = false;
    if (element.firstOctet() == 0) {
        signalError(context, kTagZero, 0, 0);
        name = TagText();
    }

    const int indentWidth = indent;
    if ((context->toolFlags & TLV_NO_TITLES) == 0 && titles) {
        OutputLine title(context, static_cast<size_t>(indentWidth) + 32);
        title.character('\n');
        title.blanks(indentWidth);
        title.text("Type         Length  Contents", 29);
    }

    const int32_t available = element.available();
    int32_t length = LENGTH_TRUNCATED;
    bool bad = false;
    int32_t header = reportHeaderLength(context, element);
    if (header != LENGTH_TRUNCATED && header <= available) length = reportContentLength(context, element);
    const int32_t shown = length;
    bool lineEnd = true;
    if (length == LENGTH_TRUNCATED) {
        bad = true;
        lineEnd = false;
    } else if (length == LENGTH_INDEFINITE) {
        indefinite = true;
    } else if (length > available - header) {
        // The report of the overrun has ended its line already.
        length = available - header;
        bad = true;
        lineEnd = false;
    }

    // Contents shown as their octets go on the element's line, straight
    // from the input.
    const bool octetsInLine = octetsOnTheLine(context, element, name.row);
    // So do a tag map's field name and a short value in the map's form.
    size_t contentsRoom = octetsInLine ? octetsRoom(element) : 0;
    FieldOnLine field;
    if (context->tagWalk != nullptr) [[unlikely]] {
        field = syntaxFieldOnTheLine(context, element, name.row, !bad && length >= 0);
        contentsRoom = field.room;
    }
    int column = 0;
    {
        const size_t nameLength = name.text != nullptr ? static_cast<size_t>(name.length) : 7;
        OutputLine line(context, 3 * static_cast<size_t>(indentWidth) + 2 * nameLength + 80 + contentsRoom);
        if (lineEnd) line.character('\n');
        column = line.blanks(indentWidth);
        const int width = printTypeName(line, name, element.tagClass == CLASS_APPLICATION, indentWidth);
        column += width;
        column += line.blanks(kTypeWidth - width);
        const int lengthWidth = printLengthField(line, length, shown, bad);
        column += lengthWidth + line.blanks(kLengthWidth - lengthWidth);

        if (length == LENGTH_INDEFINITE && element.emptyIndefinite()) {
            line.character('\n');
            line.blanks(indentWidth);
            line.text("END-OF-CONTENTS", 15);
            return 0;
        }
        if (octetsInLine) {
            putOctetsAsTheyAre(line, context, element, name.row, "", column);
            return 0;
        }
        if (field.node != nullptr) [[unlikely]] {
            putSyntaxFieldOnTheLine(line, context, field, element, column);
            return 0;
        }
    }
    if (bad && length == LENGTH_TRUNCATED) return 1;
    // -dig: the walk lists the string's contents as elements.
    const bool extended = showsMore(context->extensions);
    if (digsIn(context->extensions) && printEncapsulationMark(context, element, MAX_WALK_DEPTH - 1 - depth, false)) {
        return bad ? 1 : 0;
    }

    if (context->tagWalk != nullptr) {
        return printSyntaxFieldContents(context, element, depth, name.row, column, bad) ? 1 : 0;
    }
    Rendered value = renderContents(context, element, name.row);
    if (value.present()) {
        bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
        if (!element.constructed || failed) printRendered(context, value, name.row, column);
        if (!failed && extended) printOidName(context, element, true);
        if (failed) bad = failedValueEndsLevel(context, element, name.row) || bad;
    } else if ((context->toolFlags & TLV_DIAGNOSE) != 0 && (context->toolFlags & TLV_VALUE_FAILED) != 0) {
        // A failed value with nothing to show (an empty INTEGER) is told at
        // its own element, not left to the next one.
        bad = failedValueEndsLevel(context, element, name.row) || bad;
    }
    return bad ? 1 : 0;
}

int putHexValue(OutputLine& line, const RunContext* context, OctetView octets, bool keepsWidth, int column)
{
    bool cut = false;
    const size_t shown = keptOfValue(context, 2 * static_cast<size_t>(octets.size()), keepsWidth, column, cut);
    int printed = line.hexDigits(octets.data(), static_cast<int32_t>(shown));
    if (cut) printed += line.text("...", 3);
    return printed;
}

int printHexValue(RunContext* context, OctetView octets, bool keepsWidth, int column)
{
    OutputLine line(context, 2 * static_cast<size_t>(octets.size()) + 3);
    return putHexValue(line, context, octets, keepsWidth, column);
}

int printRendered(RunContext* context, const Rendered& value, const UniversalTag* row, int column)
{
    const bool keepsWidth = row != nullptr && row->keepsWidth && (context->toolFlags & TLV_VALUE_FAILED) == 0;
    if (value.hexForm()) return printHexValue(context, value.hex(), keepsWidth, column);
    // -utf8 text is measured and cut by characters, not octets.
    const bool characters = showsMore(context->extensions) && utf8TextWanted(context);
    const size_t size = characters ? utf8Characters(value.text(), value.textSize()) : value.textSize();
    bool cut = false;
    const size_t shown = keptOfValue(context, size, keepsWidth, column, cut);
    if (characters) {
        OutputLine line(context, utf8PrefixOctets(value.text(), value.textSize(), shown) + 3);
        line.text(value.text(), utf8PrefixOctets(value.text(), value.textSize(), shown));
        if (cut) line.text("...", 3);
        return static_cast<int>(shown) + (cut ? 3 : 0);
    }
    OutputLine line(context, shown + 3);
    int printed = line.text(value.text(), shown);
    if (cut) printed += line.text("...", 3);
    return printed;
}

bool printOctetsAsTheyAre(RunContext* context, const Element& element, const UniversalTag* row, int column,
                          std::string_view separator)
{
    if (!octetsAsTheyAre(context, element, row)) return false;
    if (!element.constructed) {
        OutputLine line(context, separator.size() + octetsRoom(element));
        putOctetsAsTheyAre(line, context, element, row, separator, column);
    }
    return true;
}
