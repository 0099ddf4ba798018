// BOOLEAN, NULL, short INTEGERs, IA5Strings and OBJECT IDENTIFIERs are
// rendered without the decoder; their texts and failures must be those that
// the decoder's road gives.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "decoder/decoder.h"
#include "render/contents.h"
#include "render/number_text.h"
#include "render/string_text.h"
#include "runtime/context.h"
#include "tests/test_context.h"

namespace {

struct Outcome {
    std::string text;
    bool failed;
    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out)
{
    *out << (outcome.failed ? "failed" : "\"" + outcome.text + "\"");
}

// The decoder's road: the element as a PDU of the built-in table, the text
// maker of its type, and the failure flag when the decode refuses it.
Outcome throughDecoder(TestContext& test, int pdu, TextMaker maker, const std::vector<uint8_t>& element)
{
    RunContext* context = test.get();
    BerBuffer buffer = {static_cast<uint32_t>(element.size()), element.data()};
    void* value = nullptr;
    if (qorDecode(context, pdu, buffer, value) != 0) return {"", true};
    RenderInput input = {element.data(), static_cast<int32_t>(element.size()), static_cast<int32_t>(element[1])};
    char* text = nullptr;
    const int failure = maker(context, input, value, text);
    qorFreeValue(context, pdu, value);
    std::string made = test.take(text);
    return {failure != 0 ? "" : made, failure != 0};
}

Outcome rendered(TestContext& test, const std::vector<uint8_t>& element)
{
    RunContext* context = test.get();
    context->toolFlags &= ~TLV_VALUE_FAILED;
    char* text = renderContents(context, element.data(), static_cast<int32_t>(element.size()));
    const bool failed = (context->toolFlags & TLV_VALUE_FAILED) != 0;
    context->toolFlags &= ~TLV_VALUE_FAILED;
    std::string made = test.take(text);  // taken also when failed, so that it is freed
    return {failed ? "" : made, failed};
}

TEST(SimpleValues, AgreeWithTheDecoder)
{
    TestContext test;
    std::mt19937 random(20261123);
    for (bool noAddition : {false, true}) {
        if (noAddition) test.get()->toolFlags |= TLV_NO_ADDITION;
        for (int round = 0; round < 4000; ++round) {
            const int size = round % 6 + (round % 11 == 0 ? 20 : 0);  // 0 to 25 contents octets
            std::vector<uint8_t> contents(static_cast<size_t>(size));
            // Half the rounds in 7 bits, as text and short arcs are.
            const uint32_t mask = round % 2 == 0 ? 0x7F : 0xFF;
            for (uint8_t& octet : contents) octet = static_cast<uint8_t>(random() & mask);
            // Edges of the two's complement forms: leading 00 and FF octets.
            if (round % 7 == 0 && size > 1) contents[0] = 0x00;
            if (round % 7 == 1 && size > 1) contents[0] = 0xFF;
            struct Type {
                int tag;
                int pdu;
                TextMaker maker;
            };
            for (const Type& type : {Type{0x01, 1, booleanText}, Type{0x02, 2, integerText}, Type{0x05, 5, nullText},
                                     Type{0x06, 6, objectIdentifierText}, Type{0x16, 13, ia5StringText}}) {
                const int tag = type.tag;
                std::vector<uint8_t> element = {static_cast<uint8_t>(tag), static_cast<uint8_t>(size)};
                element.insert(element.end(), contents.begin(), contents.end());
                if (tag == 0x02 && size >= 5) continue;  // the huge form has a type of its own
                Outcome expected = throughDecoder(test, type.pdu, type.maker, element);
                EXPECT_EQ(expected, rendered(test, element)) << "tag " << tag << " size " << size;
            }
        }
    }
}

}  // namespace
