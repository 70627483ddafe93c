// What a running graph reports.

#pragma once

#include "streams.h"

namespace tavo {

enum class Ending { None, Complete, ClosedByUser, Aborted };

// Takes all events that have come; `reason` is that of an abort. The gravest of them counts.
Ending TakeEvents(IMediaEvent& events, HRESULT& reason);

}  // namespace tavo
