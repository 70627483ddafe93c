// Which entry of the kernel table a conversion calls, and with what: it is given kernels
// that write their calls down.
#include <gtest/gtest.h>

#include <climits>
#include <utility>
#include <vector>

#include "picture/conversion.h"
#include "resample/kernel_table.h"
#include "tests/picture/support/known_format.h"

using namespace tavo;
using tavo_test::AllFormats;
using tavo_test::Format;
using tavo_test::KnownFormat;
using tavo_test::PixelFormat;

namespace {

struct Call {
    int row;
    int slot;
    uint8_t* dst;
    const uint8_t* src;
    int32_t dstWidth, dstHeight;
    int32_t srcWidth, srcHeight;  // of a copy: bits per pixel and 0
    const AxisMap* xMap;
    const AxisMap* yMap;
};

std::vector<Call> calls;

template <int Row, int Slot>
int32_t NoteScale(uint8_t* dst, const uint8_t* src, int32_t dstWidth, int32_t dstHeight,
                  int32_t srcWidth, int32_t srcHeight, const AxisMap* xMap, const AxisMap* yMap) {
    calls.push_back({Row, Slot, dst, src, dstWidth, dstHeight, srcWidth, srcHeight, xMap, yMap});
    return 0;
}

template <int Row, int Slot>
int32_t NoteCopy(uint8_t* dst, const uint8_t* src, int32_t width, int32_t height,
                 int32_t bitsPerPixel) {
    calls.push_back({Row, Slot, dst, src, width, height, bitsPerPixel, 0, nullptr, nullptr});
    return 0;
}

KernelEntry notes[kKernelRows][kKernelSlots];

KernelEntry SelectNote(int32_t row, int32_t slot) { return notes[row][slot]; }

template <int Row, int... Slots>
void FillRow(std::integer_sequence<int, Slots...>) {
    if constexpr (Row < kFirstScaleRow)
        ((notes[Row][Slots] = KernelEntry(NoteCopy<Row, Slots>)), ...);
    else
        ((notes[Row][Slots] = KernelEntry(NoteScale<Row, Slots>)), ...);
}

template <int... Rows>
void FillTable(std::integer_sequence<int, Rows...>) {
    (FillRow<Rows>(std::make_integer_sequence<int, kKernelSlots>()), ...);
}

class ConversionTest : public testing::Test {
  protected:
    ConversionTest() {
        FillTable(std::make_integer_sequence<int, kKernelRows>());
        calls.clear();
    }

    static Picture PictureOf(const PixelFormat& format, int width, int height, int bits = 0) {
        return {KnownFormat(format), width, height, bits ? bits : format.bits};
    }

    // Runs one frame and leaves its calls; the buffers stay where the calls point.
    bool Convert(const Picture& source, const Picture& output, int method) {
        calls.clear();
        conversion_ = Conversion::Build(source, output, SelectNote);
        EXPECT_TRUE(conversion_);
        source_.assign(static_cast<size_t>(FrameBytes(source)) + 8, 0);
        output_.assign(static_cast<size_t>(FrameBytes(output)) + 8, 0);
        return conversion_->Scale({output_.data(), output_.size()},
                                  {source_.data(), source_.size()}, method);
    }

    std::unique_ptr<Conversion> conversion_;
    std::vector<uint8_t> source_;
    std::vector<uint8_t> output_;
};

struct Rows {
    const char* format;
    int copy, vertical, horizontal720, horizontal640, horizontal, both;
};

constexpr Rows kRows[] = {
    {"YV12", 0, 8, 24, 25, 26, 32},   {"IYUV", 0, 8, 24, 25, 26, 32},
    {"I420", 0, 8, 24, 25, 26, 32},   {"YVU9", 0, 8, 24, 25, 26, 32},
    {"RGB24", 2, 7, 21, 22, 23, 31},  {"RGB555", 2, 6, 18, 19, 20, 30},
    {"RGB565", 2, 5, 15, 16, 17, 29}, {"YUY2", 1, 4, 12, 13, 14, 28},
    {"YVYU", 1, 4, 12, 13, 14, 28},   {"YUYV", 1, 4, 12, 13, 14, 28},
    {"UYVY", 1, 3, 9, 10, 11, 27},
};

TEST_F(ConversionTest, TheRowFollowsFromFormatAndChangeOfSize) {
    for (const Rows& rows : kRows) {
        const PixelFormat& format = Format(rows.format);
        const auto rowFor = [&](int fromWidth, int fromHeight, int toWidth, int toHeight) {
            EXPECT_TRUE(Convert(PictureOf(format, fromWidth, fromHeight),
                                PictureOf(format, toWidth, toHeight), 10));
            return calls.empty() ? -1 : calls[0].row;
        };
        SCOPED_TRACE(format.name);
        EXPECT_EQ(rowFor(640, 480, 480, 480), rows.horizontal640);
        EXPECT_EQ(rowFor(640, 480, 480, 360), rows.both);
        EXPECT_EQ(rowFor(720, 480, 480, 480), rows.horizontal720);
        EXPECT_EQ(rowFor(720, 480, 480, 360), rows.both);
        EXPECT_EQ(rowFor(640, 480, 482, 480), rows.horizontal);
        EXPECT_EQ(rowFor(642, 480, 480, 480), rows.horizontal);
        EXPECT_EQ(rowFor(480, 480, 640, 480), rows.horizontal);
        EXPECT_EQ(rowFor(64, 48, 64, 48), rows.horizontal) << "an explicit method never copies";
        EXPECT_EQ(rowFor(64, 48, 64, 96), rows.vertical);
        EXPECT_EQ(rowFor(64, 48, 64, 24), rows.vertical);
        EXPECT_EQ(rowFor(64, 48, 64, -48), rows.horizontal) << "heights are compared unsigned here";
        EXPECT_EQ(rowFor(64, -48, 64, 48), rows.vertical) << "and with the source's sign here";
        EXPECT_EQ(rowFor(64, -48, 64, -48), rows.vertical);
        EXPECT_EQ(rowFor(64, -48, 32, -48), rows.both);
        EXPECT_EQ(rowFor(640, -480, 480, 480), rows.both);
    }
}

TEST_F(ConversionTest, TheSlotFollowsFromTheMethod) {
    const Picture from = PictureOf(Format("RGB24"), 64, 48);
    const Picture to = PictureOf(Format("RGB24"), 32, 24);
    const std::pair<int, int> methods[] = {
        {0, 0}, {1, 1}, {2, 2}, {5, 3}, {6, 4},  {7, 5},  {10, 6}, {11, 7},      {12, 8},
        {3, 0}, {4, 0}, {8, 0}, {9, 0}, {13, 0}, {-1, 0}, {99, 0}, {INT_MAX, 0}, {INT_MIN, 0}};
    for (const auto& [method, slot] : methods) {
        EXPECT_TRUE(Convert(from, to, method));
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].slot, slot) << "method " << method;
    }
}

TEST_F(ConversionTest, AnUnchangedSizeIsCopiedByTheAutomaticMethodsOnly) {
    for (const Rows& rows : kRows) {
        const PixelFormat& format = Format(rows.format);
        const Picture picture = PictureOf(format, 64, 48);
        for (const int method : {0, 1, 2, 3, 4, 8, 9, 13, -1}) {
            EXPECT_TRUE(Convert(picture, picture, method));
            // The chroma planes go through a routine of their own, whatever the slot.
            ASSERT_EQ(calls.size(), 1u) << format.name;
            EXPECT_EQ(calls[0].row, rows.copy);
            EXPECT_EQ(calls[0].slot, method == 1 || method == 2 ? method : 0);
            EXPECT_EQ(calls[0].dst, output_.data());
            EXPECT_EQ(calls[0].src, source_.data());
            EXPECT_EQ(calls[0].dstWidth, 64);
            EXPECT_EQ(calls[0].dstHeight, 48);
            const bool isPlanar = format.layout == tavo_test::Layout::kPlanar;
            if (!isPlanar) {
                EXPECT_EQ(calls[0].srcWidth, format.bits);
            }
        }
        for (const int method : {5, 6, 7, 10, 11, 12}) {
            EXPECT_TRUE(Convert(picture, picture, method));
            EXPECT_EQ(calls.at(0).row, rows.horizontal);
        }
    }
}

TEST_F(ConversionTest, PackedAndRgbKernelsGetTheSizesWithTheirSigns) {
    EXPECT_TRUE(
        Convert(PictureOf(Format("RGB555"), 64, -48), PictureOf(Format("RGB555"), 32, -24), 5));
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].dst, output_.data());
    EXPECT_EQ(calls[0].src, source_.data());
    EXPECT_EQ(calls[0].dstWidth, 32);
    EXPECT_EQ(calls[0].dstHeight, -24);
    EXPECT_EQ(calls[0].srcWidth, 64);
    EXPECT_EQ(calls[0].srcHeight, -48);
    ASSERT_TRUE(calls[0].xMap && calls[0].yMap);
    EXPECT_EQ(calls[0].xMap->count, 32);
    EXPECT_EQ(calls[0].yMap->count, 24);
    EXPECT_EQ(calls[0].xMap->indices[31], 62);
    EXPECT_EQ(calls[0].yMap->indices[23], 46);
}

TEST_F(ConversionTest, PlanarKernelsGetThreePlanesInMemoryOrder) {
    for (const char* name : {"YV12", "IYUV", "I420", "YVU9"}) {
        const PixelFormat& format = Format(name);
        const int shift = format.chromaShift;
        for (const auto& [width, height] : {std::pair(64, 48), std::pair(37, 29)}) {
            EXPECT_TRUE(Convert(PictureOf(format, width, height), PictureOf(format, 100, 80), 5));
            ASSERT_EQ(calls.size(), 3u);
            const int luma = width * height;
            const int toLuma = 100 * 80;
            for (int plane = 0; plane < 3; ++plane) {
                const Call& call = calls[static_cast<size_t>(plane)];
                const int by = plane == 0 ? 0 : shift;
                EXPECT_EQ(call.dstWidth, 100 >> by);
                EXPECT_EQ(call.dstHeight, 80 >> by);
                EXPECT_EQ(call.srcWidth, width >> by);
                EXPECT_EQ(call.srcHeight, height >> by);
                const int part = (1 << shift) * (1 << shift);
                const int from = plane == 0 ? 0 : luma + (plane - 1) * (luma / part);
                const int to = plane == 0 ? 0 : toLuma + (plane - 1) * (toLuma / part);
                EXPECT_EQ(call.src - source_.data(), from) << name << " plane " << plane;
                EXPECT_EQ(call.dst - output_.data(), to) << name << " plane " << plane;
            }
        }
    }
}

// What makes it safe to let the kernels trust their maps.
TEST_F(ConversionTest, NoMapLeadsAKernelOutsideItsPlane) {
    for (const char* name : {"YV12", "YVU9", "RGB24", "YUY2"}) {
        const PixelFormat& format = Format(name);
        const int least = 1 << format.chromaShift;
        for (int from = least; from < least + 40; ++from) {
            for (int to = 2; to < 60; to += 2) {
                const Picture source = PictureOf(format, from, from + 3);
                const Picture output = PictureOf(format, to, to + 1);
                EXPECT_TRUE(Convert(source, output, 10));
                for (const Call& call : calls) {
                    ASSERT_GE(call.xMap->count, call.dstWidth);
                    ASSERT_GE(call.yMap->count, std::abs(call.dstHeight));
                    for (int i = 0; i < call.dstWidth; ++i) {
                        ASSERT_GE(call.xMap->indices[i], 0);
                        ASSERT_LT(call.xMap->indices[i], call.srcWidth) << from << " to " << to;
                    }
                    for (int i = 0; i < std::abs(call.dstHeight); ++i)
                        ASSERT_LT(call.yMap->indices[i], std::abs(call.srcHeight));
                }
            }
        }
    }
}

TEST_F(ConversionTest, BoundingAMapChangesNoEntryInsideThePlane) {
    EXPECT_TRUE(Convert(PictureOf(Format("YV12"), 37, 29), PictureOf(Format("YV12"), 90, 70), 10));
    ASSERT_EQ(calls.size(), 3u);
    for (int i = 0; i < calls[1].dstWidth; ++i) {
        const int shared = calls[0].xMap->indices[i];
        EXPECT_EQ(calls[1].xMap->indices[i], std::min(shared, calls[1].srcWidth - 1));
        EXPECT_EQ(calls[1].xMap->weights[i], calls[0].xMap->weights[i]);
    }
}

TEST_F(ConversionTest, ShortBuffersReachNoKernel) {
    for (const PixelFormat& format : AllFormats()) {
        for (const auto& [width, height] : {std::pair(64, 48), std::pair(32, 24)}) {
            const Picture from = PictureOf(format, 64, 48);
            const Picture to = PictureOf(format, width, height);
            for (const int method : {0, 10}) {
                EXPECT_TRUE(Convert(from, to, method));
                calls.clear();
                const auto need = static_cast<size_t>(FrameBytes(from));
                const auto give = static_cast<size_t>(FrameBytes(to));
                uint8_t* const in = source_.data();
                uint8_t* const out = output_.data();
                EXPECT_FALSE(conversion_->Scale({out, give - 1}, {in, need}, method));
                EXPECT_FALSE(conversion_->Scale({out, give}, {in, need - 1}, method));
                EXPECT_FALSE(conversion_->Scale({out, 0}, {in, 0}, method));
                EXPECT_FALSE(conversion_->Scale({nullptr, give}, {in, need}, method));
                EXPECT_FALSE(conversion_->Scale({out, give}, {nullptr, need}, method));
                EXPECT_TRUE(calls.empty());
                EXPECT_TRUE(conversion_->Scale({out, give}, {in, need}, method));
                EXPECT_FALSE(calls.empty());
            }
        }
    }
}

TEST_F(ConversionTest, AnEntryWithoutAKernelFailsTheFrame) {
    notes[RowBothRgb24][SlotBilinear] = {};
    EXPECT_FALSE(
        Convert(PictureOf(Format("RGB24"), 64, 48), PictureOf(Format("RGB24"), 32, 24), 10));
    EXPECT_TRUE(
        Convert(PictureOf(Format("RGB24"), 64, 48), PictureOf(Format("RGB24"), 32, 24), 11));
}

}  // namespace
