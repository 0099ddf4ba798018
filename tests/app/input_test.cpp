#include "app/input.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "runtime/services.h"
#include "tests/test_context.h"

namespace {

struct Loaded {
    int result;
    std::vector<uint8_t> octets;
};

Loaded convert(RunContext* context, const std::string& text)
{
    InputBuffer buffer = {0, nullptr};
    Loaded loaded{hexTextToBinary(context, text.data(), static_cast<int32_t>(text.size()), buffer), {}};
    if (buffer.data != nullptr) loaded.octets.assign(buffer.data, buffer.data + buffer.length);
    qorFree(context, buffer.data);
    return loaded;
}

Loaded load(RunContext* context, const std::string& contents, bool text, uint32_t offset, uint32_t count)
{
    std::FILE* file = std::tmpfile();
    std::fwrite(contents.data(), 1, contents.size(), file);
    if (text) context->toolFlags |= TLV_TEXT_INPUT;
    InputBuffer buffer = {0, nullptr};
    Loaded loaded{loadInput(context, file, offset, count, buffer), {}};
    context->toolFlags &= ~TLV_TEXT_INPUT;
    std::fclose(file);
    if (buffer.data != nullptr) loaded.octets.assign(buffer.data, buffer.data + buffer.length);
    qorFree(context, buffer.data);
    return loaded;
}

TEST(HexTextToBinary, DigitsWhiteSpaceAndStrangers)
{
    TestContext run;
    const struct {
        std::string text;
        int result;
        std::vector<uint8_t> octets;
    } rows[] = {
        {"A", 0, {0xA0}},
        {"ABC", 0, {0xAB, 0xC0}},
        {"A B", 0, {0xAB}},
        {"0a\n1F", 0, {0x0A, 0x1F}},
        {"0A zz", 49, {0x0A}},
        {"0z", 49, {}},
        {"010z", 49, {0x01, 0x00}},
        {"zz", 49, {}},
        {"0x05", 49, {}},
        {" \t\r\n", 0, {}},
    };
    for (const auto& row : rows) {
        Loaded loaded = convert(run.get(), row.text);
        EXPECT_EQ(row.result, loaded.result) << row.text;
        EXPECT_EQ(row.octets, loaded.octets) << row.text;
    }
}

TEST(LoadInput, BinaryOffsetAndCount)
{
    TestContext run;
    const std::string ten = "0123456789";
    EXPECT_EQ(46, load(run.get(), "", false, 0, 0).result);
    EXPECT_EQ(47, load(run.get(), ten, false, 10, 0).result);
    Loaded last = load(run.get(), ten, false, 9, 0);
    EXPECT_EQ(0, last.result);
    EXPECT_EQ(std::vector<uint8_t>{'9'}, last.octets);
    Loaded rest = load(run.get(), ten, false, 2, 1000);
    EXPECT_EQ(0, rest.result);
    EXPECT_EQ(8u, rest.octets.size());
}

TEST(LoadInput, TextOffsetAndCountInDigits)
{
    TestContext run;
    Loaded cut = load(run.get(), "30 03 02 01 05", true, 2, 4);
    EXPECT_EQ(0, cut.result);
    EXPECT_EQ((std::vector<uint8_t>{0x03, 0x02}), cut.octets);
    EXPECT_EQ(48, load(run.get(), "30 03 02 01 05", true, 0, 40).result);
    EXPECT_EQ(47, load(run.get(), "3003", true, 9, 0).result);
    // Counting stops with the characters read: a later offset fails on
    // line-broken text although the file is long enough.
    std::string lines;
    for (int i = 0; i < 4; ++i) lines += std::string(32, '1') + "\n";
    EXPECT_EQ(47, load(run.get(), lines, true, 40, 10).result);
    EXPECT_EQ(0, load(run.get(), std::string(128, '1'), true, 40, 10).result);
}

}  // namespace
