// Every option, and every way to get one wrong.

#include "host/cli/options.h"

#include <gtest/gtest.h>

#include <clocale>
#include <vector>

#include "host/cli/usage_text.h"

namespace tavo {
namespace {

ParsedOptions Parse(std::vector<std::wstring_view> arguments) { return ParseOptions(arguments); }

Options Good(std::vector<std::wstring_view> more) {
    std::vector<std::wstring_view> arguments = {L"in.avi", L"out.avi"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ParsedOptions parsed = ParseOptions(arguments);
    EXPECT_EQ(parsed.error, L"");
    return parsed.options;
}

std::wstring Error(std::vector<std::wstring_view> more) {
    std::vector<std::wstring_view> arguments = {L"in.avi", L"out.avi"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return ParseOptions(arguments).error;
}

bool Contains(const std::wstring& text, const wchar_t* part) {
    return text.find(part) != std::wstring::npos;
}

TEST(Options, Defaults) {
    const Options options = Good({});
    EXPECT_EQ(options.input, L"in.avi");
    EXPECT_EQ(options.output, L"out.avi");
    EXPECT_EQ(options.module, L"");
    EXPECT_EQ(options.width, 0);
    EXPECT_EQ(options.height, 0);
    EXPECT_EQ(options.method, 0);
    EXPECT_EQ(options.format, 0);
    EXPECT_EQ(options.type, 0);
    EXPECT_EQ(options.fps, 0.0);
    EXPECT_FALSE(options.registered || options.graph || options.quiet || options.help ||
                 options.version || options.play || options.pages || options.ToScreen());
}

TEST(Options, EverythingAtOnceAndInAnyPlace) {
    const ParsedOptions parsed =
        Parse({L"--size", L"640x480", L"in put.avi", L"--method", L"Bi-Linear SSE",
               L"--format=RGB565", L"out.avi", L"--type", L"mpeg2", L"--fps", L"29.97", L"--graph",
               L"--quiet", L"--module", L"x/TavoResample.ax"});
    ASSERT_EQ(parsed.error, L"");
    EXPECT_EQ(parsed.options.input, L"in put.avi");
    EXPECT_EQ(parsed.options.output, L"out.avi");
    EXPECT_EQ(parsed.options.width, 640);
    EXPECT_EQ(parsed.options.height, 480);
    EXPECT_EQ(parsed.options.method, 12);
    EXPECT_EQ(parsed.options.format, 10);
    EXPECT_EQ(parsed.options.type, 2);
    EXPECT_EQ(parsed.options.fps, 29.97);
    EXPECT_EQ(parsed.options.module, L"x/TavoResample.ax");
    EXPECT_TRUE(parsed.options.graph);
    EXPECT_TRUE(parsed.options.quiet);
}

TEST(Options, Sizes) {
    EXPECT_EQ(Good({L"--size", L"1x65535"}).height, 65535);
    EXPECT_EQ(Good({L"--size", L"320X0"}).width, 320);
    for (const wchar_t* bad : {L"640", L"x", L"640x", L"x480", L"640x480x", L"-1x4", L"65536x1",
                               L"4 x4", L"", L"4x4.5", L"99999999999x1", L"\u0661x1"}) {
        EXPECT_TRUE(Contains(Error({L"--size", bad}), L"--size wants")) << bad;
    }
}

TEST(Options, Rates) {
    EXPECT_EQ(Good({L"--fps", L"25"}).fps, 25.0);
    EXPECT_EQ(Good({L"--fps", L"30000/1001"}).fps, 30000.0 / 1001.0);
    EXPECT_EQ(Good({L"--fps", L"0.01"}).fps, 0.01);
    for (const wchar_t* bad : {L"0", L"-5", L"nan", L"inf", L"25fps", L"", L"1/0", L"1/-1", L"1/",
                               L"/2", L"0.009", L"100001", L"1e99", L"25,0"}) {
        EXPECT_TRUE(Contains(Error({L"--fps", bad}), L"--fps wants")) << bad;
    }
}

#ifdef _WIN32
TEST(Options, ALocaleOfTheProcessChangesNothing) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany"), nullptr);
    EXPECT_EQ(Good({L"--fps", L"29.97"}).fps, 29.97);
    EXPECT_TRUE(Contains(Error({L"--fps", L"29,97"}), L"--fps wants"));
    std::setlocale(LC_ALL, before.c_str());
}
#endif

TEST(Options, NamesInAnyCase) {
    EXPECT_EQ(Good({L"--method", L"nearest neighbor"}).method, 5);
    EXPECT_EQ(Good({L"--method", L"BI-LINEAR auto"}).method, 2);
    EXPECT_EQ(Good({L"--format", L"yvyu"}).format, 6);
    EXPECT_EQ(Good({L"--type", L"Mpeg1"}).type, 1);
}

TEST(Options, UnknownNamesListTheKnown) {
    const std::wstring error = Error({L"--method", L"cubic"});
    EXPECT_TRUE(Contains(error, L"\"cubic\"")) << error.c_str();
    EXPECT_TRUE(Contains(error, L"\"Nearest Neighbor MMX\"")) << error.c_str();
    EXPECT_TRUE(Contains(Error({L"--format", L"RGB32"}), L"\"RGB555\""));
    EXPECT_TRUE(Contains(Error({L"--type", L""}), L"\"MPEG1\""));
}

TEST(Options, MissingAndSuperfluous) {
    EXPECT_TRUE(Contains(Parse({}).error, L"input"));
    EXPECT_TRUE(Contains(Parse({L"in.avi"}).error, L"output"));
    EXPECT_TRUE(Contains(Parse({L"a", L"b", L"c"}).error, L"\"c\""));
    EXPECT_TRUE(Contains(Parse({L"", L"b"}).error, L"empty"));
    EXPECT_TRUE(Contains(Error({L"--size"}), L"--size wants a value"));
    EXPECT_TRUE(Contains(Error({L"--graph=1"}), L"takes no value"));
    EXPECT_TRUE(Contains(Error({L"--module="}), L"--module wants"));
    EXPECT_TRUE(Contains(Error({L"--sise", L"1x1"}), L"\"--sise\""));
    EXPECT_TRUE(Contains(Error({L"-q"}), L"\"-q\""));
    EXPECT_TRUE(Contains(Error({L"--as-is", L"--fps", L"25"}), L"exclude"));
    EXPECT_TRUE(Contains(Error({L"--module", L"m.ax", L"--registered"}), L"exclude"));
}

TEST(Options, FilesThatLookLikeOptions) {
    const ParsedOptions parsed = Parse({L"--quiet", L"--", L"-", L"--out.avi"});
    EXPECT_EQ(parsed.error, L"");
    EXPECT_EQ(parsed.options.input, L"-");
    EXPECT_EQ(parsed.options.output, L"--out.avi");
}

TEST(Options, TheOutputIsNamedAvi) {
    for (const wchar_t* good : {L"a.avi", L"a.AVI", L"b.mp4.Avi", L"c:\\d.e\\f.avi", L"g/h.avi"}) {
        EXPECT_EQ(Parse({L"in.mp4", good}).error, L"") << good;
    }
    for (const wchar_t* bad : {L"out", L"out.mp4", L"out.av", L"avi", L".avi", L"a/.avi",
                               L"a.avi.mkv", L"x.avi\\y", L"c:.avi"}) {
        EXPECT_TRUE(Contains(Parse({L"in.mp4", bad}).error, L"end with .avi")) << bad;
        EXPECT_TRUE(Contains(Parse({L"in.mp4", bad}).error, bad)) << bad;
    }
    EXPECT_EQ(Parse({L"in.mp4", L"folder\\"}).error, L"");
    EXPECT_EQ(Parse({L"--play", L"in.mp4"}).error, L"");
}

TEST(Options, SeveralInputs) {
    const std::vector<std::wstring> inputs = {L"a.mp4", L"b\\*.avi"};
    for (const auto& arguments : std::vector<std::vector<std::wstring_view>>{
             {L"a.mp4", L"b\\*.avi", L"out\\"},
             {L"a.mp4", L"--output-folder", L"out\\", L"b\\*.avi"},
             {L"--output-folder=out\\", L"--", L"a.mp4", L"b\\*.avi"}}) {
        const ParsedOptions parsed = ParseOptions(arguments);
        EXPECT_EQ(parsed.error, L"");
        EXPECT_EQ(parsed.options.inputs, inputs);
        EXPECT_EQ(parsed.options.outputFolder, L"out\\");
        EXPECT_EQ(parsed.options.input + parsed.options.output, L"");
    }
    EXPECT_EQ(Parse({L"a.mp4", L"out/"}).options.outputFolder, L"out/");
    EXPECT_TRUE(Good({}).inputs.empty());
    EXPECT_EQ(Parse({L"out/"}).error, L"the name of the output file is missing");
    EXPECT_TRUE(Contains(Parse({L"a", L"b", L"c.avi"}).error, L"want --output-folder"));
    EXPECT_TRUE(Contains(Parse({L"--output-folder", L"o"}).error, L"input file is missing"));
    EXPECT_TRUE(Contains(Parse({L"a*\\b", L"o\\"}).error, L"\"a*\\b\""));
    EXPECT_TRUE(Contains(Parse({L"", L"o\\"}).error, L"empty"));
    EXPECT_TRUE(Contains(Parse({L"a", L"--output-folder="}).error, L"path of a folder"));
    EXPECT_TRUE(Contains(Parse({L"a", L"o\\", L"--log", L"a.csv"}).error, L"--log is for one"));
    EXPECT_TRUE(Contains(Parse({L"a", L"o\\", L"--as-is", L"--fps", L"2"}).error, L"exclude"));
    EXPECT_TRUE(Contains(Parse({L"--play", L"a", L"--output-folder", L"o"}).error, L"that write"));
    EXPECT_TRUE(Contains(UsageText(), L"--output-folder"));
}

TEST(Options, Sections) {
    const Options options = Good({L"--start", L"1:00.5", L"--duration=2"});
    EXPECT_EQ(options.section, (TimeSection{605'000'000, 20'000'000}));
    EXPECT_TRUE(Good({}).section.IsAll());
    EXPECT_TRUE(Good({L"--start", L"0"}).section.IsAll());
    EXPECT_TRUE(Contains(Error({L"--start", L"-1"}), L"--start wants"));
    EXPECT_TRUE(Contains(Error({L"--duration", L"0"}), L"--duration wants"));
    EXPECT_TRUE(Contains(Error({L"--duration", L"1s"}), L"\"1s\""));
    EXPECT_TRUE(Contains(Parse({L"--play", L"a", L"--start", L"1"}).error, L"that write"));
    EXPECT_TRUE(Contains(UsageText(), L"--start TIME"));
    EXPECT_TRUE(Contains(UsageText(), L"--duration TIME"));
}

TEST(Options, Publishing) {
    EXPECT_TRUE(Good({L"--publish"}).publish);
    EXPECT_TRUE(Parse({L"--play", L"a", L"--publish"}).options.publish);
    EXPECT_FALSE(Good({}).publish);
    EXPECT_TRUE(Contains(UsageText(), L"--publish"));
}

TEST(Options, Fit) {
    const Options options = Good({L"--fit", L"640x480"});
    EXPECT_TRUE(options.fit);
    EXPECT_EQ(options.width, 640);
    EXPECT_EQ(options.height, 480);
    EXPECT_FALSE(Good({L"--size", L"640x480"}).fit);
    EXPECT_EQ(Good({L"--fit", L"0x480"}).height, 480);
    EXPECT_TRUE(Good({L"--fit", L"640x0"}).fit);
    for (const wchar_t* bad : {L"640", L"0x0", L"-1x480", L"x", L"65536x1", L""}) {
        EXPECT_TRUE(Contains(Error({L"--fit", bad}), L"--fit wants")) << bad;
    }
    EXPECT_TRUE(Contains(Error({L"--fit", L"4x4", L"--size", L"4x4"}), L"exclude"));
    EXPECT_TRUE(Contains(Error({L"--size", L"4x4", L"--fit", L"4x4"}), L"exclude"));
}

TEST(Options, TimingAndOverwriting) {
    EXPECT_TRUE(Good({L"--as-is"}).asIs);
    EXPECT_TRUE(Good({L"--no-sound"}).noSound);
    EXPECT_FALSE(Good({}).asIs);
    EXPECT_TRUE(Good({L"--overwrite"}).overwrite);
    EXPECT_FALSE(Good({}).overwrite);
    for (const wchar_t* option : {L"--fit", L"--as-is", L"--overwrite"}) {
        EXPECT_TRUE(Contains(UsageText(), option)) << option;
    }
}

TEST(Options, RunsThatWrite) {
    EXPECT_TRUE(Good({L"--dry-run"}).dryRun);
    EXPECT_TRUE(Good({L"--json"}).json);
    EXPECT_FALSE(Good({}).dryRun || Good({}).json);
    EXPECT_EQ(Parse({L"--list", L"--json"}).error, L"--json is for runs that write a file");
    EXPECT_EQ(Parse({L"--help", L"--json"}).error, L"");
    EXPECT_EQ(Good({L"--log", L"a.CSV"}).log, L"a.CSV");
    for (const wchar_t* bad : {L"", L"a.avi", L".csv", L"csv", L"a.csv/"}) {
        EXPECT_TRUE(Contains(Error({L"--log", bad}), L"ends with .csv")) << bad;
    }
    EXPECT_EQ(Parse({L"--pages", L"a", L"--log=a.csv"}).error,
              L"--log is for runs that write a file");
    EXPECT_TRUE(Contains(UsageText(), L"--log"));
    for (const wchar_t* option : {L"--dry-run", L"--json"}) {
        EXPECT_EQ(Parse({L"--play", L"a", option}).error,
                  option + std::wstring(L" is for runs that write a file"));
        EXPECT_TRUE(Contains(UsageText(), option)) << option;
    }
}

TEST(Options, ShortNames) {
    const std::pair<const wchar_t*, int> methods[] = {
        {L"nearest", 5},       {L"Bilinear", 10},     {L"nearest-mmx", 6},  {L"nearest-sse", 7},
        {L"bilinear-mmx", 11}, {L"BILINEAR-SSE", 12}, {L"nearest-auto", 1}, {L"bilinear-auto", 2},
    };
    for (const auto& [name, code] : methods) EXPECT_EQ(Good({L"--method", name}).method, code);
    EXPECT_EQ(Good({L"--format", L"i420"}).format, 2);
    EXPECT_TRUE(Contains(Error({L"--type", L"I420"}), L"--type knows"));
    EXPECT_TRUE(Contains(Error({L"--method", L"near"}), L"--method knows"));
}

TEST(Options, PlayingNeedsNoOutput) {
    for (const wchar_t* option : {L"--play", L"--pages"}) {
        const ParsedOptions parsed = Parse({option, L"in.avi", L"--size", L"320x0"});
        EXPECT_EQ(parsed.error, L"");
        EXPECT_TRUE(parsed.options.ToScreen());
        EXPECT_EQ(parsed.options.input, L"in.avi");
        EXPECT_EQ(parsed.options.output, L"");
        EXPECT_EQ(parsed.options.width, 320);
        EXPECT_TRUE(Contains(Parse({option}).error, L"input"));
        EXPECT_TRUE(Contains(Parse({option, L""}).error, L"empty"));
        EXPECT_TRUE(Contains(Error({option}), L"\"out.avi\""));
        EXPECT_TRUE(
            Contains(Parse({option, L"a", L"--module", L"m", L"--registered"}).error, L"exclude"));
        EXPECT_TRUE(Contains(UsageText(), option));
    }
    EXPECT_TRUE(Parse({L"a", L"--play"}).options.play);
    EXPECT_TRUE(Parse({L"a", L"--pages"}).options.pages);
    EXPECT_TRUE(Contains(Parse({L"a", L"--pages", L"--play"}).error, L"exclude"));
}

TEST(Options, HelpAndVersionNeedNoFiles) {
    EXPECT_EQ(Parse({L"--help"}).error, L"");
    EXPECT_TRUE(Parse({L"--help"}).options.help);
    for (const wchar_t* help : {L"-h", L"/?"}) {
        EXPECT_EQ(Parse({help}).error, L"");
        EXPECT_TRUE(Parse({L"in.avi", help}).options.help) << help;
    }
    EXPECT_EQ(Parse({L"--", L"/?", L"out.avi"}).options.input, L"/?");
    EXPECT_EQ(Parse({L"--version", L"x"}).error, L"");
    EXPECT_EQ(Parse({L"--cpu"}).error, L"");
    EXPECT_TRUE(Parse({L"--cpu"}).options.cpu);
    EXPECT_FALSE(Parse({L"in.avi", L"out.avi"}).options.cpu);
    EXPECT_EQ(Parse({L"--list"}).error, L"");
    EXPECT_TRUE(Parse({L"--list"}).options.list);
    EXPECT_EQ(Parse({L"--cpu=1"}).error, L"--cpu takes no value");
    EXPECT_TRUE(Contains(UsageText(), L"--registered"));
    EXPECT_TRUE(Contains(UsageText(), L"\"Bi-Linear MMX\""));
}

}  // namespace
}  // namespace tavo
