#include "tlv/reader.h"

#include "app/signal.h"
#include "runtime/context.h"
#include "tlv/end_cache.h"

namespace {

// Sets TLV_QUIET_ERRORS for the life of a scope, then puts back what was.
class QuietErrors {
public:
    explicit QuietErrors(RunContext* context)
        : context_(context), wasQuiet_((context->toolFlags & TLV_QUIET_ERRORS) != 0)
    {
        context_->toolFlags |= TLV_QUIET_ERRORS;
    }
    ~QuietErrors()
    {
        if (!wasQuiet_) context_->toolFlags &= ~TLV_QUIET_ERRORS;
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    RunContext* context_;
    bool wasQuiet_;
};

intptr_t place(const uint8_t* element)
{
    return reinterpret_cast<intptr_t>(element);
}

// Steps from `step`, where a step of a walk that found no end begins, up to
// `limit`, and reports a premature end if `limit` cuts a header on the way.
// It finds no end either: the walk it repeats didn't within a larger region.
void stepWithoutEnd(RunContext* context, const uint8_t* step, const uint8_t* limit)
{
    auto remaining = static_cast<int32_t>(limit - step);
    while (remaining != 0) {
        if (remaining >= 2 && step[0] == 0 && step[1] == 0) {
            step += 2;
            remaining -= 2;
            continue;
        }
        const uint8_t* inner = step;
        int32_t left = remaining;
        int32_t length = readHeader(context, inner, left);
        if (length == LENGTH_TRUNCATED) {
            signalError(context, kPrematureEnd, place(step), remaining);
            return;
        }
        if (length != LENGTH_INDEFINITE && left < length) length = left;
        if (length == LENGTH_INDEFINITE) length = 0;
        step = inner + length;
        remaining = left - length;
    }
}

// Finds the end-of-contents of an indefinite element whose contents start at
// `cursor`. Inner indefinite elements are counted as open levels instead of
// being walked by recursion; a definite element is stepped over by its
// length. On success `cursor` and `remaining` stand behind the end-of-contents.
// The ends found on the way, and the failure, are remembered for the outer
// levels, which the walkers ask about again.
bool skipToEndOfContents(RunContext* context, const uint8_t*& cursor, int32_t& remaining)
{
    const uint8_t* const limit = cursor + remaining;
    QuietErrors quiet(context);
    const uint8_t* known = nullptr;
    const uint8_t* resume = nullptr;
    switch (knownEnd(context, cursor, limit, known, resume)) {
        case 1:
            remaining -= static_cast<int32_t>(known - cursor);
            cursor = known;
            return true;
        case -1:
            stepWithoutEnd(context, resume, limit);
            return false;
        default:
            break;
    }
    EndCache* cache = context->endCache;
    const size_t firstMark = markCount(context);
    long openLevels = 1;
    if (cache != nullptr) {
        cache->open[0] = cursor;
        cache->openMark[0] = firstMark;
    }
    auto noEnd = [&] {
        for (long level = 0; cache != nullptr && level < openLevels && level < EndCache::kLevels; ++level) {
            rememberNoEnd(context, cache->open[level], limit, cache->openMark[level]);
        }
        return false;
    };
    for (long steps = 0;; ++steps) {
        if (steps % EndCache::kMarkEvery == 0) rememberMark(context, cursor);
        if (remaining >= 2 && cursor[0] == 0 && cursor[1] == 0) {
            cursor += 2;
            remaining -= 2;
            --openLevels;
            if (cache != nullptr && openLevels < EndCache::kLevels) rememberEnd(context, cache->open[openLevels], cursor);
            if (openLevels == 0) {
                forgetMarksFrom(context, firstMark);
                return true;
            }
            continue;
        }
        if (remaining == 0) return noEnd();
        const uint8_t* inner = cursor;
        int32_t left = remaining;
        int32_t length;
        if (commonHeader(cursor, remaining)) {
            // What readHeader gives for it, without the call.
            length = cursor[1] == 0x80 ? LENGTH_INDEFINITE : cursor[1];
            inner = cursor + 2;
            left = length == LENGTH_INDEFINITE || length <= remaining - 2 ? remaining - 2 : 0;
        } else {
            length = readHeader(context, inner, left);
        }
        if (length == LENGTH_TRUNCATED) {
            signalError(context, kPrematureEnd, place(cursor), remaining);
            return noEnd();
        }
        if (length == LENGTH_INDEFINITE) {
            if (cache != nullptr && openLevels < EndCache::kLevels) {
                cache->open[openLevels] = inner;
                cache->openMark[openLevels] = markCount(context);
            }
            ++openLevels;
            cursor = inner;
            remaining = left;
            continue;
        }
        if (left == 0) return noEnd();
        if (length > left) length = left;
        cursor = inner + length;
        remaining = left - length;
        if (remaining == 0) return noEnd();
    }
}

}  // namespace

int32_t readIdentifier(RunContext*, const uint8_t*& cursor, int32_t& remaining)
{
    if (cursor == nullptr || remaining == 0) return 0;
    const uint8_t* last = cursor;
    if ((cursor[0] & HIGH_TAG_MASK) == HIGH_TAG_MASK) {
        if (--remaining == 0) return LENGTH_TRUNCATED;
        ++last;
        while (remaining != 0 && (*last & 0x80) != 0) {
            ++last;
            --remaining;
        }
    }
    // An identifier with no octet behind it is an identifier without a length.
    if (remaining == 0 || --remaining == 0) return LENGTH_TRUNCATED;
    int32_t count = static_cast<int32_t>(last - cursor) + 1;
    cursor = last + 1;
    return count;
}

int32_t readLengthOctets(RunContext*, const uint8_t*& cursor, int32_t& remaining)
{
    uint8_t first = cursor[0];
    if (first == 0x80) return LENGTH_INDEFINITE;
    if ((first & 0x80) == 0) return first;
    int octets = first & 0x7F;
    ++cursor;
    if (--remaining == 0) return LENGTH_TRUNCATED;
    uint32_t value = *cursor;
    for (int i = 1; i < octets; ++i) {
        if (value > 0x7FFFFFFE) break;
        value <<= 8;  // what leaves the top is lost
        ++cursor;
        if (--remaining == 0) return LENGTH_TRUNCATED;
        if (value <= 0x7FFFFFFE) value += *cursor;
    }
    return static_cast<int32_t>(value);
}

int32_t readHeader(RunContext* context, const uint8_t*& cursor, int32_t& remaining)
{
    if (remaining == 0) return 0;
    const uint8_t* at = cursor;
    int32_t identifier = readIdentifier(context, at, remaining);
    if (identifier < 1) return identifier;
    int32_t lengthOctets = 1;
    if (*at != 0x80 && (*at & 0x80) != 0) lengthOctets += *at & 0x7F;
    int32_t room = remaining - lengthOctets;
    int32_t length = readLengthOctets(context, at, remaining);
    if (length == LENGTH_TRUNCATED) return length;
    cursor = at + 1;
    if (length == LENGTH_INDEFINITE || (length >= 0 && length <= room)) {
        --remaining;
        return length;
    }
    remaining = 0;
    return length < 0 ? LENGTH_TOO_LARGE : length;
}

int32_t headerLength(RunContext* context, const uint8_t* element, int32_t count)
{
    return reportHeaderLength(context, readElement(element, count));
}

int32_t contentLength(RunContext* context, const uint8_t* element, int32_t count)
{
    return reportContentLength(context, readElement(element, count));
}

const uint8_t* nextElement(RunContext* context, const uint8_t* element, int32_t& count)
{
    return nextElementOf(context, readElement(element, count), count);
}

const uint8_t* firstInside(RunContext* context, const uint8_t* element, int32_t& count)
{
    if (element == nullptr) return nullptr;
    return firstInsideOf(context, readElement(element, count), count);
}

const uint8_t* nextElementOfSlow(RunContext* context, const Element& element, int32_t& count)
{
    // What readHeader gives for the element: nothing at all, a header that
    // runs off the data, or a length.
    if (count == 0) return nullptr;
    int32_t length = element.readable() ? element.length : element.identifier;
    if (length == LENGTH_TRUNCATED) {
        signalError(context, kPrematureEnd, place(element.start()), count);
        count = 0;
        return nullptr;
    }
    if (length == LENGTH_INDEFINITE) {
        const uint8_t* end = element.start() + element.header;
        int32_t remaining = count - element.header;
        if (!skipToEndOfContents(context, end, remaining)) {
            signalError(context, kMissingEoc, 0, 0);
            count = 0;
            return nullptr;
        }
        count = remaining;
        return count == 0 ? nullptr : end;
    }
    if (element.lengthOverruns()) {
        count = 0;
        return nullptr;
    }
    count -= element.header + length;
    return count == 0 ? nullptr : element.start() + element.header + length;
}

const uint8_t* firstInsideOfSlow(RunContext* context, const Element& element, int32_t& count)
{
    if (count == 0 || !element.constructed) return nullptr;
    // A definite length that the data holds: its contents, and nothing to report.
    if (element.readable() && element.length >= 0 && !element.headerOverruns() && !element.lengthOverruns()) {
        count = element.length;
        return count == 0 ? nullptr : element.start() + element.header;
    }
    int32_t header = reportHeaderLength(context, element);
    if (header < 1) return nullptr;
    bool indefinite = reportContentLength(context, element) == LENGTH_INDEFINITE;
    int32_t behind = count;
    {
        QuietErrors quiet(context);
        nextElementOf(context, element, behind);
    }
    count = count - header - behind - (indefinite ? 2 : 0);
    return count <= 0 ? nullptr : element.start() + header;
}

bool isConstructed(RunContext*, const uint8_t* element, int32_t count)
{
    return count != 0 && (element[0] & CONSTRUCTED_BIT) != 0;
}

int tagClass(RunContext*, const uint8_t* element, int32_t count)
{
    if (element == nullptr || count == 0) return 4;
    return element[0] >> 6;
}

int32_t tagNumber(RunContext* context, const uint8_t* element, int32_t count)
{
    if (element == nullptr || count == 0) {
        signalError(context, kPrematureEnd, 0, 0);
        return -1;
    }
    if ((element[0] & HIGH_TAG_MASK) != HIGH_TAG_MASK) return element[0] & HIGH_TAG_MASK;
    if (count == 1) {
        signalError(context, kPrematureEnd, 0, 0);
        return -1;
    }
    uint32_t number = 0;
    for (int32_t i = 1; i < count; ++i) {
        number = (number << 7) | (element[i] & 0x7F);
        if ((element[i] & 0x80) == 0) break;
    }
    return static_cast<int32_t>(number);
}

uint32_t readBigEndian(int count, const uint8_t* octets)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = (value << 8) | octets[i];
    return value;
}

OctetView enclosingContents(RunContext* context, const Element& element)
{
    if (!element.openEnded) return element.whole;
    const uint8_t* cursor = element.start();
    int32_t remaining = element.available();
    if (!skipToEndOfContents(context, cursor, remaining)) return element.whole;
    return element.whole.first(static_cast<int32_t>(cursor - 2 - element.start()));
}
