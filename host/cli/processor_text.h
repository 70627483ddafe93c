// What --cpu prints.

#pragma once

#include <string>

#include "cpu/processor_info.h"

namespace tavo {

// One line for each thing known. `level` and `speedClass` are those that choose kernels.
std::wstring ProcessorText(const ProcessorInfo& info, int level, int speedClass);

// The same of the processor that this runs on, identified anew.
std::wstring ThisProcessorText();

}  // namespace tavo
