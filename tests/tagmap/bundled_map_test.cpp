#include "tagmap/bundled_map.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tagmap/tag_path.h"

namespace {

struct BundledMapTest : ::testing::Test {
    TagMap map;
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(loadBundledMap("3gpp-ps", map, error)) << error;
    }
};

// Rows of the 3GPP TS 32.298 facts table: path, field, value form.
TEST_F(BundledMapTest, PgwRecordFieldsCarryTheirNamesAndForms)
{
    const struct {
        std::initializer_list<Step> path;
        const char* field;
        ValueForm form;
    } rows[] = {
        {{{C, 79}}, "pGWRecord", ValueForm::None},
        {{{C, 79}, {C, 0}}, "recordType", ValueForm::Enumerated},
        {{{C, 79}, {C, 3}}, "servedIMSI", ValueForm::Tbcd},
        {{{C, 79}, {C, 4}}, "p-GWAddress", ValueForm::None},
        {{{C, 79}, {C, 4}, {C, 0}}, "iPBinV4Address", ValueForm::Ipv4},
        {{{C, 79}, {C, 5}}, "chargingID", ValueForm::Integer},
        {{{C, 79}, {C, 6}, {C, 1}}, "iPBinV6Address", ValueForm::Ipv6},
        {{{C, 79}, {C, 9}, {C, 0}, {C, 4}, {U, 2}}, "pDPAddressPrefixLength", ValueForm::Integer},
        {{{C, 79}, {C, 12}}, "listOfTrafficVolumes", ValueForm::None},
        {{{C, 79}, {C, 12}, {U, 16}, {C, 3}}, "dataVolumeGPRSUplink", ValueForm::Integer},
        {{{C, 79}, {C, 12}, {U, 16}, {C, 6}}, "changeTime", ValueForm::BcdTimestamp},
        {{{C, 79}, {C, 12}, {U, 16}, {C, 13}, {C, 3}, {U, 6}}, "identifier", ValueForm::Hex},
        {{{C, 79}, {C, 22}}, "servedMSISDN", ValueForm::Isdn},
        {{{C, 79}, {C, 27}}, "servingNodePLMNIdentifier", ValueForm::PlmnId},
        {{{C, 20}}, "sgsnPDPRecord", ValueForm::None},
        {{{C, 20}, {C, 15}, {U, 16}, {C, 3}}, "dataVolumeGPRSUplink", ValueForm::Integer},
        {{{C, 20}, {C, 22}}, "nodeID", ValueForm::Text},
        {{{C, 20}, {C, 27}}, "servedMSISDN", ValueForm::Isdn},
        {{{C, 70}, {C, 27}}, "sgsnPLMNIdentifier", ValueForm::PlmnId},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(named(at(map, row.path)), (Named{row.field, row.form}));
    }
    EXPECT_EQ(at(map, {{C, 79}, {C, 1}}), nullptr);  // PGWRecord has no [1]
    EXPECT_EQ(at(map, {{C, 80}}), nullptr);
}

TEST_F(BundledMapTest, EnumeratedFieldsNameTheirValues)
{
    EXPECT_EQ(map.valueName(*at(map, {{C, 79}, {C, 0}}), 85), "pGWRecord");
    EXPECT_EQ(map.valueName(*at(map, {{C, 78}, {C, 0}}), 84), "sGWRecord");
    EXPECT_EQ(map.valueName(*at(map, {{C, 70}, {C, 0}}), 70), "egsnPDPRecord");
    EXPECT_EQ(map.valueName(*at(map, {{C, 79}, {C, 15}}), 0), "normalRelease");
    EXPECT_EQ(map.valueName(*at(map, {{C, 79}, {C, 15}}), 16), "volumeLimit");
    EXPECT_EQ(map.valueName(*at(map, {{C, 79}, {C, 12}, {U, 16}, {C, 5}}), 2), "recordClosure");
    EXPECT_EQ(map.valueName(*at(map, {{C, 79}, {C, 12}, {U, 16}, {C, 5}}), 21), "aPNRateControlChange");
    EXPECT_EQ(map.valueName(*at(map, {{C, 70}, {C, 12}, {U, 16}, {C, 5}}), 21), "");  // ChangeConditionV651
}

TEST(BundledMap, AnUnknownShortNameIsAnError)
{
    TagMap map;
    std::string error;
    EXPECT_FALSE(loadBundledMap("3gpp-cs", map, error));
    EXPECT_EQ(error, "no bundled tag map named 3gpp-cs");
    EXPECT_TRUE(loadTagMap("3gpp-ps", map, error)) << error;
    EXPECT_EQ(at(map, {{C, 79}, {C, 3}})->field, "servedIMSI");
    EXPECT_FALSE(loadTagMap("./3gpp-ps", map, error));  // a path: the file of that name
    EXPECT_EQ(error, "./3gpp-ps: No such file or directory");
}

}  // namespace
