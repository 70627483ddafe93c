// Fills the table as for another processor, for as long as an object lives.

#pragma once

#include <vector>

#include "cpu/cpu_level.h"
#include "resample/kernel_table.h"

namespace tavo::test {

// Every level there is and some that are none.
constexpr int kAllLevels[] = {0, 1, 2, 3, 4, 5, -1, 77, -2147483647 - 1, 2147483647};
constexpr int kSpeedClasses[] = {-2, -1, 0, 1, 2};

constexpr bool LevelHasMmx(int level) { return level >= 1 && level <= 4; }

// The levels whose kernels this processor can run: all but those that it lacks the instructions
// for, which only an emulated old processor leaves out.
inline std::vector<int> RunnableLevels() {
    const int own = GetCpuLevel();
    std::vector<int> levels;
    for (int level : kAllLevels) {
        if (LevelHasMmx(level) && own == 0) continue;
        if (level == 2 && own != 2) continue;
        levels.push_back(level);
    }
    return levels;
}

class ForcedLevel {
  public:
    ForcedLevel(int level, int speedClass) { FillKernelTable(level, speedClass); }
    ~ForcedLevel() { FillKernelTable(); }
    ForcedLevel(const ForcedLevel&) = delete;
    ForcedLevel& operator=(const ForcedLevel&) = delete;
};

}  // namespace tavo::test
