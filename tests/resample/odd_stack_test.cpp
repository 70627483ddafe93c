// Kernels, copies and map building on a stack that is aligned to four bytes only.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "resample/axis_map.h"
#include "resample/copy_kernels.h"
#include "resample/kernel_table.h"
#include "resample/planar/planar_kernels.h"
#include "tests/resample/support/test_data.h"
#include "tests/support/odd_stack.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

constexpr uint32_t kOffsets[] = {0, 4, 8, 12};

TEST(OddStack, KernelsWriteTheSameBytes) {
    constexpr int32_t kSrcWidth = 61, kSrcHeight = 23, kDstWidth = 83, kDstHeight = 17;
    FillKernelTable();
    AxisMap* xMap = BuildAxisMap(kSrcWidth, kDstWidth, 0);
    AxisMap* yMap = BuildAxisMap(kSrcHeight, kDstHeight, 0);
    ASSERT_TRUE(xMap && yMap);
    const std::vector<uint8_t> source = MakeBytes(Pattern::Random, kSrcWidth, kSrcHeight, 21);
    for (ScaleKernel kernel : {ScaleNearest_Planar_Portable, ScaleNearest_Planar_MMX,
                               ScaleBilinear_Planar_Portable, ScaleBilinear_Planar_MMX}) {
        std::vector<uint8_t> expected(kDstWidth * kDstHeight);
        kernel(expected.data(), source.data(), kDstWidth, kDstHeight, kSrcWidth, kSrcHeight, xMap,
               yMap);
        for (uint32_t offset : kOffsets) {
            std::vector<uint8_t> written(expected.size());
            EXPECT_EQ(CallOnOddStack(offset, kernel, written.data(), source.data(), kDstWidth,
                                     kDstHeight, kSrcWidth, kSrcHeight, xMap, yMap),
                      kDstHeight);
            EXPECT_EQ(X87TagWord(), kEmptyTagWord);
            EXPECT_EQ(written, expected);
        }
    }
    FreeAxisMap(xMap);
    FreeAxisMap(yMap);
}

TEST(OddStack, CopiesWriteTheSameBytes) {
    FillKernelTable();
    const std::vector<uint8_t> source = MakeBytes(Pattern::Random, 100, 10, 22);
    for (CopyKernel kernel :
         {CopyPlane_Portable, CopyPlane_MMX, CopyPacked_Portable, CopyPacked_MMX}) {
        std::vector<uint8_t> expected(source.size());
        kernel(expected.data(), source.data(), 31, 9, 24);
        for (uint32_t offset : kOffsets) {
            std::vector<uint8_t> written(source.size());
            EXPECT_EQ(CallOnOddStack(offset, kernel, written.data(), source.data(), 31, 9, 24), 9);
            EXPECT_EQ(X87TagWord(), kEmptyTagWord);
            EXPECT_EQ(written, expected);
        }
    }
}

TEST(OddStack, MapsAreTheSame) {
    AxisMap* expected = BuildAxisMap(720, 480, 0);
    ASSERT_NE(expected, nullptr);
    for (uint32_t offset : kOffsets) {
        AxisMap* map = CallOnOddStack(offset, BuildAxisMap, 720, 480, 0);
        ASSERT_NE(map, nullptr);
        EXPECT_EQ(std::memcmp(map->indices, expected->indices, 480 * sizeof(int32_t)), 0);
        EXPECT_EQ(std::memcmp(map->weights, expected->weights, 480), 0);
        FreeAxisMap(map);
    }
    FreeAxisMap(expected);
}

TEST(OddStack, TheTableIsFilled) {
    KernelEntry before[kKernelRows][kKernelSlots];
    FillKernelTable();
    std::memcpy(static_cast<void*>(before), KernelTable, sizeof before);
    for (uint32_t offset : kOffsets) {
        CallOnOddStack(reinterpret_cast<const void*>(static_cast<void (*)()>(FillKernelTable)), {},
                       offset);
        EXPECT_EQ(std::memcmp(before, KernelTable, sizeof before), 0);
    }
}

}  // namespace
}  // namespace tavo::test
