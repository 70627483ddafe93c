// The files in completion/ offer every option, and values that are accepted. That for bash runs.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "host/cli/options.h"
#include "host/cli/usage_text.h"
#include "host/graph/setting_lookup.h"

namespace tavo {
namespace {

using Words = std::set<std::string>;

std::string ReadFile(const char* name) {
    std::ifstream file(std::string(TAVO_COMPLETION_FOLDER "/") + name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Long ones: the two short ones are there for habits.
Words LongOptions() {
    Words names;
    for (const std::wstring_view name : OptionNames()) {
        if (name.starts_with(L"--")) names.emplace(name.begin(), name.end());
    }
    return names;
}

// What bash offers for the last of the words, which are separated by blanks.
Words Offered(const std::string& words) {
    const std::string script =
        "cd \"" TAVO_COMPLETION_FOLDER "\" && . ./vantrel.bash && COMP_WORDS=(" + words +
        ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _vantrel && "
        "printf \"%s\\n\" \"${COMPREPLY[@]}\"";
    std::FILE* const pipe = popen(("bash -uc '" + script + "'").c_str(), "r");
    std::string text;
    std::array<char, 4096> part{};
    if (pipe == nullptr) return {"no bash"};
    while (std::fgets(part.data(), part.size(), pipe) != nullptr) text += part.data();
    EXPECT_EQ(pclose(pipe), 0) << words;
    std::istringstream lines(text);
    return {std::istream_iterator<std::string>(lines), std::istream_iterator<std::string>()};
}

TEST(Completion, BashOffersAllOptionsAndNoOther) {
    EXPECT_EQ(Offered("vantrel -"), LongOptions());
    EXPECT_EQ(Offered("vantrel in.avi out.avi --si"), Words{"--size"});
}

TEST(Completion, BashOffersValues) {
    const struct {
        const char* option;
        std::span<const SettingName> names;
        size_t count;
    } rows[] = {{"--method", MethodNames(), MethodNames().size()},
                {"--format", FormatNames(), FormatNames().size() + 1},  // I420
                {"--type", TypeNames(), TypeNames().size()}};
    for (const auto& row : rows) {
        const std::string option = row.option;
        const Words values = Offered("vantrel " + option + " \"\"");
        EXPECT_EQ(values.size(), row.count) << option;
        for (const std::string& value : values) {
            const std::wstring wide(value.begin(), value.end());
            EXPECT_TRUE(FindSetting(row.names, wide)) << option << " " << value;
        }
        EXPECT_EQ(Offered("vantrel " + option + " ="), values);
    }
    EXPECT_EQ(Offered("vantrel --method = nearest-m"), Words{"nearest-mmx"});
    EXPECT_EQ(Offered("vantrel --size \"\""), Words());
}

TEST(Completion, BashOffersFiles) {
    EXPECT_EQ(Offered("vantrel van"), (Words{"vantrel.bash", "vantrel.ps1"}));
    EXPECT_EQ(Offered("vantrel --log vantrel.b"), Words{"vantrel.bash"});
    EXPECT_EQ(Offered("vantrel --output-folder van"), Words());
    EXPECT_EQ(Offered("vantrel --output-folder ../completio"), Words{"../completion"});
}

// No PowerShell runs where the tests do.
TEST(Completion, PowerShellKnowsTheSame) {
    const std::string text = ReadFile("vantrel.ps1");
    Words quoted;
    for (size_t open = text.find('\''); open != std::string::npos;) {
        const size_t close = text.find('\'', open + 1);
        quoted.insert(text.substr(open + 1, close - open - 1));
        open = text.find('\'', close + 1);
    }
    Words expected = LongOptions();
    for (const char* option : {"--method", "--format", "--type"}) {
        expected.merge(Offered(std::string("vantrel ") + option + " \"\""));
    }
    expected.insert({"-*", "ParameterValue"});
    EXPECT_EQ(quoted, expected);
}

// Words in a text that begin with two hyphens.
Words OptionsIn(const std::string& text) {
    Words found;
    for (size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at)) {
        const size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at);
        const std::string word = text.substr(at, end - at);
        if (word.find_first_not_of('-') != std::string::npos) found.insert(word);
        at = std::min(end, text.size());
    }
    return found;
}

TEST(Completion, HelpAndReferenceHaveTheSame) {
    const std::wstring help = UsageText();
    EXPECT_EQ(OptionsIn({help.begin(), help.end()}), LongOptions());
    EXPECT_EQ(OptionsIn(ReadFile("../docs/vantrel.md")), LongOptions());
    for (const wchar_t* other : {L"-h, ", L"/?"}) EXPECT_NE(help.find(other), std::wstring::npos);
}

}  // namespace
}  // namespace tavo
