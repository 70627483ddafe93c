// Whether the output of a run may be written.

#pragma once

#include <string>

#include "host/cli/options.h"

namespace tavo {

// Before anything is done. Empty when all is well, else one line for the user.
std::wstring CheckOutput(const Options& options);

// Whether an existing output could be replaced now. Leaves it as it is.
std::wstring CheckReplaceable(const std::wstring& output);

}  // namespace tavo
