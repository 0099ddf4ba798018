// The syntax-TLV layout: type name, length and readable contents in three
// columns, with a title line for each nesting level.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "render/universal_tags.h"
#include "runtime/buffers.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output_line.h"
#include "tlv/element.h"
#include "tlv/octet_view.h"

struct RecordStretch;
class Rendered;

void printSyntaxLayout(RunContext* context, InputBuffer& buffer);
// Lists a stretch of records; false when the listing ended inside it.
bool listSyntaxStretch(RunContext* context, const RecordStretch& stretch);
int printSyntaxElement(RunContext* context, const Element& element, int depth, bool& indefinite, bool& titles);
// Prints a rendered value, truncated at column 79 unless it keeps its width;
// returns the characters printed.
int printRendered(RunContext* context, const Rendered& value, const UniversalTag* row, int column);
// Contents octets in hexadecimal, cut as printRendered cuts them: on their
// own, or on a line being composed.
int printHexValue(RunContext* context, OctetView octets, bool keepsWidth, int column);
int putHexValue(OutputLine& line, const RunContext* context, OctetView octets, bool keepsWidth, int column);
// Whether the contents show as the octets they are (showsOctetsAsTheyAre)
// with no failed value's flag standing: the layouts write them straight
// from the input.
inline bool octetsAsTheyAre(const RunContext* context, const Element& element, const UniversalTag* row)
{
    return (context->toolFlags & TLV_VALUE_FAILED) == 0 && showsOctetsAsTheyAre(element, row);
}
// Contents up to this long go on the element's line as it is composed.
constexpr int32_t kInLineOctets = 2048;
// Whether a readable layout writes the contents on the element's own line
// as it composes it: octets as they are, not too long, and no option
// (-dig, -tags, -oids, -utf8) that has its own say on them.
inline bool octetsOnTheLine(const RunContext* context, const Element& element, const UniversalTag* row)
{
    return !showsMore(context->extensions) && element.length <= kInLineOctets && octetsAsTheyAre(context, element, row);
}
// The room they take there: the digits, a separator, a cut's "...".
inline size_t octetsRoom(const Element& element)
{
    return 2 * static_cast<size_t>(element.length) + 4;
}
// Writes them on `line` behind `separator`; a constructed element's octets
// are its elements', and nothing is written for them.
inline void putOctetsAsTheyAre(OutputLine& line, const RunContext* context, const Element& element,
                               const UniversalTag* row, std::string_view separator, int column)
{
    if (element.constructed) return;
    column += line.text(separator.data(), separator.size());
    putHexValue(line, context, element.contents(), row != nullptr && row->keepsWidth, column);
}
// Where the readable layouts cut a value of `size` characters that starts at
// `column` (of their 79): the characters kept, and whether "..." marks the
// cut. A value that keeps its width, or a listing without a line width,
// goes up to 1,024 characters; -noshort shows everything.
inline size_t keptOfValue(const RunContext* context, size_t size, bool keepsWidth, int column, bool& cut)
{
    constexpr int kLineEnd = 79;
    constexpr int kCopyLimit = 1024;
    cut = false;
    if ((context->toolFlags & TLV_NO_SHORT) != 0) return size;
    int room = kLineEnd - column;
    if (keepsWidth || context->lineWidth == 0 || context->lineWidth > static_cast<uint32_t>(kCopyLimit)) {
        room = kCopyLimit;
    }
    // Too long for the line: cut, and mark the cut with "...". With no room
    // left at all the mark alone stands for the value.
    if (size <= static_cast<size_t>(room > 0 ? room : 0)) return size;
    cut = true;
    return room <= 3 ? 0 : static_cast<size_t>(room - 3);
}
// Contents shown as the octets they are (showsOctetsAsTheyAre), behind
// `separator`, straight from the input while no failed value's flag stands;
// false when the value takes the decoder's road.
bool printOctetsAsTheyAre(RunContext* context, const Element& element, const UniversalTag* row, int column,
                          std::string_view separator);
