#include "tlv/decomposed_layout.h"

#include <cstdio>
#include <cstring>

#include "app/signal.h"
#include "meaning/encapsulation.h"
#include "meaning/oid_naming.h"
#include "diagnose/check.h"
#include "diagnose/diagnose.h"
#include "render/contents.h"
#include "render/tag_name.h"
#include "render/text_block.h"
#include "render/universal_tags.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output.h"
#include "runtime/output_line.h"
#include "runtime/services.h"
#include "tlv/end_cache.h"
#include "tlv/field_columns.h"
#include "tlv/reader.h"
#include "tlv/syntax_layout.h"
#include "tlv/walk_level.h"
#include "tlv/walker.h"

namespace {

constexpr int kNameField = 18;

// " hl=%d l=" with the header length.
int printHeaderLength(OutputLine& line, int32_t header)
{
    return line.text(" hl=", 4) + line.decimal(header) + line.text(" l=", 3);
}

// Header length, length, form and name; returns the characters printed.
int printElementFields(OutputLine& line, const Element& element, int32_t header, int32_t length, const TagText& name)
{
    int column = printHeaderLength(line, header);
    if (length == LENGTH_INDEFINITE) {
        column += line.text("-128", 4);
    } else {
        column += line.rightAligned(4, static_cast<unsigned long>(length));
    }
    column += line.text(element.constructed ? " cons: " : " prim: ", 7);
    if (name.text == nullptr) return column + line.text("Unknown", 7);
    return column + line.text(name.text, static_cast<size_t>(name.length));
}

// One open level of the walk, with where its element's line and contents
// stand in the PDU.
struct Level : WalkLevel {
    long start;        // the element's offset
    int32_t before;    // `count` when the element was read
    bool stopped;      // the element ended its level
    long insideOffset;
};

// Closes the element the level stands at: its end-of-contents line, then
// the step to the next element of the level; null when the level ends.
const uint8_t* closeElement(RunContext* context, Level& level, int depth, long& offset)
{
    const uint8_t* next = nullptr;
    if (!level.stopped) {
        settleContentsLength(context, level);
        if (level.inside != nullptr) {
            offset = level.insideOffset + level.contentsLength;
            if (level.indefinite) {
                bool endOfContents = true;
                printDecomposedElement(context, readElement(level.inside + level.contentsLength, 2), depth, offset,
                                       endOfContents);
            }
        }
        next = stepOverLevelElement(context, level);
    }
    offset = level.start + (next != nullptr ? next - level.element : level.before);
    return next;
}

// Walks the elements of a level from `first` on (`onePdu`: the one element
// of a PDU), and all that lies inside them, level by level on a stack of
// its own. Gives what follows the PDU, or null.
const uint8_t* walkFrom(RunContext* context, const uint8_t* first, int32_t& count, long& offset, int firstDepth,
                        bool onePdu, bool verified)
{
    Level levels[MAX_WALK_DEPTH + 2];
    int depth = firstDepth;
    Level* level = &levels[0];
    level->element = first;
    level->count = count;
    level->endsAtEndOfContents = false;
    while (true) {
        // Print the element the level stands at, and go inside it.
        const bool ahead = readLevelElement(context, *level, level == levels && verified);
        if (context->tagWalk != nullptr) context->tagWalk->enter(depth - 1, level->read.tagClass, level->read.tagNumber);
        level->indefinite = false;
        const bool top = onePdu && level == levels;
        level->stopped = ((context->toolFlags & TLV_DIAGNOSE) == 0
                              ? printDecomposedElement(context, level->read, depth, offset, level->indefinite)
                              : printDecomposedDiagnosed(context, level->read, depth, offset, level->indefinite, top)) != 0;
        level->before = level->count;
        level->start = offset;
        level->inside = nullptr;
        if (!level->stopped) {
            int32_t inner = 0;
            level->inside = enterLevelElement(context, *level, ahead, inner);
            if (level->inside == nullptr && digsIn(context->extensions)) {
                // -dig: a string that encapsulates BER is gone into like a constructed element.
                const OctetView dug = encapsulatedContents(context, level->read, MAX_WALK_DEPTH - depth);
                if (!dug.empty()) {
                    level->inside = dug.data();
                    inner = dug.size();
                    level->contentsLength = inner;
                }
            }
            if (level->inside != nullptr) {
                offset += level->inside - level->element;
                level->insideOffset = offset;
                if (depth + 1 <= MAX_WALK_DEPTH) {
                    Level* child = level + 1;
                    child->element = level->inside;
                    child->count = inner;
                    child->endsAtEndOfContents = level->contentsLength == kEndAhead;
                    level = child;
                    ++depth;
                    continue;
                }
                printTooDeep(context, depth + 1);
            }
        }
        // Close the element and step on; a level that ends hands over to the
        // one above, which closes the element it went into.
        while (true) {
            const uint8_t* next = closeElement(context, *level, depth, offset);
            const bool pduEnds = onePdu && level == levels;
            if (next != nullptr && level->count != 0 && !pduEnds && !levelEndsAt(level, next)) {
                level->element = next;
                break;
            }
            if (level == levels) {
                count = level->count;
                return next;
            }
            --level;
            --depth;
        }
    }
}

// The PDUs of the top level, from the padding in front of the next one on.
// Offsets count from the start of each PDU; only the line that announces a
// PDU tells where it lies in the input.
void walkPdus(RunContext* context, const RecordStretch& stretch, int32_t& count)
{
    const uint8_t* element = stretch.data;
    long listed = stretch.recordsBefore;
    while (true) {
        if (listed != 0) {
            const int32_t skipped = skipPadding(context, element, count);
            if (skipped != 0 && count == 0) return;
            qorPrint(context, "\n\nConcatenated PDU #%ld detected at offset %ld, printing ...\n", listed + 1,
                     static_cast<long>(stretch.offset + (element - stretch.data)));
        }
        long offset = 0;
        const uint8_t* next = walkFrom(context, element, count, offset, 1, true, stretch.verified);
        ++listed;
        qorRecordDone(context, element);
        if (next == nullptr) return;
        element = next;
    }
}

}  // namespace

void printDecomposedLayout(RunContext* context, InputBuffer& buffer)
{
    listDecomposedStretch(context, wholeInputStretch(context, buffer, false));
}

bool listDecomposedStretch(RunContext* context, const RecordStretch& stretch)
{
    int32_t count = stretch.length;
    EndCacheScope ends(context);
    TagWalkScope fields(context);
    if (count > 0) walkPdus(context, stretch, count);
    return count == 0;
}

void walkDecomposed(RunContext* context, const uint8_t* element, int32_t& count, long& offset, int depth)
{
    if (count <= 0) return;
    walkFrom(context, element, count, offset, depth, false, false);
}

namespace {

// The line of an end-of-contents that stands where the walk expects one.
void printEndOfContentsLine(RunContext* context, int depth, long offset)
{
    static constexpr char kFields[] = " hl=2 l=   0 prim: END-OF-CONTENTS";
    OutputLine line(context, 48 + sizeof kFields);
    line.character('\n');
    line.rightAligned(3, static_cast<unsigned long>(offset));
    line.text(":d=", 3);
    line.rightAligned(2, static_cast<unsigned long>(depth));
    line.text(kFields, sizeof kFields - 1);
}

}  // namespace

int printDecomposedElement(RunContext* context, const Element& element, int depth, long offset, bool& indefinite)
{
    if (indefinite && element.isEndOfContents()) {
        printEndOfContentsLine(context, depth, offset);
        indefinite = false;
        return 0;
    }
    TagNameBuffer nameBuffer;
    TagText name = elementTagName(context, element, nameBuffer);
    if (name.text == nullptr) return 1;
    const int32_t available = element.available();
    int32_t length = LENGTH_TRUNCATED;
    int nameWidth = 0;
    bool bad = false;
    // The walker marks an end-of-contents by `indefinite`; any other 00 is a
    // tag of 00.
    if (element.firstOctet() == 0 && !indefinite) {
        signalError(context, kTagZero, 0, 0);
        name = TagText();
    }

    int32_t header = reportHeaderLength(context, element);
    bool lineEnd = false;
    if (header == LENGTH_TRUNCATED || header > available) {
        bad = true;
    } else {
        length = reportContentLength(context, element);
        if (length == LENGTH_TRUNCATED) {
            bad = true;
        } else {
            lineEnd = true;
        }
    }
    indefinite = length == LENGTH_INDEFINITE;
    if (length >= 0 && length > available - header) length = available - header;

    const std::string_view field = context->tagWalk != nullptr ? tagField(context, depth - 1) : std::string_view();
    // Contents shown as their octets go on the element's line, straight
    // from the input.
    const bool octetsInLine = octetsOnTheLine(context, element, name.row);
    int column = 0;
    {
        const size_t nameLength = name.text != nullptr ? static_cast<size_t>(name.length) : 7;
        const size_t octetsLength = octetsInLine ? octetsRoom(element) : 0;
        OutputLine line(context, nameLength + field.size() + 96 + octetsLength);
        if (lineEnd) line.character('\n');
        column = line.rightAligned(3, static_cast<unsigned long>(offset));
        column += line.text(":d=", 3);
        column += line.rightAligned(2, static_cast<unsigned long>(depth));
        if (header == LENGTH_TRUNCATED) {
            column += line.text(" hl= ???", 8);
        } else if (length == LENGTH_TRUNCATED) {
            column += printHeaderLength(line, header) + line.text(" ???", 4);
        } else {
            column += printElementFields(line, element, header, length, name);
            const bool endOfContents = element.tagClass == CLASS_UNIVERSAL && element.tagNumber == 0;
            if (name.text != nullptr && !endOfContents) nameWidth = name.length + 1;
            if (nameWidth != 0 && !field.empty()) {
                const int fieldWidth = line.character(' ') + line.text(field.data(), field.size());
                nameWidth += fieldWidth;
                column += fieldWidth;
            }
        }
        if ((bad && length == LENGTH_TRUNCATED) || nameWidth == 0) return bad ? 1 : 0;
        if (!(length == LENGTH_INDEFINITE && element.emptyIndefinite()) && nameWidth < kNameField) {
            column += line.blanks(kNameField - nameWidth);
        }
        if (octetsInLine) {
            putOctetsAsTheyAre(line, context, element, name.row, ":", column);
            return bad ? 1 : 0;
        }
    }

    if (length == LENGTH_INDEFINITE && element.emptyIndefinite()) {
        bool endOfContents = true;
        printDecomposedElement(context, readElement(element.behindHeader().first(2)), depth, offset + header,
                               endOfContents);
        return bad ? 1 : 0;
    }
    // -dig: the walk lists the string's contents as elements.
    const bool extended = showsMore(context->extensions);
    if (digsIn(context->extensions) && printEncapsulationMark(context, element, MAX_WALK_DEPTH - depth, true)) {
        return bad ? 1 : 0;
    }
    if (context->tagWalk != nullptr) {
        return printDecomposedFieldContents(context, element, depth - 1, name.row, column, bad) ? 1 : 0;
    }
    Rendered value = renderContents(context, element, name.row);
    if (value.present()) {
        bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
        if (!element.constructed || failed) {
            column += qorWrite(context, ":", 1);
            printRendered(context, value, name.row, column);
        }
        if (!failed && extended) printOidName(context, element, false);
        if (failed) bad = failedValueEndsLevel(context, element, name.row) || bad;
    } else if ((context->toolFlags & TLV_DIAGNOSE) != 0 && (context->toolFlags & TLV_VALUE_FAILED) != 0) {
        // A failed value with nothing to show (an empty INTEGER) is told at
        // its own element, not left to the next one.
        bad = failedValueEndsLevel(context, element, name.row) || bad;
    }
    return bad ? 1 : 0;
}
