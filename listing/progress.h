// The progress line of a long listing: records, MiB done of the total, rate
// and time left, on standard error a few times a second, cleared at the end.
// Shown only when standard error is a terminal and the listing goes
// elsewhere, and only once a run has taken about a second.
#pragma once

#include <chrono>
#include <cstdint>

class ProgressLine {
public:
    ProgressLine(bool wanted, int64_t total);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // `records` listed, `done` octets of the input behind the listing.
    void update(long records, int64_t done)
    {
        if (!wanted_) return;
        // The clock is asked every few records only.
        if (records - lastRecords_ < kRecordsBetween && done - lastDone_ < kOctetsBetween) return;
        show(records, done);
    }

    // The text of the line; exposed for its tests.
    static int format(char* out, size_t size, long records, int64_t done, int64_t total, double seconds);

private:
    using Clock = std::chrono::steady_clock;
    static constexpr long kRecordsBetween = 512;
    static constexpr int64_t kOctetsBetween = 1 << 20;

    void show(long records, int64_t done);

    bool wanted_;
    bool shown_ = false;
    int64_t total_;
    long lastRecords_ = 0;
    int64_t lastDone_ = 0;
    Clock::time_point start_;
    Clock::time_point next_;
};

// Whether a run shows progress: standard error is a terminal, and the
// listing doesn't go to it (it goes to a file, or standard output is
// redirected).
bool progressWanted(bool listingToFile);
