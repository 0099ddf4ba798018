#include "listing/progress.h"

#include <gtest/gtest.h>

namespace {

TEST(ProgressLine, TellsRecordsMebibytesRateAndTimeLeft)
{
    char line[160];
    ProgressLine::format(line, sizeof line, 1234567, 512LL << 20, 2048LL << 20, 4.0);
    EXPECT_STREQ("qortlv: 1234567 records, 512.0 of 2048.0 MiB, 128.0 MiB/s, 12 s left", line);
    ProgressLine::format(line, sizeof line, 0, 0, 1 << 20, 0.0);
    EXPECT_STREQ("qortlv: 0 records, 0.0 of 1.0 MiB, 0.0 MiB/s, 0 s left", line);
}

}  // namespace
