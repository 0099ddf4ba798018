#include "textforms/pem.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Scanned {
    std::vector<std::string> labels;
    std::vector<std::string> octets;  // each block's
    TextFaultAt fault;
};

Scanned scan(const std::string& text)
{
    std::vector<uint8_t> out(text.size() + 1);
    std::vector<PemBlock> blocks;
    Scanned scanned{{}, {}, decodePemText(text.data(), text.size(), out.data(), blocks)};
    for (const PemBlock& block : blocks) {
        scanned.labels.emplace_back(block.label, block.labelLength);
        scanned.octets.emplace_back(out.begin() + static_cast<long>(block.octetStart),
                                    out.begin() + static_cast<long>(block.octetStart + block.octetLength));
    }
    return scanned;
}

struct PemRow {
    const char* what;
    std::string text;
    std::vector<std::string> labels;
    std::vector<std::string> octets;
};

TEST(PemText, BlocksLabelsAndTheTextAround)
{
    const std::vector<PemRow> rows = {
        {"lines end in CR LF, blanks behind the dashes",
         "-----BEGIN X-----  \r\nTW\r\nFu\r\n-----END X-----\r\n",
         {"X"},
         {"Man"}},
        {"no line end behind END", "-----BEGIN X-----\nTWFu\n-----END X-----", {"X"}, {"Man"}},
        {"an empty block", "-----BEGIN X-----\n-----END X-----\n", {"X"}, {""}},
        {"an empty label", "-----BEGIN -----\nTQ\n-----END -----\n", {""}, {"M"}},
        {"a BEGIN line without its closing dashes is text",
         "-----BEGIN X\nTWFu\n-----BEGIN Y-----\nTQ==\n-----END Y-----\n",
         {"Y"},
         {"M"}},
        {"a stray END outside a block is text", "-----END X-----\n-----BEGIN Y-----\nTQ\n-----END Y-----\n", {"Y"}, {"M"}},
        {"a folded header line",
         "-----BEGIN X-----\nDEK-Info: DES-EDE3-CBC,\n 0011223344556677\n\nTWFu\n-----END X-----\n",
         {"X"},
         {"Man"}},
        {"base64 that starts with blanks is no folded header without a header",
         "-----BEGIN X-----\n TWFu\n-----END X-----\n",
         {"X"},
         {"Man"}},
    };
    for (const PemRow& row : rows) {
        Scanned scanned = scan(row.text);
        EXPECT_EQ(TextFault::None, scanned.fault.fault) << row.what;
        EXPECT_EQ(row.labels, scanned.labels) << row.what;
        EXPECT_EQ(row.octets, scanned.octets) << row.what;
    }
}

struct PemFaultRow {
    const char* what;
    std::string text;
    TextFault fault;
    long line;
    uint8_t character;
};

TEST(PemText, FaultsNameTheirLine)
{
    const std::vector<PemFaultRow> rows = {
        {"a second BEGIN before the first END",
         "-----BEGIN X-----\nTWFu\n-----BEGIN Y-----\nTQ\n-----END Y-----\n",
         TextFault::NoEndLine,
         1,
         0},
        {"the second block without END",
         "-----BEGIN X-----\nTQ\n-----END X-----\n-----BEGIN Y-----\n",
         TextFault::NoEndLine,
         4,
         0},
        {"an empty file", "", TextFault::NoBlock, 0, 0},
        {"a header behind the base64 is no header: its colon is no base64",
         "-----BEGIN X-----\nTWFu\nProc-Type: 4,ENCRYPTED\n-----END X-----\n",
         TextFault::BadCharacter,
         3,
         ':'},
        {"a lone character before END", "-----BEGIN X-----\nTWFu\nT\n-----END X-----\n", TextFault::LoneCharacter, 3, 0},
        {"padding inside", "-----BEGIN X-----\nTQ==\nTWFu\n-----END X-----\n", TextFault::DataAfterPadding, 3, 'T'},
    };
    for (const PemFaultRow& row : rows) {
        Scanned scanned = scan(row.text);
        EXPECT_EQ(row.fault, scanned.fault.fault) << row.what;
        EXPECT_EQ(row.line, scanned.fault.line) << row.what;
        EXPECT_EQ(row.character, scanned.fault.character) << row.what;
    }
}

}  // namespace
