#include "listing/progress.h"

#include <unistd.h>

#include <cstdio>

namespace {

constexpr auto kFirstShow = std::chrono::milliseconds(1000);
constexpr auto kBetweenShows = std::chrono::milliseconds(250);
constexpr double kMiB = 1024.0 * 1024.0;

}  // namespace

bool progressWanted(bool listingToFile)
{
    return isatty(STDERR_FILENO) != 0 && (listingToFile || isatty(STDOUT_FILENO) == 0);
}

ProgressLine::ProgressLine(bool wanted, int64_t total) : wanted_(wanted), total_(total)
{
    start_ = Clock::now();
    next_ = start_ + kFirstShow;
}

ProgressLine::~ProgressLine()
{
    // Carriage return, then erase to the end of the line.
    if (shown_) std::fputs("\r\033[K", stderr);
}

int ProgressLine::format(char* out, size_t size, long records, int64_t done, int64_t total, double seconds)
{
    const double rate = seconds > 0 ? static_cast<double>(done) / kMiB / seconds : 0;
    const double left = rate > 0 ? static_cast<double>(total - done) / kMiB / rate : 0;
    return std::snprintf(out, size, "qortlv: %ld records, %.1f of %.1f MiB, %.1f MiB/s, %.0f s left", records,
                         static_cast<double>(done) / kMiB, static_cast<double>(total) / kMiB, rate, left);
}

void ProgressLine::show(long records, int64_t done)
{
    lastRecords_ = records;
    lastDone_ = done;
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + kBetweenShows;
    char line[160];
    const double seconds = std::chrono::duration<double>(now - start_).count();
    format(line, sizeof line, records, done, total_, seconds);
    std::fprintf(stderr, "\r%s\033[K", line);
    std::fflush(stderr);
    shown_ = true;
}
