// On a processor without MMX every kernel stays away from the MMX registers, those named after MMX
// included. The registers are shared with the x87 unit: a number left there survives only if
// nothing touches them. This sees what an emulator lets pass.

#include <gtest/gtest.h>

#include <vector>

#include "cpu/cpu_level.h"
#include "resample/axis_map.h"
#include "resample/kernel_table.h"
#include "tests/resample/support/test_data.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

#if TAVO_TEST_HAS_X87

constexpr int32_t kMarker = 4711;

void LeaveMarker() { asm volatile("fildl %0" : : "m"(kMarker) : "memory"); }

// True when the number is still the only one in the x87 registers; they are empty afterwards.
bool TakeMarker() {
    const uint16_t tags = X87TagWord();
    int32_t found = 0;
    if (tags != kEmptyTagWord) asm volatile("fistpl %0" : "=m"(found) : : "memory");
    const bool alone = X87TagWord() == kEmptyTagWord;
    asm volatile("emms" : : : "memory");
    return alone && found == kMarker;
}

class MmxFree : public testing::Test {
  protected:
    static constexpr int32_t kSrcWidth = 61, kSrcHeight = 23, kDstWidth = 83, kDstHeight = 17;

    void SetUp() override {
        xMap_ = BuildAxisMap(kSrcWidth, kDstWidth, 0);
        yMap_ = BuildAxisMap(kSrcHeight, kDstHeight, 0);
        ASSERT_TRUE(xMap_ && yMap_);
    }
    void TearDown() override {
        FreeAxisMap(xMap_);
        FreeAxisMap(yMap_);
        FillKernelTable();
    }

    // Room for four bytes per pixel in either picture.
    bool ScalerIsMmxFree(ScaleKernel kernel) {
        LeaveMarker();
        kernel(dst_.data(), src_.data(), kDstWidth, kDstHeight, kSrcWidth, kSrcHeight, xMap_,
               yMap_);
        return TakeMarker();
    }
    bool CopyIsMmxFree(CopyKernel kernel) {
        LeaveMarker();
        kernel(dst_.data(), src_.data(), kSrcWidth, kDstHeight, 24);
        return TakeMarker();
    }

    void ExpectTableIsMmxFree() {
        for (int row = 0; row < kKernelRows; ++row) {
            for (int slot = 0; slot < kKernelSlots; ++slot) {
                const KernelEntry entry = KernelTable[row][slot];
                if (row < kFirstScaleRow) {
                    EXPECT_TRUE(CopyIsMmxFree(entry.copy)) << row << ' ' << slot;
                } else if (entry.scale) {
                    EXPECT_TRUE(ScalerIsMmxFree(entry.scale)) << row << ' ' << slot;
                }
            }
        }
    }

    AxisMap* xMap_ = nullptr;
    AxisMap* yMap_ = nullptr;
    std::vector<uint8_t> src_ = MakeBytes(Pattern::Random, kSrcWidth * 4, kSrcHeight, 1);
    std::vector<uint8_t> dst_ = std::vector<uint8_t>(kDstWidth * kDstHeight * 4);
};

TEST_F(MmxFree, EverySlotAtALevelWithoutMmx) {
    for (int level : {0, 5, -1}) {
        FillKernelTable(level, 0);
        ExpectTableIsMmxFree();
    }
}

TEST_F(MmxFree, EverySlotWhenTheProcessorHasNone) {
    if (GetCpuLevel() != 0) GTEST_SKIP() << "this processor has MMX";
    FillKernelTable();
    ExpectTableIsMmxFree();
}

#if defined(__i386__)
// Without this the two above would prove nothing.
TEST_F(MmxFree, MembersForMmxDoTouchTheRegistersWhereThereAreSome) {
    if (GetCpuLevel() == 0) GTEST_SKIP() << "no MMX";
    constexpr int kMmxLevel = 1;  // wider sets leave these registers alone
    FillKernelTable(kMmxLevel, 0);
    EXPECT_FALSE(ScalerIsMmxFree(KernelTable[RowBothPlanar][SlotBilinearMmx].scale));
    EXPECT_FALSE(CopyIsMmxFree(KernelTable[RowCopyPlanar][SlotBilinearMmx].copy));
    EXPECT_TRUE(ScalerIsMmxFree(KernelTable[RowBothPlanar][SlotBilinear].scale));
}
#endif

#endif

}  // namespace
}  // namespace tavo::test
