#include "tlv/walker.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "runtime/buffers.h"
#include "tests/test_context.h"
#include "tlv/hex_layout.h"

namespace {

using Octets = std::vector<uint8_t>;

// Octets placed at the very end of a readable page, in front of a page that
// can't be read: a read beyond them ends the test process.
class GuardedOctets {
public:
    explicit GuardedOctets(const Octets& octets)
    {
        page_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        void* area = mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED) return;
        area_ = static_cast<uint8_t*>(area);
        mprotect(area_ + page_, page_, PROT_NONE);
        data_ = area_ + page_ - octets.size();
        if (!octets.empty()) std::memcpy(data_, octets.data(), octets.size());
    }
    ~GuardedOctets()
    {
        if (area_ != nullptr) munmap(area_, 2 * page_);
    }
    GuardedOctets(const GuardedOctets&) = delete;
    GuardedOctets& operator=(const GuardedOctets&) = delete;

    const uint8_t* data() const { return data_; }

private:
    size_t page_ = 0;
    uint8_t* area_ = nullptr;
    uint8_t* data_ = nullptr;
};

Octets fileHeader(uint32_t fileLength, uint32_t headerLength)
{
    Octets header(headerLength, 0x00);
    for (int i = 0; i < 4; ++i) {
        header[i] = static_cast<uint8_t>(fileLength >> (24 - 8 * i));
        header[4 + i] = static_cast<uint8_t>(headerLength >> (24 - 8 * i));
    }
    return header;
}

Octets joined(Octets first, const Octets& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(DetectCdrHeaders, FormsAndTheirConditions)
{
    struct Row {
        const char* what;
        Octets input;
        bool detected;
        int32_t fileHeaderLength;
        int32_t recordHeaderLength;
    };
    const Octets record = {0x00, 0x02, 0x00, 0x00, 0x05, 0x00};      // R 2, then 05 00
    const Octets longRecord = {0x00, 0x02, 0xE0, 0x00, 0x00, 0x05, 0x00};  // top bits 111: 5 octets
    const Row rows[] = {
        {"record form", {0x00, 0x00, 0x00, 0x02, 0x05, 0x00, 0x05, 0x00}, true, 0, 4},
        {"R plus 4 equals the count", {0x00, 0x00, 0x00, 0x02, 0x05, 0x00}, false, 0, 0},
        {"R isn't the element's length", {0x00, 0x00, 0x00, 0x03, 0x05, 0x00, 0x05, 0x00}, false, 0, 0},
        {"R of 0", {0x05, 0x00, 0x00, 0x00, 0x05, 0x00}, false, 0, 0},
        {"indefinite first record",
         {0x00, 0x00, 0x00, 0x06, 0x30, 0x80, 0x05, 0x00, 0x00, 0x00, 0x05, 0x00}, true, 0, 4},
        {"file form", joined(joined(fileHeader(62, 50), record), record), true, 50, 4},
        {"file form, 5-octet record headers", joined(joined(fileHeader(64, 50), longRecord), longRecord), true, 50,
         5},
        {"file length isn't the count", joined(joined(fileHeader(63, 50), record), record), false, 0, 0},
        {"header length below 50", joined(joined(fileHeader(60, 48), record), record), false, 0, 0},
    };
    for (const Row& row : rows) {
        TestContext run;
        GuardedOctets input(row.input);
        CdrProbe probe = {static_cast<int32_t>(row.input.size()), 0, 0};
        EXPECT_EQ(row.detected, detectCdrHeaders(run.get(), input.data(), probe.expectedLength, probe)) << row.what;
        if (row.detected) {
            EXPECT_EQ(row.fileHeaderLength, probe.fileHeaderLength) << row.what;
            EXPECT_EQ(row.recordHeaderLength, probe.recordHeaderLength) << row.what;
        }
        EXPECT_EQ("", run.output()) << row.what;
    }
}

TEST(DetectCdrHeaders, InputsTooShortForTheirFieldsReadNothingBeyond)
{
    const Octets rows[] = {
        {},
        {0x00},
        {0x00, 0x00, 0x00},  // R would lie at offsets 2 and 3
        // The file form's H is the last octet: R would lie behind the input.
        joined(fileHeader(55, 54), {0x00}),
        joined(fileHeader(56, 54), {0x00, 0x01}),
    };
    for (const Octets& octets : rows) {
        TestContext run;
        GuardedOctets input(octets);
        CdrProbe probe = {static_cast<int32_t>(octets.size()), 0, 0};
        EXPECT_FALSE(detectCdrHeaders(run.get(), input.data(), probe.expectedLength, probe)) << octets.size();
    }
}

TEST(DumpOctets, DigitsIndentAndSuffix)
{
    TestContext run;
    const Octets octets = {0x0A, 0xFF, 0x00};
    EXPECT_EQ(0, dumpOctets(run.get(), octets.data(), 0, 4, "..."));  // nothing at all for no octets
    EXPECT_EQ(10, dumpOctets(run.get(), octets.data(), 3, 1, "..."));
    EXPECT_EQ(4, dumpOctets(run.get(), octets.data(), 2, 0, ""));
    EXPECT_EQ(" 0AFF00...0AFF", run.output());
}

TEST(SkipCdrHeader, OnlyWhenSomethingFollowsTheHeader)
{
    TestContext run;
    const Octets octets = {0x00, 0x00, 0x00, 0x02, 0x05, 0x00};
    const uint8_t* cursor = octets.data();
    int32_t count = 4;
    skipCdrHeader(run.get(), cursor, count, 4, "record");  // the header is all there is
    EXPECT_EQ(octets.data(), cursor);
    EXPECT_EQ(4, count);
    skipCdrHeader(run.get(), cursor, count, 0, "record");
    EXPECT_EQ("", run.output());

    count = 6;
    skipCdrHeader(run.get(), cursor, count, 4, "record");
    EXPECT_EQ(octets.data() + 4, cursor);
    EXPECT_EQ(2, count);
    EXPECT_EQ("\nCDR record header detected, skipping 4 bytes ...\n00000002", run.output());
}

void addLine(std::string& text, int depth, const char* what)
{
    text += '\n';
    text.append(static_cast<size_t>(2 * depth), ' ');
    text += what;
}

// The listing of `levels` indefinite SEQUENCEs, one inside the other, the
// innermost empty.
std::string nestedListing(int levels, int shownLevels)
{
    std::string text;
    for (int depth = 0; depth < shownLevels; ++depth) addLine(text, depth, "30 80");
    int closed = shownLevels;
    if (levels > shownLevels) {
        addLine(text, shownLevels, "Nesting deeper than 256 levels, contents not shown.");
    } else {
        // The innermost is empty: its own line closes it.
        addLine(text, levels - 1, "00 00");
        --closed;
    }
    for (int depth = closed - 1; depth >= 0; --depth) addLine(text, depth, "00 00");
    return text;
}

TEST(WalkRecords, NestingDeeperThan256LevelsIsNotWalkedInto)
{
    const struct {
        int levels;
        int shownLevels;
    } rows[] = {
        {3, 3},
        {256, 256},
        {257, 256},
        {300, 256},
    };
    for (const auto& row : rows) {
        Octets octets;
        for (int i = 0; i < row.levels; ++i) octets.insert(octets.end(), {0x30, 0x80});
        for (int i = 0; i < row.levels; ++i) octets.insert(octets.end(), {0x00, 0x00});
        TestContext run;
        InputBuffer buffer{static_cast<int32_t>(octets.size()), octets.data()};
        printHexLayout(run.get(), buffer);
        EXPECT_TRUE(nestedListing(row.levels, row.shownLevels) == run.output()) << row.levels << " levels";
        EXPECT_EQ(0, run.lastError());
    }
}

}  // namespace
