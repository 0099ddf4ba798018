#include "app/driver.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/test_context.h"

namespace {

void* noMemory(size_t)
{
    return nullptr;
}

// A binary input file that lives as long as the object.
class InputFile {
public:
    explicit InputFile(const std::string& octets)
    {
        std::FILE* file = std::fopen(name_.c_str(), "wb");
        std::fwrite(octets.data(), 1, octets.size(), file);
        std::fclose(file);
    }
    ~InputFile() { std::remove(name_.c_str()); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    const std::string& name() const { return name_; }

private:
    std::string name_ = testing::TempDir() + "qortlv-driver-input";
};

int drive(RunContext* context, std::vector<std::string> args)
{
    args.insert(args.begin(), "qortlv");
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    return runDriver(context, static_cast<int>(args.size()), argv.data());
}

TEST(RunDriver, MemoryExhaustedWhileLoadingIsToldTwice)
{
    // Text input: a binary file is mapped, text always takes a block.
    InputFile input("05 00");
    TestContext run;
    AllocFn saved = run.get()->allocFn;
    run.get()->allocFn = noMemory;
    int status = drive(run.get(), {"-t", input.name()});
    run.get()->allocFn = saved;
    EXPECT_EQ(1, status);
    // Once by the message of index 1, once more by the recovery.
    EXPECT_EQ("Internal error #1.\nInternal error #1.\n\n", run.output());
}

TEST(RunDriver, OptionFlagsLastForOneRun)
{
    InputFile input(std::string("\x05\x00", 2));
    const struct {
        std::vector<std::string> args;
        int status;
    } rows[] = {
        {{"-noshort", "-noaddition", "-notitles", "-nocdrheaders", "-znotrace", input.name()}, 0},
        {{"-t", input.name()}, 49},    // read as text, the octet 05 is no digit
        {{"-noshort", "-bogus"}, 7},   // through the recovery
    };
    for (const auto& row : rows) {
        TestContext run;
        const uint32_t before = run.get()->toolFlags;
        EXPECT_EQ(row.status, drive(run.get(), row.args)) << row.args[0];
        EXPECT_EQ(before, run.get()->toolFlags) << row.args[0];
        EXPECT_FALSE(run.get()->jumpTarget) << row.args[0];
    }
}

}  // namespace
