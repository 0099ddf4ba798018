#include "app/input.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>
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

// A stream that can't be positioned: the read end of a pipe that a thread
// fills, then closes.
class PipeInput {
public:
    explicit PipeInput(const std::string& contents)
    {
        int ends[2] = {-1, -1};
        if (pipe(ends) != 0) return;
        stream_ = fdopen(ends[0], "rb");
        writer_ = std::thread([contents, end = ends[1]] {
            for (size_t at = 0; at < contents.size();) {
                ssize_t put = write(end, contents.data() + at, contents.size() - at);
                if (put <= 0) break;
                at += static_cast<size_t>(put);
            }
            close(end);
        });
    }
    ~PipeInput()
    {
        // A load that stops early leaves octets in the pipe: read them out.
        char rest[4096];
        while (stream_ != nullptr && std::fread(rest, 1, sizeof rest, stream_) > 0) {
        }
        if (writer_.joinable()) writer_.join();
        if (stream_ != nullptr) std::fclose(stream_);
    }
    PipeInput(const PipeInput&) = delete;
    PipeInput& operator=(const PipeInput&) = delete;
    std::FILE* get() const { return stream_; }

private:
    std::FILE* stream_ = nullptr;
    std::thread writer_;
};

Loaded load(RunContext* context, const std::string& contents, bool text, uint32_t offset, uint32_t count,
            int32_t spare = 0, bool piped = false)
{
    std::FILE* file = piped ? nullptr : std::tmpfile();
    PipeInput pipeInput(piped ? contents : std::string());
    if (piped) {
        file = pipeInput.get();
    } else {
        std::fwrite(contents.data(), 1, contents.size(), file);
    }
    if (text) context->toolFlags |= TLV_TEXT_INPUT;
    InputBuffer buffer = {spare, nullptr};
    Loaded loaded{loadInput(context, file, offset, count, buffer), {}};
    context->toolFlags &= ~TLV_TEXT_INPUT;
    if (!piped) std::fclose(file);
    if (buffer.data != nullptr) loaded.octets.assign(buffer.data, buffer.data + buffer.length);
    releaseInput(context, buffer);
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
        {"ABC", 0, {0xAB, 0xC0}},
        {"0a\n1F", 0, {0x0A, 0x1F}},
        {"0z", 49, {}},
        {"010z", 49, {0x01, 0x00}},
        {"0x05", 49, {}},
    };
    for (const auto& row : rows) {
        Loaded loaded = convert(run.get(), row.text);
        EXPECT_EQ(row.result, loaded.result) << row.text;
        EXPECT_EQ(row.octets, loaded.octets) << row.text;
    }
}

struct LoadRow {
    std::string contents;
    uint32_t offset;
    uint32_t count;
    int32_t spare;
    int result;
    std::vector<uint8_t> octets;
};

// Every row from a file, and from a pipe, which is read to its end
// instead of positioned: the same octets and results.
void checkRows(bool text, const std::vector<LoadRow>& rows)
{
    TestContext run;
    for (const LoadRow& row : rows) {
        for (bool piped : {false, true}) {
            Loaded loaded = load(run.get(), row.contents, text, row.offset, row.count, row.spare, piped);
            std::string shown = row.contents.substr(0, 20) + " +" + std::to_string(row.offset) + "," +
                                std::to_string(row.count) + (piped ? " from a pipe" : " from a file");
            EXPECT_EQ(row.result, loaded.result) << shown;
            EXPECT_EQ(row.octets, loaded.octets) << shown;
        }
    }
    EXPECT_EQ("", run.output());  // loading reports nothing itself
}

TEST(LoadInput, BinaryOffsetCountAndSpareOctets)
{
    const std::string ten = "0123456789";
    checkRows(false, {
        {"", 0, 0, 16, 46, {}},
        {ten, 4000000000u, 0, 0, 47, {}},
        {ten, 2, 3, 0, 0, {'2', '3', '4'}},
        // Spare octets stand behind the input, zero, and are counted in the length.
        {ten, 8, 0, 3, 0, {'8', '9', 0, 0, 0}},
        {ten, 0, 1, 2, 0, {'0', 0, 0}},
    });
}

TEST(LoadInput, BinaryLargerThanTheReadsOfAPipe)
{
    // A pipe is read in chunks of 64 KiB, its skipped octets 4 KiB at a
    // time: offsets and counts that fall inside and across them.
    std::string octets;
    for (int i = 0; i < 200000; ++i) octets += static_cast<char>(i % 251);
    auto slice = [&octets](size_t from, size_t length, size_t zeros) {
        std::vector<uint8_t> part(length + zeros, 0);
        for (size_t i = 0; i < length; ++i) part[i] = static_cast<uint8_t>(octets[from + i]);
        return part;
    };
    checkRows(false, {
        {octets, 0, 0, 0, 0, slice(0, 200000, 0)},
        {octets, 70001, 100000, 3, 0, slice(70001, 100000, 3)},
        {octets, 4096, 65536, 0, 0, slice(4096, 65536, 0)},
        {octets, 199999, 0, 16, 0, slice(199999, 1, 16)},
        {octets, 200000, 0, 0, 47, {}},
    });
}

TEST(LoadInput, TextOffsetAndCountCountDigits)
{
    const std::string five = "30 03 02 01 05";
    checkRows(true, {
        {five, 0, 3, 0, 0, {0x30, 0x00}},
        // The offset may use up every digit; an empty input is no error.
        {five, 10, 0, 0, 0, {}},
        {"30\n03\n", 0, 4, 0, 0, {0x30, 0x03}},
        {"05\r\n00\r\n", 0, 0, 0, 0, {0x05, 0x00}},
        // Text takes no spare octets.
        {"0500", 0, 0, 16, 0, {0x05, 0x00}},
    });
}

TEST(LoadInput, TextCountLimitsTheCharactersRead)
{
    // The count also bounds the characters read, white space included:
    // on line-broken text the offset or the count can't be met although
    // the file holds enough digits. A single line doesn't fail that way.
    checkRows(true, {
        {std::string(128, '1'), 40, 10, 0, 0, std::vector<uint8_t>(5, 0x11)},
        {"3003\n0201\n05\n", 3, 4, 0, 48, {}},
    });
}

TEST(LoadInput, TextLongerThanOneLineRead)
{
    // Lines are read 1023 characters at a time.
    std::string ab;
    for (int i = 0; i < 1500; ++i) ab += "ab";
    using Octets = std::vector<uint8_t>;
    checkRows(true, {
        {ab, 0, 0, 0, 0, Octets(1500, 0xAB)},
        {ab, 2000, 0, 0, 0, Octets(500, 0xAB)},
        {ab, 1, 2500, 0, 0, Octets(1250, 0xBA)},
        {ab + "\n" + ab + "\n" + ab + "\n", 0, 0, 0, 0, Octets(4500, 0xAB)},
    });
}

}  // namespace
