#include "tagmap/value_forms.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tagmap/map_parser.h"

namespace {


struct Row {
    std::vector<uint8_t> octets;
    const char* text;  // null: the octets do not fit the form
};

// The text a form writes, or "<no fit>".
std::string shown(ValueForm form, const std::vector<uint8_t>& octets, size_t capacity = 256)
{
    std::string buffer(capacity, '?');
    ValueText out{buffer.data(), capacity, 0};
    if (!formText(form, Octets(octets.data(), octets.size()), out)) return "<no fit>";
    return buffer.substr(0, out.length);
}

void expectRows(ValueForm form, const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.octets));
        EXPECT_EQ(shown(form, row.octets), row.text != nullptr ? row.text : "<no fit>");
    }
}

TEST(ValueForms, TbcdReadsTheLowNibbleFirstAndDropsTheFiller)
{
    expectRows(ValueForm::Tbcd, {
        {{0x62, 0x02, 0x11, 0x32, 0x54, 0x76, 0x98, 0xF0}, "262011234567890"},  // IMSI, odd count
        {{0x53, 0x96, 0x83, 0x30, 0x65, 0x34, 0x08, 0x19}, "3569380356438091"}, // IMEISV, even count
        {{0xF7}, "7"},
        {{0xBA, 0xDC, 0x0E}, "*#abc0"},      // nibbles A to E
        {{0xF1, 0x23}, nullptr},             // filler before the last octet
        {{0x1F}, nullptr},                   // filler in a low nibble
        {{0x21, 0xFF}, nullptr},
        {{}, nullptr},
    });
}

TEST(ValueForms, IsdnWritesInternationalE164WithAPlusAndNamesTheRest)
{
    expectRows(ValueForm::Isdn, {
        {{0x91, 0x94, 0x71, 0x11, 0x32, 0x54, 0x76}, "+491711234567"},
        {{0x91, 0x94, 0x71, 0x11, 0x32, 0x54, 0x76, 0xF8}, "+4917112345678"},
        {{0xA1, 0x10, 0x32, 0x54}, "012345 (national number, E.164)"},
        {{0x81, 0x21}, "12 (unknown number, E.164)"},
        {{0x96, 0x62, 0x02}, "2620 (international number, E.212)"},
        {{0xD9, 0x21}, "12 (nature 5, private plan)"},
        {{0xC2, 0x21}, "12 (subscriber number, plan 2)"},
        {{0x11, 0x21}, nullptr},   // extension bit clear: not an AddressString
        {{0x91}, nullptr},         // no digits
        {{0x91, 0x1F, 0x21}, nullptr},
        {{0x91, 0x2A, 0x1E}, "+*2c1"},
    });
}

TEST(ValueForms, BcdTimestampShowsLocalTimeAndItsOffset)
{
    expectRows(ValueForm::BcdTimestamp, {
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x00}, "2023-06-23 14:05:30 +02:00"},
        {{0x99, 0x12, 0x31, 0x23, 0x59, 0x59, 0x2D, 0x05, 0x30}, "2099-12-31 23:59:59 -05:30"},
        {{0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x2D, 0x14, 0x00}, "2000-01-01 00:00:00 -14:00"},
        {{0x23, 0x1A, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // not BCD
        {{0x23, 0x13, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // month 13
        {{0x23, 0x06, 0x00, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // day 0
        {{0x23, 0x06, 0x23, 0x24, 0x05, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // hour 24
        {{0x23, 0x06, 0x23, 0x14, 0x60, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // minute 60
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x60, 0x2B, 0x02, 0x00}, nullptr},  // second 60
        {{0x23, 0x06, 0x32, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // day 32
        {{0xA3, 0x06, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x00}, nullptr},  // year's high digit not BCD
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x60}, nullptr},  // offset minute 60
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x30, 0x20, 0x02, 0x00}, nullptr},  // no sign
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x15, 0x00}, nullptr},  // offset beyond 14 h
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02, 0x0F}, nullptr},
        {{0x23, 0x06, 0x23, 0x14, 0x05, 0x30, 0x2B, 0x02}, nullptr},        // 8 octets
    });
}

TEST(ValueForms, PlmnIdTakesTwoAndThreeDigitNetworkCodes)
{
    expectRows(ValueForm::PlmnId, {
        {{0x62, 0xF2, 0x10}, "MCC 262 MNC 01"},
        {{0x13, 0x00, 0x14}, "MCC 310 MNC 410"},
        {{0x32, 0x54, 0x76}, "MCC 234 MNC 675"},
        {{0x62, 0xF2, 0x1A}, nullptr},
        {{0x6A, 0xF2, 0x10}, nullptr},
        {{0x62, 0xFF, 0x10}, nullptr},
        {{0x62, 0xF2}, nullptr},
    });
}

TEST(ValueForms, Ipv6FollowsRfc5952)
{
    expectRows(ValueForm::Ipv6, {
        {{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}, "2001:db8::1:0:0:1"},  // leftmost on a tie
        {{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1}, "2001:db8:0:1:1:1:1:1"},  // one zero group
        {{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}, "2001:db8:0:0:1::"},  // the longer run
        {{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xAB, 0xCD}, "2001:db8::abcd"},
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, "::"},
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, "::1"},
        {{0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, "fe80::"},
        {{0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}, "1:2:3:4:5:6:7:8"},
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 10, 1, 2, 3}, "::ffff:10.1.2.3"},
        {{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0}, nullptr},
        {{10, 1, 2, 3}, nullptr},
    });
}

TEST(ValueForms, Ipv4NeedsFourOctets)
{
    expectRows(ValueForm::Ipv4, {
        {{10, 1, 2, 3}, "10.1.2.3"},
        {{0, 255, 128, 9}, "0.255.128.9"},
        {{10, 1, 2}, nullptr},
        {{10, 1, 2, 3, 4}, nullptr},
    });
}

TEST(ValueForms, IntegerIsTwosComplementUpToEightOctets)
{
    expectRows(ValueForm::Integer, {
        {{0x00}, "0"},
        {{0xFF}, "-1"},
        {{0x80}, "-128"},
        {{0x01, 0x00}, "256"},
        {{0x00, 0xFF}, "255"},
        {{0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "9223372036854775807"},
        {{0x80, 0, 0, 0, 0, 0, 0, 0}, "-9223372036854775808"},
        {{1, 2, 3, 4, 5, 6, 7, 8, 0xA9}, "0x0102030405060708A9"},
        {{}, nullptr},
    });
}

TEST(ValueForms, TextEscapesAsTheStringListingDoes)
{
    expectRows(ValueForm::Text, {
        {{'i', 'n', 't', 'e', 'r', 'n', 'e', 't'}, "internet"},
        {{'a', '\\', 'b'}, "a\\\\b"},
        {{'a', 0x0A, 0xE9, 0x7F}, "a\\x0a\\xe9\\x7f"},
        {{}, ""},
    });
    expectRows(ValueForm::Hex, {{{0x0A, 0x1B, 0xFF}, "0A1BFF"}, {{}, ""}});
    // Without a map an enumerated value is its number; no form, no text.
    expectRows(ValueForm::Enumerated, {{{0xFF}, "-1"}, {{0x01, 0x00}, "256"}, {{}, nullptr}});
    expectRows(ValueForm::None, {{{0x01}, nullptr}});
}

TEST(ValueForms, ATextLongerThanTheBufferDoesNotFit)
{
    EXPECT_EQ(shown(ValueForm::Ipv4, {192, 168, 100, 200}, 14), "<no fit>");
    EXPECT_EQ(shown(ValueForm::Ipv4, {192, 168, 100, 200}, 15), "192.168.100.200");
    EXPECT_EQ(shown(ValueForm::Tbcd, {0x21, 0x43}, 3), "<no fit>");
}

TEST(ValueForms, EnumeratedTakesTheMapsNamesAndShowsOtherValuesAsNumbers)
{
    TagMap map;
    std::string error;
    ASSERT_TRUE(parseTagMap("[79]/[15] causeForRecClosing enumerated 0=normalRelease 4=abnormalRelease -1=minus\n",
                            "t.tags", map, error))
        << error;
    const TagNode* node = map.child(map.child(map.root(), kClassContext, 79), kClassContext, 15);
    ASSERT_NE(node, nullptr);
    const struct {
        std::vector<uint8_t> octets;
        const char* text;
    } rows[] = {
        {{0x04}, "abnormalRelease"}, {{0x00}, "normalRelease"}, {{0x00, 0x04}, "abnormalRelease"},
        {{0xFF}, "minus"},           {{0x02}, "2"},             {{1, 2, 3, 4, 5, 6, 7, 8, 9}, nullptr},
        {{}, nullptr},
    };
    for (const auto& row : rows) {
        char buffer[64];
        ValueText out{buffer, sizeof buffer, 0};
        const bool fits = valueText(map, *node, Octets(row.octets.data(), row.octets.size()), out);
        EXPECT_EQ(fits ? std::string(buffer, out.length) : "<no fit>", row.text != nullptr ? row.text : "<no fit>");
    }
}

}  // namespace
