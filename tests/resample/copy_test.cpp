// The copies in every slot of their rows: every byte that they move, those past a row end included,
// and none besides.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "resample/copy_kernels.h"
#include "resample/kernel_table.h"
#include "tests/resample/support/expected_table.h"
#include "tests/resample/support/forced_level.h"
#include "tests/resample/support/kernel_caller.h"
#include "tests/resample/support/test_data.h"

namespace tavo::test {
namespace {

constexpr uint8_t kUntouched = 0xa7;

struct CopyShape {
    Format format;
    int32_t width;
    int32_t height;
    int32_t bitsPerPixel;
};

std::string Describe(const CopyShape& shape) {
    return std::to_string(shape.width) + "x" + std::to_string(shape.height) + " at " +
           std::to_string(shape.bitsPerPixel) + " bits";
}

// Blocks reach this far beyond the last row.
constexpr int32_t kBlock = 8;

Source RandomSource(const CopyShape& shape) {
    const int32_t rows = std::abs(shape.height);
    const int32_t bytes = StrideOf(shape.format, shape.width) * rows + kBlock;
    return {shape.format, shape.width, rows,
            MakeBytes(Pattern::Random, bytes, 1, static_cast<uint64_t>(bytes))};
}

Canvas CanvasOf(Oracle oracle, const CopyShape& shape, const Source& source) {
    Canvas canvas(shape.format, shape.width, shape.height);
    oracle(canvas, source, Maps{});
    return canvas;
}

// Both pictures are as long as what the copy moves and end, or begin, at a guard page.
testing::AssertionResult CopiesAt(const ExpectedCopy& copy, const CopyShape& shape,
                                  BufferGuard guard) {
    static KernelCaller caller;
    const std::string description = Describe(shape);
    SetCurrentTrial(description.c_str());
    Source source = RandomSource(shape);
    const Expectation expected(CanvasOf(copy.oracle, shape, source));
    source.bytes.resize(expected.Size());
    const Maps none;
    caller.Place(source, none, guard);
    const std::string wrong =
        caller.Run(copy.kernel, expected, shape.width, shape.height, shape.bitsPerPixel, 0);
    if (wrong.empty()) return testing::AssertionSuccess();
    return testing::AssertionFailure() << description << ": " << wrong;
}

void ExpectCopies(const ExpectedCopy& copy, const CopyShape& shape) {
    for (int32_t sign : {1, -1}) {
        for (BufferGuard guard : {BufferGuard::kPageAfter, BufferGuard::kPageBefore}) {
            const CopyShape turned = {shape.format, shape.width, shape.height * sign,
                                      shape.bitsPerPixel};
            ASSERT_TRUE(CopiesAt(copy, turned, guard)) << copy.name;
        }
    }
}

const CopyRow& kPlaneCopies = kCopyRows[RowCopyPlanar];
const CopyRow& kPackedCopies = kCopyRows[RowCopyPacked422];

// Copies of planes know one format; the others go by the bits per pixel.
Format FormatOf(int row, int32_t bitsPerPixel) {
    if (row == RowCopyPlanar) return Format::Planar;
    if (bitsPerPixel == 8) return Format::Words8;
    return bitsPerPixel == 16 ? Format::Yuy2 : Format::Rgb24;
}

// The processor's own row operations, unless a test chooses others.
class Copies : public testing::Test {
  protected:
    void SetUp() override { FillTableForThisMachine(); }
};

constexpr int32_t kLongWidths[] = {63, 64, 65, 333, 352, 353, 640, 719, 720, 1279, 1280, 1920};

void ExpectCopiesOfAllSizes(const ExpectedCopy& copy, Format format, int32_t bitsPerPixel) {
    for (int32_t width = 1; width <= 40; ++width) {
        for (int32_t height : {1, 2, 3, 8}) {
            ExpectCopies(copy, {format, width, height, bitsPerPixel});
            if (testing::Test::HasFatalFailure()) return;
        }
    }
    for (int32_t width : kLongWidths) {
        ExpectCopies(copy, {format, width, 7, bitsPerPixel});
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST_F(Copies, AllSizesDepthsAndSigns) {
    for (int level : {OwnLevel(), 0}) {
        const ForcedLevel forced(level, 0);
        for (const CopyRow* row : {&kPlaneCopies, &kPackedCopies}) {
            for (const ExpectedCopy* copy : {&row->portable, &row->mmx}) {
                for (int32_t bitsPerPixel : {8, 16, 24}) {
                    SCOPED_TRACE(testing::Message() << "level " << level);
                    ExpectCopiesOfAllSizes(*copy, FormatOf(row->row, bitsPerPixel), bitsPerPixel);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

void ExpectSlotCopies(const CopyRow& row, int slot, int level) {
    const int32_t bitsPerPixel = row.row == RowCopyPlanar      ? 8
                                 : row.row == RowCopyPacked422 ? 16
                                                               : 24;
    ExpectedCopy copy = row.InSlot(slot, level);
    copy.kernel = KernelTable[row.row][slot].copy;
    for (int32_t width : {1, 5, 8, 13, 24, 171, 172}) {
        SCOPED_TRACE(testing::Message()
                     << "row " << row.row << " slot " << slot << " level " << level);
        ExpectCopies(copy, {FormatOf(row.row, bitsPerPixel), width, 5, bitsPerPixel});
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST_F(Copies, EverySlotAtEveryLevel) {
    for (int level : RunnableLevels()) {
        const ForcedLevel forced(level, 0);
        for (const CopyRow& row : kCopyRows) {
            for (int slot = 0; slot < kKernelSlots; ++slot) {
                ExpectSlotCopies(row, slot, level);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_F(Copies, PlanesIgnoreTheBitsPerPixel) {
    for (int32_t bitsPerPixel : {0, -8, 32, INT32_MAX}) {
        ExpectCopies(kPlaneCopies.portable, {Format::Planar, 13, 3, bitsPerPixel});
        ExpectCopies(kPlaneCopies.mmx, {Format::Planar, 13, 3, bitsPerPixel});
    }
}

TEST_F(Copies, EmptyPicturesWriteNothing) {
    for (const CopyRow* row : {&kPlaneCopies, &kPackedCopies}) {
        const Format format = FormatOf(row->row, 16);
        for (const ExpectedCopy* copy : {&row->portable, &row->mmx}) {
            EXPECT_TRUE(CopiesAt(*copy, {format, 16, 0, 16}, BufferGuard::kPageAfter));
            EXPECT_TRUE(CopiesAt(*copy, {format, 0, 3, 16}, BufferGuard::kPageAfter));
        }
    }
}

// How many bytes a copy touches, in either picture, from its first byte on.
size_t ExtentOf(Oracle oracle, const CopyShape& shape) {
    return CanvasOf(oracle, shape, RandomSource(shape)).Size();
}

TEST_F(Copies, RowsOfWholeBlocksAreCopiedExactly) {
    for (int32_t width : {8, 16, 640}) {
        const CopyShape plane = {Format::Planar, width, 3, 8};
        EXPECT_EQ(ExtentOf(kPlaneCopies.mmx.oracle, plane), static_cast<size_t>(width) * 3);
        ExpectCopies(kPlaneCopies.mmx, plane);
        ExpectCopies(kPackedCopies.mmx, {Format::Rgb24, width, 3, 24});
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
testing::AssertionResult SpillIsTold(const CopyRow& row, int slot, int32_t width,
                                     int32_t bitsPerPixel) {
    const Oracle oracle = row.InSlot(slot, OwnLevel()).oracle;
    const auto extent = [&](int32_t rows) {
        return static_cast<int64_t>(
            ExtentOf(oracle, {FormatOf(row.row, bitsPerPixel), width, rows, bitsPerPixel}));
    };
    const int64_t stride = extent(2) - extent(1);
    const int64_t spill = std::max<int64_t>(extent(4) - 4 * stride, 0);
    const int32_t told = CopySpill(SelectKernel(row.row, slot).copy, width, bitsPerPixel);
    if (told == spill) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "row " << row.row << " slot " << slot << " width " << width << " at " << bitsPerPixel
           << " bits: " << told << ", expected " << spill;
}

TEST_F(Copies, TheSpillIsToldBeforehand) {
    for (const CopyRow& row : kCopyRows) {
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
