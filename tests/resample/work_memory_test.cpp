// The work memory of kernels: who gets a shared piece, and that kernels write the same bytes with
// either sort, on many threads at a time.

#include "resample/work_memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "resample/axis_map.h"
#include "resample/kernel_table.h"
#include "tests/resample/support/held_memory.h"
#include "tests/resample/support/test_data.h"

namespace tavo::test {
namespace {

TEST(WorkMemory, PiecesAreSharedOutUntilNoneIsLeft) {
    std::vector<std::unique_ptr<WorkMemory>> all;
    std::set<uint8_t*> bytes;
    for (int32_t i = 0; i < WorkMemory::kSharedPieces + 2; ++i) {
        all.push_back(std::make_unique<WorkMemory>());
        WorkMemory& memory = *all.back();
        EXPECT_EQ(memory.IsShared(), i < WorkMemory::kSharedPieces);
        EXPECT_EQ(memory.Size(),
                  memory.IsShared() ? WorkMemory::kSharedBytes : WorkMemory::kOwnBytes);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(memory.Bytes()) % 64, 0u);
        EXPECT_TRUE(bytes.insert(memory.Bytes()).second);
        std::memset(memory.Bytes(), 0xff, static_cast<size_t>(memory.Size()));
    }
}

TEST(WorkMemory, APieceThatIsGivenBackIsTakenAgain) {
    auto first = std::make_unique<WorkMemory>();
    ASSERT_TRUE(first->IsShared());
    uint8_t* const bytes = first->Bytes();
    first.reset();
    EXPECT_EQ(WorkMemory().Bytes(), bytes);
}

TEST(WorkMemory, KernelsGiveBackWhatTheyTake) {
    FillKernelTable();
    AxisMap* map = BuildAxisMap(64, 48, 0);
    ASSERT_NE(map, nullptr);
    const std::vector<uint8_t> source(64 * 64 * 3, 7);
    std::vector<uint8_t> written(source.size());
    for (int row = kFirstScaleRow; row < kKernelRows; ++row) {
        for (int slot = 0; slot < kKernelSlots; ++slot) {
            // A multiple of all groups; none of the ratios reads beyond 64 columns.
            KernelTable[row][slot].scale(written.data(), source.data(), 36, 48, 64, 64, map, map);
            ASSERT_EQ(HeldMemory().Pieces(), size_t{WorkMemory::kSharedPieces})
                << row << "/" << slot;
        }
    }
    FreeAxisMap(map);
}

class Scaling {
  public:
    Scaling(int row, uint64_t seed)
        : kernel_(KernelTable[row][SlotAuto].scale),
          source_(MakeBytes(Pattern::Random, kSrcWidth * 4, kSrcHeight, seed)),
          xMap_(BuildAxisMap(kSrcWidth, kDstWidth, 0)),
          yMap_(BuildAxisMap(kSrcHeight, kDstHeight, 0)) {}
    ~Scaling() {
        FreeAxisMap(xMap_);
        FreeAxisMap(yMap_);
    }
    Scaling(const Scaling&) = delete;
    Scaling& operator=(const Scaling&) = delete;

    std::vector<uint8_t> Run() const {
        std::vector<uint8_t> written(kDstWidth * 4 * kDstHeight);
        kernel_(written.data(), source_.data(), kDstWidth, kDstHeight, kSrcWidth, kSrcHeight, xMap_,
                yMap_);
        return written;
    }

  private:
    static constexpr int32_t kSrcWidth = 2000, kSrcHeight = 8, kDstWidth = 1500, kDstHeight = 6;

    ScaleKernel kernel_;
    std::vector<uint8_t> source_;
    AxisMap* xMap_;
    AxisMap* yMap_;
};

TEST(WorkMemory, ThreadsBeyondThePiecesWriteTheSameBytes) {
    FillKernelTable();
    constexpr int kThreads = 2 * WorkMemory::kSharedPieces;
    constexpr int kRows[] = {RowBothYuy2, RowBothRgb24, RowBothPlanar, RowHorizontalUyvy};
    std::atomic<int> differences{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&differences, row = kRows[i % 4], i] {
            const Scaling scaling(row, static_cast<uint64_t>(i));
            const std::vector<uint8_t> expected = scaling.Run();
            for (int times = 0; times < 50; ++times) differences += scaling.Run() != expected;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(differences, 0);
    for (int i = 0; i < kThreads; ++i) {
        const Scaling scaling(kRows[i % 4], static_cast<uint64_t>(i));
        const std::vector<uint8_t> expected = scaling.Run();
        const HeldMemory held;
        EXPECT_EQ(scaling.Run(), expected);
    }
}

}  // namespace
}  // namespace tavo::test
