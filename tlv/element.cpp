#include "tlv/element.h"

#include "app/signal.h"

namespace {

// X.690 8.1.2.4: subsequent identifier octets carry the tag number in base
// 128, bit 8 set on all but the last. Read as far as the octets reach, in 32
// bits; what leaves the top is lost.
int32_t highTagNumber(OctetView octets)
{
    uint32_t number = 0;
    uint8_t octet = 0;
    octets.skip(1);
    while (octets.getOctet(octet)) {
        number = (number << 7) | (octet & 0x7F);
        if ((octet & 0x80) == 0) break;
    }
    return static_cast<int32_t>(number);
}

// The long form of X.690 8.1.3.5, 32 bits wide: a value from 0x7FFFFFFF on
// stops the reading, and one that leaves the top is lost. `left` counts the
// octets from the first length octet on; a length whose last octet is the
// last of the data has run off it.
int32_t longFormValue(const uint8_t* octets, int32_t left)
{
    const int count = octets[0] & 0x7F;
    if (--left == 0) return LENGTH_TRUNCATED;
    uint32_t value = octets[1];
    for (int i = 1; i < count; ++i) {
        if (value > 0x7FFFFFFE) break;
        value <<= 8;
        if (--left == 0) return LENGTH_TRUNCATED;
        if (value <= 0x7FFFFFFE) value += octets[1 + i];
    }
    return static_cast<int32_t>(value);
}

}  // namespace

Element readLongElement(OctetView whole)
{
    Element element;
    element.whole = whole;
    uint8_t first = 0;
    if (!whole.peek(first)) return element;
    element.tagClass = static_cast<uint8_t>(first >> 6);
    element.constructed = (first & CONSTRUCTED_BIT) != 0;

    const uint8_t* octets = whole.data();
    int32_t remaining = whole.size();
    int32_t last = 0;  // index of the last identifier octet
    if ((first & HIGH_TAG_MASK) == HIGH_TAG_MASK) {
        element.tagNumber = remaining > 1 ? highTagNumber(whole) : -1;
        if (--remaining == 0) {
            element.identifier = LENGTH_TRUNCATED;
            return element;
        }
        last = 1;
        while (remaining != 0 && (octets[last] & 0x80) != 0) {
            ++last;
            --remaining;
        }
    } else {
        element.tagNumber = first & HIGH_TAG_MASK;
    }
    // An identifier with no octet behind it is an identifier without a length.
    if (remaining == 0 || --remaining == 0) {
        element.identifier = LENGTH_TRUNCATED;
        return element;
    }
    element.identifier = last + 1;
    const uint8_t lengthOctet = octets[element.identifier];
    const bool longForm = lengthOctet != 0x80 && (lengthOctet & 0x80) != 0;
    element.header = element.identifier + 1 + (longForm ? (lengthOctet & 0x7F) : 0);

    int32_t length = lengthOctet == 0x80 ? LENGTH_INDEFINITE
                     : longForm           ? longFormValue(octets + element.identifier, remaining)
                                          : lengthOctet;
    if (length == LENGTH_TRUNCATED || length == LENGTH_INDEFINITE) {
        element.length = length;
        return element;
    }
    // A value that comes out negative couldn't be held.
    element.length = length < 0 ? LENGTH_TOO_LARGE : length;
    return element;
}

int32_t reportHeaderLengthSlow(RunContext* context, const Element& element)
{
    if (element.identifier == LENGTH_TRUNCATED) {
        signalError(context, kPrematureEnd, reinterpret_cast<intptr_t>(element.start()), element.available());
        return LENGTH_TRUNCATED;
    }
    if (element.identifier == 0) return 0;
    if (element.header > element.available()) signalError(context, kHeaderOverrun, element.header, element.available());
    return element.header;
}

int32_t reportContentLengthSlow(RunContext* context, const Element& element)
{
    int32_t header = reportHeaderLength(context, element);
    if (header == LENGTH_TRUNCATED) return LENGTH_TRUNCATED;
    if (header == 0 || header > element.available()) return 0;
    if (element.length == LENGTH_TRUNCATED) {
        // The length octets ran off the data: nothing was left to read.
        signalError(context, kPrematureEnd, reinterpret_cast<intptr_t>(element.start()), 0);
        return LENGTH_TRUNCATED;
    }
    if (element.length > element.room()) signalError(context, kLengthOverrun, element.length, element.room());
    return element.length;
}
