// Making filters: each looks at the processor anew, from whatever thread.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include "tests/filter/support/filter_rig.h"

using namespace tavo_test;

namespace {

using ConstructionTest = FilterTest;

TEST_F(ConstructionTest, ThreadsMayConstructAtOnce) {
    constexpr int kThreads = 4;
    constexpr int kFilters = 25;
    std::atomic<int> made = 0;
    TheModule();
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&made] {
            for (int filter = 0; filter < kFilters; ++filter) {
                if (CreateFilter()) ++made;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(made, kThreads * kFilters);
}

// Told, not judged: a busy machine takes as long as it likes.
TEST_F(ConstructionTest, TellsHowLongItTakes) {
    constexpr int kFilters = 101;
    using Clock = std::chrono::steady_clock;
    TheModule();
    std::vector<double> milliseconds;
    for (int i = 0; i < kFilters; ++i) {
        const auto start = Clock::now();
        const ComPtr<IBaseFilter> filter = CreateFilter();
        const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
        ASSERT_TRUE(filter);
        milliseconds.push_back(elapsed.count());
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    printf("construction: %.2f ms least, %.2f ms median, %.2f ms most of %d\n",
           milliseconds.front(), milliseconds[kFilters / 2], milliseconds.back(), kFilters);
}

}  // namespace
