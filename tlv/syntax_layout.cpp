#include "tlv/syntax_layout.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "app/signal.h"
#include "render/contents.h"
#include "render/tag_name.h"
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

// Where a long type name is broken in two, or npos.
size_t splitPoint(const std::string_view name)
{
    size_t at = name.find("String");
    if (at != std::string_view::npos && name != "BMPString" && name != "IA5String") return at;
    at = name.find("Time");
    if (at != std::string_view::npos && name != "UTCTime") return at;
    if (name == "CHARACTER STRING") return name.find("STRING");
    at = name.find("IDENTIFIER");
    if (at != std::string_view::npos) return at;
    return name.find("Descriptor");
}

// The Type field: the name, maybe broken over two lines; returns its width
// on the element's line.
int printTypeName(RunContext* context, const char* name, int indent)
{
    if (name == nullptr) return qorWrite(context, "Unknown", 7);
    std::string_view rest = name;
    size_t at = splitPoint(rest);
    if (at != std::string_view::npos && at > 0) {
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

// Times, REALs and INTEGERs are shown whole, however long.
bool keepsItsWidth(const char* name)
{
    if (name[0] == '[') return false;  // a tag in brackets names none of them
    return std::strstr(name, "Time") != nullptr || std::strstr(name, "REAL") != nullptr ||
           std::strstr(name, "INTEGER") != nullptr;
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

int printSyntaxElement(RunContext* context, const uint8_t* element, int32_t available, int depth,
                       bool& indefinite, bool& titles)
{
    const int indent = 2 * depth;
    TagNameBuffer nameBuffer;
    const char* name = tagNameText(context, element, available, nameBuffer);
    if (name == nullptr) return 1;
    indefinite = false;
    if (element[0] == 0) {
        signalError(context, 73, 0, 0);
        name = nullptr;
    }

    if ((context->toolFlags & TLV_NO_TITLES) == 0 && titles) {
        qorWrite(context, "\n", 1);
        qorBlanks(context, indent);
        qorWrite(context, "Type", 4);
        qorBlanks(context, 9);
        qorWrite(context, "Length", 6);
        qorBlanks(context, 2);
        qorWrite(context, "Contents", 8);
    }

    int32_t length = LENGTH_TRUNCATED;
    bool bad = false;
    int32_t header = headerLength(context, element, available);
    if (header != LENGTH_TRUNCATED && header <= available) length = contentLength(context, element, available);
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
    if (tagClass(context, element, available) == 1) {
        width = qorPrint(context, "[APPLICATION %d]", tagNumber(context, element, available));
    } else {
        width = printTypeName(context, name, indent);
    }
    column += width;
    column += padTo(context, kTypeWidth, width);
    int lengthWidth = printLengthField(context, length, shown, bad);
    column += lengthWidth + padTo(context, kLengthWidth, lengthWidth);

    if (length == LENGTH_INDEFINITE && available - header >= 2 && element[header] == 0 && element[header + 1] == 0) {
        qorWrite(context, "\n", 1);
        qorBlanks(context, indent);
        qorWrite(context, "END-OF-CONTENTS", 15);
        return 0;
    }
    if (bad && length == LENGTH_TRUNCATED) return 1;

    OwnedText text(context, renderContents(context, element, available));
    if (text.get() != nullptr) {
        bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
        if (!isConstructed(context, element, available) || failed) {
            printRendered(context, text.get(), name != nullptr ? name : "Unknown", column);
        }
        if (failed) {
            context->toolFlags &= ~TLV_VALUE_FAILED;
            bad = true;
        }
    }
    return bad ? 1 : 0;
}

int printRendered(RunContext* context, const char* text, const char* name, int column)
{
    size_t size = std::strlen(text);
    int room = kLineEnd - column;
    bool keepsWidth = keepsItsWidth(name) && (context->toolFlags & TLV_VALUE_FAILED) == 0;
    if ((context->toolFlags & TLV_NO_SHORT) != 0) return qorWrite(context, text, size);
    if (keepsWidth || context->lineWidth == 0 || context->lineWidth > static_cast<uint32_t>(kCopyLimit)) {
        room = kCopyLimit;
    }
    if (size <= static_cast<size_t>(room > 0 ? room : 0)) return qorWrite(context, text, size);
    // Too long for the line: cut, and mark the cut with "...". With no room
    // left at all the mark alone stands for the value.
    if (room <= 3) return qorWrite(context, "...", 3);
    int printed = qorWrite(context, text, static_cast<size_t>(room - 3));
    return printed + qorWrite(context, "...", 3);
}
