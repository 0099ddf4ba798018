// The decode driver and the type routines, through qorDecode.
#include "decoder/decoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "decoder/values.h"
#include "runtime/services.h"
#include "tests/runtime/counting_context.h"

namespace {

using Octets = std::vector<uint8_t>;

struct DecodeTest : ::testing::Test {
    CountingContext run;
    RunContext* context = run.get();
    void* value = nullptr;

    int decode(int pdu, const Octets& octets)
    {
        BerBuffer buffer = {static_cast<uint32_t>(octets.size()), octets.data()};
        value = nullptr;
        long before = CountingContext::live;
        int result = qorDecode(context, pdu, buffer, value);
        if (result != 0) {
            EXPECT_EQ(nullptr, value);
            EXPECT_EQ(before, CountingContext::live) << "a failed decode holds no memory";
        }
        return result;
    }
    void release(int pdu)
    {
        EXPECT_EQ(0, qorFreeValue(context, pdu, value));
        value = nullptr;
    }
    std::string errorText() const { return context->errorText; }
    void TearDown() override { EXPECT_EQ(0, CountingContext::live) << "blocks left behind"; }
};

TEST_F(DecodeTest, SegmentsAndTagsThatTheTypeRefuses)
{
    // A segment longer than its constructed string: 0031S.
    EXPECT_EQ(5, decode(4, {0x24, 0x03, 0x04, 0x05, 0x41, 0x41, 0x41, 0x41, 0x41}));
    // DATE's long-form tag is right; its length isn't.
    EXPECT_EQ(12, decode(25, {0x1F, 0x1F, 0x02, '2', '0'}));
}

TEST_F(DecodeTest, BooleanNullAndInteger)
{
    for (uint8_t octet : {0x01, 0xFF, 0x80}) {
        ASSERT_EQ(0, decode(1, {0x01, 0x01, octet}));
        EXPECT_EQ(1, *static_cast<uint8_t*>(value));
        release(1);
    }
    EXPECT_EQ(5, decode(1, {0x01, 0x00}));
    EXPECT_EQ(5, decode(1, {0x01, 0x02, 0x00, 0x00}));
    ASSERT_EQ(0, decode(5, {0x05, 0x00}));
    release(5);
    EXPECT_EQ(5, decode(5, {0x05, 0x01, 0x00}));

    const struct {
        Octets contents;
        int code;
        int32_t value;
    } integers[] = {
        {{0x00, 0x7F}, 5, 0}, {{0x00, 0x80}, 0, 128}, {{0xFF, 0x80}, 5, 0}, {{0xFF, 0x7F}, 0, -129},
        {{0x05}, 0, 5}, {{}, 5, 0}, {{0x80, 0x00, 0x00, 0x00}, 0, INT32_MIN},
    };
    for (const auto& row : integers) {
        Octets octets = {0x02, static_cast<uint8_t>(row.contents.size())};
        octets.insert(octets.end(), row.contents.begin(), row.contents.end());
        ASSERT_EQ(row.code, decode(2, octets));
        if (row.code == 0) {
            EXPECT_EQ(row.value, *static_cast<int32_t*>(value));
            release(2);
        }
    }
    EXPECT_EQ(5, decode(2, {0x22, 0x03, 0x02, 0x01, 0x05}));  // constructed
}

TEST_F(DecodeTest, RealSlotsAndForms)
{
    // The contents themselves are the parser's; here, what qorDecode does around it.
    ASSERT_EQ(0, decode(8, {0x09, 0x00}));
    EXPECT_EQ(0.0, *static_cast<double*>(value));
    release(8);
    ASSERT_EQ(0, decode(8, {0x09, 0x03, 0x80, 0x00, 0x01}));
    EXPECT_EQ(1.0, *static_cast<double*>(value));
    release(8);
    EXPECT_EQ(5, decode(8, {0x09, 0x01, 0x45}));  // a reserved special value
    EXPECT_EQ(5, decode(8, {0x29, 0x00}));        // constructed
}

TEST_F(DecodeTest, BitStrings)
{
    ASSERT_EQ(0, decode(3, {0x03, 0x00}));
    EXPECT_EQ(0u, static_cast<CountedValue*>(value)->length);
    EXPECT_EQ(nullptr, static_cast<CountedValue*>(value)->data);
    release(3);
    ASSERT_EQ(0, decode(3, {0x03, 0x02, 0x04, 0xFF}));
    EXPECT_EQ(4u, static_cast<CountedValue*>(value)->length);
    EXPECT_EQ(0xF0, *static_cast<const uint8_t*>(static_cast<CountedValue*>(value)->data));
    release(3);
    EXPECT_EQ(5, decode(3, {0x03, 0x01, 0x01}));
    EXPECT_EQ(5, decode(3, {0x03, 0x02, 0x08, 0x00}));
    EXPECT_EQ(5, decode(3, {0x23, 0x80, 0x03, 0x02, 0x01, 0xFF, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00}));  // 0036E
    ASSERT_EQ(0, decode(3, {0x23, 0x80, 0x03, 0x02, 0x00, 0x00, 0x03, 0x02, 0x01, 0xFF, 0x00, 0x00}));
    EXPECT_EQ(15u, static_cast<CountedValue*>(value)->length);
    release(3);
    EXPECT_EQ(5, decode(3, {0x23, 0x80, 0x00, 0x00}));
    ASSERT_EQ(0, decode(3, {0x23, 0x00}));
    release(3);
}

TEST_F(DecodeTest, ConstructedOctetStrings)
{
    ASSERT_EQ(0, decode(4, {0x24, 0x80, 0x00, 0x00}));
    EXPECT_EQ(0u, static_cast<CountedValue*>(value)->length);
    release(4);
    ASSERT_EQ(0, decode(4, {0x24, 0x80, 0x24, 0x80, 0x04, 0x01, 0x41, 0x00, 0x00, 0x04, 0x01, 0x42, 0x00, 0x00}));
    auto* octets = static_cast<CountedValue*>(value);
    ASSERT_EQ(2u, octets->length);
    EXPECT_EQ(0, std::memcmp(octets->data, "AB", 2));
    release(4);
    EXPECT_EQ(5, decode(4, {0x24, 0x80, 0x04, 0x01, 0x41, 0x00, 0x01}));  // 0028E
    EXPECT_EQ(5, decode(4, {0x24, 0x02, 0x00, 0x00}));                    // 0058E
    EXPECT_EQ(5, decode(19, {0x2C, 0x03, 0x0C, 0x01, 0x41}));            // segment tagged 12: 0033E

    // Ten nested levels decode, eleven don't.
    auto nested = [](int levels) {
        Octets octets;
        for (int i = 0; i < levels; ++i) octets.insert(octets.end(), {0x24, 0x80});
        octets.insert(octets.end(), {0x04, 0x01, 0x41});
        for (int i = 0; i < levels; ++i) octets.insert(octets.end(), {0x00, 0x00});
        return octets;
    };
    ASSERT_EQ(0, decode(4, nested(10)));
    release(4);
    EXPECT_EQ(108, decode(4, nested(11)));
}

TEST_F(DecodeTest, CharacterStrings)
{
    EXPECT_EQ(5, decode(18, {0x1E, 0x03, 0x00, 0x41, 0x00}));  // 0136E
    ASSERT_EQ(0, decode(18, {0x1E, 0x04, 0x00, 0x41, 0x00, 0xE9}));
    auto* bmp = static_cast<CountedValue*>(value);
    ASSERT_EQ(2u, bmp->length);
    EXPECT_EQ(0x00E9, static_cast<const uint16_t*>(bmp->data)[1]);
    release(18);
    EXPECT_EQ(5, decode(9, {0x12, 0x02, 0x31, 0x00}));  // NumericString with a NUL: 0046E
    ASSERT_EQ(0, decode(13, {0x16, 0x02, 0x41, 0x00}));  // IA5String with a NUL
    release(13);
    ASSERT_EQ(0, decode(19, {0x0C, 0x02, 0xC3, 0xA9}));
    EXPECT_STREQ("\xC3\xA9", *static_cast<char**>(value));
    release(19);
    EXPECT_EQ(5, decode(19, {0x0C, 0x01, 0xC3}));
    EXPECT_EQ(5, decode(19, {0x0C, 0x01, 0x80}));
    EXPECT_EQ(5, decode(6, {0x06, 0x00}));                       // 0037E
    EXPECT_EQ(5, decode(6, {0x26, 0x03, 0x04, 0x01, 0x2A}));     // 0137E
}

TEST_F(DecodeTest, ConstraintPass)
{
    ASSERT_EQ(0, decode(9, {0x12, 0x00}));
    release(9);
    EXPECT_EQ(17, decode(15, {0x1A, 0x01, 0x7F}));
    ASSERT_EQ(0, decode(13, {0x16, 0x01, 0x7F}));
    release(13);
    EXPECT_EQ(17, decode(13, {0x16, 0x01, 0x80}));
    EXPECT_EQ(10, decode(6, {0x06, 0x02, 0x2A, 0x86}));  // 0010S from the constraint pass
    ASSERT_EQ(0, decode(7, {0x0D, 0x01, 0x01}));
    release(7);
}

TEST_F(DecodeTest, Times)
{
    ASSERT_EQ(0, decode(21, {0x17, 0x0D, '1', '6', '0', '2', '2', '6', '1', '2', '3', '0', '4', '5', 'Z'}));
    auto* record = static_cast<TimeRecord*>(value);
    EXPECT_EQ(16, record->year);
    EXPECT_EQ(45, record->second);
    EXPECT_EQ(1, record->utc);
    release(21);
    const std::string good[] = {"20160226123045.5Z", "20160226123045,12345Z", "2016022612.5Z", "201602261230"};
    const uint16_t millisec[] = {500, 123, 0, 0};
    for (size_t i = 0; i < 4; ++i) {
        Octets octets = {0x18, static_cast<uint8_t>(good[i].size())};
        octets.insert(octets.end(), good[i].begin(), good[i].end());
        ASSERT_EQ(0, decode(22, octets)) << good[i];
        EXPECT_EQ(millisec[i], static_cast<TimeRecord*>(value)->millisec) << good[i];
        release(22);
    }
    for (const std::string bad : {"1602261230", "1602261230.5Z", "160226123060Z", "161302123045Z", "160226123045Zx"}) {
        Octets octets = {0x17, static_cast<uint8_t>(bad.size())};
        octets.insert(octets.end(), bad.begin(), bad.end());
        EXPECT_NE(0, decode(21, octets)) << bad;
    }
    EXPECT_EQ(12, decode(25, {0x1F, 0x1F, 0x07, '2', '0', '1', '6', '0', '1', '0'}));
    ASSERT_EQ(0, decode(28, {0x1F, 0x22, 0x02, '1', 'Y'}));
    EXPECT_STREQ("P1Y", *static_cast<char**>(value));
    release(28);
}

TEST_F(DecodeTest, TwoSegmentsOfAThousandOctetsComeOutAsOneBlock)
{
    Octets octets = {0x24, 0x82, 0x07, 0xD8};
    for (int segment = 0; segment < 2; ++segment) {
        octets.insert(octets.end(), {0x04, 0x82, 0x03, 0xE8});
        for (int i = 0; i < 1000; ++i) octets.push_back(static_cast<uint8_t>(segment * 7 + i));
    }
    ASSERT_EQ(0, decode(4, octets));
    auto* string = static_cast<CountedValue*>(value);
    ASSERT_EQ(2000u, string->length);
    const auto* data = static_cast<const uint8_t*>(string->data);
    EXPECT_EQ(0, std::memcmp(data, octets.data() + 8, 1000));
    EXPECT_EQ(0, std::memcmp(data + 1000, octets.data() + 1012, 1000));
    release(4);
}

TEST_F(DecodeTest, OidIriTexts)
{
    auto iri = [&](int pdu, const std::string& text) {
        Octets octets = {0x1F, static_cast<uint8_t>(pdu == 29 ? 0x23 : 0x24), static_cast<uint8_t>(text.size())};
        octets.insert(octets.end(), text.begin(), text.end());
        int result = decode(pdu, octets);
        if (result == 0) release(pdu);
        return result;
    };
    EXPECT_EQ(0, iri(29, "/ISO/Registration-Authority/x"));
    EXPECT_EQ(0, iri(29, "/2/999"));
    EXPECT_EQ(0, iri(29, "/ITU-T/Recommendation/Q"));
    EXPECT_EQ(5, iri(29, "/ISO/Bogus"));
    EXPECT_NE(std::string::npos, errorText().find("D0335E"));
    EXPECT_EQ(5, iri(29, "/ITU-T/0/27"));
    EXPECT_NE(std::string::npos, errorText().find("D0335E"));
    EXPECT_EQ(5, iri(29, "/a/"));
    EXPECT_NE(std::string::npos, errorText().find("D0334E"));
    EXPECT_EQ(5, iri(29, "//a"));
    EXPECT_EQ(5, iri(29, "/0/01"));  // no leading zero
    EXPECT_EQ(0, iri(30, "a/b"));
    EXPECT_EQ(5, iri(30, "a/\x01"));  // controls are no arc characters
    EXPECT_EQ(5, iri(29, "/"));
}

TEST_F(DecodeTest, TimeFractions)
{
    const struct {
        const char* text;
        uint16_t hour, minute, second, millisec;
    } rows[] = {
        {"20160226123045.9996Z", 12, 30, 45, 999},  // rounding can't carry into the seconds
        {"2016022612.5Z", 12, 30, 0, 0},
        {"20160226.5Z", 12, 0, 0, 0},
        {"201602261230.25Z", 12, 30, 15, 0},
    };
    for (const auto& row : rows) {
        std::string text = row.text;
        Octets octets = {0x18, static_cast<uint8_t>(text.size())};
        octets.insert(octets.end(), text.begin(), text.end());
        ASSERT_EQ(0, decode(22, octets)) << text;
        auto* record = static_cast<TimeRecord*>(value);
        EXPECT_EQ(row.hour, record->hour) << text;
        EXPECT_EQ(row.minute, record->minute) << text;
        EXPECT_EQ(row.second, record->second) << text;
        EXPECT_EQ(row.millisec, record->millisec) << text;
        release(22);
    }
    EXPECT_EQ(5, decode(22, {0x18, 0x0F, '2', '0', '1', '6', '0', '2', '2', '6', '1', '2', '3', '0', '4', '5', '.'}));
    EXPECT_EQ(12, decode(21, {0x17, 0x0D, '1', '6', '1', '3', '0', '2', '1', '2', '3', '0', '4', '5', 'Z'}));
    EXPECT_EQ("D0012S: Out-of-range value in time type. Month = 13; check PDU #21 'QUELT-UTCTIME'.\n", errorText());
    EXPECT_EQ(5, decode(25, {0x3F, 0x1F, 0x0A, 0x04, 0x08, '2', '0', '1', '6', '0', '1', '0', '2'}));  // constructed DATE
}

TEST_F(DecodeTest, HugeLengthsTakeNoMemoryBeforeTheOctetsAreThere)
{
    // A REAL announcing 2 GB in a buffer of a few octets.
    EXPECT_EQ(4, decode(8, {0x09, 0x84, 0x7F, 0x04, 0x00, 0x84, 0x10, 0x00, 0x00, 0x41}));
    EXPECT_EQ(4, decode(4, {0x04, 0x84, 0x7F, 0x00, 0x00, 0x00, 0x41}));
}

}  // namespace
