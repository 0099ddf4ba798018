#include "tlv/walker.h"

#include <cstring>

#include "app/signal.h"
#include "render/tag_name.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "tagmap/tag_walk.h"
#include "tlv/reader.h"

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

int32_t skipPadding(RunContext* context, const uint8_t*& cursor, int32_t& count)
{
    if (context->padByteSpec == 0) return 0;
    // A negative -pad value is no octet: nothing equals it.
    if (context->padByteSpec - 1 > 0xFF) return 0;
    auto pad = static_cast<uint8_t>(context->padByteSpec - 1);
    int32_t skipped = 0;
    while (skipped < count && cursor[skipped] == pad) ++skipped;
    if (skipped == 0) return 0;
    qorPrint(context, "\n\nPadding byte '0x%s%X' detected, skipping %ld bytes ...\n\n",
             pad < 16 ? "0" : "", pad, static_cast<long>(skipped));
    dumpOctets(context, cursor, skipped, 0, "");
    cursor += skipped;
    count -= skipped;
    return skipped;
}

void walkRecords(RunContext* context, const uint8_t* element, int32_t& count, int depth,
                 bool& titles, ElementPrinter printer)
{
    if (count <= 0) return;
    CdrProbe probe = {count, 0, 0};
    if (depth == 0 && (context->toolFlags & TLV_NO_CDR_HEADERS) == 0) {
        if (!detectCdrHeaders(context, element, count, probe)) {
            probe.fileHeaderLength = 0;
            probe.recordHeaderLength = 0;
        }
    }
    int recordNumber = 0;
    while (true) {
        if (depth == 0) {
            ++recordNumber;
            if ((context->toolFlags & TLV_FIX_ENCODING) != 0 && count <= context->state->spareTail) return;
            if (recordNumber == 1) {
                if (probe.fileHeaderLength > 0) {
                    skipCdrHeader(context, element, count, probe.fileHeaderLength, "file");
                }
                if (probe.recordHeaderLength > 0) {
                    skipCdrHeader(context, element, count, probe.recordHeaderLength, "record");
                    qorWrite(context, "\n", 1);
                }
            }
            if (probe.fileHeaderLength == 0) {
                if (skipPadding(context, element, count) != 0 && count == 0) return;
            }
            if (recordNumber >= 2) {
                qorPrint(context, "\n\nConcatenated record #%d detected, printing ...\n", recordNumber);
                titles = true;
                if (probe.recordHeaderLength > 0) {
                    skipCdrHeader(context, element, count, probe.recordHeaderLength, "record");
                    qorWrite(context, "\n", 1);
                }
            }
        }
        bool indefinite = false;
        Element read = readElement(element, count);
        if (context->tagWalk != nullptr) context->tagWalk->enter(depth, read.tagClass, read.tagNumber);
        if (printer(context, read, depth, indefinite, titles) != 0) return;
        // The repair may have rewritten a length octet while printing.
        if ((context->toolFlags & TLV_FIX_ENCODING) != 0) read = readElement(element, count);

        int32_t inner = count;
        const uint8_t* inside = firstInsideOf(context, read, inner);
        int32_t contentsLength = inner;
        if (inside != nullptr) {
            titles = true;
            if (depth + 1 < MAX_WALK_DEPTH) {
                walkRecords(context, inside, inner, depth + 1, titles, printer);
            } else {
                printTooDeep(context, depth + 1);
            }
        }
        titles = false;
        if (indefinite && inside != nullptr && endOfContentsFollows(context, inside + contentsLength)) {
            qorWrite(context, "\n", 1);
            qorBlanks(context, 2 * depth);
            if ((context->toolFlags & TLV_SYNTAX_LAYOUT) != 0) {
                qorWrite(context, "END-OF-CONTENTS", 15);
            } else {
                qorWrite(context, "00 00", 5);
            }
        }
        if (depth == 0) qorRecordDone(context);
        const uint8_t* next = nextElementOf(context, read, count);
        if (next == nullptr || count == 0) return;
        element = next;
    }
}
