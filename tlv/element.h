// One BER element, read once: identifier octets, length octets and where its
// contents lie, with what the read found wrong. The walkers read each element
// once and hand this record to the printers and the checks; nothing reads
// the header again.
#pragma once

#include <cstdint>

#include "tlv/octet_view.h"

struct RunContext;

// Length results.
constexpr int32_t LENGTH_INDEFINITE = -1;
constexpr int32_t LENGTH_TRUNCATED = -2;
constexpr int32_t LENGTH_TOO_LARGE = 0x7FFFFFFF;

constexpr uint8_t HIGH_TAG_MASK = 0x1F;
constexpr uint8_t CONSTRUCTED_BIT = 0x20;

enum TagClass : uint8_t { CLASS_UNIVERSAL = 0, CLASS_APPLICATION = 1, CLASS_CONTEXT = 2, CLASS_PRIVATE = 3 };

struct Element {
    // From the first identifier octet to the end of the enclosing contents.
    OctetView whole;
    // Identifier octets: their count, 0 when there is no octet at all, or
    // LENGTH_TRUNCATED when the data ends inside the identifier or right
    // behind it (an identifier without a length).
    int32_t identifier = 0;
    // Identifier plus length octets, as the first length octet announces
    // them; may exceed the octets there are. Valid when identifier >= 1.
    int32_t header = 0;
    // The length as read: LENGTH_INDEFINITE, LENGTH_TRUNCATED when the length
    // octets run off the data, else the value; a value beyond the data is
    // kept (LENGTH_TOO_LARGE when it can't be held). Valid when identifier >= 1.
    int32_t length = LENGTH_TRUNCATED;
    // The tag number as far as the octets reach (base 128, 32 bits), or -1
    // when a high-tag-number identifier has no octet behind its first.
    int32_t tagNumber = -1;
    uint8_t tagClass = CLASS_UNIVERSAL;
    bool constructed = false;
    // `whole` runs on past the enclosing contents, which end at the first
    // end-of-contents their steps meet from here (the contents of a verified
    // indefinite element, whose end a walk takes where it comes to it).
    bool openEnded = false;
    // An indefinite element whose end-of-contents is known to be there (it
    // lies in a verified record): searching for it finds it.
    bool endVerified = false;

    const uint8_t* start() const { return whole.data(); }
    int32_t available() const { return whole.size(); }
    uint8_t firstOctet() const { return whole.empty() ? 0 : whole.data()[0]; }
    bool readable() const { return identifier >= 1; }
    bool indefinite() const { return readable() && length == LENGTH_INDEFINITE; }
    // No room for the length octets that the first one announces.
    bool headerOverruns() const { return readable() && header > available(); }
    // Octets behind the header, up to the end of the enclosing contents.
    int32_t room() const { return available() - header; }
    // A definite length beyond the octets behind the header.
    bool lengthOverruns() const { return readable() && length >= 0 && length > room(); }
    // The first length octet.
    uint8_t lengthOctet() const { return whole.data()[identifier]; }
    bool longFormLength() const { return (lengthOctet() & 0x80) != 0; }
    // The contents octets there are, for a definite length.
    OctetView contents() const { return whole.from(header).first(length < 0 ? 0 : length); }
    // What follows the header up to the end of the enclosing contents.
    OctetView behindHeader() const { return whole.from(header); }
    // An indefinite element with nothing but an end-of-contents inside.
    bool emptyIndefinite() const { return indefinite() && room() >= 2 && behindHeader().startsWithEndOfContents(); }
    // The second octet is 0: what a tag of 0 needs to be an end-of-contents.
    bool secondOctetZero() const { return available() >= 2 && whole.data()[1] == 0; }
    // Universal tag 0 with a second octet of 0: an end-of-contents.
    bool isEndOfContents() const { return available() >= 2 && whole.data()[0] == 0 && whole.data()[1] == 0; }
};

// Reads the element at the start of `whole` in every form; reports nothing.
Element readLongElement(OctetView whole);

// Whether `size` octets begin with the header nearly every element has: one
// identifier octet, then a short or an indefinite length (two octets in all).
inline bool commonHeader(const uint8_t* octets, int32_t size)
{
    return size >= 2 && (octets[0] & HIGH_TAG_MASK) != HIGH_TAG_MASK && octets[1] <= 0x80;
}

// Reads the element at the start of `whole` into `element`; reports nothing.
// Inline for the form nearly every element has (one identifier octet, a
// short or an indefinite length), field by field into the record the caller
// keeps (a walk's level): a record returned and then copied would be written
// in pieces and read back whole, which the processor can't forward.
inline void readElementInto(Element& element, OctetView whole)
{
    const uint8_t* octets = whole.data();
    if (commonHeader(octets, whole.size())) {
        const uint8_t first = octets[0];
        element.whole = whole;
        element.identifier = 1;
        element.header = 2;
        element.length = octets[1] == 0x80 ? LENGTH_INDEFINITE : octets[1];
        element.tagNumber = first & HIGH_TAG_MASK;
        element.tagClass = static_cast<uint8_t>(first >> 6);
        element.constructed = (first & CONSTRUCTED_BIT) != 0;
        element.openEnded = false;
        element.endVerified = false;
        return;
    }
    element = readLongElement(whole);
}
inline void readElementInto(Element& element, const uint8_t* start, int32_t available)
{
    readElementInto(element, OctetView(start, available));
}

// Reads the element at the start of `whole`; reports nothing.
inline Element readElement(OctetView whole)
{
    Element element;
    readElementInto(element, whole);
    return element;
}
inline Element readElement(const uint8_t* start, int32_t available)
{
    return readElement(OctetView(start, available));
}

// The reports of a header read, made where the listing needs them; each
// returns what the reader routine of the same name returns.
// headerLength: code 17 when the identifier runs off the data, 38 when the
// length octets do.
int32_t reportHeaderLengthSlow(RunContext* context, const Element& element);
inline int32_t reportHeaderLength(RunContext* context, const Element& element)
{
    if (element.readable() && !element.headerOverruns()) return element.header;  // nothing to report
    return reportHeaderLengthSlow(context, element);
}
// contentLength: the same, then 17 when the length octets run off and 35
// when the length exceeds the data.
int32_t reportContentLengthSlow(RunContext* context, const Element& element);
inline int32_t reportContentLength(RunContext* context, const Element& element)
{
    if (element.readable() && !element.headerOverruns() && element.length != LENGTH_TRUNCATED &&
        !element.lengthOverruns()) {
        return element.length;  // nothing to report
    }
    return reportContentLengthSlow(context, element);
}
