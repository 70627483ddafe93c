// Scales one raw picture with one kernel of the table: for pictures that show what a kernel does,
// and for trying one by hand.
// Usage: kernel_picture FAMILY SLOT AXES WIDTHxHEIGHT WIDTHxHEIGHT [BEFORE [LEVEL]]
//            <SOURCE >DESTINATION
//        kernel_picture FAMILY AXES LEVEL
//   FAMILY    planar, YUY2, UYVY, RGB24, RGB555 or RGB565
//   SLOT      0 to 8: "AUTO" to "Bi-Linear SSE"
//   AXES      both, width, height, 640, 720 or copy: which of the family's kernels for that slot
//   BEFORE    what all bytes of the destination are at first, and 64 behind it, which are then
//             written too
//   LEVEL     of the processor that the automatic slots are filled for, 0 to 4: this one's if none
// Rows lie as in a frame, with their padding; the first row is the upper one. The second form says
// which of the slots 3 to 8 "AUTO", "Nearest Neighbor AUTO" and "Bi-Linear AUTO" stand for.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "bench/workloads.h"
#include "resample/axis_map.h"

namespace tavo::bench {
namespace {

constexpr int32_t kMaxSide = 16384;
// What some kernels read and write past a picture, and more.
constexpr size_t kSpill = 64;

const FamilyInfo* FindFamily(std::string_view name) {
    for (const FamilyInfo& info : kFamilies) {
        if (name == info.name) return &info;
    }
    return nullptr;
}

// -1 where there is no such row.
int32_t FindRow(const FamilyInfo& family, std::string_view axes) {
    if (axes == "both") return family.both;
    if (axes == "width") return family.horizontal;
    if (axes == "height") return family.vertical;
    if (axes == "640") return family.h640To480;
    if (axes == "720") return family.h720To480;
    if (axes == "copy") return family.copy;
    return -1;
}

bool ReadSize(const char* text, int32_t& width, int32_t& height) {
    char rest = 0;
    return std::sscanf(text, "%dx%d%c", &width, &height, &rest) == 2 && width > 0 && height > 0 &&
           width <= kMaxSide && height <= kMaxSide;
}

int Fail(const char* reason) {
    std::fprintf(stderr, "kernel_picture: %s\n", reason);
    return 1;
}

// The height stays where the kernel does not change it, and so does the width.
bool FitsAxes(std::string_view axes, const Sizes& sizes) {
    if (axes == "both") return true;
    if (axes == "copy") return sizes.Mode() == AxisMode::Copy;
    if (axes == "height") return sizes.srcWidth == sizes.dstWidth;
    if (sizes.srcHeight != sizes.dstHeight) return false;
    if (axes == "640") return sizes.srcWidth % 8 == 0 && sizes.dstWidth == sizes.srcWidth / 4 * 3;
    if (axes == "720") return sizes.srcWidth % 6 == 0 && sizes.dstWidth == sizes.srcWidth / 3 * 2;
    return true;
}

void FillTable(const char* level) {
    if (level == nullptr) {
        FillKernelTable();
    } else {
        FillKernelTable(std::atoi(level), 0);
    }
}

int ShowSlots(const FamilyInfo& family, std::string_view axes, const char* level) {
    const int32_t row = FindRow(family, axes);
    if (row < kFirstScaleRow) return Fail("no such scaler");
    FillTable(level);
    for (int32_t automatic = SlotAuto; automatic < SlotNearest; ++automatic) {
        int32_t slot = SlotNearest;
        while (SelectKernel(row, slot).scale != SelectKernel(row, automatic).scale) ++slot;
        std::printf("%d\n", slot);
    }
    return 0;
}

int Run(int argc, char** argv) {
    if (argc != 4 && (argc < 6 || argc > 8)) {
        return Fail("wants FAMILY SLOT AXES WIDTHxHEIGHT WIDTHxHEIGHT, or FAMILY AXES LEVEL");
    }
    const FamilyInfo* family = FindFamily(argv[1]);
    if (family == nullptr) return Fail("there is no such family");
    if (argc == 4) return ShowSlots(*family, argv[2], argv[3]);
    const int32_t row = FindRow(*family, argv[3]);
    const int32_t slot = std::atoi(argv[2]);
    if (row < 0 || slot < SlotAuto || slot > SlotBilinearSse) return Fail("no such kernel");
    Sizes sizes{};
    if (!ReadSize(argv[4], sizes.srcWidth, sizes.srcHeight) ||
        !ReadSize(argv[5], sizes.dstWidth, sizes.dstHeight) || !FitsAxes(argv[3], sizes)) {
        return Fail("the kernel cannot do these sizes");
    }
    if (family->group == FamilyGroup::Packed422 && (sizes.srcWidth | sizes.dstWidth) & 1) {
        return Fail("packed 4:2:2 wants even widths");
    }
    const bool showsSpill = argc > 6;
    const int before = showsSpill ? std::atoi(argv[6]) : 0;
    const size_t srcBytes = size_t(family->Stride(sizes.srcWidth)) * sizes.srcHeight;
    const size_t dstBytes = size_t(family->Stride(sizes.dstWidth)) * sizes.dstHeight;
    std::vector<uint8_t> src(srcBytes + kSpill);
    std::vector<uint8_t> dst(dstBytes + kSpill, static_cast<uint8_t>(before));
    const AxisMapPtr xMap(BuildAxisMap(sizes.srcWidth, sizes.dstWidth, 0));
    const AxisMapPtr yMap(BuildAxisMap(sizes.srcHeight, sizes.dstHeight, 0));
    if (!xMap || !yMap) return Fail("out of memory");
    if (std::fread(src.data(), 1, srcBytes, stdin) != srcBytes) return Fail("no whole source");
    FillTable(argc > 7 ? argv[7] : nullptr);
    const KernelEntry kernel = SelectKernel(row, slot);
    if (family->IsCopy(row)) {
        kernel.copy(dst.data(), src.data(), sizes.dstWidth, sizes.dstHeight, family->bitsPerPixel);
    } else {
        kernel.scale(dst.data(), src.data(), sizes.dstWidth, sizes.dstHeight, sizes.srcWidth,
                     sizes.srcHeight, xMap.get(), yMap.get());
    }
    const size_t shown = showsSpill ? dst.size() : dstBytes;
    return std::fwrite(dst.data(), 1, shown, stdout) == shown ? 0 : Fail("cannot write");
}

}  // namespace
}  // namespace tavo::bench

int main(int argc, char** argv) { return tavo::bench::Run(argc, argv); }
