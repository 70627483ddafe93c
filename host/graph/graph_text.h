// A connected graph as text.

#pragma once

#include <string>

#include "streams.h"

namespace tavo {

// One paragraph per filter, sources first: its name, its pins, what each is connected to and with
// which media type.
std::wstring GraphText(IFilterGraph* graph);

}  // namespace tavo
