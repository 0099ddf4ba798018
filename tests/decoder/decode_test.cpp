// The decoder through qorDecode: the PDU range, the runtime's own reading of
// identifier and length octets, the input cursor, the refusals of the entry,
// each type routine's values and refusals, and the text of each failure.
#include "decoder/decoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "decoder/control_table.h"
#include "decoder/values.h"
#include "tests/runtime/counting_context.h"

namespace {

using Octets = std::vector<uint8_t>;

// One decode: its result, and the whole of errorText unless `text` is null.
struct Row {
    const char* what;
    int pdu;
    Octets octets;
    int code;
    const char* text = nullptr;
};

Octets concat(std::initializer_list<Octets> parts)
{
    Octets all;
    for (const Octets& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A primitive element of at most 127 octets of contents.
Octets element(Octets identifier, const std::string& contents)
{
    identifier.push_back(static_cast<uint8_t>(contents.size()));
    identifier.insert(identifier.end(), contents.begin(), contents.end());
    return identifier;
}

struct DecodeTest : ::testing::Test {
    CountingContext run;
    RunContext* context = run.get();
    void* value = nullptr;

    int decode(int pdu, const Octets& octets)
    {
        static const uint8_t nothing = 0;
        BerBuffer buffer = {static_cast<uint32_t>(octets.size()), octets.empty() ? &nothing : octets.data()};
        value = &buffer;  // qorDecode doesn't trust what the caller left here
        int result = qorDecode(context, pdu, buffer, value);
        if (result != 0) {
            EXPECT_EQ(nullptr, value);
            EXPECT_EQ(0, CountingContext::live) << "a failed decode holds no memory";
        }
        return result;
    }
    void release(int pdu)
    {
        EXPECT_EQ(0, qorFreeValue(context, pdu, value));
        value = nullptr;
    }
    void check(const Row& row)
    {
        EXPECT_EQ(row.code, decode(row.pdu, row.octets)) << row.what;
        if (row.text != nullptr) {
            EXPECT_EQ(row.text, std::string(context->errorText)) << row.what;
        }
        if (row.code == 0) release(row.pdu);
    }
    template <typename T>
    const T& as() const
    {
        return *static_cast<const T*>(value);
    }
    void TearDown() override { EXPECT_EQ(0, CountingContext::live) << "blocks left behind"; }
};

TEST_F(DecodeTest, PduNumbers)
{
    const Row rows[] = {
        {"none below 1", 0, {0x02, 0x01, 0x05}, 3, "D0003S: PDU number not in range: 0.\n"},
        {"type 31 has no PDU", 31, {0x0D, 0x01, 0x01}, 3, "D0003S: PDU number not in range: 31.\n"},
        {"1 is the first", 1, {0x01, 0x01, 0xFF}, 0, ""},
        {"30 is the last", 30, {0x1F, 0x24, 0x01, 'a'}, 0, ""},
        {"the tag never chooses the PDU", 30, {0x02, 0x01, 0x05}, 9,
         "D0034E: PDU number and input tags do not match: [UNIVERSAL 2] (expected tag [UNIVERSAL 36]); "
         "check PDU #30.\n"},
        {"INTEGER's second type shares tag 2", 23, {0x02, 0x05, 0x01, 0x00, 0x00, 0x00, 0x00}, 0, ""},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DecodeTest, IdentifierOctets)
{
    const Row rows[] = {
        {"31 in the long form", 2, {0x1F, 0x1F, 0x01, 0x00}, 9,
         "D0034E: PDU number and input tags do not match: [UNIVERSAL 31] (expected tag [UNIVERSAL 2]); check PDU "
         "#2.\n"},
        {"30 in the long form", 2, {0x1F, 0x1E, 0x01, 0x00}, 5, "D0018E: Tag needlessly long; check PDU #2.\n"},
        {"a leading zero group", 2, {0x1F, 0x80, 0x1F, 0x01, 0x00}, 5, "D0018E: Tag needlessly long; check PDU #2.\n"},
        {"two groups", 2, {0x1F, 0x81, 0x00, 0x01, 0x00}, 9,
         "D0034E: PDU number and input tags do not match: [UNIVERSAL 128] (expected tag [UNIVERSAL 2]); check PDU "
         "#2.\n"},
        // 65535 passes the 16-bit test and runs into the class bits.
        {"65535", 2, {0x1F, 0x83, 0xFF, 0x7F, 0x01, 0x00}, 9,
         "D0034E: PDU number and input tags do not match: [PRIVATE 16383] (expected tag [UNIVERSAL 2]); check PDU "
         "#2.\n"},
        {"65536", 2, {0x1F, 0x84, 0x80, 0x00}, 10, "D0019E: Tag too long: 512; check PDU #2.\n"},
        {"65536, whatever follows", 2, {0x1F, 0x84, 0x80, 0x80, 0x00, 0x84, 0x80, 0x00, 0x00, 0x00}, 10,
         "D0019E: Tag too long: 512; check PDU #2.\n"},
        {"context class", 2, {0x82, 0x01, 0x05}, 9,
         "D0034E: PDU number and input tags do not match: [2] (expected tag [UNIVERSAL 2]); check PDU #2.\n"},
        {"end-of-contents", 2, {0x00, 0x00}, 5, "D0058E: Expected tag, found EOC octets; check PDU #2.\n"},
        {"tag 0 with a length", 2, {0x00, 0x01, 0x00}, 5, "D0028E: Non-standard EOC octets; check PDU #2.\n"},
        {"no octet at all", 2, {}, 4, "D0081S: End of input reached before message was fully decoded; check PDU #2.\n"},
        {"the long form cut short", 2, {0x1F, 0x81}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #2.\n"},
        // 130 octets of tag: the limit is reached, the tag ends, and then its
        // leading zero groups are refused.
        {"128 zero groups", 2, concat({{0x1F}, Octets(128, 0x80), {0x1F, 0x01, 0x00}}), 5,
         "D0018E: Tag needlessly long; check PDU #2.\n"},
        {"129 zero groups", 2, concat({{0x1F}, Octets(129, 0x80), {0x1F, 0x01, 0x00}}), 10,
         "D0055E: Tag encoding has too many leading nonsignificant octets: 130; check PDU #2.\n"},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DecodeTest, LengthOctets)
{
    const Row rows[] = {
        {"leading zeros", 2, {0x02, 0x84, 0x00, 0x00, 0x00, 0x01, 0x05}, 0, ""},
        {"more leading zeros than four", 2, {0x02, 0x85, 0x00, 0x00, 0x00, 0x00, 0x01, 0x05}, 0, ""},
        // 1 + 1 + 127 = 129 octets: a header at the limit is read.
        {"127 length octets", 2, concat({{0x02, 0xFF}, Octets(126, 0x00), {0x01, 0x05}}), 0, ""},
        {"the sign bit", 2, {0x02, 0x84, 0x80, 0x00, 0x00, 0x00}, 10,
         "D0026S: Length too long: 2147483648; check PDU #2.\n"},
        // 01 00 00 00 fill the four octets; the fifth is dropped.
        {"five significant octets", 2, {0x02, 0x85, 0x01, 0x00, 0x00, 0x00, 0x00}, 10,
         "D0026S: Length too long: 16777216; check PDU #2.\n"},
        // Huge lengths take no memory before the octets are there.
        {"the largest length", 4, {0x04, 0x84, 0x7F, 0xFF, 0xFF, 0xFF, 0x41}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #4 'QUELT-OCTETSTRING'.\n"},
        {"a REAL of 2 GB", 8, {0x09, 0x84, 0x7F, 0x04, 0x00, 0x84, 0x10, 0x00, 0x00, 0x41}, 4},
        {"primitive and indefinite", 2, {0x02, 0x80, 0x05, 0x00, 0x00}, 5,
         "D0051S: Found primitive encoding with indefinite length; check PDU #2.\n"},
        {"length octets cut short", 2, {0x02, 0x82, 0x01}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #2.\n"},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DecodeTest, TheInputCursor)
{
    const Row rows[] = {
        {"contents beyond the buffer", 4, {0x04, 0x05, 0x41}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #4 'QUELT-OCTETSTRING'.\n"},
        // The segment's length octet lies beyond the PDU's length of 1.
        {"a segment header beyond the definite length", 4, {0x24, 0x01, 0x04, 0x05, 0x41, 0x41, 0x41, 0x41, 0x41},
         18,
         "D0122S: End of input reached before PDU was fully decoded; additional bytes expected: 0; check PDU #4 "
         "'QUELT-OCTETSTRING'.\n"},
        // Both the buffer and the length end there: the length is asked first.
        {"buffer and length end together", 4, {0x24, 0x01, 0x04}, 18,
         "D0122S: End of input reached before PDU was fully decoded; additional bytes expected: 0; check PDU #4 "
         "'QUELT-OCTETSTRING'.\n"},
        {"end-of-contents missing at the end", 4, {0x24, 0x80}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #4 'QUELT-OCTETSTRING'.\n"},
        {"the element may be followed by more", 2, {0x02, 0x01, 0x05, 0xFF, 0xFF}, 0, ""},
    };
    for (const Row& row : rows) check(row);

    const struct {
        int pdu;
        Octets octets;
        int32_t consumed;
    } consumed[] = {
        {2, {0x02, 0x01, 0x05, 0xFF, 0xFF}, 3},
        {2, {0x02, 0x84, 0x00, 0x00, 0x00, 0x01, 0x05, 0x00}, 7},
        {4, {0x24, 0x80, 0x04, 0x01, 0x41, 0x00, 0x00, 0x99}, 7},
        {5, {0x05, 0x00, 0x05, 0x00}, 2},
    };
    for (const auto& row : consumed) {
        ASSERT_EQ(0, decode(row.pdu, row.octets));
        EXPECT_EQ(row.consumed, context->decode.consumedOctets) << row.pdu;
        release(row.pdu);
    }
    // The slot of an INTEGER is 4 octets, counted as 8.
    ASSERT_EQ(0, decode(2, {0x02, 0x01, 0x05}));
    EXPECT_EQ(8u, context->decode.valueBytes);
    release(2);
}

TEST_F(DecodeTest, WhatTheTypeRoutinesRefuse)
{
    const Row rows[] = {
        {"BOOLEAN of 0 octets", 1, {0x01, 0x00}, 5},
        {"BOOLEAN of 2 octets", 1, {0x01, 0x02, 0x00, 0x00}, 5},
        {"NULL of 1 octet", 5, {0x05, 0x01, 0x00}, 5},
        {"NULL", 5, {0x05, 0x00}, 0},
        {"INTEGER 00 7F", 2, {0x02, 0x02, 0x00, 0x7F}, 5},
        {"INTEGER FF 80", 2, {0x02, 0x02, 0xFF, 0x80}, 5},
        {"INTEGER of 0 octets", 2, {0x02, 0x00}, 5},
        {"a reserved special REAL", 8, {0x09, 0x01, 0x45}, 5},
        {"constructed REAL", 8, {0x29, 0x00}, 5},
        {"unused bits without an octet", 3, {0x03, 0x01, 0x01}, 5},
        {"8 unused bits", 3, {0x03, 0x02, 0x08, 0x00}, 5},
        {"constructed BIT STRING without segments", 3, {0x23, 0x80, 0x00, 0x00}, 5},
        {"constructed BIT STRING, definite and empty", 3, {0x23, 0x00}, 0},
        {"0031S: a segment longer than its string", 4, {0x24, 0x03, 0x04, 0x05, 0x41, 0x41, 0x41, 0x41, 0x41}, 5},
        {"0028E: end-of-contents 00 01", 4, {0x24, 0x80, 0x04, 0x01, 0x41, 0x00, 0x01}, 5},
        {"0058E: end-of-contents inside a definite length", 4, {0x24, 0x02, 0x00, 0x00}, 5},
        {"0136E: BMPString of an odd length", 18, {0x1E, 0x03, 0x00, 0x41, 0x00}, 5},
        {"0046E: NumericString with a NUL", 9, {0x12, 0x02, 0x31, 0x00}, 5},
        {"IA5String with a NUL", 13, {0x16, 0x02, 0x41, 0x00}, 0},
        {"UTF-8 cut short", 19, {0x0C, 0x01, 0xC3}, 5},
        {"UTF-8 continuation first", 19, {0x0C, 0x01, 0x80}, 5},
        {"0037E: empty OBJECT IDENTIFIER", 6, {0x06, 0x00}, 5},
        {"0137E: constructed OBJECT IDENTIFIER", 6, {0x26, 0x03, 0x04, 0x01, 0x2A}, 5},
        // The constraint pass.
        {"empty NumericString", 9, {0x12, 0x00}, 0},
        {"VisibleString with DEL", 15, {0x1A, 0x01, 0x7F}, 17},
        {"IA5String with DEL", 13, {0x16, 0x01, 0x7F}, 0},
        {"IA5String with 80", 13, {0x16, 0x01, 0x80}, 17},
        {"0010S: an unfinished subidentifier", 6, {0x06, 0x02, 0x2A, 0x86}, 10},
        {"RELATIVE-OID", 7, {0x0D, 0x01, 0x01}, 0},
        {"0064S", 10, element({0x13}, "A*B"), 17,
         "D0064S: Permitted alphabet constraint violated, bad character: '*'; check PDU #10 "
         "'QUELT-PRINTABLESTRING'.\n"},
    };
    for (const Row& row : rows) check(row);
    EXPECT_EQ(0u, context->decode.valueBytes) << "a failed constraint pass releases the complete value";
}

TEST_F(DecodeTest, TimesAndTheirRefusals)
{
    const Row rows[] = {
        {"UTCTime without seconds or zone", 21, element({0x17}, "1602261230"), 5},
        {"UTCTime with a fraction", 21, element({0x17}, "1602261230.5Z"), 5},
        {"second 60", 21, element({0x17}, "160226123060Z"), 12},
        {"characters behind the zone", 21, element({0x17}, "160226123045Zx"), 5},
        {"month 13", 21, element({0x17}, "161302123045Z"), 12,
         "D0012S: Out-of-range value in time type. Month = 13; check PDU #21 'QUELT-UTCTIME'.\n"},
        {"a mark without a fraction", 22, element({0x18}, "20160226123045."), 5},
        {"DATE of 2 digits", 25, element({0x1F, 0x1F}, "20"), 12},
        {"DATE of 7 digits", 25, element({0x1F, 0x1F}, "2016010"), 12},
        {"constructed DATE", 25, {0x3F, 0x1F, 0x0A, 0x04, 0x08, '2', '0', '1', '6', '0', '1', '0', '2'}, 5},
    };
    for (const Row& row : rows) check(row);

    const struct {
        const char* text;
        std::array<int, 4> time;  // hour, minute, second, millisecond
    } fractions[] = {
        {"20160226123045.5Z", {12, 30, 45, 500}},
        {"20160226123045,12345Z", {12, 30, 45, 123}},
        {"201602261230", {12, 30, 0, 0}},
        {"20160226123045.9996Z", {12, 30, 45, 999}},  // rounding can't carry into the seconds
        {"2016022612.5Z", {12, 30, 0, 0}},
        {"20160226.5Z", {12, 0, 0, 0}},
        {"201602261230.25Z", {12, 30, 15, 0}},
        {"20160226123045.123456789012345678901234567890Z", {12, 30, 45, 123}},  // longer than the usual text
    };
    for (const auto& row : fractions) {
        ASSERT_EQ(0, decode(22, element({0x18}, row.text))) << row.text;
        const auto& record = as<TimeRecord>();
        EXPECT_EQ(row.time, (std::array<int, 4>{record.hour, record.minute, record.second, record.millisec}))
            << row.text;
        release(22);
    }
    ASSERT_EQ(0, decode(21, element({0x17}, "160226123045Z")));
    EXPECT_EQ(16, as<TimeRecord>().year);
    EXPECT_EQ(45, as<TimeRecord>().second);
    EXPECT_EQ(1, as<TimeRecord>().utc);
    release(21);
}

TEST_F(DecodeTest, OidIriTexts)
{
    const Row rows[] = {
        {"a name of the second arc", 29, element({0x1F, 0x23}, "/ISO/Registration-Authority/x"), 0},
        {"numbers under Joint-ISO-ITU-T", 29, element({0x1F, 0x23}, "/2/999"), 0},
        {"a letter under Recommendation", 29, element({0x1F, 0x23}, "/ITU-T/Recommendation/Q"), 0},
        {"an unknown second arc", 29, element({0x1F, 0x23}, "/ISO/Bogus"), 5,
         "D0335E: Invalid arc in the OID internationalized resource identifier value: 'Bogus'; check PDU #29 "
         "'QUELT-OID-IRI'.\n"},
        {"27 under Recommendation", 29, element({0x1F, 0x23}, "/ITU-T/0/27"), 5,
         "D0335E: Invalid arc in the OID internationalized resource identifier value: '27'; check PDU #29 "
         "'QUELT-OID-IRI'.\n"},
        {"an empty last arc", 29, element({0x1F, 0x23}, "/a/"), 5,
         "D0334E: Invalid OID internationalized resource identifier value: '/a/'; check PDU #29 "
         "'QUELT-OID-IRI'.\n"},
        {"an empty first arc", 29, element({0x1F, 0x23}, "//a"), 5},
        {"a leading zero", 29, element({0x1F, 0x23}, "/0/01"), 5},
        {"the root alone", 29, element({0x1F, 0x23}, "/"), 5},
        {"relative", 30, element({0x1F, 0x24}, "a/b"), 0},
        {"a control is no arc character", 30, element({0x1F, 0x24}, "a/\x01"), 5},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DecodeTest, ValuesOfNumbers)
{
    for (uint8_t octet : {0x01, 0xFF, 0x80}) {
        ASSERT_EQ(0, decode(1, {0x01, 0x01, octet}));
        EXPECT_EQ(1, as<uint8_t>());
        release(1);
    }
    const struct {
        Octets contents;
        int32_t value;
    } integers[] = {{{0x00, 0x80}, 128}, {{0xFF, 0x7F}, -129}, {{0x05}, 5}, {{0x80, 0x00, 0x00, 0x00}, INT32_MIN}};
    for (const auto& row : integers) {
        ASSERT_EQ(0, decode(2, concat({{0x02, static_cast<uint8_t>(row.contents.size())}, row.contents})));
        EXPECT_EQ(row.value, as<int32_t>());
        release(2);
    }
    // The contents of a REAL are the parser's; here, the slot around it.
    ASSERT_EQ(0, decode(8, {0x09, 0x00}));
    EXPECT_EQ(0.0, as<double>());
    release(8);
    ASSERT_EQ(0, decode(8, {0x09, 0x03, 0x80, 0x00, 0x01}));
    EXPECT_EQ(1.0, as<double>());
    release(8);
}

TEST_F(DecodeTest, ValuesOfStrings)
{
    ASSERT_EQ(0, decode(3, {0x03, 0x00}));
    EXPECT_EQ(0u, as<CountedValue>().length);
    EXPECT_EQ(nullptr, as<CountedValue>().data);
    release(3);
    ASSERT_EQ(0, decode(3, {0x03, 0x02, 0x04, 0xFF}));
    EXPECT_EQ(4u, as<CountedValue>().length);
    EXPECT_EQ(0xF0, *static_cast<const uint8_t*>(as<CountedValue>().data));
    release(3);
    ASSERT_EQ(0, decode(3, {0x23, 0x80, 0x03, 0x02, 0x00, 0x00, 0x03, 0x02, 0x01, 0xFF, 0x00, 0x00}));
    EXPECT_EQ(15u, as<CountedValue>().length);
    release(3);
    ASSERT_EQ(0, decode(4, {0x24, 0x80, 0x00, 0x00}));
    EXPECT_EQ(0u, as<CountedValue>().length);
    release(4);
    ASSERT_EQ(0, decode(4, {0x24, 0x80, 0x24, 0x80, 0x04, 0x01, 0x41, 0x00, 0x00, 0x04, 0x01, 0x42, 0x00, 0x00}));
    ASSERT_EQ(2u, as<CountedValue>().length);
    EXPECT_EQ(0, std::memcmp(as<CountedValue>().data, "AB", 2));
    release(4);
    ASSERT_EQ(0, decode(18, {0x1E, 0x04, 0x00, 0x41, 0x00, 0xE9}));
    ASSERT_EQ(2u, as<CountedValue>().length);
    EXPECT_EQ(0x00E9, static_cast<const uint16_t*>(as<CountedValue>().data)[1]);
    release(18);
    // Texts: UTF-8 as it stands, the time types rebuilt.
    const struct {
        int pdu;
        Octets octets;
        const char* text;
    } texts[] = {
        {19, {0x0C, 0x02, 0xC3, 0xA9}, "\xC3\xA9"},
        {28, element({0x1F, 0x22}, "1Y"), "P1Y"},
        {26, element({0x1F, 0x20}, "235960"), "23:59:60"},
    };
    for (const auto& row : texts) {
        ASSERT_EQ(0, decode(row.pdu, row.octets)) << row.text;
        EXPECT_STREQ(row.text, as<char*>());
        release(row.pdu);
    }

    // Two segments of a thousand octets come out as one block.
    Octets octets = {0x24, 0x82, 0x07, 0xD8};
    for (int segment = 0; segment < 2; ++segment) {
        octets.insert(octets.end(), {0x04, 0x82, 0x03, 0xE8});
        for (int i = 0; i < 1000; ++i) octets.push_back(static_cast<uint8_t>(segment * 7 + i));
    }
    ASSERT_EQ(0, decode(4, octets));
    ASSERT_EQ(2000u, as<CountedValue>().length);
    const auto* data = static_cast<const uint8_t*>(as<CountedValue>().data);
    EXPECT_EQ(0, std::memcmp(data, octets.data() + 8, 1000));
    EXPECT_EQ(0, std::memcmp(data + 1000, octets.data() + 1012, 1000));
    release(4);
}

TEST_F(DecodeTest, RefusalsOfTheEntry)
{
    int pdu = 2;
    BerBuffer empty = {3, nullptr};
    EXPECT_EQ(6, qorDecode(context, pdu, empty, value));
    EXPECT_STREQ("D0006S: Unexpected NULL pointer as argument to encoder/decoder.\n", context->errorText);
    EXPECT_EQ(6, qorDecode(nullptr, pdu, empty, value));

    // 2 GB and more reads as a negative length; nothing is read.
    const uint8_t octets[] = {0x02, 0x01, 0x05};
    BerBuffer huge = {0x80000000u, octets};
    EXPECT_EQ(6, qorDecode(context, pdu, huge, value));
    EXPECT_STREQ("D0057S: Decoder argument for length is negative; length = -2147483648.\n", context->errorText);
    EXPECT_EQ(nullptr, value);

    DecoderEntry entry = context->state->hooks.decoderEntry;
    context->state->hooks.decoderEntry = nullptr;
    BerBuffer buffer = {3, octets};
    EXPECT_EQ(23, qorDecode(context, pdu, buffer, value));
    EXPECT_STREQ("D0103S: The requested encoding rules were not linked: 'BER'.\n", context->errorText);
    context->state->hooks.decoderEntry = entry;
    EXPECT_EQ(2, pdu) << "the PDU number stays as it was";
}

TEST(DecodeOnAStoppedContext, RefusesTheMissingTable)
{
    RunContext context{};
    ASSERT_EQ(0, qorStartContext(&context, builtinControlTable()));
    qorStopContext(&context);
    const uint8_t octets[] = {0x02, 0x01, 0x05};
    BerBuffer buffer = {3, octets};
    int pdu = 2;
    void* value = nullptr;
    EXPECT_EQ(20, qorDecode(&context, pdu, buffer, value));
    EXPECT_STREQ("D0073S: Attempt made to pass a NULL control table pointer.\n", context.errorText);
}

TEST_F(DecodeTest, TablesThatTheDecodeRefuses)
{
    const ControlTable* builtin = context->controlTable;
    ControlTable wrongVersion = *builtin;
    wrongVersion.version = 14;
    context->controlTable = &wrongVersion;
    check({"version 14", 2, {0x02, 0x01, 0x05}, 7,
           "D0007S: The files generated by the ASN.1 compiler are incompatible with the runtime library version, "
           "15.\n"});

    // A kind that no routine is known for.
    TypeRecord types[32];
    for (int i = 0; i < 32; ++i) types[i] = builtin->types[i];
    types[2].kind = 0x99;
    types[4].kind = 0x4d;
    ControlTable unknownKinds = *builtin;
    unknownKinds.types = types;
    context->controlTable = &unknownKinds;
    check({"kind 0x99", 2, {0x02, 0x01, 0x05}, 18,
           "D0056S: This error cannot happen; inform QOR, code = 4; check PDU #2 'QUELT-INTEGER'.\n"});
    check({"kind 0x4d", 4, {0x04, 0x01, 0x41}, 18});
    context->controlTable = builtin;

    RealEntry real = context->state->hooks.realEntry;
    context->state->hooks.realEntry = nullptr;
    check({"no REAL code", 8, {0x09, 0x00}, 32,
           "D0112S: REAL code not linked or initialized; check PDU #8 'QUELT-REAL'.\n"});
    context->state->hooks.realEntry = real;
}

}  // namespace
