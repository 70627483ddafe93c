// The copies in every slot of their rows: every byte that they move, those past a row end included,
// and none besides.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "resample/copy_kernels.h"
#include "resample/kernel_table.h"
#include "tests/resample/oracle/copy_oracle.h"
#include "tests/resample/support/forced_level.h"
#include "tests/resample/support/test_data.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

constexpr uint8_t kUntouched = 0xa7;

// Both pictures are as long as the copy's own extent says and end, or begin, at a guard page.
testing::AssertionResult CopiesAt(CopyKernel kernel, CopyMember member, const CopyShape& shape,
                                  BufferGuard guard) {
    static GuardedBuffer dstBuffer;
    static GuardedBuffer srcBuffer;
    const std::string description = testing::PrintToString(shape.width) + "x" +
                                    testing::PrintToString(shape.height) + " at " +
                                    testing::PrintToString(shape.bitsPerPixel) + " bits";
    SetCurrentTrial(description.c_str());

    const size_t extent = CopyExtent(member, shape);
    const std::vector<uint8_t> source =
        MakeBytes(Pattern::Random, static_cast<int32_t>(extent), 1, extent);
    uint8_t* dst = dstBuffer.Place(extent, guard, kUntouched);
    uint8_t* src = srcBuffer.Place(extent, guard, 0);
    if (extent > 0) std::memcpy(src, source.data(), extent);
    std::vector<uint8_t> expected(extent, kUntouched);
    OracleCopy(member, expected.data(), source.data(), shape);

    const int32_t result = kernel(dst, src, shape.width, shape.height, shape.bitsPerPixel);
    const uint16_t tags = X87TagWord();

    const auto fail = [&] { return testing::AssertionFailure() << description << ": "; };
    if (tags != kEmptyTagWord) return fail() << "x87 registers in use (missing emms)";
    if (result != std::abs(shape.height)) return fail() << "returned " << result;
    if (!dstBuffer.Intact()) return fail() << "wrote beside the destination";
    if (!srcBuffer.Intact() || !std::equal(source.begin(), source.end(), src)) {
        return fail() << "wrote into the source";
    }
    for (size_t i = 0; i < extent; ++i) {
        if (dst[i] != expected[i]) {
            return fail() << "byte " << i << " of " << extent << " is " << int{dst[i]}
                          << ", expected " << int{expected[i]};
        }
    }
    return testing::AssertionSuccess();
}

void ExpectCopies(CopyKernel kernel, CopyMember member, int32_t width, int32_t height,
                  int32_t bitsPerPixel) {
    for (int32_t signedHeight : {height, -height}) {
        for (BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
            ASSERT_TRUE(CopiesAt(kernel, member, {width, signedHeight, bitsPerPixel}, guard));
        }
    }
}

// The copy that a slot of a copy row holds after a fill.
CopyMember MemberIn(int row, int slot, int level) {
    const bool portable = slot == 0 ? !LevelHasMmx(level) : slot == 1 || slot == 3 || slot == 6;
    if (row == RowCopyPlanar) return portable ? CopyMember::PlanePortable : CopyMember::PlaneMmx;
    return portable ? CopyMember::PackedPortable : CopyMember::PackedMmx;
}

// The processor's own row operations, unless a test chooses others.
class Copies : public testing::Test {
  protected:
    void SetUp() override { FillKernelTable(); }
};

constexpr int32_t kLongWidths[] = {63, 64, 65, 333, 352, 353, 640, 719, 720, 1279, 1280, 1920};

void ExpectCopiesOfAllSizes(CopyKernel kernel, CopyMember member, int32_t bitsPerPixel) {
    for (int32_t width = 1; width <= 40; ++width) {
        for (int32_t height : {1, 2, 3, 8}) {
            ExpectCopies(kernel, member, width, height, bitsPerPixel);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
    for (int32_t width : kLongWidths) {
        ExpectCopies(kernel, member, width, 7, bitsPerPixel);
        if (testing::Test::HasFatalFailure()) return;
    }
}

constexpr struct {
    const char* name;
    CopyKernel kernel;
    CopyMember member;
} kMembers[] = {
    {"CopyPlane_Portable", CopyPlane_Portable, CopyMember::PlanePortable},
    {"CopyPlane_MMX", CopyPlane_MMX, CopyMember::PlaneMmx},
    {"CopyPacked_Portable", CopyPacked_Portable, CopyMember::PackedPortable},
    {"CopyPacked_MMX", CopyPacked_MMX, CopyMember::PackedMmx},
};

TEST_F(Copies, AllSizesDepthsAndSigns) {
    for (int level : {GetCpuLevel(), 0}) {
        const ForcedLevel forced(level, 0);
        for (const auto& member : kMembers) {
            for (int32_t bitsPerPixel : {8, 16, 24}) {
                SCOPED_TRACE(testing::Message() << member.name << " at level " << level);
                ExpectCopiesOfAllSizes(member.kernel, member.member, bitsPerPixel);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_F(Copies, EverySlotAtEveryLevel) {
    for (int level : RunnableLevels()) {
        const ForcedLevel forced(level, 0);
        for (int row = RowCopyPlanar; row <= RowCopyRgb; ++row) {
            for (int slot = 0; slot < kKernelSlots; ++slot) {
                const CopyMember member = MemberIn(row, slot, level);
                const int32_t bitsPerPixel = row == RowCopyPlanar      ? 8
                                             : row == RowCopyPacked422 ? 16
                                                                       : 24;
                for (int32_t width : {1, 5, 8, 13, 24, 171, 172}) {
                    SCOPED_TRACE(testing::Message()
                                 << "row " << row << " slot " << slot << " level " << level);
                    ExpectCopies(KernelTable[row][slot].copy, member, width, 5, bitsPerPixel);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST_F(Copies, PlanesIgnoreTheBitsPerPixel) {
    for (int32_t bitsPerPixel : {0, -8, 32, INT32_MAX}) {
        ExpectCopies(CopyPlane_Portable, CopyMember::PlanePortable, 13, 3, bitsPerPixel);
        ExpectCopies(CopyPlane_MMX, CopyMember::PlaneMmx, 13, 3, bitsPerPixel);
    }
}

TEST_F(Copies, EmptyPicturesWriteNothing) {
    for (const auto& member : kMembers) {
        EXPECT_TRUE(CopiesAt(member.kernel, member.member, {16, 0, 16}, BufferGuard::kPageAfter));
        EXPECT_TRUE(CopiesAt(member.kernel, member.member, {0, 3, 16}, BufferGuard::kPageAfter));
    }
}

TEST_F(Copies, RowsOfWholeBlocksAreCopiedExactly) {
    for (int32_t width : {8, 16, 640}) {
        EXPECT_EQ(CopyExtent(CopyMember::PlaneMmx, {width, 3, 8}), static_cast<size_t>(width) * 3);
        ExpectCopies(CopyPlane_MMX, CopyMember::PlaneMmx, width, 3, 8);
        ExpectCopies(CopyPacked_MMX, CopyMember::PackedMmx, width, 3, 24);
    }
}

// Two rows of five bytes: 1 to 5 and 6 to 10, then six bytes that do not belong to the picture.
constexpr uint8_t kTwoRowsOfFive[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

TEST_F(Copies, BlocksSpillUpToSevenBytesPastTheLastRow) {
    uint8_t dst[16];
    std::memset(dst, kUntouched, sizeof dst);
    EXPECT_EQ(CopyPlane_MMX(dst, kTwoRowsOfFive, 5, 2, 8), 2);
    const uint8_t expected[16] = {1, 2,  3,  4,  5,  6,          7,          8,
                                  9, 10, 11, 12, 13, kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(std::memcmp(dst, expected, sizeof dst), 0);

    std::memset(dst, kUntouched, sizeof dst);
    EXPECT_EQ(CopyPlane_MMX(dst, kTwoRowsOfFive, 1, 1, 8), 1);
    EXPECT_EQ(std::memcmp(dst, kTwoRowsOfFive, 8), 0);
    EXPECT_EQ(dst[8], kUntouched);
}

TEST_F(Copies, ABottomUpRowIsNotSpoiledByWhatTheOneBelowItSpills) {
    uint8_t dst[16];
    std::memset(dst, kUntouched, sizeof dst);
    EXPECT_EQ(CopyPlane_MMX(dst, kTwoRowsOfFive, 5, -2, 8), 2);
    const uint8_t expected[16] = {6, 7, 8, 9, 10, 1,          2,          3,
                                  4, 5, 6, 7, 8,  kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(std::memcmp(dst, expected, sizeof dst), 0);
}

TEST_F(Copies, PortableOnesLeaveThePaddingAlone) {
    // Two pixels of three bytes: rows of six bytes, eight apart.
    uint8_t dst[16];
    std::memset(dst, kUntouched, sizeof dst);
    EXPECT_EQ(CopyPacked_Portable(dst, kTwoRowsOfFive, 2, 2, 24), 2);
    const uint8_t expected[16] = {1, 2,  3,  4,  5,  6,  kUntouched, kUntouched,
                                  9, 10, 11, 12, 13, 14, kUntouched, kUntouched};
    EXPECT_EQ(std::memcmp(dst, expected, sizeof dst), 0);
}

// How far a copy reaches past the picture is what its caller has to leave room for.
testing::AssertionResult SpillIsTold(int row, int slot, int32_t width, int32_t bitsPerPixel) {
    const CopyMember member = MemberIn(row, slot, GetCpuLevel());
    const auto extent = [&](int32_t rows) {
        return static_cast<int64_t>(CopyExtent(member, {width, rows, bitsPerPixel}));
    };
    const int64_t stride = extent(2) - extent(1);
    const int64_t spill = std::max<int64_t>(extent(4) - 4 * stride, 0);
    const int32_t told = CopySpill(SelectKernel(row, slot).copy, width, bitsPerPixel);
    if (told == spill) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "row " << row << " slot " << slot << " width " << width << " at " << bitsPerPixel
           << " bits: " << told << ", expected " << spill;
}

TEST_F(Copies, TheSpillIsToldBeforehand) {
    for (int row = RowCopyPlanar; row <= RowCopyRgb; ++row) {
        for (int slot = 0; slot < kKernelSlots; ++slot) {
            for (int32_t width = 1; width <= 70; ++width) {
                for (int32_t bitsPerPixel : {8, 16, 24}) {
                    ASSERT_TRUE(SpillIsTold(row, slot, width, bitsPerPixel));
                }
            }
        }
    }
}

}  // namespace
}  // namespace tavo::test
