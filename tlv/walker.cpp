#include "tlv/walker.h"

#include <cstdint>
#include <cstring>

#include "app/signal.h"
#include "meaning/encapsulation.h"
#include "render/tag_name.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tagmap/tag_walk.h"
#include "tlv/reader.h"
#include "tlv/walk_level.h"

namespace {



// A CDR file header: file length (4), header length H (4) at offset 0; the
// first record header stands at H.
bool readFileForm(const uint8_t* input, int32_t count, int32_t expected, int32_t& fileHeader,
                  int32_t& recordHeader, uint32_t& recordLength)
{
    if (count <= 54) return false;
    auto fileLength = static_cast<int32_t>(readBigEndian(4, input));
    if (fileLength <= 0 || fileLength != expected) return false;
    uint32_t header = readBigEndian(4, input + 4);
    if (header < 50 || header >= static_cast<uint32_t>(count)) return false;
    if (header + 3 > static_cast<uint32_t>(count)) return false;  // no room for R and its form
    recordLength = readBigEndian(2, input + header);
    if (recordLength == 0 || recordLength + header + 5 >= static_cast<uint32_t>(count)) return false;
    fileHeader = static_cast<int32_t>(header);
    recordHeader = (input[header + 2] >> 5) == 7 ? 5 : 4;
    return true;
}

// A 4-octet CDR record header without a file header: R at offset 2.
bool readRecordForm(const uint8_t* input, int32_t count, int32_t& recordHeader,
                    uint32_t& recordLength)
{
    if (count < 4) return false;
    recordLength = readBigEndian(2, input + 2);
    if (recordLength == 0 || recordLength + 4 >= static_cast<uint32_t>(count)) return false;
    recordHeader = 4;
    return true;
}

// The total length of the first record's element, or -1 if it can't be read.
int32_t firstRecordLength(RunContext* context, const uint8_t* record, int32_t available)
{
    int32_t header = headerLength(context, record, available);
    if (header == LENGTH_TRUNCATED || header > available) return -1;
    int32_t length = contentLength(context, record, available);
    if (length == LENGTH_TRUNCATED || length > available - header) return -1;
    if (length == LENGTH_INDEFINITE) {
        int32_t behind = available;
        if (nextElement(context, record, behind) == nullptr) return -1;
        return available - behind;
    }
    return header + length;
}

}  // namespace

bool endOfContentsFollows(RunContext* context, const uint8_t* octets)
{
    const Element element = readElement(octets, 2);
    TagNameBuffer buffer;
    const TagText name = elementTagName(context, element, buffer);
    return name.text != nullptr && element.tagClass == CLASS_UNIVERSAL && element.tagNumber == 0;
}

int dumpOctets(RunContext* context, const uint8_t* octets, int32_t count, int indent,
               const char* suffix)
{
    if (count <= 0) return 0;
    int printed = indent > 0 ? qorBlanks(context, indent) : 0;
    printed += qorWriteHexDigits(context, octets, 2 * count);
    if (suffix != nullptr && suffix[0] != '\0') printed += qorWrite(context, suffix, std::strlen(suffix));
    return printed;
}

void printTooDeep(RunContext* context, int depth)
{
    qorWrite(context, "\n", 1);
    qorBlanks(context, 2 * depth);
    qorPrint(context, "Nesting deeper than %d levels, contents not shown.", MAX_WALK_DEPTH);
}

bool detectCdrHeaders(RunContext* context, const uint8_t* input, int32_t inputLength,
                      CdrProbe& probe)
{
    int32_t count = inputLength;
    int32_t fileHeader = 0;
    int32_t recordHeader = 0;
    uint32_t recordLength = 0;
    if (!readFileForm(input, count, probe.expectedLength, fileHeader, recordHeader, recordLength)) {
        fileHeader = 0;
        if (!readRecordForm(input, count, recordHeader, recordLength)) return false;
    }
    if (recordLength > static_cast<uint32_t>(count - fileHeader - recordHeader)) return false;
    if (count - fileHeader <= recordHeader) return false;

    // A look-ahead: what it meets while probing is no finding of the listing,
    // and doesn't stay behind as the run's last error either.
    uint32_t wasQuiet = context->toolFlags & TLV_QUIET_ERRORS;
    const int32_t lastError = context->state != nullptr ? context->state->lastError : 0;
    context->toolFlags |= TLV_QUIET_ERRORS;
    int32_t total = firstRecordLength(context, input + fileHeader + recordHeader,
                                      count - fileHeader - recordHeader);
    context->toolFlags = (context->toolFlags & ~TLV_QUIET_ERRORS) | wasQuiet;
    if (context->state != nullptr) context->state->lastError = lastError;
    if (total < 0 || static_cast<uint32_t>(total) != recordLength) return false;
    probe.fileHeaderLength = fileHeader;
    probe.recordHeaderLength = recordHeader;
    return true;
}

void skipCdrHeader(RunContext* context, const uint8_t*& cursor, int32_t& count, int32_t length,
                   const char* word)
{
    if (length <= 0 || count <= length) return;
    qorPrint(context, "\nCDR %s header detected, skipping %d bytes ...\n", word, length);
    dumpOctets(context, cursor, length, 0, "");
    cursor += length;
    count -= length;
}

bool padByteOf(const RunContext* context, uint8_t& pad)
{
    // A negative -pad value is no octet: nothing equals it.
    if (context->padByteSpec == 0 || context->padByteSpec - 1 > 0xFF) return false;
    pad = static_cast<uint8_t>(context->padByteSpec - 1);
    return true;
}

RecordStretch wholeInputStretch(RunContext* context, const InputBuffer& buffer, bool findCdrHeaders)
{
    RecordStretch whole;
    whole.data = buffer.data;
    whole.length = buffer.length;
    whole.reach = buffer.length;
    whole.origin = buffer.origin;
    if (findCdrHeaders && buffer.length > 0) {
        whole.probe = probeCdrHeaders(context, buffer.data, buffer.length, buffer.length);
    }
    return whole;
}

int32_t skipPadding(RunContext* context, const uint8_t*& cursor, int32_t& count)
{
    uint8_t pad = 0;
    if (!padByteOf(context, pad)) return 0;
    const int32_t skipped = OctetView(cursor, count).spanOf(pad);
    if (skipped == 0) return 0;
    qorPrint(context, "\n\nPadding byte '0x%s%X' detected, skipping %ld bytes ...\n\n",
             pad < 16 ? "0" : "", pad, static_cast<long>(skipped));
    dumpOctets(context, cursor, skipped, 0, "");
    cursor += skipped;
    count -= skipped;
    return skipped;
}

CdrProbe probeCdrHeaders(RunContext* context, const uint8_t* input, int32_t count, int64_t total)
{
    // A file header's length field has 31 bits for a positive length: a
    // larger input has none that matches.
    CdrProbe probe = {total <= INT32_MAX ? static_cast<int32_t>(total) : -1, 0, 0};
    if ((context->toolFlags & TLV_NO_CDR_HEADERS) == 0 && detectCdrHeaders(context, input, count, probe)) return probe;
    probe.fileHeaderLength = 0;
    probe.recordHeaderLength = 0;
    return probe;
}

RecordSteps::RecordSteps(RunContext* context, const uint8_t* input, int32_t count)
    : probe_(probeCdrHeaders(context, input, count, count))
{
}

bool RecordSteps::next(RunContext* context, const uint8_t*& element, int32_t& count, bool& titles)
{
    ++recordNumber_;
    if ((context->toolFlags & TLV_FIX_ENCODING) != 0 && count <= context->state->spareTail) return false;
    if (recordNumber_ == 1) {
        if (probe_.fileHeaderLength > 0) skipCdrHeader(context, element, count, probe_.fileHeaderLength, "file");
        if (probe_.recordHeaderLength > 0) {
            skipCdrHeader(context, element, count, probe_.recordHeaderLength, "record");
            qorWrite(context, "\n", 1);
        }
    }
    // Padding is looked for only between records of a file without a header.
    if (probe_.fileHeaderLength == 0 && skipPadding(context, element, count) != 0 && count == 0) return false;
    if (recordNumber_ >= 2) {
        qorPrint(context, "\n\nConcatenated record #%d detected, printing ...\n", recordNumber_);
        titles = true;
        if (probe_.recordHeaderLength > 0) {
            skipCdrHeader(context, element, count, probe_.recordHeaderLength, "record");
            qorWrite(context, "\n", 1);
        }
    }
    return true;
}

void printEndOfContents(RunContext* context, int depth)
{
    qorWrite(context, "\n", 1);
    qorBlanks(context, 2 * depth);
    if ((context->toolFlags & TLV_SYNTAX_LAYOUT) != 0) {
        qorWrite(context, "END-OF-CONTENTS", 15);
    } else {
        qorWrite(context, "00 00", 5);
    }
}

namespace {

void walkFrom(RunContext* context, const uint8_t* first, int32_t& total, int top, bool& titles,
              ElementPrinter printer, RecordSteps& records)
{
    WalkLevel levels[MAX_WALK_DEPTH];
    int depth = top;
    WalkLevel* level = &levels[0];
    level->element = first;
    level->count = total;
    level->endsAtEndOfContents = false;
    while (true) {
        // Print the element the level stands at, and go inside it.
        bool printed = false;
        if (depth != 0 || records.next(context, level->element, level->count, titles)) {
            const bool ahead = readLevelElement(context, *level, depth == 0 && records.verified());
            level->indefinite = false;
            if (context->tagWalk != nullptr) context->tagWalk->enter(depth, level->read.tagClass, level->read.tagNumber);
            if (printer(context, level->read, depth, level->indefinite, titles) == 0) {
                // The repair may have rewritten a length octet while printing.
                if ((context->toolFlags & TLV_FIX_ENCODING) != 0) {
                    readElementInto(level->read, level->element, level->count);
                }
                int32_t inner = 0;
                level->inside = enterLevelElement(context, *level, ahead, inner);
                if (level->inside == nullptr && digsIn(context->extensions) &&
                    (context->toolFlags & TLV_SYNTAX_LAYOUT) != 0) {
                    // -dig: a string that encapsulates BER is gone into like a constructed
                    // element; the hexadecimal layout shows octets only.
                    const OctetView dug = encapsulatedContents(context, level->read, MAX_WALK_DEPTH - 1 - depth);
                    if (!dug.empty()) {
                        level->inside = dug.data();
                        inner = dug.size();
                        level->contentsLength = inner;
                    }
                }
                printed = true;
                if (level->inside != nullptr) {
                    titles = true;
                    if (depth + 1 < MAX_WALK_DEPTH) {
                        WalkLevel* child = level + 1;
                        child->element = level->inside;
                        child->count = inner;
                        child->endsAtEndOfContents = ahead;
                        level = child;
                        ++depth;
                        continue;
                    }
                    printTooDeep(context, depth + 1);
                }
            }
        }
        // Close the element and step on; a level that ends hands over to the
        // one above, which steps over the element it went into.
        while (true) {
            if (printed) {
                titles = false;
                settleContentsLength(context, *level);
                if (level->indefinite && level->inside != nullptr &&
                    endOfContentsFollows(context, level->inside + level->contentsLength)) {
                    printEndOfContents(context, depth);
                }
                if (depth == 0) qorRecordDone(context, level->element);
                const uint8_t* next = stepOverLevelElement(context, *level);
                if (next != nullptr && level->count != 0 && !levelEndsAt(level, next)) {
                    level->element = next;
                    break;
                }
            }
            if (depth == top) {
                total = level->count;
                return;
            }
            --level;
            --depth;
            printed = true;
        }
    }
}

}  // namespace

void walkRecords(RunContext* context, const uint8_t* first, int32_t& total, int top, bool& titles,
                 ElementPrinter printer)
{
    if (total <= 0) return;
    // Records, their headers and the padding between them belong to the top level.
    RecordSteps records = top == 0 ? RecordSteps(context, first, total) : RecordSteps();
    walkFrom(context, first, total, top, titles, printer, records);
}

void walkRecordsWith(RunContext* context, const uint8_t* first, int32_t& count, bool& titles,
                     ElementPrinter printer, RecordSteps& records)
{
    if (count <= 0) return;
    walkFrom(context, first, count, 0, titles, printer, records);
}
