// The decode driver through qorDecode: the PDU range, the runtime's own
// reading of identifier and length octets, the input cursor, the refusals
// of the entry, and the text and location of each failure.
#include "decoder/decoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "decoder/control_table.h"
#include "tests/runtime/counting_context.h"

namespace {

using Octets = std::vector<uint8_t>;

struct Row {
    const char* what;
    int pdu;
    Octets octets;
    int code;
    const char* text;  // the whole of errorText
};

struct DriverTest : ::testing::Test {
    CountingContext run;
    RunContext* context = run.get();
    void* value = nullptr;

    int decode(int pdu, const Octets& octets)
    {
        static const uint8_t nothing = 0;
        BerBuffer buffer = {static_cast<uint32_t>(octets.size()), octets.empty() ? &nothing : octets.data()};
        value = reinterpret_cast<void*>(&buffer);  // qorDecode doesn't trust what the caller left here
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
        EXPECT_EQ(row.text, std::string(context->errorText)) << row.what;
        if (row.code == 0) release(row.pdu);
    }
    void TearDown() override { EXPECT_EQ(0, CountingContext::live) << "blocks left behind"; }
};

Octets concat(std::initializer_list<Octets> parts)
{
    Octets all;
    for (const Octets& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST_F(DriverTest, PduNumbers)
{
    const Row rows[] = {
        {"none below 1", 0, {0x02, 0x01, 0x05}, 3, "D0003S: PDU number not in range: 0.\n"},
        {"negative", -1, {0x02, 0x01, 0x05}, 3, "D0003S: PDU number not in range: -1.\n"},
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

TEST_F(DriverTest, IdentifierOctets)
{
    const Row rows[] = {
        {"31 in the long form", 2, {0x1F, 0x1F, 0x01, 0x00}, 9,
         "D0034E: PDU number and input tags do not match: [UNIVERSAL 31] (expected tag [UNIVERSAL 2]); check PDU "
         "#2.\n"},
        {"30 in the long form", 2, {0x1F, 0x1E, 0x01, 0x00}, 5, "D0018E: Tag needlessly long; check PDU #2.\n"},
        {"0 in the long form", 2, {0x1F, 0x00, 0x01, 0x00}, 5, "D0018E: Tag needlessly long; check PDU #2.\n"},
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
        {"application class", 2, {0x42, 0x01, 0x05}, 9,
         "D0034E: PDU number and input tags do not match: [APPLICATION 2] (expected tag [UNIVERSAL 2]); check PDU "
         "#2.\n"},
        {"end-of-contents", 2, {0x00, 0x00}, 5, "D0058E: Expected tag, found EOC octets; check PDU #2.\n"},
        {"tag 0 with a length", 2, {0x00, 0x01, 0x00}, 5, "D0028E: Non-standard EOC octets; check PDU #2.\n"},
        {"no octet at all", 2, {}, 4, "D0081S: End of input reached before message was fully decoded; check PDU #2.\n"},
        {"the long form cut short", 2, {0x1F, 0x81}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #2.\n"},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DriverTest, TheHeaderOfThePduHasAtMost130Octets)
{
    auto zeroGroups = [](size_t count) { return concat({{0x1F}, Octets(count, 0x80), {0x1F, 0x01, 0x00}}); };
    const Row rows[] = {
        // 130 octets of tag: the limit is reached, the tag ends, and then
        // its leading zero groups are refused.
        {"128 zero groups", 2, zeroGroups(128), 5, "D0018E: Tag needlessly long; check PDU #2.\n"},
        {"129 zero groups", 2, zeroGroups(129), 10,
         "D0055E: Tag encoding has too many leading nonsignificant octets: 130; check PDU #2.\n"},
        // 1 + 1 + 127 = 129 octets: a header at the limit is read.
        {"127 length octets", 2, concat({{0x02, 0xFF}, Octets(126, 0x00), {0x01, 0x05}}), 0, ""},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DriverTest, LengthOctets)
{
    const Row rows[] = {
        {"leading zeros", 2, {0x02, 0x84, 0x00, 0x00, 0x00, 0x01, 0x05}, 0, ""},
        {"more leading zeros than four", 2, {0x02, 0x85, 0x00, 0x00, 0x00, 0x00, 0x01, 0x05}, 0, ""},
        {"the sign bit", 2, {0x02, 0x84, 0x80, 0x00, 0x00, 0x00}, 10,
         "D0026S: Length too long: 2147483648; check PDU #2.\n"},
        // 01 00 00 00 fill the four octets; the fifth is dropped.
        {"five significant octets", 2, {0x02, 0x85, 0x01, 0x00, 0x00, 0x00, 0x00}, 10,
         "D0026S: Length too long: 16777216; check PDU #2.\n"},
        {"the largest length", 4, {0x04, 0x84, 0x7F, 0xFF, 0xFF, 0xFF, 0x41}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #4 'QUELT-OCTETSTRING'.\n"},
        {"primitive and indefinite", 2, {0x02, 0x80, 0x05, 0x00, 0x00}, 5,
         "D0051S: Found primitive encoding with indefinite length; check PDU #2.\n"},
        {"length octets cut short", 2, {0x02, 0x82, 0x01}, 4,
         "D0081S: End of input reached before message was fully decoded; check PDU #2.\n"},
    };
    for (const Row& row : rows) check(row);
}

TEST_F(DriverTest, TheInputCursor)
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
}

TEST_F(DriverTest, OctetsConsumedAndValueBytes)
{
    const struct {
        int pdu;
        Octets octets;
        int32_t consumed;
    } rows[] = {
        {2, {0x02, 0x01, 0x05, 0xFF, 0xFF}, 3},
        {2, {0x02, 0x84, 0x00, 0x00, 0x00, 0x01, 0x05, 0x00}, 7},
        {4, {0x24, 0x80, 0x04, 0x01, 0x41, 0x00, 0x00, 0x99}, 7},
        {5, {0x05, 0x00, 0x05, 0x00}, 2},
    };
    for (const auto& row : rows) {
        ASSERT_EQ(0, decode(row.pdu, row.octets));
        EXPECT_EQ(row.consumed, context->decode.consumedOctets) << row.pdu;
        release(row.pdu);
    }
    // The slot of an INTEGER is 4 octets, counted as 8.
    ASSERT_EQ(0, decode(2, {0x02, 0x01, 0x05}));
    EXPECT_EQ(8u, context->decode.valueBytes);
    release(2);
}

TEST_F(DriverTest, RefusalsOfTheEntry)
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

TEST_F(DriverTest, TablesThatTheDecodeRefuses)
{
    const ControlTable* builtin = context->controlTable;
    ControlTable wrongVersion = *builtin;
    wrongVersion.version = 14;
    context->controlTable = &wrongVersion;
    EXPECT_EQ(7, decode(2, {0x02, 0x01, 0x05}));
    EXPECT_STREQ(
        "D0007S: The files generated by the ASN.1 compiler are incompatible with the runtime library version, 15.\n",
        context->errorText);

    // A kind that no routine is known for.
    TypeRecord types[32];
    for (int i = 0; i < 32; ++i) types[i] = builtin->types[i];
    types[2].kind = 0x99;
    types[4].kind = 0x4d;
    ControlTable unknownKinds = *builtin;
    unknownKinds.types = types;
    context->controlTable = &unknownKinds;
    EXPECT_EQ(18, decode(2, {0x02, 0x01, 0x05}));
    EXPECT_STREQ("D0056S: This error cannot happen; inform QOR, code = 4; check PDU #2 'QUELT-INTEGER'.\n",
                 context->errorText);
    EXPECT_EQ(18, decode(4, {0x04, 0x01, 0x41}));
    context->controlTable = builtin;

    RealEntry real = context->state->hooks.realEntry;
    context->state->hooks.realEntry = nullptr;
    EXPECT_EQ(32, decode(8, {0x09, 0x00}));
    EXPECT_STREQ("D0112S: REAL code not linked or initialized; check PDU #8 'QUELT-REAL'.\n", context->errorText);
    context->state->hooks.realEntry = real;
}

TEST_F(DriverTest, AFailureOfTheConstraintPassReleasesTheCompleteValue)
{
    EXPECT_EQ(17, decode(10, {0x13, 0x03, 'A', '*', 'B'}));
    EXPECT_STREQ("D0064S: Permitted alphabet constraint violated, bad character: '*'; check PDU #10 "
                 "'QUELT-PRINTABLESTRING'.\n",
                 context->errorText);
    EXPECT_EQ(0u, context->decode.valueBytes);
}

}  // namespace
