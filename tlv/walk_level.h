// One open level of a walk, and how the walk finds where the element it
// stands at ends. In a verified record (RecordStretch::verified) the walk
// goes into an indefinite element without searching for its end first: the
// level inside runs to the first end-of-contents its steps meet and tells
// the level above; anywhere else the end is searched for, as nextElementOf
// and firstInsideOf search.
#pragma once

#include <cstdint>

#include "runtime/context.h"
#include "tlv/element.h"
#include "tlv/reader.h"

struct WalkLevel {
    const uint8_t* element;
    int32_t count;  // octets from `element` to the end of the enclosing contents
    Element read;
    const uint8_t* inside;   // first contents octet, when the walk went in
    int32_t contentsLength;  // kEndAhead: to be found by the level inside
    bool indefinite;
    // The level's elements lie in a verified indefinite element: the level
    // ends at the first end-of-contents its steps meet, and `count` only
    // bounds it.
    bool endsAtEndOfContents;
    bool endFound;  // the level inside met the element's end-of-contents
};

constexpr int32_t kEndAhead = -1;

// Reads the element the level stands at; `verifiedRecord`: it is the
// element of a verified record. Gives whether the walk takes its end
// ahead: a constructed, indefinite element of a verified record, in
// indefinite elements only (not while the repair rewrites as it goes).
inline bool readLevelElement(const RunContext* context, WalkLevel& level, bool verifiedRecord)
{
    readElementInto(level.read, level.element, level.count);
    level.read.openEnded = level.endsAtEndOfContents;
    level.read.endVerified = (context->toolFlags & TLV_FIX_ENCODING) == 0 && level.read.constructed &&
                             level.read.indefinite() && (verifiedRecord || level.endsAtEndOfContents);
    level.endFound = false;
    return level.read.endVerified;
}

// Goes into the element: `ahead`, up to the end of the enclosing contents,
// for the level inside to stop at the end-of-contents; else to the end that
// firstInsideOf finds. Gives the first contents octet, or null when there
// is nothing inside; `inner`: the octets of the level inside.
inline const uint8_t* enterLevelElement(RunContext* context, WalkLevel& level, bool ahead, int32_t& inner)
{
    inner = level.count;
    if (!ahead) {
        const uint8_t* inside = firstInsideOf(context, level.read, inner);
        level.contentsLength = inner;
        return inside;
    }
    const OctetView rest = level.read.behindHeader();
    if (rest.startsWithEndOfContents()) {
        inner = 0;  // the end-of-contents alone, as firstInsideOf gives it
        level.contentsLength = 0;
        return nullptr;
    }
    inner = rest.size();
    level.contentsLength = kEndAhead;
    return rest.data();
}

// Before the element closes: the length of its contents, searched for when
// the level inside ended elsewhere than at the end-of-contents.
inline void settleContentsLength(RunContext* context, WalkLevel& level)
{
    if (level.inside == nullptr || level.contentsLength != kEndAhead) return;
    int32_t inner = level.count;
    firstInsideOf(context, level.read, inner);
    level.contentsLength = inner;
}

// Steps over the element to the next of the level: behind the
// end-of-contents the level inside met, or as nextElementOf steps.
inline const uint8_t* stepOverLevelElement(RunContext* context, WalkLevel& level)
{
    if (!level.endFound) return nextElementOf(context, level.read, level.count);
    const uint8_t* end = level.inside + level.contentsLength + 2;
    level.count -= static_cast<int32_t>(end - level.element);
    return level.count == 0 ? nullptr : end;
}

// Whether the level ends at `next`, the end-of-contents it stops at; the
// level above it on the walk's stack (of WalkLevel or a kind of it) then
// knows where its element's contents end.
template <typename Level>
bool levelEndsAt(Level* level, const uint8_t* next)
{
    if (!level->endsAtEndOfContents || !OctetView(next, level->count).startsWithEndOfContents()) return false;
    WalkLevel& above = level[-1];
    above.contentsLength = static_cast<int32_t>(next - above.inside);
    above.endFound = true;
    return true;
}
