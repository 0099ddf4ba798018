// Inputs larger than the walk's 32-bit counts: sparse files of a little over
// 2 GiB, which take no disk and are mapped, never read whole.
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "app/entry.h"
#include "listing/stretch_listing.h"
#include "runtime/output.h"

namespace {

constexpr int64_t kSize = (int64_t{1} << 31) + (int64_t{1} << 20);

class SparseFile {
public:
    SparseFile()
    {
        char name[] = "/tmp/qortlv-large-XXXXXX";
        const int descriptor = mkstemp(name);
        if (descriptor < 0) return;
        name_ = name;
        ok_ = ftruncate(descriptor, kSize) == 0;
        descriptor_ = descriptor;
    }
    ~SparseFile()
    {
        if (descriptor_ >= 0) close(descriptor_);
        if (!name_.empty()) unlink(name_.c_str());
    }
    SparseFile(const SparseFile&) = delete;
    SparseFile& operator=(const SparseFile&) = delete;

    bool put(int64_t offset, const std::vector<uint8_t>& octets)
    {
        return ok_ && pwrite(descriptor_, octets.data(), octets.size(), offset) ==
                          static_cast<ssize_t>(octets.size());
    }
    const std::string& name() const { return name_; }

private:
    std::string name_;
    int descriptor_ = -1;
    bool ok_ = false;
};

struct RunOutcome {
    int status;
    std::string output;
};

RunOutcome run(std::vector<std::string> args)
{
    std::vector<char*> argv = {const_cast<char*>("qortlv")};
    for (std::string& arg : args) argv.push_back(arg.data());
    RunOutcome result;
    OutStream* console = outStreamForSink(&result.output);
    result.status = runEntry(static_cast<int>(argv.size()), argv.data(), console);
    outStreamRelease(console);
    // The banner's year changes; what follows it is the listing.
    const size_t behind = result.output.find("reserved.\n\n");
    if (behind != std::string::npos) result.output.erase(0, behind + 11);
    return result;
}

// +offset,num; without num when `count` is 0.
std::string rangeOf(int64_t offset, int64_t count)
{
    char text[48];
    if (count == 0) {
        std::snprintf(text, sizeof text, "+%lld", static_cast<long long>(offset));
    } else {
        std::snprintf(text, sizeof text, "+%lld,%lld", static_cast<long long>(offset), static_cast<long long>(count));
    }
    return text;
}

TEST(LargeInput, ARecordThatDoesNotEndWithinTwoGibibytesStopsTheListingInFrontOfIt)
{
    SparseFile file;
    // A NULL, then an OCTET STRING of 2^31 octets, then zeros.
    ASSERT_TRUE(file.put(0, {0x05, 0x00, 0x04, 0x84, 0x80, 0x00, 0x00, 0x00}));
    for (const char* threads : {"1", "2"}) {
        const RunOutcome listing = run({"-threads", threads, file.name()});
        EXPECT_EQ(kRecordTooLarge, listing.status) << threads;
        EXPECT_EQ("\n05 00\n\n\n", listing.output) << threads;
    }
}

TEST(LargeInput, OffsetAndCountAreReadInSixtyFourBitsBeyondTwoGibibytes)
{
    SparseFile file;
    const int64_t at = (int64_t{1} << 31) + 10;
    ASSERT_TRUE(file.put(at, {0x02, 0x01, 0x07, 0x05, 0x00}));
    const RunOutcome listing = run({"-json", rangeOf(at, 5), file.name()});
    EXPECT_EQ(0, listing.status);
    EXPECT_EQ("{\"kind\":\"record\",\"record\":1,\"offset\":2147483658,\"element\":{\"offset\":2147483658,"
              "\"header\":2,\"length\":1,\"class\":\"universal\",\"tag\":2,\"constructed\":false,"
              "\"type\":\"INTEGER\",\"text\":\"7 (0x07)\",\"hex\":\"07\"}}\n"
              "{\"kind\":\"record\",\"record\":2,\"offset\":2147483661,\"element\":{\"offset\":2147483661,"
              "\"header\":2,\"length\":0,\"class\":\"universal\",\"tag\":5,\"constructed\":false,"
              "\"type\":\"NULL\",\"text\":\"NULL\",\"hex\":\"\"}}\n",
              listing.output);
    // Beyond the end of the file: the offset is told in full.
    const RunOutcome beyond = run({rangeOf(kSize + 1, 0), file.name()});
    EXPECT_EQ(47, beyond.status);
    EXPECT_EQ("Invalid offset into input file, 2148532225.\n\n\n\n", beyond.output);
}

}  // namespace
