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

// Whether this processor has the instructions of a level. Only old ones lack any.
inline bool CanRunLevel(int level) {
    const int own = GetCpuLevel();
    if (level == 2) return own == 2;
    return own != 0 || !LevelHasMmx(level);
}

inline std::vector<int> RunnableLevels() {
    std::vector<int> levels;
    for (int level : kAllLevels) {
        if (CanRunLevel(level)) levels.push_back(level);
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
