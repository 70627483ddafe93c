// What --cpu prints.

#pragma once

#include <string>

#include "cpu/processor_info.h"

namespace tavo {

// A line per fact. `level` and `speedClass` are those that select kernels.
std::wstring ProcessorText(const ProcessorInfo& info, int level, int speedClass);

// The same for the current processor, identified again.
std::wstring ThisProcessorText();

}  // namespace tavo
