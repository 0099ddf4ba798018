#include "tagmap/field_value.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tagmap/map_parser.h"
#include "tagmap/tag_walk.h"

namespace {

constexpr int C = kClassContext;

constexpr char kMap[] =
    "[79]              pGWRecord\n"
    "[79]/[3]          servedIMSI   tbcd\n"
    "[79]/[4]          address\n"
    "[79]/[4]/[0]      v4           ipv4\n"
    "[79]/[12]/*/[5]   condition    enumerated 2=recordClosure\n"
    "[79]/[13]         opening      bcd-timestamp\n";

struct FieldValueTest : ::testing::Test {
    TagMap map;
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(parseTagMap(kMap, "test.tags", map, error)) << error;
    }
};

// The call the JSON layout makes: parent node, tag, form of the element,
// contents; the answer's node is the parent of the element's own elements.
TEST_F(FieldValueTest, EachElementFromItsParentsNode)
{
    char buffer[256];
    const std::vector<uint8_t> imsi = {0x32, 0x54, 0x76, 0x98, 0x10, 0x32, 0x54, 0xF6};
    const std::vector<uint8_t> month13 = {0x26, 0x13, 0x23, 0x23, 0x59, 0x59, 0x2D, 0x05, 0x00};
    const std::vector<uint8_t> v4 = {10, 1, 2, 3};
    const std::vector<uint8_t> two = {2};

    const FieldValue record = describeField(map, map.root(), C, 79, true, {}, buffer, sizeof buffer);
    EXPECT_EQ("pGWRecord", record.field);
    EXPECT_EQ(FieldValue::Shown::Layout, record.shown);

    const FieldValue served = describeField(map, record.node, C, 3, false, imsi, buffer, sizeof buffer);
    EXPECT_EQ("servedIMSI", served.field);
    EXPECT_EQ(FieldValue::Shown::Form, served.shown);
    EXPECT_EQ("234567890123456", served.text);

    const FieldValue opening = describeField(map, record.node, C, 13, false, month13, buffer, sizeof buffer);
    EXPECT_EQ(FieldValue::Shown::Hex, opening.shown);
    EXPECT_EQ("2613232359592D0500", opening.text);
    EXPECT_STREQ("bcd-timestamp", opening.formName);

    // A step the map names nothing at, then its element of the SEQUENCE OF.
    const FieldValue list = describeField(map, record.node, C, 12, true, {}, buffer, sizeof buffer);
    ASSERT_NE(nullptr, list.node);
    EXPECT_FALSE(list.named());
    const FieldValue any = describeField(map, list.node, kClassUniversal, 16, true, {}, buffer, sizeof buffer);
    const FieldValue condition = describeField(map, any.node, C, 5, false, two, buffer, sizeof buffer);
    EXPECT_EQ("recordClosure", condition.text);

    // The same contents under another tag, or below an unknown element.
    const FieldValue unknown = describeField(map, record.node, C, 6, false, v4, buffer, sizeof buffer);
    EXPECT_EQ(nullptr, unknown.node);
    EXPECT_EQ(FieldValue::Shown::Layout, unknown.shown);
    EXPECT_EQ(nullptr, describeField(map, nullptr, C, 0, false, v4, buffer, sizeof buffer).node);

    // A constructed element with a form, or a buffer below the bound: the
    // layout's own contents, the name still given.
    const FieldValue address = describeField(map, record.node, C, 4, true, {}, buffer, sizeof buffer);
    const FieldValue asConstructed = describeField(map, address.node, C, 0, true, v4, buffer, sizeof buffer);
    EXPECT_EQ("v4", asConstructed.field);
    EXPECT_EQ(FieldValue::Shown::Layout, asConstructed.shown);
    const FieldValue small = describeField(map, address.node, C, 0, false, v4, buffer, valueTextBound(4) - 1);
    EXPECT_EQ(FieldValue::Shown::Layout, small.shown);
    EXPECT_EQ("10.1.2.3", describeField(map, address.node, C, 0, false, v4, buffer, sizeof buffer).text);
}

// The walk keeps one node per level: a sibling replaces the level's node,
// and a level past the last one finds nothing and writes nothing.
TEST_F(FieldValueTest, TagWalkKeepsTheNodeOfEachOpenLevel)
{
    TagWalk walk(map);
    EXPECT_EQ("pGWRecord", walk.enter(0, C, 79)->field);
    EXPECT_EQ("address", walk.enter(1, C, 4)->field);
    EXPECT_EQ("v4", walk.enter(2, C, 0)->field);
    EXPECT_EQ("servedIMSI", walk.enter(1, C, 3)->field);
    EXPECT_EQ(nullptr, walk.enter(2, C, 0));  // inside servedIMSI now, not address
    EXPECT_EQ(nullptr, walk.enter(0, C, -1));  // an identifier that ends early
    EXPECT_EQ(nullptr, walk.enter(1, C, 3));
    EXPECT_EQ(nullptr, walk.enter(TagWalk::kLevels - 1, C, 3));
    EXPECT_EQ(nullptr, walk.node(TagWalk::kLevels - 1));
    EXPECT_EQ("pGWRecord", walk.enter(0, C, 79)->field);
    EXPECT_EQ("pGWRecord", walk.node(0)->field);
}

}  // namespace
