#include "oids/builtin_oids.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oids/dotted_oid.h"

namespace {

// Names as the defining documents give them (the ASN.1 modules of the RFCs
// named in each row, Microsoft's and Netscape's documentation): a sample
// across the arcs' shapes, a name and the name of an arc below it, and
// names that are no lowerCamelCase.
TEST(BuiltinOids, NamesOidsAsTheirDocumentsDo)
{
    const struct {
        const char* dotted;
        const char* name;
    } rows[] = {
        {"2.5.4.3", "id-at-commonName"},                     // RFC 5280
        {"2.5.4.97", "id-at-organizationIdentifier"},        // X.520
        {"0.9.2342.19200300.100.1.25", "id-domainComponent"},  // RFC 5280
        {"1.2.840.113549.1.9.1", "pkcs-9-at-emailAddress"},  // RFC 2985
        {"2.5.29.32.0", "anyPolicy"},                        // RFC 5280
        {"1.3.6.1.5.5.7.3.36", "id-kp-documentSigning"},     // RFC 9336
        {"1.3.6.1.5.5.7.48.1", "id-ad-ocsp"},                 // RFC 5280
        {"1.3.6.1.5.5.7.48.1.1", "id-pkix-ocsp-basic"},      // RFC 6960
        {"1.2.840.113549.1.1.11", "sha256WithRSAEncryption"},  // RFC 8017
        {"1.2.840.113549.1.9.16.2.47", "id-aa-signingCertificateV2"},  // RFC 5035
        {"1.3.14.3.2.26", "id-sha1"},                        // RFC 3279
        {"2.16.840.1.101.3.4.2.1", "id-sha256"},             // RFC 5754
        {"2.16.840.1.101.3.4.3.18", "id-ml-dsa-65"},         // RFC 9881
        {"1.2.840.10045.3.1.7", "secp256r1"},                // RFC 5480
        {"1.3.132.0.34", "secp384r1"},                       // RFC 5480
        {"1.3.101.112", "id-Ed25519"},                        // RFC 8410
        {"1.3.6.1.4.1.311.21.7", "szOID_CERTIFICATE_TEMPLATE"},
        {"2.16.840.1.113730.1.1", "netscape-cert-type"},
    };
    std::vector<uint8_t> encoded;
    for (const auto& row : rows) {
        ASSERT_TRUE(encodeDottedOid(row.dotted, encoded)) << row.dotted;
        EXPECT_EQ(std::string(row.name), findBuiltinOidName(encoded)) << row.dotted;
    }
}

TEST(BuiltinOids, UnknownOidsHaveNoName)
{
    const std::vector<std::vector<uint8_t>> unknown = {
        {},
        {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x63},  // 1.2.840.113549.1.1.99
        {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x0B, 0x00},  // one arc longer
        {0x2A, 0x86, 0x48, 0x86, 0xF7},  // cut inside a subidentifier
        {0x00, 0x00, 0x00},
    };
    for (const auto& octets : unknown) EXPECT_EQ("", findBuiltinOidName(octets)) << ::testing::PrintToString(octets);
}

// The binary search needs the rows sorted by their octets without repeats;
// each row is found by its own octets and is a well-formed OID.
TEST(BuiltinOids, TableIsSortedWithoutRepeatsAndEveryRowIsFound)
{
    ASSERT_GE(builtinOidCount(), 400u);
    for (size_t i = 0; i < builtinOidCount(); ++i) {
        const OidName row = builtinOid(i);
        EXPECT_TRUE(isWellFormedOidContents(row.encoded)) << i;
        EXPECT_FALSE(row.name.empty()) << i;
        EXPECT_EQ(row.name, findBuiltinOidName(row.encoded)) << i;
        if (i > 0) {
            EXPECT_LT(compareOidOctets(builtinOid(i - 1).encoded, row.encoded), 0) << i;
        }
    }
}

TEST(BuiltinOids, OctetOrderPutsAPrefixFirst)
{
    const std::vector<uint8_t> pkcs1 = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01};
    const std::vector<uint8_t> rsa = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01};
    const std::vector<uint8_t> sha1 = {0x2B, 0x0E, 0x03, 0x02, 0x1A};
    EXPECT_LT(compareOidOctets(pkcs1, rsa), 0);
    EXPECT_GT(compareOidOctets(rsa, pkcs1), 0);
    EXPECT_LT(compareOidOctets(rsa, sha1), 0);
    EXPECT_EQ(compareOidOctets(rsa, rsa), 0);
}

}  // namespace
