// Events of a graph, reduced to how it ends.

#include "host/graph/graph_events.h"

#include <algorithm>

namespace tavo {
namespace {

Ending EndingOf(long code) {
    switch (code) {
        case EC_COMPLETE: return Ending::Complete;
        case EC_USERABORT: return Ending::ClosedByUser;
        case EC_ERRORABORT:
        case EC_STREAM_ERROR_STOPPED: return Ending::Aborted;
        default: return Ending::None;
    }
}

}  // namespace

Ending DrainEvents(IMediaEvent& events, HRESULT& reason) {
    Ending worst = Ending::None;
    long code = 0;
    LONG_PTR p1 = 0;
    LONG_PTR p2 = 0;
    while (SUCCEEDED(events.GetEvent(&code, &p1, &p2, 0))) {
        const Ending ending = EndingOf(code);
        if (ending == Ending::Aborted && worst != Ending::Aborted) {
            reason = static_cast<HRESULT>(p1);
        }
        worst = std::max(worst, ending);
        events.FreeEventParams(code, p1, p2);
    }
    return worst;
}

}  // namespace tavo
