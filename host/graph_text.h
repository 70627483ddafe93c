// A connected graph as text.

#ifndef TAVO_HOST_GRAPH_TEXT_H
#define TAVO_HOST_GRAPH_TEXT_H

#include <string>

#include "streams.h"

namespace tavo {

// One paragraph per filter, sources first: its name, its pins, what each is connected to and with
// which media type.
std::wstring GraphText(IFilterGraph* graph);

}  // namespace tavo

#endif
