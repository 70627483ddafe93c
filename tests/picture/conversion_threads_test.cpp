// Filters are made and frames are scaled on many threads at once, as in a host with several graphs:
// every frame must be the one that a single thread makes. The build `tsan` runs this too.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "picture/conversion.h"
#include "regulator/frame_duration.h"
#include "regulator/time_regulator.h"
#include "resample/kernel_table.h"
#include "resample/work_memory.h"
#include "tests/picture/support/methods.h"
#include "tests/support/rounds.h"

using namespace tavo;
using tavo_test::kMethods;
using tavo_test::Rounds;

namespace {

using Bytes = std::vector<uint8_t>;

// More than there are pieces of work memory: some kernels go without.
constexpr int kThreads = WorkMemory::kSharedPieces + 4;
// What a table holds that was filled for another processor: it is not what this one is given.
constexpr int kOtherLevel = 0;
constexpr int kOtherSpeedClass = -1;

// Runs work(number) on all threads, which wait for the last one to be there.
void RunOnThreads(const std::function<void(int)>& work) {
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            work(number);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

// Pictures of a size and format of the thread's own.
std::pair<Picture, Picture> PicturesOf(int number) {
    const auto formats = AllPictureFormats();
    const PictureFormat& format = formats[static_cast<size_t>(number) % formats.size()];
    const Picture source = {&format, 48 + 2 * number, 36, format.bitsPerPixel};
    const bool isWidthSame = number % 3 == 0;
    return {source, {&format, isWidthSame ? source.width : 62, 30 + number, format.bitsPerPixel}};
}

// The frames of a stream by all methods, one after the other. All that a filter does from its
// construction on.
Bytes FramesOf(int number) {
    const auto [source, output] = PicturesOf(number);
    const auto conversion = Conversion::Build(source, output);
    if (!conversion) return {};
    Bytes from(static_cast<size_t>(KernelBytes(source)));
    for (size_t i = 0; i < from.size(); ++i) from[i] = static_cast<uint8_t>(i * i >> 3);
    Bytes to(conversion->OutputPictureBytes());
    Bytes frames;
    for (const int32_t method : kMethods) {
        if (!conversion->Scale({to.data(), to.size()}, {from.data(), from.size()}, method))
            return {};
        frames.insert(frames.end(), to.begin(), to.end());
    }
    return frames;
}

// The end of the last slot of a regulated stream, and how many there were.
std::pair<int64_t, int> SlotsOf(int number) {
    TimeRegulator regulator;
    const int64_t duration = FrameDuration(23.976 + number);
    int slots = 0;
    for (int64_t start = 0; start < 100'000'000; start += 400'000) {
        while (regulator.HasSlotIn({start, start + 400'000})) {
            regulator.BeginSlot({start, start + 400'000}, duration);
            if (regulator.Branch() == FrameBranch::ScaleAndKeep) regulator.MarkPictureKept();
            regulator.EndSlot(duration);
            ++slots;
        }
    }
    return {regulator.Slot().end, slots};
}

class ConversionThreadsTest : public testing::Test {
  protected:
    ConversionThreadsTest() {
        FillKernelTable();
        for (int number = 0; number < kThreads; ++number) {
            frames.push_back(FramesOf(number));
            slots.push_back(SlotsOf(number));
            EXPECT_FALSE(frames.back().empty());
        }
    }
    ~ConversionThreadsTest() override { FillKernelTable(); }

    std::vector<Bytes> frames;
    std::vector<std::pair<int64_t, int>> slots;
};

// All fill the table that the others read, and find it filled.
TEST_F(ConversionThreadsTest, FiltersThatAreMadeTogetherScaleRight) {
    for (int round = 0; round < Rounds(5); ++round) {
        FillKernelTable(kOtherLevel, kOtherSpeedClass);
        std::atomic<int> wrong{0};
        RunOnThreads([&](int number) {
            FillKernelTable();
            wrong += FramesOf(number) != frames[static_cast<size_t>(number)];
        });
        ASSERT_EQ(wrong, 0) << "round " << round;
    }
}

TEST_F(ConversionThreadsTest, StreamsGoOnWhileFiltersAreMade) {
    std::atomic<int> wrong{0};
    const int rounds = Rounds(10);
    RunOnThreads([&](int number) {
        const auto at = static_cast<size_t>(number);
        for (int round = 0; round < rounds; ++round) {
            if (number % 4 == 0) FillKernelTable();
            wrong += FramesOf(number) != frames[at] || SlotsOf(number) != slots[at];
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
