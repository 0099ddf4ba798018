// Golden runs: input octets + arguments -> exact standard output, exit
// status and produced files, compared byte for byte.
//
// A case is a folder under tests/golden holding:
//   args        one argument per line. {in} is the input's absolute path,
//               {dir} the run's own folder (for files the run writes). The
//               run starts in {dir} and the input lies beside it, so
//               ../input names the input too (the shorter name that most
//               cases show in their listings); both names are one file.
//   input.hex   the input as hexadecimal octets ('#' starts a comment), or
//   input.txt   the input as it stands (text, PEM and base64 input)
//   stdin       optional standard input, read from a regular file, or
//   stdin-pipe  standard input written into a pipe, so that /dev/stdin is
//               a pipe that can't be positioned; stdin-pipe.hex holds it as
//               hexadecimal octets
//   stdout      the expected standard output; {YEAR} is the current UTC
//               year, {in} and {dir} as in args
//   stderr      optional: the expected standard error, compared byte for
//               byte, with the same replacements; when absent, standard
//               error is not compared
//   status      the expected exit status (0 when absent)
//   files/NAME  a file the run must leave in {dir}; NAME.hex holds it as
//               hexadecimal octets. A run leaves no other file.
// Every run leaves its input as it was. A case whose arguments don't choose
// a thread count runs again with -threads 1 and with -threads 4 in front of
// them, and must print the same, byte for byte.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
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
    std::string errors;
};

// Where the run's standard input comes from: a file, or octets fed
// through a pipe by a writer process of their own.
struct StandardInput {
    fs::path file;
    bool piped = false;
    std::string octets;
};

// The read end of a pipe that a writer process fills with `octets`.
int feedingPipe(const std::string& octets, pid_t& writer)
{
    int ends[2];
    if (pipe(ends) != 0) return -1;
    writer = fork();
    if (writer == 0) {
        close(ends[0]);
        signal(SIGPIPE, SIG_IGN);  // a run that stops reading early ends the writer quietly
        for (size_t at = 0; at < octets.size();) {
            ssize_t put = write(ends[1], octets.data() + at, octets.size() - at);
            if (put <= 0) break;
            at += static_cast<size_t>(put);
        }
        _exit(0);
    }
    close(ends[1]);
    return ends[0];
}

RunResult runProgram(const std::vector<std::string>& args, const StandardInput& input, const fs::path& stdoutPath,
                     const fs::path& stderrPath, const fs::path& workDir)
{
    pid_t writer = -1;
    const int piped = input.piped ? feedingPipe(input.octets, writer) : -1;
    pid_t child = fork();
    if (child == 0) {
        int in = input.piped ? piped : open(input.file.empty() ? "/dev/null" : input.file.c_str(), O_RDONLY);
        int out = open(stdoutPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(stderrPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        if (chdir(workDir.c_str()) != 0) _exit(127);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(gBinary.c_str()));
        for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(gBinary.c_str(), argv.data());
        _exit(127);
    }
    if (piped >= 0) close(piped);
    int status = 0;
    waitpid(child, &status, 0);
    if (writer > 0) waitpid(writer, nullptr, 0);
    RunResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = readFile(stdoutPath);
    result.errors = readFile(stderrPath);
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
        const bool hasInput = fs::exists(input);
        const std::string inputOctets = hasInput ? readFile(input) : std::string();

        std::vector<std::string> args;
        std::istringstream lines(readFile(folder_ / "args"));
        for (std::string line; std::getline(lines, line);) {
            line = replaceAll(line, "{in}", input.string());
            line = replaceAll(line, "{dir}", (work / "run").string());
            args.push_back(line);
        }
        StandardInput standardInput;
        if (fs::exists(folder_ / "stdin")) standardInput.file = folder_ / "stdin";
        if (fs::exists(folder_ / "stdin-pipe")) {
            standardInput.piped = true;
            standardInput.octets = readFile(folder_ / "stdin-pipe");
        }
        if (fs::exists(folder_ / "stdin-pipe.hex")) {
            standardInput.piped = true;
            standardInput.octets = hexToOctets(readFile(folder_ / "stdin-pipe.hex"));
        }
        RunResult result = runProgram(args, standardInput, work / "stdout", work / "stderr", work / "run");

        auto expectedText = [&](const std::string& name) {
            std::string text = replaceAll(readFile(folder_ / name), "{YEAR}", currentYear());
            text = replaceAll(text, "{in}", input.string());
            return replaceAll(text, "{dir}", (work / "run").string());
        };
        std::string expected = expectedText("stdout");
        int status = fs::exists(folder_ / "status") ? std::stoi(readFile(folder_ / "status")) : 0;
        EXPECT_EQ(status, result.status) << "exit status of " << folder_;
        EXPECT_EQ(expected, result.output) << "standard output of " << folder_;
        if (fs::exists(folder_ / "stderr")) {
            std::string errors = expectedText("stderr");
            EXPECT_EQ(errors, result.errors) << "standard error of " << folder_;
        }
        const bool choosesThreads = std::find(args.begin(), args.end(), "-threads") != args.end();
        for (const char* threads : {"1", "4"}) {
            if (args.empty() || choosesThreads) break;
            std::vector<std::string> again = {"-threads", threads};
            again.insert(again.end(), args.begin(), args.end());
            RunResult other = runProgram(again, standardInput, work / "stdout", work / "stderr", work / "run");
            EXPECT_EQ(result.status, other.status) << "exit status with -threads " << threads << " of " << folder_;
            EXPECT_EQ(result.output, other.output) << "standard output with -threads " << threads << " of " << folder_;
            EXPECT_EQ(result.errors, other.errors) << "standard error with -threads " << threads << " of " << folder_;
        }
        if (hasInput) {
            EXPECT_TRUE(fs::exists(input) && readFile(input) == inputOctets) << folder_ << " changed its input";
        }
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
