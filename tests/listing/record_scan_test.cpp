#include "listing/record_scan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "diagnose/tally.h"
#include "listing/stretch_worker.h"
#include "runtime/extensions.h"
#include "tests/test_context.h"
#include "tlv/reader.h"

namespace {

using Octets = std::vector<uint8_t>;

struct ScanRow {
    const char* what;
    ListingLayout layout;
    uint32_t padByteSpec;  // the pad byte plus 1; 0: no -pad
    Octets input;
    std::vector<int64_t> ends;  // where the scan finds each record's element ending
    ScanEnd end;                // and how it ends
    int64_t lastStretchEnd;     // where the last stretch it gives ends
};

// Stretches of one octet each: every record makes a stretch of its own.
void scanAll(RunContext* context, const ScanRow& row, std::vector<int64_t>& ends, ScanEnd& end, int64_t& stretchEnd)
{
    context->padByteSpec = row.padByteSpec;
    RecordScan scan(context, row.layout, row.input.data(), static_cast<int64_t>(row.input.size()), 0);
    RecordStretch stretch;
    std::vector<int64_t> recordEnds;
    long records = 0;
    while (scan.next(stretch, recordEnds, 1)) {
        EXPECT_EQ(records, stretch.recordsBefore) << row.what;
        EXPECT_EQ(stretch.data, row.input.data() + stretch.offset) << row.what;
        records += static_cast<long>(recordEnds.size());
        ends.insert(ends.end(), recordEnds.begin(), recordEnds.end());
        stretchEnd = stretch.offset + stretch.length;
    }
    end = scan.end();
}

TEST(RecordScan, FindsWhereEachRecordEndsAsTheWalkSteps)
{
    const auto hex = ListingLayout::Hexadecimal;
    const auto dec = ListingLayout::Decomposed;
    const std::vector<ScanRow> rows = {
        {"three definite records", hex, 0, {0x30, 0x03, 0x02, 0x01, 0x05, 0x04, 0x00, 0x05, 0x00}, {5, 7, 9},
         ScanEnd::Input, 9},
        {"an indefinite record ends behind its end-of-contents", hex, 0,
         {0x30, 0x80, 0x02, 0x01, 0x05, 0x00, 0x00, 0x05, 0x00}, {7, 9}, ScanEnd::Input, 9},
        {"padding belongs to the record behind it", hex, 0x100,
         {0x05, 0x00, 0xFF, 0xFF, 0x05, 0x00, 0xFF}, {2, 6}, ScanEnd::Input, 7},
        {"the decomposed walk skips padding too", dec, 0x100, {0x05, 0x00, 0xFF, 0x05, 0x00}, {2, 5},
         ScanEnd::Input, 5},
        {"a record that runs off the input is the tail", hex, 0, {0x05, 0x00, 0x30, 0x05, 0x02, 0x01},
         {2}, ScanEnd::Tail, 6},
        {"a tag of 00 at the top is the tail", hex, 0, {0x05, 0x00, 0x00, 0x01, 0x00}, {2}, ScanEnd::Tail, 5},
        {"an end-of-contents that isn't there is the tail", hex, 0, {0x05, 0x00, 0x30, 0x80, 0x05, 0x00}, {2},
         ScanEnd::Tail, 6},
        {"an end-of-contents with a second octet is the tail", hex, 0,
         {0x05, 0x00, 0x30, 0x80, 0x05, 0x00, 0x00, 0x01}, {2}, ScanEnd::Tail, 8},
        {"the first element's header is cut short", hex, 0, {0x1F}, {}, ScanEnd::Tail, 1},
    };
    for (const ScanRow& row : rows) {
        TestContext context;
        std::vector<int64_t> ends;
        ScanEnd end = ScanEnd::More;
        int64_t stretchEnd = 0;
        scanAll(context.get(), row, ends, end, stretchEnd);
        EXPECT_EQ(row.ends, ends) << row.what;
        EXPECT_EQ(row.end, end) << row.what;
        EXPECT_EQ(row.lastStretchEnd, stretchEnd) << row.what;
        EXPECT_EQ(0, context.lastError()) << row.what << ": the scan reports nothing";
        EXPECT_EQ("", context.output()) << row.what;
    }
}

// A CDR file of 4-octet record headers (R at offset 2): each record's
// element lies behind its header; the decomposed walk knows no headers.
TEST(RecordScan, StepsOverCdrRecordHeadersWhereTheListingDoes)
{
    const Octets input = {0x00, 0x00, 0x00, 0x05, 0x30, 0x03, 0x02, 0x01, 0x05,
                          0x00, 0x00, 0x00, 0x02, 0x05, 0x00, 0x00, 0x00, 0x00, 0x02, 0x05, 0x00};
    TestContext context;
    RecordScan scan(context.get(), ListingLayout::Syntax, input.data(), static_cast<int64_t>(input.size()), 0);
    RecordStretch stretch;
    std::vector<int64_t> ends;
    ASSERT_TRUE(scan.next(stretch, ends, 1000));
    EXPECT_EQ((std::vector<int64_t>{9, 15, 21}), ends);
    EXPECT_EQ(4, stretch.probe.recordHeaderLength);
    EXPECT_EQ(ScanEnd::Input, scan.end());
}

TEST(RecordScan, SkipsToARecordAndStopsBehindTheLastAskedFor)
{
    const Octets input = {0x05, 0x00, 0x05, 0x00, 0x05, 0x00, 0x05, 0x00, 0x05, 0x00};
    TestContext context;
    RecordScan scan(context.get(), ListingLayout::Json, input.data(), 10, 100);
    ASSERT_TRUE(scan.skipTo(3));
    RecordStretch stretch;
    std::vector<int64_t> ends;
    ASSERT_TRUE(scan.next(stretch, ends, 1000, 4));
    EXPECT_EQ(2, stretch.recordsBefore);
    EXPECT_EQ(4, stretch.offset);
    EXPECT_EQ(4, stretch.length);
    EXPECT_EQ(100, stretch.origin);
    EXPECT_FALSE(scan.next(stretch, ends, 1000, 4));

    RecordScan beyond(context.get(), ListingLayout::Json, input.data(), 10, 0);
    EXPECT_FALSE(beyond.skipTo(7));
    EXPECT_TRUE(beyond.endedBeforeFirst());
    EXPECT_EQ(5, beyond.recordsScanned());

    // Record 6 would begin just where the input ends.
    RecordScan atEnd(context.get(), ListingLayout::Hexadecimal, input.data(), 10, 0);
    EXPECT_FALSE(atEnd.skipTo(6));
    EXPECT_TRUE(atEnd.endedBeforeFirst());
    RecordScan last(context.get(), ListingLayout::Hexadecimal, input.data(), 10, 0);
    EXPECT_TRUE(last.skipTo(5));
    ASSERT_TRUE(last.next(stretch, ends, 1000));
    EXPECT_EQ((std::vector<int64_t>{10}), ends);
}

}  // namespace

namespace {

// Contents of BER-like pieces: end-of-contents, indefinite and definite
// headers, short and long lengths, high tag numbers, stray octets.
Octets randomContents(std::mt19937& random)
{
    static const Octets kPieces[] = {{0x00, 0x00}, {0x30, 0x80}, {0x24, 0x80}, {0x04, 0x01, 0xAA},
                                     {0x02, 0x00}, {0x04, 0x81, 0x02, 0x01, 0x02}, {0x1F, 0x81, 0x00, 0x00},
                                     {0x9F, 0x22, 0x01, 0x07}, {0x00}, {0x04}, {0x30, 0x03}, {0x84, 0x85},
                                     {0x00, 0x01, 0x00}, {0x30, 0x82, 0x00, 0x02, 0x05, 0x00}, {0x04, 0x7F}};
    Octets out;
    const int count = static_cast<int>(random() % 24);
    for (int i = 0; i < count; ++i) {
        const Octets& piece = kPieces[random() % (sizeof kPieces / sizeof kPieces[0])];
        out.insert(out.end(), piece.begin(), piece.end());
    }
    return out;
}

}  // namespace

// Where the plain step finds an end, the walk's own step finds the same one,
// and meets nothing on the way.
TEST(RecordScan, PlainEndOfContentsAgreesWithTheWalk)
{
    std::mt19937 random(20261123);
    int found = 0;
    for (int round = 0; round < 20000; ++round) {
        const Octets contents = randomContents(random);
        const uint8_t* plain = plainEndOfContents(contents.data(), contents.data() + contents.size());
        if (plain == nullptr) continue;
        ++found;
        // The contents inside an indefinite SEQUENCE, a NULL behind it.
        Octets element = {0x30, 0x80};
        element.insert(element.end(), contents.begin(), contents.end());
        element.insert(element.end(), {0x05, 0x00});
        TestContext context;
        auto count = static_cast<int32_t>(element.size());
        const uint8_t* next = nextElement(context.get(), element.data(), count);
        EXPECT_EQ(element.data() + 2 + (plain - contents.data()), next) << round;
        EXPECT_EQ(0, context.lastError()) << round;
    }
    EXPECT_GT(found, 1000);
}

namespace {

// Records for the listings: indefinite SEQUENCEs of random contents (some
// verify, some don't), definite ones, and a universal value that fails to
// decode, which hides what follows it in its level.
Octets randomRecords(std::mt19937& random)
{
    Octets input;
    const int records = 1 + static_cast<int>(random() % 4);
    for (int record = 0; record < records; ++record) {
        Octets contents = randomContents(random);
        if (random() % 3 == 0) contents.insert(contents.begin(), {0x30, 0x80, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00});
        if (random() % 4 == 0) {
            input.insert(input.end(), {0x30, static_cast<uint8_t>(contents.size() & 0x7F)});
        } else {
            input.insert(input.end(), {0x30, 0x80});
            contents.insert(contents.end(), {0x00, 0x00});
        }
        input.insert(input.end(), contents.begin(), contents.end());
    }
    return input;
}

struct Listed {
    std::string text;
    uint64_t failedValues;
    uint64_t hiddenElements;
};

// The listing of `input` in one layout, stretch by stretch as the scan cuts
// it (a record each); `searching`: every stretch taken as unverified.
Listed listInput(ListingLayout layout, const Octets& input, bool searching)
{
    TestContext run;
    RunContext* context = run.get();
    DiagnoseTally tally;
    RunExtensions extensions;
    extensions.tally = &tally;
    context->extensions = &extensions;
    try {
        RecordScan scan(context, layout, input.data(), static_cast<int64_t>(input.size()), 0);
        RecordStretch stretch;
        std::vector<int64_t> ends;
        while (scan.next(stretch, ends, 1)) {
            if (searching) stretch.verified = false;
            if (!listStretch(context, layout, stretch)) break;
        }
    } catch (const ToolJump&) {
    }
    return {run.output(), tally.failedValues, tally.hiddenElements};
}

}  // namespace

// A stretch the scan stepped over without a finding is verified: its walks
// take the ends of indefinite elements where they meet them. They list
// what the walk that searches for each end first lists, and count what a
// failed value hides the same.
TEST(RecordScan, VerifiedStretchesListAsTheSearchingWalk)
{
    std::mt19937 random(112326);
    int verified = 0;
    for (int round = 0; round < 3000; ++round) {
        const Octets input = randomRecords(random);
        {
            TestContext run;
            RecordScan scan(run.get(), ListingLayout::Syntax, input.data(), static_cast<int64_t>(input.size()), 0);
            RecordStretch stretch;
            std::vector<int64_t> ends;
            if (scan.next(stretch, ends, 1) && stretch.verified) ++verified;
        }
        for (ListingLayout layout : {ListingLayout::Hexadecimal, ListingLayout::Syntax, ListingLayout::Decomposed,
                                     ListingLayout::Json}) {
            const Listed taken = listInput(layout, input, false);
            const Listed searched = listInput(layout, input, true);
            ASSERT_EQ(searched.text, taken.text) << round << " layout " << static_cast<int>(layout);
            EXPECT_EQ(searched.failedValues, taken.failedValues) << round;
            EXPECT_EQ(searched.hiddenElements, taken.hiddenElements) << round;
        }
    }
    EXPECT_GT(verified, 1000);
}
