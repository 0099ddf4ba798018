#include "json/tag_fields.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/test_context.h"
#include "tlv/element.h"

namespace {

// The identifier fields of the element at the start of `octets`, made
// directly and, for short identifiers, looked up.
TEST(TagFields, ClassTagFormAndName)
{
    const struct {
        std::vector<uint8_t> octets;
        const char* fields;
    } rows[] = {
        {{0x30, 0x00}, ",\"class\":\"universal\",\"tag\":16,\"constructed\":true,\"type\":\"SEQUENCE\""},
        {{0x02, 0x01, 0x00}, ",\"class\":\"universal\",\"tag\":2,\"constructed\":false,\"type\":\"INTEGER\""},
        {{0x06, 0x00}, ",\"class\":\"universal\",\"tag\":6,\"constructed\":false,\"type\":\"OBJECT IDENTIFIER\""},
        {{0x0F, 0x00}, ",\"class\":\"universal\",\"tag\":15,\"constructed\":false,\"type\":\"[15]\""},
        {{0x00, 0x05}, ",\"class\":\"universal\",\"tag\":0,\"constructed\":false,\"type\":null"},
        {{0x61, 0x00}, ",\"class\":\"application\",\"tag\":1,\"constructed\":true,\"type\":\"[APPLICATION 1]\""},
        {{0x80, 0x00}, ",\"class\":\"context\",\"tag\":0,\"constructed\":false,\"type\":\"[0]\""},
        {{0xC3, 0x00}, ",\"class\":\"private\",\"tag\":3,\"constructed\":false,\"type\":\"[PRIVATE 3]\""},
        {{0xBF, 0x4F, 0x00}, ",\"class\":\"context\",\"tag\":79,\"constructed\":true,\"type\":\"[79]\""},
        {{0x1F, 0x24, 0x00}, ",\"class\":\"universal\",\"tag\":36,\"constructed\":false,\"type\":\"RELATIVE-OID-IRI\""},
        {{0x1F, 0x7F, 0x00}, ",\"class\":\"universal\",\"tag\":127,\"constructed\":false,\"type\":\"[127]\""},
        {{0x9F, 0x81, 0x00, 0x00}, ",\"class\":\"context\",\"tag\":128,\"constructed\":false,\"type\":\"[128]\""},
    };
    for (const auto& row : rows) {
        TestContext run;
        const Element element = readElement(row.octets.data(), static_cast<int32_t>(row.octets.size()));
        TagFields made;
        makeTagFields(run.get(), element, made);
        EXPECT_EQ(row.fields, std::string(made.text, made.length));
        const TagFields* known = knownTagFields(run.get(), element);
        if (element.identifier <= 2) {
            ASSERT_NE(nullptr, known);
            EXPECT_EQ(row.fields, std::string(known->text, known->length));
        } else {
            EXPECT_EQ(nullptr, known);
        }
        EXPECT_EQ(0, run.lastError()) << "a name lookup reported a fault";
    }
}

}  // namespace
