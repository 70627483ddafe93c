// A connected graph as text.

#pragma once

#include <string>

#include "streams.h"

namespace tavo {

// A paragraph per filter, sources first: its name, and its pins with their peers and media types.
std::wstring GraphText(IFilterGraph* graph);

}  // namespace tavo
