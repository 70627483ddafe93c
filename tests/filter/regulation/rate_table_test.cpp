// The table of the documentation, made anew from what the filter does: a hundred samples of each
// common rate into each other.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "tests/filter/regulation/scenario.h"

using namespace tavo_test;

namespace {

constexpr int kSamples = 100;

struct CommonRate {
    const char* name;
    int64_t rate;
    int64_t scale;
    double setting;
};

constexpr CommonRate kRates[] = {
    {"23.976", 24000, 1001, 23.976}, {"24", 24, 1, 24.0}, {"25", 25, 1, 25.0},
    {"29.97", 30000, 1001, 29.97},   {"30", 30, 1, 30.0}, {"50", 50, 1, 50.0},
    {"59.94", 60000, 1001, 59.94},   {"60", 60, 1, 60.0}};

struct Counts {
    size_t out = 0;
    size_t repeated = 0;  // shows what the frame before showed
    size_t dropped = 0;   // input pictures that nobody saw
};

Counts Count(const std::vector<Outcome>& outcomes) {
    Counts counts;
    std::set<int> shown;
    for (const Outcome& outcome : outcomes) {
        for (const OutputFrame& frame : outcome.frames) {
            ++counts.out;
            if (!shown.insert(frame.picture).second) ++counts.repeated;
        }
    }
    counts.dropped = outcomes.size() - shown.size();
    return counts;
}

std::vector<Step> ExactSteps(const CommonRate& in) {
    return RegularSteps(in.rate, in.scale, kSamples);
}

// As many splitters stamp frames: each lasts as long as the one before, rounded down, and so may
// end a unit before the next one starts.
std::vector<Step> StepsOfOneLength(const CommonRate& in) {
    std::vector<Step> steps = ExactSteps(in);
    const int64_t duration = 10'000'000 * in.scale / in.rate;
    for (Step& step : steps) step.sample.stop = *step.sample.start + duration;
    return steps;
}

std::string Cell(const std::vector<Outcome>& outcomes) {
    const Counts counts = Count(outcomes);
    std::ostringstream cell;
    cell << counts.out << " / " << counts.repeated << " / " << counts.dropped;
    return cell.str();
}

std::string Table() {
    std::ostringstream table;
    table << "| in \\ out |";
    for (const CommonRate& out : kRates) table << " " << out.name << " |";
    table << "\n|---|";
    for (size_t i = 0; i < std::size(kRates); ++i) table << "---|";
    table << "\n";
    for (const CommonRate& in : kRates) {
        table << "| **" << in.name << "** |";
        for (const CommonRate& out : kRates) {
            table << " " << Cell(RunFilter({.rate = out.setting, .steps = ExactSteps(in)})) << " |";
        }
        table << "\n";
    }
    return table.str();
}

class RateTableTest : public FilterTest {};

TEST_F(RateTableTest, StandsInTheDocumentation) {
    std::ifstream file(TAVO_DOCS "/time-regulation.md");
    ASSERT_TRUE(file.is_open()) << TAVO_DOCS;
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const std::string table = Table();
    EXPECT_NE(text.find(table), std::string::npos) << "it should hold this table:\n" << table;
}

TEST_F(RateTableTest, DiffersInTwoCellsForSamplesOfOneLength) {
    std::map<std::string, std::string> others;
    for (const CommonRate& in : kRates) {
        for (const CommonRate& out : kRates) {
            const Scenario ofOneLength = {.rate = out.setting, .steps = StepsOfOneLength(in)};
            const std::string cell = Cell(RunModel(ofOneLength));
            if (cell == Cell(RunModel({.rate = out.setting, .steps = ExactSteps(in)}))) continue;
            EXPECT_EQ(Cell(RunFilter(ofOneLength)), cell);
            others[std::string(in.name) + " to " + out.name] = cell;
        }
    }
    const std::map<std::string, std::string> wanted = {{"60 to 24", "40 / 1 / 61"},
                                                       {"60 to 30", "50 / 2 / 52"}};
    EXPECT_EQ(others, wanted);
}

TEST_F(RateTableTest, TheStartOfARateIntoItself) {
    const auto pictures = [](int64_t rate) {
        std::vector<int> shown;
        for (const Outcome& outcome : RunFilter(
                 {.rate = static_cast<double>(rate), .steps = RegularSteps(rate, 1, kSamples)})) {
            for (const OutputFrame& frame : outcome.frames) shown.push_back(frame.picture);
        }
        return shown;
    };
    std::vector<int> all;
    for (int i = 1; i <= kSamples; ++i) all.push_back(i);
    for (const auto& [rate, second] : {std::pair{24, 1}, {30, 3}, {60, 1}}) {
        std::vector<int> wanted = all;
        wanted[1] = second;
        EXPECT_EQ(pictures(rate), wanted) << rate;
    }
    all.erase(all.begin() + 1);
    for (const int64_t rate : {25, 50}) EXPECT_EQ(pictures(rate), all) << rate;
}

// The rate is cut to 23.97, and that is a frame every two minutes and three quarters.
TEST_F(RateTableTest, OfTheTrueFilmRateOneFrameIn3986IsLost) {
    std::vector<int> lost;
    const std::vector<Outcome> outcomes =
        RunFilter({.rate = 23.976, .steps = RegularSteps(24000, 1001, 12'000)});
    for (size_t i = 0; i < outcomes.size(); ++i) {
        if (outcomes[i].frames.empty()) lost.push_back(static_cast<int>(i) + 1);
    }
    // The second one is that of the start, where a slot ends before the sample does.
    EXPECT_EQ(lost, (std::vector<int>{2, 3986, 2 * 3986, 3 * 3986}));
}

}  // namespace
