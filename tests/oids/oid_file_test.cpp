#include "oids/oid_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

const std::vector<uint8_t> kCommonName = {0x55, 0x04, 0x03};       // 2.5.4.3
const std::vector<uint8_t> kCountryName = {0x55, 0x04, 0x06};      // 2.5.4.6
const std::vector<uint8_t> kOrganization = {0x55, 0x04, 0x0A};     // 2.5.4.10
const std::vector<uint8_t> kPrivateArc = {0x2B, 0x06, 0x01, 0x04, 0x01};  // 1.3.6.1.4.1
const std::vector<uint8_t> kExample = {0x2A, 0x03, 0x04};          // 1.2.3.4

std::string nameOf(const OidNames& names, const std::vector<uint8_t>& encoded)
{
    return std::string(names.find(encoded));
}

TEST(OidNames, UserNamesComeBeforeBuiltInOnes)
{
    OidNames names;
    EXPECT_EQ("id-at-commonName", nameOf(names, kCommonName));
    EXPECT_EQ("", nameOf(names, kExample));
    names.add(kCommonName, "CN");
    names.add(kExample, "first");
    names.add(kExample, "second");
    EXPECT_EQ("CN", nameOf(names, kCommonName));
    EXPECT_EQ("second", nameOf(names, kExample));
    EXPECT_EQ("id-at-countryName", nameOf(names, kCountryName));
    EXPECT_EQ(2u, names.userCount());
}

TEST(OidFile, DottedLinesNameOidsWithTheRestOfTheLine)
{
    OidNames names;
    OidFileError error;
    const char* text =
        "# names of our lab\n"
        "\n"
        "1.2.3.4   lab key purpose  \n"
        "   # an indented comment\n"
        "2.5.4.3\tCN\r\n"
        "1.3.6.1.4.1 private enterprises";  // no line feed at the end
    ASSERT_EQ(0, loadOidText(text, "lab.oids", names, error)) << error.text();
    EXPECT_EQ("lab key purpose", nameOf(names, kExample));
    EXPECT_EQ("CN", nameOf(names, kCommonName));
    EXPECT_EQ("private enterprises", nameOf(names, kPrivateArc));
    EXPECT_EQ("id-at-countryName", nameOf(names, kCountryName));
}

TEST(OidFile, BlocksGiveTheOidAsATlvAndTheNameAsDescription)
{
    OidNames names;
    OidFileError error;
    const char* text =
        "# blocks\n"
        "OID = 06 03 55 04 0A\n"
        "Comment = X.520 attribute type\n"
        "Description = orgName (2 5 4 10)\n"
        "\n"
        "OID=06 05 2b 06 01 04 01\n"
        "Description=private (as IANA assigns)\n"
        "Warning\n"
        "1.2.3.4 mixed in\n"
        "OID = 06 81 03 55 04 03\r\n"
        "Description = common name\r\n";
    ASSERT_EQ(0, loadOidText(text, "blocks.cfg", names, error)) << error.text();
    EXPECT_EQ("orgName", nameOf(names, kOrganization));
    EXPECT_EQ("private (as IANA assigns)", nameOf(names, kPrivateArc));
    EXPECT_EQ("mixed in", nameOf(names, kExample));
    EXPECT_EQ("common name", nameOf(names, kCommonName));
}

TEST(OidFile, MalformedLinesAreReportedWithTheirNumber)
{
    const struct {
        const char* text;
        int line;
        const char* message;
    } rows[] = {
        {"1.2.3.4 fine\n1.2.x name\n", 2,
         "malformed OBJECT IDENTIFIER \"1.2.x\": an arc holds a character other than a decimal digit"},
        {"3.1 name\n", 1, "malformed OBJECT IDENTIFIER \"3.1\": the first arc is 0, 1 or 2"},
        {"1.02 name\n", 1, "malformed OBJECT IDENTIFIER \"1.02\": an arc has a leading zero"},
        {"1.2. name\n", 1, "malformed OBJECT IDENTIFIER \"1.2.\": an arc is empty (a leading, trailing or doubled dot)"},
        {"\n\n1.2.3.4   \n", 3, "the OBJECT IDENTIFIER 1.2.3.4 has no name after it"},
        {"1.2.3.4 bad\x01name\n", 1, "the name holds a control character"},
        {"# list\nhello world\n", 2,
         "a line is \"dotted-oid name\" or a field \"OID = ...\", \"Description = ...\""},
        {"OID = 06 03 55 04\n", 1, "the length of OID = doesn't match the octets that follow it"},
        {"OID = 06 02 55 04 03\n", 1, "the length of OID = doesn't match the octets that follow it"},
        {"OID = 06 80 55 04 03\n", 1, "the length of OID = is not a definite length of up to two octets"},
        {"OID = 04 03 55 04 03\n", 1, "the octets of OID = start with the tag 06 of an OBJECT IDENTIFIER"},
        {"OID = 06 03 55 04 0G\n", 1,
         "OID = wants the octets of the OBJECT IDENTIFIER in hexadecimal, two digits each"},
        {"OID = 06 03 55 04 003\n", 1,
         "OID = wants the octets of the OBJECT IDENTIFIER in hexadecimal, two digits each"},
        {"OID =\n", 1, "OID = wants the octets of the OBJECT IDENTIFIER in hexadecimal, two digits each"},
        {"OID = 06 03 55 04 83\n", 1, "the contents of OID = are not a well-formed OBJECT IDENTIFIER"},
        {"\nDescription = lonely\n", 2, "Description = without an OID = line before it"},
        {"OID = 06 03 55 04 03\nDescription = a\nDescription = b\n", 3,
         "a second Description in the block of the OID on line 1"},
        {"OID = 06 03 55 04 03\nDescription = (2 5 4 3)\n", 2, "the Description is empty"},
        {"OID = 06 03 55 04 03\nComment = no name\n\nOID = 06 03 55 04 06\nDescription = c\n", 1,
         "the block of this OID has no Description"},
        {"1.2.3.4 a\n\nOID = 06 03 55 04 03\n", 3, "the block of this OID has no Description"},
        {"OID = 06 03 55 04 03\n1.2.3.4 other\n", 1, "the block of this OID has no Description"},
        {"OID = 06 03 55 04 03\nColour = red\n", 2,
         "unknown field \"Colour\" (an OID block has OID, Comment, Description, Warning)"},
    };
    for (const auto& row : rows) {
        OidNames names;
        OidFileError error;
        EXPECT_EQ(81, loadOidText(row.text, "names.txt", names, error)) << row.text;
        EXPECT_EQ(row.line, error.line) << row.text;
        EXPECT_EQ(row.message, error.message) << row.text;
        EXPECT_EQ("names.txt", error.path) << row.text;
    }
}

TEST(OidFile, AFileWithAFaultAddsNoName)
{
    OidNames names;
    names.add(kExample, "kept");
    OidFileError error;
    EXPECT_EQ(kOidFileStatus, loadOidText("2.5.4.3 CN\n1.2.3.4 replaced\n1.2 \n", "f", names, error));
    EXPECT_EQ(3, error.line);
    EXPECT_EQ("id-at-commonName", nameOf(names, kCommonName));
    EXPECT_EQ("kept", nameOf(names, kExample));
    EXPECT_EQ(1u, names.userCount());
}

class OidFileOnDisk : public ::testing::Test {
protected:
    std::string path_ = ::testing::TempDir() + "qortlv_oid_file_test.txt";
    void TearDown() override { std::remove(path_.c_str()); }
};

TEST_F(OidFileOnDisk, ReadsTheFileAtThePath)
{
    {
        std::ofstream out(path_, std::ios::binary);
        out << "1.2.3.4 from disk\nOID = 06 03 55 04 06\nDescription = C\n";
    }
    OidNames names;
    OidFileError error;
    ASSERT_EQ(0, loadOidFile(path_.c_str(), names, error)) << error.text();
    EXPECT_EQ("from disk", nameOf(names, kExample));
    EXPECT_EQ("C", nameOf(names, kCountryName));
}

// The file, or the path, named in front of what is wrong with it.
TEST_F(OidFileOnDisk, AFaultNamesThePath)
{
    {
        std::ofstream out(path_, std::ios::binary);
        out << "1.2.3.4 fine\n\n1.2.3.4.\n";
    }
    const struct {
        std::string path;
        int line;
        std::string text;
    } rows[] = {
        {path_, 3, path_ + ":3: malformed OBJECT IDENTIFIER \"1.2.3.4.\": an arc is empty (a leading, trailing or doubled dot)"},
        {path_ + ".missing", 0, path_ + ".missing: cannot be read: No such file or directory"},
        {"/", 0, "/: cannot be read: Is a directory"},
    };
    for (const auto& row : rows) {
        OidNames names;
        OidFileError error;
        EXPECT_EQ(81, loadOidFile(row.path.c_str(), names, error)) << row.path;
        EXPECT_EQ(row.line, error.line) << row.path;
        EXPECT_EQ(row.text, error.text());
    }
}

}  // namespace
