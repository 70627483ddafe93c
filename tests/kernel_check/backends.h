// The ways in which the table and the row operations can be set up: every processor level, and
// every instruction set by itself.

#pragma once

#include <string>
#include <vector>

namespace tavo::test {

struct Backend {
    std::string name;
    bool isLevel = false;
    int level = 0;
    int speedClass = 0;
    int instructionSet = 0;  // the value of an InstructionSet
};

// Those that this processor can run. Instruction sets come first.
std::vector<Backend> RunnableBackends();

void Activate(const Backend& backend);

}  // namespace tavo::test
