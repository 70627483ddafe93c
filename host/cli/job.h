// What is done with one input, from its first look at the file to the last line that is printed.

#pragma once

#include "host/cli/options.h"
#include "host/graph/filter_factory.h"
#include "host/graph/stop_request.h"

namespace tavo {

// Returns an exit code. May throw std::bad_alloc.
int RunJob(const Options& options, const FilterFactory& factory, StopRequest& stop);

}  // namespace tavo
