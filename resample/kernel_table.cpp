// The dispatch table and the rules that fill its automatic slots.

#include "resample/kernel_table.h"

#include <atomic>
#include <initializer_list>

#include "cpu/cpu_level.h"
#include "resample/copy_kernels.h"
#include "resample/packed422/packed422_kernels.h"
#include "resample/planar/planar_kernels.h"
#include "resample/rgb16/rgb16_kernels.h"
#include "resample/rgb24/rgb24_kernels.h"
#include "resample/row_ops/instruction_sets.h"
#include "settings/vantrel_settings.h"

namespace tavo {

// Each row in three lines: the automatic slots, which are filled at start-up; nearest neighbour;
// and bilinear. Slots left to right within them: plain, MMX, SSE.
// clang-format off
KernelEntry KernelTable[kKernelRows][kKernelSlots] = {
// RowCopyPlanar
    {{}, CopyPlane_Portable, CopyPlane_MMX,
     CopyPlane_Portable, CopyPlane_MMX, CopyPlane_MMX,
     CopyPlane_Portable, CopyPlane_MMX, CopyPlane_MMX},
// RowCopyPacked422
    {{}, CopyPacked_Portable, CopyPacked_MMX,
     CopyPacked_Portable, CopyPacked_MMX, CopyPacked_MMX,
     CopyPacked_Portable, CopyPacked_MMX, CopyPacked_MMX},
// RowCopyRgb
    {{}, CopyPacked_Portable, CopyPacked_MMX,
     CopyPacked_Portable, CopyPacked_MMX, CopyPacked_MMX,
     CopyPacked_Portable, CopyPacked_MMX, CopyPacked_MMX},
// RowVerticalUyvy
    {{}, {}, {},
     ScaleNearestV_YUY2_Portable,  ScaleNearestV_YUY2_MMX,  ScaleNearestV_YUY2_MMX,
     ScaleBilinearV_UYVY_Portable, ScaleBilinearV_YUY2_MMX, ScaleBilinearV_YUY2_SSE},
// RowVerticalYuy2
    {{}, {}, {},
     ScaleNearestV_YUY2_Portable,  ScaleNearestV_YUY2_MMX,  ScaleNearestV_YUY2_MMX,
     ScaleBilinearV_YUY2_Portable, ScaleBilinearV_YUY2_MMX, ScaleBilinearV_YUY2_SSE},
// RowVerticalRgb565
    {{}, {}, {},
     ScaleNearestV_RGB16_Portable,   ScaleNearestV_RGB16_MMX,   ScaleNearestV_RGB16_MMX,
     ScaleBilinearV_RGB565_Portable, ScaleBilinearV_RGB565_MMX, ScaleBilinearV_RGB565_SSE},
// RowVerticalRgb555
    {{}, {}, {},
     ScaleNearestV_RGB16_Portable,   ScaleNearestV_RGB16_MMX,   ScaleNearestV_RGB16_MMX,
     ScaleBilinearV_RGB555_Portable, ScaleBilinearV_RGB555_MMX, ScaleBilinearV_RGB555_SSE},
// RowVerticalRgb24
    {{}, {}, {},
     ScaleNearestV_RGB24_Portable,  ScaleNearestV_RGB24_MMX,  ScaleNearestV_RGB24_MMX,
     ScaleBilinearV_RGB24_Portable, ScaleBilinearV_RGB24_MMX, ScaleBilinearV_RGB24_SSE},
// RowVerticalPlanar
    {{}, {}, {},
     ScaleNearestV_Planar_Portable,  ScaleNearestV_Planar_MMX,  ScaleNearestV_Planar_MMX,
     ScaleBilinearV_Planar_Portable, ScaleBilinearV_Planar_MMX, ScaleBilinearV_Planar_SSE},
// RowH720Uyvy
    {{}, {}, {},
     ScaleNearestH720To480_UYVY_Portable,  ScaleNearestH720To480_UYVY_MMX,  ScaleNearestH720To480_UYVY_MMX,
     ScaleBilinearH720To480_UYVY_Portable, ScaleBilinearH720To480_UYVY_MMX, ScaleBilinearH720To480_UYVY_SSE},
// RowH640Uyvy
    {{}, {}, {},
     ScaleNearestH640To480_UYVY_Portable,  ScaleNearestH640To480_UYVY_MMX,  ScaleNearestH640To480_UYVY_MMX,
     ScaleBilinearH640To480_UYVY_Portable, ScaleBilinearH640To480_UYVY_MMX, ScaleBilinearH640To480_UYVY_SSE},
// RowHorizontalUyvy
    {{}, {}, {},
     ScaleNearestH_UYVY_Portable,  ScaleNearestH_UYVY_MMX,  ScaleNearestH_UYVY_MMX,
     ScaleBilinearH_UYVY_Portable, ScaleBilinearH_UYVY_MMX, ScaleBilinearH_UYVY_SSE},
// RowH720Yuy2
    {{}, {}, {},
     ScaleNearestH720To480_YUY2_Portable,  ScaleNearestH720To480_YUY2_MMX,  ScaleNearestH720To480_YUY2_MMX,
     ScaleBilinearH720To480_YUY2_Portable, ScaleBilinearH720To480_YUY2_MMX, ScaleBilinearH720To480_YUY2_SSE},
// RowH640Yuy2
    {{}, {}, {},
     ScaleNearestH640To480_YUY2_Portable,  ScaleNearestH640To480_YUY2_MMX,  ScaleNearestH640To480_YUY2_MMX,
     ScaleBilinearH640To480_YUY2_Portable, ScaleBilinearH640To480_YUY2_MMX, ScaleBilinearH640To480_YUY2_SSE},
// RowHorizontalYuy2
    {{}, {}, {},
     ScaleNearestH_YUY2_Portable,  ScaleNearestH_YUY2_MMX,  ScaleNearestH_YUY2_MMX,
     ScaleBilinearH_YUY2_Portable, ScaleBilinearH_YUY2_MMX, ScaleBilinearH_YUY2_SSE},
// RowH720Rgb565
    {{}, {}, {},
     ScaleNearestH720To480_RGB16_Portable,   ScaleNearestH720To480_RGB16_MMX,   ScaleNearestH720To480_RGB16_MMX,
     ScaleBilinearH720To480_RGB565_Portable, ScaleBilinearH720To480_RGB565_MMX, ScaleBilinearH720To480_RGB565_SSE},
// RowH640Rgb565
    {{}, {}, {},
     ScaleNearestH640To480_RGB16_Portable,   ScaleNearestH640To480_RGB16_MMX,   ScaleNearestH640To480_RGB16_MMX,
     ScaleBilinearH640To480_RGB565_Portable, ScaleBilinearH640To480_RGB565_MMX, ScaleBilinearH640To480_RGB565_MMX},
// RowHorizontalRgb565
    {{}, {}, {},
     ScaleNearestH_RGB16_Portable,   ScaleNearestH_RGB16_MMX,   ScaleNearestH_RGB16_MMX,
     ScaleBilinearH_RGB565_Portable, ScaleBilinearH_RGB565_MMX, ScaleBilinearH_RGB565_SSE},
// RowH720Rgb555
    {{}, {}, {},
     ScaleNearestH720To480_RGB16_Portable,   ScaleNearestH720To480_RGB16_MMX,   ScaleNearestH720To480_RGB16_MMX,
     ScaleBilinearH720To480_RGB555_Portable, ScaleBilinearH720To480_RGB555_MMX, ScaleBilinearH720To480_RGB555_SSE},
// RowH640Rgb555
    {{}, {}, {},
     ScaleNearestH640To480_RGB16_Portable,   ScaleNearestH640To480_RGB16_MMX,   ScaleNearestH640To480_RGB16_MMX,
     ScaleBilinearH640To480_RGB555_Portable, ScaleBilinearH640To480_RGB555_MMX, ScaleBilinearH640To480_RGB555_MMX},
// RowHorizontalRgb555
    {{}, {}, {},
     ScaleNearestH_RGB16_Portable,   ScaleNearestH_RGB16_MMX,   ScaleNearestH_RGB16_MMX,
     ScaleBilinearH_RGB555_Portable, ScaleBilinearH_RGB555_MMX, ScaleBilinearH_RGB555_SSE},
// RowH720Rgb24
    {{}, {}, {},
     ScaleNearestH720To480_RGB24_Portable,  ScaleNearestH640To480_RGB24_MMX,  ScaleNearestH640To480_RGB24_MMX,  // Deliberate: the kernel of 640
     ScaleBilinearH720To480_RGB24_Portable, ScaleBilinearH720To480_RGB24_MMX, ScaleBilinearH720To480_RGB24_SSE},
// RowH640Rgb24
    {{}, {}, {},
     ScaleNearestH640To480_RGB24_Portable,  ScaleNearestH640To480_RGB24_MMX,  ScaleNearestH640To480_RGB24_MMX,
     ScaleBilinearH640To480_RGB24_Portable, ScaleBilinearH640To480_RGB24_MMX, ScaleBilinearH640To480_RGB24_MMX},
// RowHorizontalRgb24
    {{}, {}, {},
     ScaleNearestH_RGB24_Portable,  ScaleNearestH_RGB24_MMX,  ScaleNearestH_RGB24_MMX,
     ScaleBilinearH_RGB24_Portable, ScaleBilinearH_RGB24_MMX, ScaleBilinearH_RGB24_SSE},
// RowH720Planar
    {{}, {}, {},
     ScaleNearestH720To480_Planar_Portable,  ScaleNearestH720To480_Planar_MMX,  ScaleNearestH720To480_Planar_MMX,
     ScaleBilinearH720To480_Planar_Portable, ScaleBilinearH720To480_Planar_MMX, ScaleBilinearH720To480_Planar_SSE},
// RowH640Planar
    {{}, {}, {},
     ScaleNearestH640To480_Planar_Portable,  ScaleNearestH640To480_Planar_MMX,  ScaleNearestH640To480_Planar_MMX,
     ScaleBilinearH640To480_Planar_Portable, ScaleBilinearH640To480_Planar_MMX, ScaleBilinearH640To480_Planar_MMX},
// RowHorizontalPlanar
    {{}, {}, {},
     ScaleNearestH_Planar_Portable,  ScaleNearestH_Planar_MMX,  ScaleNearestH_Planar_MMX,
     ScaleBilinearH_Planar_Portable, ScaleBilinearH_Planar_MMX, ScaleBilinearH_Planar_MMX},
// RowBothUyvy
    {{}, {}, {},
     ScaleNearest_UYVY_Portable,  ScaleNearest_UYVY_MMX,  ScaleNearest_UYVY_MMX,
     ScaleBilinear_UYVY_Portable, ScaleBilinear_UYVY_MMX, ScaleBilinear_UYVY_SSE},
// RowBothYuy2
    {{}, {}, {},
     ScaleNearest_YUY2_Portable,  ScaleNearest_YUY2_MMX,  ScaleNearest_YUY2_MMX,
     ScaleBilinear_YUY2_Portable, ScaleBilinear_YUY2_MMX, ScaleBilinear_YUY2_SSE},
// RowBothRgb565
    {{}, {}, {},
     ScaleNearest_RGB16_Portable,   ScaleNearest_RGB16_MMX,   ScaleNearest_RGB16_MMX,
     ScaleBilinear_RGB565_Portable, ScaleBilinear_RGB565_MMX, ScaleBilinear_RGB565_SSE},
// RowBothRgb555
    {{}, {}, {},
     ScaleNearest_RGB16_Portable,   ScaleNearest_RGB16_MMX,   ScaleNearest_RGB16_MMX,
     ScaleBilinear_RGB555_Portable, ScaleBilinear_RGB555_MMX, ScaleBilinear_RGB555_SSE},
// RowBothRgb24
    {{}, {}, {},
     ScaleNearest_RGB24_Portable,  ScaleNearest_RGB24_MMX,  ScaleNearest_RGB24_MMX,
     ScaleBilinear_RGB24_Portable, ScaleBilinear_RGB24_MMX, ScaleBilinear_RGB24_SSE},
// RowBothPlanar
    {{}, {}, {},
     ScaleNearest_Planar_Portable,  ScaleNearest_Planar_MMX,  ScaleNearest_Planar_MMX,
     ScaleBilinear_Planar_Portable, ScaleBilinear_Planar_MMX, ScaleBilinear_Planar_MMX},
};
// clang-format on

namespace {

// Which slot's kernel each automatic slot receives.
struct FillRule {
    KernelSlot automatic;
    KernelSlot nearestAuto;
    KernelSlot bilinearAuto;
};

// clang-format off
//                                 AUTO             Nearest Neighbor AUTO  Bi-Linear AUTO
constexpr FillRule kSse          {SlotBilinearSse, SlotNearestMmx,        SlotBilinearSse};
constexpr FillRule kSseSlow      {SlotNearestMmx,  SlotNearestMmx,        SlotBilinearSse};
constexpr FillRule kMmx          {SlotBilinearMmx, SlotNearestMmx,        SlotBilinearMmx};
constexpr FillRule kMmxSlow      {SlotNearestMmx,  SlotNearestMmx,        SlotBilinearMmx};
constexpr FillRule kPortable     {SlotBilinear,    SlotNearest,           SlotBilinear};
constexpr FillRule kPortableSlow {SlotNearest,     SlotNearest,           SlotBilinear};
// clang-format on

constexpr int kMmxLevel = 1;
constexpr int kSseLevel = 2;

bool HasMmx(int cpuLevel) { return cpuLevel >= 1 && cpuLevel <= 4; }

// Levels 3 and 4 have MMX, and other instructions that no set here uses.
int LevelOfSets(int cpuLevel) {
    if (cpuLevel == kSseLevel) return kSseLevel;
    return HasMmx(cpuLevel) ? kMmxLevel : 0;
}

const FillRule& RuleFor(int row, int cpuLevel, int speedClass) {
    const bool slow = speedClass < 0;
    // Deliberate: these two rows keep portable kernels on every processor. Only explicit method
    // codes reach the faster ones.
    const bool keepsPortable = row == RowH720Uyvy || row == RowH720Yuy2;
    if (keepsPortable || !HasMmx(cpuLevel)) return slow ? kPortableSlow : kPortable;
    if (cpuLevel == kSseLevel) return slow ? kSseSlow : kSse;
    return slow ? kMmxSlow : kMmx;
}

struct MethodSlot {
    VantrelScaleMethod method;
    KernelSlot slot;
};
constexpr MethodSlot kMethodSlots[] = {
    {VantrelMethodAuto, SlotAuto},
    {VantrelMethodNearestAuto, SlotNearestAuto},
    {VantrelMethodBilinearAuto, SlotBilinearAuto},
    {VantrelMethodNearest, SlotNearest},
    {VantrelMethodNearestMmx, SlotNearestMmx},
    {VantrelMethodNearestSse, SlotNearestSse},
    {VantrelMethodBilinear, SlotBilinear},
    {VantrelMethodBilinearMmx, SlotBilinearMmx},
    {VantrelMethodBilinearSse, SlotBilinearSse},
};

// Several threads may fill the table at the same time, and read it: each entry is written as a
// whole. Nothing else depends on it, so that no order is needed.
template <typename Kernel>
void Set(Kernel& entry, Kernel kernel) {
    std::atomic_ref<Kernel>(entry).store(kernel, std::memory_order_relaxed);
}

template <typename Kernel>
Kernel Get(Kernel& entry) {
    return std::atomic_ref<Kernel>(entry).load(std::memory_order_relaxed);
}

// `from` is a slot that never changes.
void SetScaler(int row, KernelSlot slot, KernelSlot from) {
    Set(KernelTable[row][slot].scale, KernelTable[row][from].scale);
}

void SetCopy(int row, KernelSlot slot, KernelSlot from) {
    Set(KernelTable[row][slot].copy, KernelTable[row][from].copy);
}

}  // namespace

InstructionSet WidestSet(int cpuLevel) {
    const int level = LevelOfSets(cpuLevel);
    InstructionSet widest = InstructionSet::Portable;
    for (const InstructionSetInfo& info : InstructionSets()) {
        // For MMX the level decides, not canRun: a level can be forced.
        const bool levelSaysSo = info.set == InstructionSet::Mmx;
        if (info.cpuLevel <= level && (levelSaysSo || info.canRun())) widest = info.set;
    }
    return widest;
}

void FillKernelTable() {
    const int cpuLevel = GetCpuLevel();
    FillKernelTable(cpuLevel, CpuSpeedClass());
}

void FillKernelTable(int cpuLevel, int speedClass) {
    ChooseRowOps(WidestSet(cpuLevel));
    // Deliberate: of the copies only AUTO follows the processor. "Bi-Linear AUTO" moves blocks on
    // every level.
    for (int row = 0; row < kFirstScaleRow; ++row) {
        SetCopy(row, SlotAuto, HasMmx(cpuLevel) ? SlotNearestMmx : SlotNearest);
    }
    for (int row = kFirstScaleRow; row < kKernelRows; ++row) {
        const FillRule& rule = RuleFor(row, cpuLevel, speedClass);
        SetScaler(row, SlotAuto, rule.automatic);
        SetScaler(row, SlotNearestAuto, rule.nearestAuto);
        SetScaler(row, SlotBilinearAuto, rule.bilinearAuto);
    }
}

int32_t MethodToSlot(int32_t scaleMethod) {
    for (const MethodSlot& row : kMethodSlots) {
        if (row.method == scaleMethod) return row.slot;
    }
    return SlotAuto;
}

KernelEntry SelectKernel(int32_t row, int32_t slot) {
    KernelEntry& entry = KernelTable[row][slot];
    return row < kFirstScaleRow ? KernelEntry(Get(entry.copy)) : KernelEntry(Get(entry.scale));
}

int32_t CopySpill(CopyKernel kernel, int32_t width, int32_t bitsPerPixel) {
    const bool isPlane = kernel == CopyPlane_MMX;
    if (!isPlane && kernel != CopyPacked_MMX) return 0;
    const int32_t bytes = isPlane ? width : width * bitsPerPixel / 8;
    const int32_t stride = isPlane ? bytes : (bytes + 3) & ~3;
    const int32_t moved = (bytes + 7) & ~7;
    return moved - stride;
}

int32_t ScaleSpill(ScaleKernel kernel) {
    return kernel == ScaleBilinearH640To480_RGB24_Portable ? 1 : 0;
}

}  // namespace tavo
