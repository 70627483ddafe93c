// The platform's video renderers.

#pragma once

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

// Connects a pin of the graph with the first renderer that shows what it gives. A failure leaves
// none in the graph.
HRESULT ConnectRenderer(IGraphBuilder& graph, IPin* output, ComPtr<IBaseFilter>& renderer);

}  // namespace tavo
