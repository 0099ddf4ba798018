#include "meaning/encapsulation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tlv/walker.h"

namespace {

bool holds(const std::vector<uint8_t>& octets, bool bitString = false, int levels = MAX_WALK_DEPTH)
{
    return holdsBer(OctetView(octets.data(), static_cast<int32_t>(octets.size())), bitString, levels);
}

std::vector<uint8_t> withTwenty(std::vector<uint8_t> front)
{
    for (uint8_t i = 0; i < 20; ++i) front.push_back(static_cast<uint8_t>(0x11 * i + 3));
    return front;
}

TEST(HoldsBer, WhatCertificatesAndKeysCarry)
{
    EXPECT_TRUE(holds({0x30, 0x03, 0x01, 0x01, 0xFF}));        // basicConstraints cA TRUE
    EXPECT_TRUE(holds({0x03, 0x02, 0x05, 0xA0}));              // keyUsage, 5 unused bits
    EXPECT_TRUE(holds(withTwenty({0x04, 0x14})));              // subjectKeyIdentifier
    EXPECT_TRUE(holds({0x30, 0x0B, 0x82, 0x09, 'e', 'x', 'a', 'm', 'p', 'l', 'e', '.', 'n'}));  // SAN dNSName
    EXPECT_TRUE(holds({0x30, 0x06, 0x02, 0x01, 0x05, 0x02, 0x01, 0x03}, true));  // an RSA key's two INTEGERs
    EXPECT_TRUE(holds({0x30, 0x80, 0x02, 0x01, 0x05, 0x00, 0x00}));               // indefinite, closed
    EXPECT_TRUE(holds({0xA1, 0x03, 0x02, 0x01, 0x05}));                           // a constructed tag
    EXPECT_TRUE(holds({0x02, 0x02, 0x00, 0x80}));                                 // INTEGER 128
    EXPECT_TRUE(holds({0x0C, 0x02, 0xC3, 0xBC}));                                 // UTF8String "ü"
    EXPECT_TRUE(holds({0x30, 0x03, 0x02, 0x01, 0x05, 0x31, 0x00}));               // two constructed values
}

TEST(HoldsBer, WhatIsRefused)
{
    const std::vector<std::vector<uint8_t>> rows = {
        {},
        {0x05},
        {0x30, 0x03, 0x01, 0x01, 0xFF, 0x00},  // an octet left over
        {0x30, 0x04, 0x01, 0x01, 0xFF},        // a length beyond the contents
        {0x04, 0x02, 0x41},
        {0x81, 0x02, 0x41, 0x42},              // a primitive context tag at the top
        {0x01, 0x02, 0x00, 0x00},              // BOOLEAN of two octets
        {0x02, 0x02, 0x00, 0x01},              // INTEGER in more octets than needed
        {0x02, 0x00},                          // INTEGER without contents
        {0x03, 0x01, 0x08},                    // BIT STRING with 8 unused bits
        {0x05, 0x01, 0x00},                    // NULL with contents
        {0x06, 0x03, 0x2B, 0x06, 0x81},        // OID whose last subidentifier goes on
        {0x06, 0x02, 0x80, 0x01},              // OID subidentifier padded with 0x80
        {0x0C, 0x01, 0xC3},                    // UTF8String cut inside a character
        {0x0C, 0x02, 0xC0, 0xAF},              // UTF8String in an overlong form
        {0x13, 0x02, 0x41, 0x40},              // "@" in a PrintableString
        {0x16, 0x01, 0x80},                    // IA5String above 127
        {0x17, 0x03, 0x31, 0x32, 0x5A},        // UTCTime too short
        {0x1E, 0x03, 0x00, 0x41, 0x00},        // BMPString of an odd length
        {0x30, 0x80, 0x02, 0x01, 0x05},        // indefinite without its end-of-contents
        {0x04, 0x80, 0x00, 0x00},              // indefinite primitive
        {0x30, 0x81, 0x03, 0x02, 0x01, 0x05},  // long form for a short length
        {0x30, 0x82, 0x00, 0x03, 0x02, 0x01, 0x05},  // leading zero length octet
        {0x1F, 0x1F, 0x00},                    // universal 31 only: nothing below 31, nothing constructed
        {0x1F, 0x02, 0x00},                    // high-tag form for a low tag
        {0x0F, 0x00},                          // reserved universal 15
        {0x3F, 0x25, 0x00},                    // universal 37, unassigned
        {0x25, 0x00},                          // constructed NULL
        {0x10, 0x00},                          // primitive SEQUENCE
        {0x00, 0x00},                          // end-of-contents outside an indefinite element
        {0x05, 0x00, 0x05, 0x00},              // two values side by side, not both constructed
        {0x30, 0x00, 0x02, 0x01, 0x05},
        {0x14, 0x02, 0x41, 0x42},              // a lone T61String tells nothing
        {0x09, 0x01, 0x40},                    // nor a lone REAL
        {0x30, 0x02, 0x00, 0x00},              // ... and inside a definite one
    };
    for (const auto& row : rows) {
        std::string shown;
        for (uint8_t octet : row) shown += std::to_string(octet) + " ";
        EXPECT_FALSE(holds(row)) << shown;
    }
}

TEST(HoldsBer, BitStringsWantAConstructedElement)
{
    // A bare EC point: 04 (or 02, 03) and the coordinates.
    EXPECT_FALSE(holds({0x02, 0x01, 0x05}, true));
    EXPECT_FALSE(holds(withTwenty({0x04, 0x14}), true));
    EXPECT_TRUE(holds({0x30, 0x03, 0x02, 0x01, 0x05}, true));
}

TEST(HoldsBer, NestingStaysWithinTheWalk)
{
    const std::vector<uint8_t> three = {0x30, 0x04, 0x30, 0x02, 0x05, 0x00};  // NULL two levels down
    EXPECT_TRUE(holds(three, false, 3));
    EXPECT_FALSE(holds(three, false, 2));
    EXPECT_FALSE(holds(three, false, 0));
    // An empty constructed element has nothing below it.
    EXPECT_TRUE(holds({0x30, 0x02, 0x30, 0x00}, false, 2));
    EXPECT_FALSE(holds({0x30, 0x02, 0x30, 0x00}, false, 1));

    std::vector<uint8_t> deep;  // 300 indefinite SEQUENCEs, closed
    for (int i = 0; i < 300; ++i) deep.insert(deep.end(), {0x30, 0x80});
    for (int i = 0; i < 300; ++i) deep.insert(deep.end(), {0x00, 0x00});
    EXPECT_FALSE(holds(deep));
    deep.erase(deep.begin(), deep.begin() + 2 * 60);
    deep.resize(deep.size() - 2 * 60);
    EXPECT_TRUE(holds(deep));  // 240 levels
}

TEST(HoldsBer, RandomOctetsAreNotDugInto)
{
    std::mt19937 generator(20261123);
    std::uniform_int_distribution<int> sizes(16, 64);
    std::uniform_int_distribution<int> octets(0, 255);
    int dug = 0;
    for (int n = 0; n < 1000; ++n) {
        std::vector<uint8_t> random(static_cast<size_t>(sizes(generator)));
        for (uint8_t& octet : random) octet = static_cast<uint8_t>(octets(generator));
        if (holds(random, false) || holds(random, true)) ++dug;
    }
    EXPECT_EQ(0, dug);
}

}  // namespace
