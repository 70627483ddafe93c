// Several inputs, one after the other.

#pragma once

#include "host/cli/options.h"
#include "host/graph/filter_factory.h"
#include "host/graph/stop_request.h"

namespace tavo {

// Every input that cannot be scaled is told, and does not stop the others; a stop of the user's
// does. Returns an exit code. May throw std::bad_alloc.
int RunBatch(const Options& options, const FilterFactory& factory, StopRequest& stop);

}  // namespace tavo
