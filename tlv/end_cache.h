// Where indefinite-length elements end. Finding the end-of-contents of an
// indefinite element walks its whole contents; the walkers ask again for
// every level of a nesting, which would make deep nestings quadratic. A
// walk remembers the ends it finds, and the failures, for the elements of
// the outer levels.
#pragma once

#include <cstdint>

struct RunContext;

struct EndCache {
    static constexpr int kSlots = 8192;
    static constexpr int kLevels = 1024;  // the outer levels a walk records

    struct Slot {
        const uint8_t* contents;  // first contents octet of the element
        const uint8_t* end;       // behind its end-of-contents; null: none found
        const uint8_t* limit;     // without an end: the end of the region searched
    };
    Slot slots[kSlots];
    const uint8_t* open[kLevels];  // contents starts of the levels a walk is in
};

// Creates the cache of a layout's run and takes it away again.
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
void rememberNoEnd(RunContext* context, const uint8_t* contents, const uint8_t* limit);
// 1: the end is known and lies within `limit`; -1: no end within `limit`;
// 0: not known.
int knownEnd(const RunContext* context, const uint8_t* contents, const uint8_t* limit, const uint8_t*& end);
