// The list of instruction sets, and what a processor has to offer for each.

#include "tests/kernel_check/backends.h"

#include "resample/kernel_table.h"
#include "resample/row_ops/instruction_sets.h"
#include "tests/resample/support/forced_level.h"

namespace tavo::test {

std::vector<Backend> RunnableBackends() {
    std::vector<Backend> backends;
    for (const InstructionSetInfo& info : InstructionSets()) {
        if (info.canRun()) {
            backends.push_back(
                {std::string(info.name) + " operations", false, 0, 0, static_cast<int>(info.set)});
        }
    }
    for (int level = 0; level <= 4; ++level) {
        for (int speedClass : {0, -1}) {
            if (!CanRunLevel(level)) continue;
            const std::string name =
                "level " + std::to_string(level) + (speedClass < 0 ? " (slow)" : "");
            backends.push_back({name, true, level, speedClass, 0});
        }
    }
    return backends;
}

void Activate(const Backend& backend) {
    if (backend.isLevel) {
        FillKernelTable(backend.level, backend.speedClass);
    } else {
        ChooseRowOps(static_cast<InstructionSet>(backend.instructionSet));
    }
}

}  // namespace tavo::test
