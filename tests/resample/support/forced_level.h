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

// Identifying the processor measures its speed too, which takes longer than most tests: once is
// enough.
inline int OwnLevel() {
    static const int level = GetCpuLevel();
    return level;
}
inline void FillTableForThisMachine() {
    static const int speedClass = (OwnLevel(), CpuSpeedClass());
    FillKernelTable(OwnLevel(), speedClass);
}

// Whether this processor has the instructions of a level. Only old ones lack any.
inline bool CanRunLevel(int level) {
    const int own = OwnLevel();
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
    ~ForcedLevel() { FillTableForThisMachine(); }
    ForcedLevel(const ForcedLevel&) = delete;
    ForcedLevel& operator=(const ForcedLevel&) = delete;
};

}  // namespace tavo::test
