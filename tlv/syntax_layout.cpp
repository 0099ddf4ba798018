#include "tlv/syntax_layout.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "app/signal.h"
#include "render/contents.h"
#include "render/tag_name.h"
#include "render/universal_tags.h"
#include "render/text_block.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tlv/end_cache.h"
#include "tlv/reader.h"
#include "tlv/walker.h"

namespace {

constexpr int kTypeWidth = 13;
constexpr int kLengthWidth = 8;
constexpr size_t kNameLimit = 12;
constexpr int kLineEnd = 79;
constexpr int kCopyLimit = 1024;

// The Type field: the name, maybe broken over two lines; returns its width
// on the element's line.
int printTypeName(RunContext* context, const TagText& name, int indent)
{
    if (name.text == nullptr) return qorWrite(context, "Unknown", 7);
    std::string_view rest(name.text, static_cast<size_t>(name.length));
    const size_t at = name.row != nullptr ? name.row->split : 0;
    if (at > 0) {
        std::string_view front = rest.substr(0, at);
        qorWrite(context, front.data(), front.size() < kNameLimit ? front.size() : kNameLimit);
        qorWrite(context, "\n", 1);
        qorBlanks(context, indent);
        rest = rest.substr(at);
    }
    return qorWrite(context, rest.data(), rest.size() < kNameLimit ? rest.size() : kNameLimit);
}

// Pads a field to its width; a field wider than that pushes by the excess.
int padTo(RunContext* context, int width, int printed)
{
    return qorBlanks(context, width - printed);
}

int printLengthField(RunContext* context, int32_t length, int32_t shown, bool bad)
{
    if (length == LENGTH_INDEFINITE) return qorWrite(context, "indef", 5);
    if (!bad) return qorWriteDecimal(context, shown);
    if (length != LENGTH_TRUNCATED) return qorWrite(context, "?", 1) + qorWriteDecimal(context, shown);
    return qorWrite(context, "???", 3);
}

}  // namespace

void printSyntaxLayout(RunContext* context, InputBuffer& buffer)
{
    const uint32_t savedFlags = context->toolFlags;
    context->toolFlags |= TLV_SYNTAX_LAYOUT;
    EndCacheScope ends(context);
    bool titles = true;
    int32_t count = buffer.length;
    walkRecords(context, buffer.data, count, 0, titles, printSyntaxElement);
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

    if ((context->toolFlags & TLV_NO_TITLES) == 0 && titles) {
        qorWrite(context, "\n", 1);
        qorBlanks(context, indent);
        qorWrite(context, "Type         Length  Contents", 29);
    }

    const int32_t available = element.available();
    int32_t length = LENGTH_TRUNCATED;
    bool bad = false;
    int32_t header = reportHeaderLength(context, element);
    if (header != LENGTH_TRUNCATED && header <= available) length = reportContentLength(context, element);
    const int32_t shown = length;
    if (length == LENGTH_TRUNCATED) {
        bad = true;
    } else if (length == LENGTH_INDEFINITE) {
        indefinite = true;
        qorWrite(context, "\n", 1);
    } else if (length > available - header) {
        length = available - header;
        bad = true;
    } else {
        qorWrite(context, "\n", 1);
    }

    int column = qorBlanks(context, indent);
    int width;
    if (element.tagClass == CLASS_APPLICATION) {
        width = qorPrint(context, "[APPLICATION %d]", element.tagNumber);
    } else {
        width = printTypeName(context, name, indent);
    }
    column += width;
    column += padTo(context, kTypeWidth, width);
    int lengthWidth = printLengthField(context, length, shown, bad);
    column += lengthWidth + padTo(context, kLengthWidth, lengthWidth);

    if (length == LENGTH_INDEFINITE && element.emptyIndefinite()) {
        qorWrite(context, "\n", 1);
        qorBlanks(context, indent);
        qorWrite(context, "END-OF-CONTENTS", 15);
        return 0;
    }
    if (bad && length == LENGTH_TRUNCATED) return 1;

    Rendered value = renderContents(context, element, name.row);
    if (value.present()) {
        bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
        if (!element.constructed || failed) printRendered(context, value, name.row, column);
        if (failed) {
            context->toolFlags &= ~TLV_VALUE_FAILED;
            bad = true;
        }
    }
    return bad ? 1 : 0;
}

int printRendered(RunContext* context, const Rendered& value, const UniversalTag* row, int column)
{
    const bool hex = value.hexForm();
    const size_t size = hex ? 2 * static_cast<size_t>(value.hex().size()) : std::strlen(value.text());
    auto write = [&](size_t count) {
        return hex ? qorWriteHexDigits(context, value.hex().data(), static_cast<int32_t>(count))
                   : qorWrite(context, value.text(), count);
    };
    int room = kLineEnd - column;
    const bool keepsWidth = row != nullptr && row->keepsWidth && (context->toolFlags & TLV_VALUE_FAILED) == 0;
    if ((context->toolFlags & TLV_NO_SHORT) != 0) return write(size);
    if (keepsWidth || context->lineWidth == 0 || context->lineWidth > static_cast<uint32_t>(kCopyLimit)) {
        room = kCopyLimit;
    }
    if (size <= static_cast<size_t>(room > 0 ? room : 0)) return write(size);
    // Too long for the line: cut, and mark the cut with "...". With no room
    // left at all the mark alone stands for the value.
    if (room <= 3) return qorWrite(context, "...", 3);
    int printed = write(static_cast<size_t>(room - 3));
    return printed + qorWrite(context, "...", 3);
}
