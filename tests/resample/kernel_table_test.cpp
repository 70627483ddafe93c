// What stands in the dispatch table before and after it is filled, and which method code selects
// which slot.

#include "resample/kernel_table.h"

#include <gtest/gtest.h>

#include <cstring>

#include "cpu/cpu_level.h"
#include "resample/copy_kernels.h"
#include "tests/resample/support/expected_table.h"
#include "tests/resample/support/forced_level.h"

namespace tavo::test {
namespace {

// Taken while the program is being initialised, before anything can have filled the table.
struct Snapshot {
    KernelEntry entries[kKernelRows][kKernelSlots];
    Snapshot() { std::memcpy(static_cast<void*>(entries), KernelTable, sizeof entries); }
};
const Snapshot initialTable;

void ExpectConstantSlots(const KernelEntry (&table)[kKernelRows][kKernelSlots]) {
    for (const CopyRow& row : kCopyRows) {
        for (int slot = 1; slot < kKernelSlots; ++slot) {
            EXPECT_EQ(table[row.row][slot].copy, row.InConstantSlot(slot).kernel)
                << "row " << row.row << " slot " << slot;
        }
    }
    for (const ScaleRow& row : kScaleRows) {
        for (int slot = 3; slot < kKernelSlots; ++slot) {
            EXPECT_EQ(table[row.row][slot].scale, row.InConstantSlot(slot).kernel)
                << "row " << row.row << " slot " << slot;
        }
    }
}

TEST(KernelTable, Has33RowsOf9Slots) {
    static_assert(sizeof KernelTable == 33 * 9 * sizeof(void (*)()));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(kCopyRows[i].row, i);
    for (int i = 0; i < 30; ++i) EXPECT_EQ(kScaleRows[i].row, i + 3);
}

TEST(KernelTable, ConstantSlotsArePresentBeforeTheFirstFill) {
    ExpectConstantSlots(initialTable.entries);
}

TEST(KernelTable, FillingLeavesTheConstantSlotsAlone) {
    for (int level : kAllLevels) {
        for (int speedClass : kSpeedClasses) {
            SCOPED_TRACE(testing::Message() << "level " << level << " class " << speedClass);
            const ForcedLevel forced(level, speedClass);
            ExpectConstantSlots(KernelTable);
        }
    }
}

TEST(KernelTable, ScaleRowsFollowLevelAndSpeedClass) {
    for (int level : kAllLevels) {
        for (int speedClass : kSpeedClasses) {
            const ForcedLevel forced(level, speedClass);
            for (const ScaleRow& row : kScaleRows) {
                for (int slot = 0; slot < 3; ++slot) {
                    EXPECT_EQ(KernelTable[row.row][slot].scale,
                              row.InSlot(slot, level, speedClass).kernel)
                        << "level " << level << " class " << speedClass << " row " << row.row
                        << " slot " << slot;
                }
            }
        }
    }
}

TEST(KernelTable, OnlyAutoOfTheCopiesFollowsTheLevel) {
    for (int level : kAllLevels) {
        for (int speedClass : kSpeedClasses) {
            const ForcedLevel forced(level, speedClass);
            for (const CopyRow& row : kCopyRows) {
                EXPECT_EQ(KernelTable[row.row][0].copy, row.InSlot(0, level).kernel)
                    << "level " << level << " row " << row.row;
            }
        }
    }
}

TEST(KernelTable, BilinearAutoCopiesInBlocksEvenWithoutMmx) {
    const ForcedLevel forced(0, 0);
    EXPECT_EQ(KernelTable[0][2].copy, CopyKernel{CopyPlane_MMX});
    EXPECT_EQ(KernelTable[1][2].copy, CopyKernel{CopyPacked_MMX});
    EXPECT_EQ(KernelTable[2][2].copy, CopyKernel{CopyPacked_MMX});
}

TEST(KernelTable, NearestForSseIsThatForMmxInEveryRow) {
    for (int row = kFirstScaleRow; row < kKernelRows; ++row) {
        EXPECT_EQ(KernelTable[row][SlotNearestSse].scale, KernelTable[row][SlotNearestMmx].scale);
    }
}

TEST(KernelTable, SelectsTheKernelThatStandsInIt) {
    FillKernelTable();
    for (int row = 0; row < kKernelRows; ++row) {
        for (int slot = 0; slot < kKernelSlots; ++slot) {
            EXPECT_EQ(SelectKernel(row, slot).scale, KernelTable[row][slot].scale);
            EXPECT_NE(SelectKernel(row, slot).scale, nullptr);
        }
    }
}

TEST(KernelTable, FillsForTheProcessorOfThisMachine) {
    FillKernelTable(0, -1);
    FillKernelTable();
    const int level = GetCpuLevel();
    const int speedClass = CpuSpeedClass();
    for (const ScaleRow& row : kScaleRows) {
        for (int slot = 0; slot < 3; ++slot) {
            EXPECT_EQ(KernelTable[row.row][slot].scale, row.InSlot(slot, level, speedClass).kernel);
        }
    }
    for (const CopyRow& row : kCopyRows) {
        EXPECT_EQ(KernelTable[row.row][0].copy, row.InSlot(0, level).kernel);
    }
}

TEST(WidestSet, IsTheWidestThatRunsWhereThereIsSse) {
    for (const InstructionSetInfo& info : InstructionSets()) {
        if (info.canRun()) {
            EXPECT_GE(WidestSet(2), info.set) << info.name;
        }
    }
    // Levels tell x86 processors apart.
    const bool isX86 = FindInstructionSet(InstructionSet::Mmx) != nullptr;
    const InstructionSet widest = InstructionSets().back().set;
    for (const int level : {1, 3, 4}) {
        EXPECT_EQ(WidestSet(level), isX86 ? InstructionSet::Mmx : widest) << level;
    }
    for (const int level : {-1, 0, 5}) {
        EXPECT_EQ(WidestSet(level), isX86 ? InstructionSet::Portable : widest) << level;
    }
}

TEST(MethodToSlot, MapsTheNineMethodsAndNothingElse) {
    constexpr int kFirstCode = -5;
    constexpr int kSlots[] = {
        0, 0, 0, 0, 0,                   // -5 to -1
        0, 1, 2, 0, 0, 3, 4, 5, 0, 0,    // 0 to 9
        6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0  // 10 to 20
    };
    int32_t code = kFirstCode;
    for (int slot : kSlots) {
        EXPECT_EQ(MethodToSlot(code), slot) << "code " << code;
        ++code;
    }
    EXPECT_EQ(code, 21);
    EXPECT_EQ(MethodToSlot(INT32_MAX), 0);
    EXPECT_EQ(MethodToSlot(INT32_MIN), 0);
}

}  // namespace
}  // namespace tavo::test
