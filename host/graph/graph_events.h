// What a running graph reports.

#pragma once

#include "streams.h"

namespace tavo {

enum class Ending { None, Complete, ClosedByUser, Aborted };

// Handles all pending events, and returns the worst of them. `reason` is that of an abort.
Ending DrainEvents(IMediaEvent& events, HRESULT& reason);

}  // namespace tavo
