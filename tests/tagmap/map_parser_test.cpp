#include "tagmap/map_parser.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/tagmap/tag_path.h"

namespace {

TagMap parsed(std::string_view text)
{
    TagMap map;
    std::string error;
    EXPECT_TRUE(parseTagMap(text, "t.tags", map, error)) << error;
    return map;
}

TEST(TagMapParser, TheThreeLinesOfAPgwMapResolve)
{
    const TagMap map = parsed(
        "[79]             pGWRecord\n"
        "[79]/[3]         servedIMSI          tbcd\n"
        "[79]/[12]/*/[1]  dataVolumeGPRSUplink integer\n");
    EXPECT_EQ(named(at(map, {{C, 79}})), (Named{"pGWRecord", ValueForm::None}));
    EXPECT_EQ(named(at(map, {{C, 79}, {C, 3}})), (Named{"servedIMSI", ValueForm::Tbcd}));
    // Every element of the SEQUENCE OF, whatever its tag, is the `*` entry.
    for (Step element : {Step{U, 16}, Step{C, 0}, Step{P, 7}}) {
        EXPECT_EQ(named(at(map, {{C, 79}, {C, 12}, element, {C, 1}})),
                  (Named{"dataVolumeGPRSUplink", ValueForm::Integer}));
    }
    EXPECT_EQ(named(at(map, {{C, 79}, {C, 12}})).field, "");  // a step on the way names nothing
    EXPECT_EQ(at(map, {{C, 79}, {C, 4}}), nullptr);
    EXPECT_EQ(at(map, {{A, 79}}), nullptr);  // the class counts
    EXPECT_EQ(at(map, {{C, 79}, {C, 3}, {C, 3}}), nullptr);
    EXPECT_EQ(map.child(nullptr, C, 79), nullptr);
}

// Small context-specific numbers are looked up by number, the others by
// probing: both roads find the same children, and a SEQUENCE OF's `*` takes
// what neither has, on either side of the boundary.
TEST(TagMapParser, SmallAndLargeContextNumbersAndOtherClassesResolveAlike)
{
    const TagMap map = parsed(
        "[1]          r\n"
        "[1]/[0]      low\n"
        "[1]/[63]     highest\n"
        "[1]/[64]     above\n"
        "[1]/[5000]   far\n"
        "[1]/[APPLICATION 3] app\n"
        "[2]          s\n"
        "[2]/[3]      three\n"
        "[2]/*        any\n");
    EXPECT_EQ(at(map, {{C, 1}, {C, 0}})->field, "low");
    EXPECT_EQ(at(map, {{C, 1}, {C, 63}})->field, "highest");
    EXPECT_EQ(at(map, {{C, 1}, {C, 64}})->field, "above");
    EXPECT_EQ(at(map, {{C, 1}, {C, 5000}})->field, "far");
    EXPECT_EQ(at(map, {{C, 1}, {A, 3}})->field, "app");
    EXPECT_EQ(at(map, {{C, 1}, {A, 0}}), nullptr);
    EXPECT_EQ(at(map, {{C, 1}, {C, 1}}), nullptr);
    EXPECT_EQ(at(map, {{C, 1}, {C, 65}}), nullptr);
    EXPECT_EQ(at(map, {{C, 2}, {C, 3}})->field, "three");
    for (Step other : {Step{C, 4}, Step{C, 64}, Step{U, 16}, Step{P, 3}}) {
        EXPECT_EQ(at(map, {{C, 2}, other})->field, "any") << other.number;
    }
}

TEST(TagMapParser, TagsAreWrittenAsTheListingNamesThem)
{
    const TagMap map = parsed(
        "[APPLICATION 3]           a\n"
        "[PRIVATE   2]/SEQUENCE    b\n"
        "[UNIVERSAL 17]/[0]        c\n"
        "SET/OCTET_STRING          d  hex\n"
        "[UNIVERSAL 16]/INTEGER    e  integer # a comment\n"
        "SEQUENCE/OBJECT_IDENTIFIER f\n"
        "[1073741823]              g\n");
    EXPECT_EQ(at(map, {{A, 3}})->field, "a");
    EXPECT_EQ(at(map, {{P, 2}, {U, 16}})->field, "b");
    EXPECT_EQ(at(map, {{U, 17}, {C, 0}})->field, "c");
    EXPECT_EQ(at(map, {{U, 17}, {U, 4}})->field, "d");
    EXPECT_EQ(at(map, {{U, 16}, {U, 2}})->field, "e");
    EXPECT_EQ(at(map, {{U, 16}, {U, 6}})->field, "f");
    EXPECT_EQ(at(map, {{C, 1073741823}})->field, "g");
    EXPECT_EQ(at(map, {{C, 3}}), nullptr);
    EXPECT_EQ(map.child(map.root(), C, 0xFFFFFFFFu), nullptr);
}

TEST(TagMapParser, AFieldOfANamedTypeSharesTheTypesFields)
{
    const TagMap map = parsed(
        "[79]/[4]  p-GWAddress         @GSNAddress\n"
        "[79]/[6]  servingNodeAddress  @GSNAddress\n"
        "[79]/[9]  servedPDPPDNAddress @PDPAddress\n"
        "type GSNAddress\n"
        "  [0]     iPBinV4Address      ipv4\n"
        "  [4]/[UNIVERSAL 4] iPBinV6Address ipv6\n"
        "end\n"
        "type PDPAddress\n"
        "  [0]     iPAddress           @GSNAddress\n"
        "end\n");
    const TagNode* v4 = at(map, {{C, 79}, {C, 4}, {C, 0}});
    EXPECT_EQ(named(v4), (Named{"iPBinV4Address", ValueForm::Ipv4}));
    EXPECT_EQ(at(map, {{C, 79}, {C, 6}, {C, 0}}), v4);
    EXPECT_EQ(at(map, {{C, 79}, {C, 9}, {C, 0}, {C, 0}}), v4);
    EXPECT_EQ(at(map, {{C, 79}, {C, 9}, {C, 0}, {C, 4}, {U, 4}})->form, ValueForm::Ipv6);
    EXPECT_EQ(at(map, {{C, 79}, {C, 4}})->field, "p-GWAddress");
    EXPECT_EQ(at(map, {{C, 0}}), nullptr);  // a type's fields are not records
}

TEST(TagMapParser, ATypeMayContainItselfAndTheLookupFollowsAnyDepth)
{
    const TagMap map = parsed(
        "type Related\n"
        "  [1]     related  @Related\n"
        "  [2]     leaf     integer\n"
        "  [3]/*   list     @Related\n"
        "end\n"
        "[5]       top      @Related\n");
    const TagNode* node = at(map, {{C, 5}});
    for (int depth = 0; depth < 1000; ++depth) node = map.child(node, C, 1);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->field, "related");
    EXPECT_EQ(map.child(node, C, 2)->field, "leaf");
    EXPECT_EQ(at(map, {{C, 5}, {C, 3}, {U, 16}, {C, 3}, {U, 16}, {C, 1}, {C, 2}})->field, "leaf");
    EXPECT_EQ(at(map, {{C, 5}, {C, 3}, {U, 16}})->field, "list");
}

TEST(TagMapParser, EnumeratedNamesComeInlineOrFromAValueList)
{
    const TagMap map = parsed(
        "values Cause 0=normalRelease 4=abnormalRelease\n"
        "values Cause 16=volumeLimit\n"
        "[79]/[15]  causeForRecClosing  enumerated @Cause\n"
        "[78]/[15]  causeForRecClosing  enumerated @Cause\n"
        "[79]/[21]  apnSelectionMode    enumerated 2=networkProvided 0=verified\n"
        "[79]/[11]  dynamicAddressFlag  enumerated\n"
        "[79]/[0]   -                   integer\n");
    const TagNode& cause = *at(map, {{C, 79}, {C, 15}});
    EXPECT_EQ(map.valueName(cause, 4), "abnormalRelease");
    EXPECT_EQ(map.valueName(cause, 16), "volumeLimit");
    EXPECT_EQ(map.valueName(cause, 5), "");
    EXPECT_EQ(map.valueName(*at(map, {{C, 78}, {C, 15}}), 0), "normalRelease");
    const TagNode& mode = *at(map, {{C, 79}, {C, 21}});
    EXPECT_EQ(map.valueName(mode, 0), "verified");
    EXPECT_EQ(map.valueName(mode, 2), "networkProvided");
    EXPECT_EQ(map.valueName(*at(map, {{C, 79}, {C, 11}}), 0), "");
    EXPECT_EQ(at(map, {{C, 79}, {C, 0}})->field, "");  // `-`: no name
}

// Names are looked up by index where the values run from 0 without a gap,
// and searched for where they don't: each shape gives what a search gives.
TEST(TagMapParser, EnumeratedNamesAreFoundWhateverTheValuesLookLike)
{
    const TagMap map = parsed(
        "[1]  dense    enumerated 2=two 0=zero 1=one\n"
        "[2]  fromOne  enumerated 1=one 2=two 3=three\n"
        "[3]  gapped   enumerated 0=zero 1=one 5=five\n"
        "[4]  negative enumerated -2=minusTwo -1=minusOne 0=zero\n");
    const struct {
        uint32_t tag;
        int64_t value;
        const char* name;
    } rows[] = {
        {1, 0, "zero"},  {1, 2, "two"},       {1, 3, ""},          {1, -1, ""},    {2, 1, "one"},
        {2, 3, "three"}, {2, 0, ""},          {3, 1, "one"},       {3, 2, ""},     {3, 5, "five"},
        {4, 0, "zero"},  {4, -2, "minusTwo"}, {4, 1, ""},          {4, 2, ""},     {1, INT64_MIN, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(map.valueName(*at(map, {{C, row.tag}}), row.value), row.name) << row.tag << " " << row.value;
    }
}

// Every field name stands with ": " behind it in the map's memory, and can
// be read in one move of kFieldReach octets (the syntax layout copies it so).
TEST(TagMapParser, FieldNamesAreFollowedByTheirSeparator)
{
    const TagMap map = parsed(
        "[1]  a  integer\n"
        "[2]  aFieldNameOfFortyCharactersInTheMapFile integer\n"
        "[3]  -  integer\n");
    for (uint32_t tag : {1u, 2u}) {
        const std::string_view field = at(map, {{C, tag}})->field;
        ASSERT_FALSE(field.empty());
        EXPECT_EQ(std::string_view(field.data() + field.size(), 2), ": ");
        // The octets up to kFieldReach are the map's own (a sanitizer run sees a read past them).
        volatile char last = field.data()[field.size() + TagMap::kFieldReach - 1];
        (void)last;
    }
    EXPECT_TRUE(at(map, {{C, 3}})->field.empty());
}

TEST(TagMapParser, AMalformedLineIsReportedWithItsFileAndLine)
{
    const struct {
        const char* text;
        const char* message;
    } rows[] = {
        {"[79]/[3x] f\n", "t.tags: line 1: unknown tag '[3x]' in path '[79]/[3x]'"},
        {"# a map\n\n[79]//[3] f\n", "t.tags: line 3: empty step in path '[79]//[3]'"},
        {"[79] f\n[UNIVERSAL] g\n", "t.tags: line 2: unknown tag '[UNIVERSAL]' in path '[UNIVERSAL]'"},
        {"OCTET STRING f\n", "t.tags: line 1: unknown tag 'OCTET' in path 'OCTET'"},
        {"[1073741824] f\n", "t.tags: line 1: unknown tag '[1073741824]' in path '[1073741824]'"},
        {"[79]\n", "t.tags: line 1: path '[79]' has no field name"},
        {"[79] f tbdc\n", "t.tags: line 1: unknown value form 'tbdc'"},
        {"[79] f tbcd extra\n", "t.tags: line 1: unexpected 'extra' after 'tbcd'"},
        {"[79] f @T integer\n", "t.tags: line 1: unexpected 'integer' after '@T'"},
        {"[79] f enumerated 0normal\n", "t.tags: line 1: expected value=name, not '0normal'"},
        {"[79] f enumerated 0=\n", "t.tags: line 1: expected value=name, not '0='"},
        {"[79] f enumerated x=a\n", "t.tags: line 1: expected value=name, not 'x=a'"},
        {"[79] f enumerated 0=a 1=b 0=c\n", "t.tags: line 1: value 0 is named twice"},
        {"values L 1=a\nvalues L 1=b\n", "t.tags: line 2: value 1 of L is named twice"},
        {"values L\n", "t.tags: line 1: 'values' takes a name and value=name items"},
        {"[79] f\n[79] g\n", "t.tags: line 2: this path is already named on line 1"},
        {"[79] f @T\n", "t.tags: line 1: unknown type T"},
        {"[79] f enumerated @L\n", "t.tags: line 1: unknown value list L"},
        {"type\n", "t.tags: line 1: 'type' takes one name"},
        {"type T\n[1] a\ntype U\n", "t.tags: line 3: type U begins inside type T; close it with 'end' first"},
        {"[79] f\nend\n", "t.tags: line 2: 'end' without a type to close"},
        {"type T\n[1] a\nend now\n", "t.tags: line 3: 'end' takes nothing after it"},
        {"[79] f\ntype T\n[1] a\n", "t.tags: line 2: type T is not closed with 'end'"},
        {"type T\nend\n", "t.tags: line 2: type T has no fields"},
        {"type T\n[1] a\nend\ntype T\n", "t.tags: line 4: type T is already defined on line 1"},
        {"type T\n[1] a\nend\n[79] r @T\n[79]/[2] b\n",
         "t.tags: line 5: the path passes through a field of type T (line 4); write its fields in the type"},
        {"[79]/[2] b\n[79] r @T\ntype T\n[1] a\nend\n",
         "t.tags: line 2: a field of type T cannot also have fields of its own here; write them in the type"},
        {"", "t.tags: the map names no fields"},
    };
    for (const auto& row : rows) {
        TagMap map;
        std::string error;
        EXPECT_FALSE(parseTagMap(row.text, "t.tags", map, error)) << row.text;
        EXPECT_EQ(error, row.message);
    }
}

TEST(TagMapParser, AFileKeepsItsTextAndAMissingFileIsAnError)
{
    const std::string path = ::testing::TempDir() + "qortlv-tagmap-test.tags";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("[79]\tpGWRecord\r\n[79]/[3]\tservedIMSI\ttbcd\r\n", file);
    std::fclose(file);
    TagMap map;
    std::string error;
    ASSERT_TRUE(loadTagMapFile(path, map, error)) << error;
    TagMap moved = std::move(map);
    EXPECT_EQ(named(at(moved, {{C, 79}, {C, 3}})), (Named{"servedIMSI", ValueForm::Tbcd}));
    std::remove(path.c_str());
    EXPECT_FALSE(loadTagMapFile(path, map, error));
    EXPECT_EQ(error, path + ": No such file or directory");
}

}  // namespace
