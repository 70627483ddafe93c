// Helpers for pins and filters of a graph.

#pragma once

#include <string>
#include <vector>

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction);

// The first pin of that direction; null without one.
ComPtr<IPin> FirstPin(IBaseFilter* filter, PIN_DIRECTION direction);

// Null while unconnected.
ComPtr<IPin> PeerOf(IPin* pin);

ComPtr<IBaseFilter> FilterOf(IPin* pin);

// The filter's name in its graph.
std::wstring NameOf(IBaseFilter* filter);

// The type of a pin's connection. False, and an empty type, while unconnected.
bool ConnectionTypeOf(IPin* pin, CMediaType& type);

}  // namespace tavo
