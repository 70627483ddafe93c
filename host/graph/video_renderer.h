// The platform's video renderers.

#pragma once

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

// Connects the pin with the first renderer that shows its output. On failure none stays in the
// graph.
HRESULT ConnectRenderer(IGraphBuilder& graph, IPin* output, ComPtr<IBaseFilter>& renderer);

}  // namespace tavo
