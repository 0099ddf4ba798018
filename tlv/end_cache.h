// Where indefinite-length elements end. Finding the end-of-contents of an
// indefinite element walks its whole contents; the walkers ask again for
// every level of a nesting, which would make deep nestings quadratic. A
// walk remembers the ends it finds, and the failures, for the elements of
// the outer levels.
//
// A walk that finds no end is also asked about again with regions that end
// earlier (the contents of an element without its end stop two octets
// short). Such a walk reads what the first one read, up to where the smaller
// region ends, and may meet a premature end there. So a failed walk keeps a
// mark every kMarkEvery steps; the walk of a smaller region is taken up again
// from the last mark in front of its end.
#pragma once

#include <cstddef>
#include <cstdint>

struct RunContext;

struct EndCache {
    static constexpr int kSlots = 8192;
    static constexpr int kLevels = 1024;  // the outer levels a walk records

    struct Slot {
        const uint8_t* contents;  // first contents octet of the element
        const uint8_t* end;       // behind its end-of-contents; null: none found
        const uint8_t* limit;     // without an end: the end of the region searched
        size_t firstMark;         // without an end: the marks of the walk from `contents` on
        size_t lastMark;
    };
    static constexpr long kMarkEvery = 256;
    Slot slots[kSlots];
    const uint8_t* open[kLevels];     // contents starts of the levels a walk is in
    size_t openMark[kLevels];         // the first mark of each of those levels
    const uint8_t** marks;            // from qorAlloc; places where a step of a failed walk began
    size_t markCount;
    size_t markCapacity;
    bool marksLost;                   // memory ran out: failures aren't served any more
    bool written;                     // anything remembered since the last clearing
};

// Creates the cache of a layout's run and takes it away again. Within the
// scope of another (a worker's, that lists one stretch after another) it
// clears that one instead, which is what a new one would be.
class EndCacheScope {
public:
    explicit EndCacheScope(RunContext* context);
    ~EndCacheScope();
    EndCacheScope(const EndCacheScope&) = delete;
    EndCacheScope& operator=(const EndCacheScope&) = delete;

private:
    RunContext* context_;
    EndCache* saved_;
};

// Forgets everything (the octets have changed).
void clearEndCache(RunContext* context);
void rememberEnd(RunContext* context, const uint8_t* contents, const uint8_t* end);
void rememberNoEnd(RunContext* context, const uint8_t* contents, const uint8_t* limit, size_t firstMark);
// Notes where a step of the running walk begins.
void rememberMark(RunContext* context, const uint8_t* step);
// The marks of a walk that found its end aren't needed.
void forgetMarksFrom(RunContext* context, size_t first);
size_t markCount(const RunContext* context);
// 1: the end is known and lies within `limit`; -1: there is no end within
// `limit`, and a walk up to `limit` may go on from `resume` (a place where
// a step of it begins) to see how it stops; 0: not known.
int knownEnd(const RunContext* context, const uint8_t* contents, const uint8_t* limit, const uint8_t*& end,
             const uint8_t*& resume);
