// Golden runs: input octets + arguments -> exact standard output, exit
// status and produced files, compared byte for byte.
//
// A case is a folder under tests/golden holding:
//   args        one argument per line
//   input.hex   the input as hexadecimal octets ('#' starts a comment), or
//   input.txt   the input as it stands (text input)
//   stdin       optional standard input, taken as it stands
//   stdout      the expected standard output; {YEAR} is the current UTC year
//   status      the expected exit status (0 when absent)
//   files/NAME  a file the run must leave in {dir}; NAME.hex holds it as
//               hexadecimal octets. A run leaves no other file.
//
// The program runs in {dir}, a folder of its own, and the input file lies
// beside it. A case names the input either as ../input, relative to the
// run (the only form that stdin can use, since it is taken as it stands),
// or as {in}, its absolute path. {in} and {dir} are replaced in args and
// stdout, so an expected message shows the name as the case gave it.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

std::string gBinary;
std::string gCases;

std::string readFile(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const fs::path& path, const std::string& data)
{
    std::ofstream out(path, std::ios::binary);
    out << data;
}

std::string hexToOctets(const std::string& text)
{
    std::string octets;
    int high = -1;
    bool comment = false;
    for (char c : text) {
        if (c == '\n') comment = false;
        if (comment || c == '#') {
            comment = true;
            continue;
        }
        int digit = -1;
        if (c >= '0' && c <= '9') digit = c - '0';
        if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
        if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
        if (digit < 0) continue;
        if (high < 0) {
            high = digit;
        } else {
            octets += static_cast<char>(high * 16 + digit);
            high = -1;
        }
    }
    return octets;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string currentYear()
{
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    return std::to_string(parts.tm_year + 1900);
}

struct RunResult {
    int status;
    std::string output;
};

RunResult runProgram(const std::vector<std::string>& args, const fs::path& stdinPath, const fs::path& stdoutPath,
                     const fs::path& workDir)
{
    pid_t child = fork();
    if (child == 0) {
        int in = open(stdinPath.empty() ? "/dev/null" : stdinPath.c_str(), O_RDONLY);
        int out = open(stdoutPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(in, 0);
        dup2(out, 1);
        if (chdir(workDir.c_str()) != 0) _exit(127);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(gBinary.c_str()));
        for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(gBinary.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    RunResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = readFile(stdoutPath);
    return result;
}

class GoldenCase : public ::testing::Test {
public:
    explicit GoldenCase(fs::path folder) : folder_(std::move(folder)) {}

    void TestBody() override
    {
        fs::path work = fs::temp_directory_path() / ("qortlv-golden-" + std::to_string(getpid()) + "-" +
                                                      folder_.filename().string());
        fs::remove_all(work);
        fs::create_directories(work / "run");
        fs::path input = work / "input";
        if (fs::exists(folder_ / "input.hex")) writeFile(input, hexToOctets(readFile(folder_ / "input.hex")));
        if (fs::exists(folder_ / "input.txt")) fs::copy_file(folder_ / "input.txt", input);

        std::vector<std::string> args;
        std::istringstream lines(readFile(folder_ / "args"));
        for (std::string line; std::getline(lines, line);) {
            line = replaceAll(line, "{in}", input.string());
            line = replaceAll(line, "{dir}", (work / "run").string());
            args.push_back(line);
        }
        fs::path stdinPath = fs::exists(folder_ / "stdin") ? folder_ / "stdin" : fs::path();
        RunResult result = runProgram(args, stdinPath, work / "stdout", work / "run");

        std::string expected = replaceAll(readFile(folder_ / "stdout"), "{YEAR}", currentYear());
        expected = replaceAll(expected, "{in}", input.string());
        expected = replaceAll(expected, "{dir}", (work / "run").string());
        int status = fs::exists(folder_ / "status") ? std::stoi(readFile(folder_ / "status")) : 0;
        EXPECT_EQ(status, result.status) << "exit status of " << folder_;
        EXPECT_EQ(expected, result.output) << "standard output of " << folder_;
        if (fs::exists(folder_ / "files")) {
            for (const auto& entry : fs::directory_iterator(folder_ / "files")) {
                std::string name = entry.path().filename().string();
                std::string want = readFile(entry.path());
                if (entry.path().extension() == ".hex") {
                    name = entry.path().stem().string();
                    want = hexToOctets(want);
                }
                fs::path produced = work / "run" / name;
                ASSERT_TRUE(fs::exists(produced)) << name << " was not written by " << folder_;
                std::string got = readFile(produced);
                EXPECT_EQ(want, got) << "file " << name << " of " << folder_;
            }
        }
        // A run leaves no file that the case doesn't expect.
        for (const auto& entry : fs::directory_iterator(work / "run")) {
            std::string name = entry.path().filename().string();
            bool expectedFile = fs::exists(folder_ / "files" / name) || fs::exists(folder_ / "files" / (name + ".hex"));
            EXPECT_TRUE(expectedFile) << folder_ << " left the unexpected file " << name;
        }
        if (!HasFailure()) fs::remove_all(work);
    }

private:
    fs::path folder_;
};

void registerCases()
{
    std::vector<fs::path> folders;
    for (const auto& entry : fs::recursive_directory_iterator(gCases)) {
        if (entry.is_regular_file() && entry.path().filename() == "args") folders.push_back(entry.path().parent_path());
    }
    std::sort(folders.begin(), folders.end());
    for (const fs::path& folder : folders) {
        std::string suite = fs::relative(folder.parent_path(), gCases).string();
        if (suite.empty() || suite == ".") suite = "golden";
        std::replace(suite.begin(), suite.end(), '/', '_');
        std::string name = folder.filename().string();
        std::replace(name.begin(), name.end(), '-', '_');
        ::testing::RegisterTest(("Golden_" + suite).c_str(), name.c_str(), nullptr, folder.string().c_str(), __FILE__,
                                __LINE__, [folder]() -> ::testing::Test* { return new GoldenCase(folder); });
    }
}

}  // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg.rfind("--binary=", 0) == 0) gBinary = fs::absolute(arg.substr(9)).string();
        if (arg.rfind("--cases=", 0) == 0) gCases = arg.substr(8);
    }
    if (gBinary.empty() || gCases.empty()) {
        std::cerr << "usage: qortlv_golden --binary=PATH --cases=DIR\n";
        return 2;
    }
    registerCases();
    return RUN_ALL_TESTS();
}
