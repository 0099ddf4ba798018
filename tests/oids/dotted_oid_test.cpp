#include "oids/dotted_oid.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(DottedOid, EncodesTheArcsAsX690Subidentifiers)
{
    const struct {
        const char* dotted;
        std::vector<uint8_t> octets;
    } rows[] = {
        {"1.2.840.113549.1.1.11", {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x0B}},
        {"0.9.2342.19200300.100.1.25", {0x09, 0x92, 0x26, 0x89, 0x93, 0xF2, 0x2C, 0x64, 0x01, 0x19}},
        // The first two arcs share one subidentifier, 40 * first + second.
        {"0.0", {0x00}},
        {"1.39", {0x4F}},
        {"2.47", {0x7F}},
        {"2.48", {0x81, 0x00}},
        {"2.999.3", {0x88, 0x37, 0x03}},
        // Where a subidentifier takes one more octet.
        {"1.2.0", {0x2A, 0x00}},
        {"1.2.127", {0x2A, 0x7F}},
        {"1.2.128", {0x2A, 0x81, 0x00}},
        {"1.2.16383", {0x2A, 0xFF, 0x7F}},
        {"1.2.16384", {0x2A, 0x81, 0x80, 0x00}},
        // The largest arc, and the largest second arc under 2.
        {"1.2.18446744073709551615", {0x2A, 0x81, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}},
        {"2.18446744073709551535", {0x81, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}},
    };
    for (const auto& row : rows) {
        std::vector<uint8_t> octets{0xEE};  // replaced, not appended to
        EXPECT_TRUE(encodeDottedOid(row.dotted, octets)) << row.dotted;
        EXPECT_EQ(row.octets, octets) << row.dotted;
    }
}

TEST(DottedOid, RejectsWhatIsNoOid)
{
    const struct {
        const char* dotted;
        DottedOidFault fault;
    } rows[] = {
        {"", DottedOidFault::Empty},
        {"1", DottedOidFault::TooFewArcs},
        {"2", DottedOidFault::TooFewArcs},
        {"3.1", DottedOidFault::FirstArc},
        {"1.40", DottedOidFault::SecondArc},
        {"1.2.", DottedOidFault::EmptyArc},
        {".1.2", DottedOidFault::EmptyArc},
        {"1..2", DottedOidFault::EmptyArc},
        {"1.2.a", DottedOidFault::NotDigit},
        {"1.2 3", DottedOidFault::NotDigit},
        {"01.2", DottedOidFault::LeadingZero},
        {"1.02", DottedOidFault::LeadingZero},
        {"1.2.00", DottedOidFault::LeadingZero},
        {"1.2.18446744073709551616", DottedOidFault::ArcTooLarge},
        {"1.2.99999999999999999999999", DottedOidFault::ArcTooLarge},
        {"2.18446744073709551536", DottedOidFault::ArcTooLarge},
    };
    for (const auto& row : rows) {
        std::vector<uint8_t> octets{0xEE};
        EXPECT_EQ(row.fault, parseDottedOid(row.dotted, octets)) << row.dotted;
        EXPECT_TRUE(octets.empty()) << row.dotted;
        EXPECT_FALSE(encodeDottedOid(row.dotted, octets)) << row.dotted;
    }
}

TEST(DottedOid, WellFormedContentsEndASubidentifierAndHaveNoPadding)
{
    const struct {
        std::vector<uint8_t> contents;
        bool wellFormed;
    } rows[] = {
        {{}, false},
        {{0x2A}, true},
        {{0x2A, 0x00}, true},
        {{0x81, 0x00}, true},
        {{0x2A, 0x86}, false},        // the last subidentifier goes on
        {{0x2A, 0x80, 0x01}, false},  // 0x80 pads the front of a subidentifier
        {{0x80, 0x01}, false},
        {{0x2A, 0x86, 0x80, 0x01}, true},  // 0x80 inside a subidentifier is a digit
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.wellFormed, isWellFormedOidContents(row.contents)) << ::testing::PrintToString(row.contents);
    }
}

}  // namespace
