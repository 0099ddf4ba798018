#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/options.h"

namespace {

// Whether the arguments make a JSON run (no banner, other texts to standard
// error): the first layout option the option loop meets is -json.
TEST(JsonOption, ChosenBeforeTheBanner)
{
    const struct {
        std::vector<std::string> args;
        bool json;
    } rows[] = {
        {{"in.ber", "-json"}, true},
        {{"-j", "in.ber"}, true},
        {{"-JSON", "in.ber"}, true},
        {{"-js", "in.ber"}, true},
        {{"-jsonl", "in.ber"}, false},            // longer than the name: no option
        {{"in.ber"}, false},
        {{"-syntax", "-json", "in.ber"}, false},  // the first layout wins
        {{"-json", "-syntax", "in.ber"}, true},
        {{"-json", "-help"}, false},              // -help prints the banner and its text
        {{"-help", "-json"}, false},
        {{"-bogus", "-json"}, false},             // the loop ends at an unknown option
        {{"-json", "-zfixencoding", "out.ber", "in.ber"}, false},  // the repair has no layout
        {{"-b", "-json"}, true},                  // "-json" is no input name
        {{"-b", "-", "-json"}, true},             // "-" is: the name from standard input
        {{"-pad", "0xFF", "-json", "in.ber"}, true},
        {{"-o", "out.txt", "-json", "in.ber"}, true},
        {{"+4,10", "-json", "in.ber"}, true},
    };
    for (const auto& row : rows) {
        std::vector<std::string> words = {"qortlv"};
        words.insert(words.end(), row.args.begin(), row.args.end());
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        std::string shown;
        for (const std::string& arg : row.args) shown += arg + " ";
        EXPECT_EQ(row.json, asksForJsonLayout(static_cast<int>(words.size()), argv.data())) << shown;
    }
}

}  // namespace
