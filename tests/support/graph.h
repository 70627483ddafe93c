// Connecting pins with and without a filter graph.
//
//   Graph graph;                                       // a platform filter graph, no clock
//   graph.Add(source.Get(), L"source"); graph.Add(filter.Get(), L"filter");
//   graph.Connect(&source->pin(), GetPin(filter.Get(), PINDIR_INPUT).Get());
//   graph.Run(); ... graph.Stop();
//   EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE));
//
//   ConnectPins / DisconnectPins                       // the same without any graph
#pragma once

#include <windows.h>

#include <control.h>
#include <strmif.h>

#include <vector>

#include "tests/support/com_ptr.h"
#include "tests/support/patience.h"

namespace tavo_test {

// The first pin of that direction; empty if there is none.
ComPtr<IPin> GetPin(IBaseFilter* filter, PIN_DIRECTION direction);

// IPin::Connect on the output pin.
HRESULT ConnectPins(IPin* output, IPin* input, const AM_MEDIA_TYPE* type = nullptr);
// Disconnects both sides, the input first; S_OK only if both were connected and let go.
HRESULT DisconnectPins(IPin* output, IPin* input);

struct GraphEvent {
    long code;
    LONG_PTR first;
    LONG_PTR second;
};

class Graph {
  public:
    Graph();
    // Stops, removes every filter that was added, and drops the graph.
    ~Graph();
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    IGraphBuilder* builder() const { return builder_.Get(); }
    HRESULT Add(IBaseFilter* filter, const wchar_t* name);
    HRESULT Remove(IBaseFilter* filter);
    // ConnectDirect: no filter is put in between.
    HRESULT Connect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type = nullptr);
    HRESULT Disconnect(IPin* pin);
    // Each returns when the state is reached, with the result of the change.
    HRESULT Pause();
    HRESULT Run();
    HRESULT Stop();
    // Events up to and with the wanted one are kept in events().
    bool WaitForEvent(long code, DWORD milliseconds = kPatience);
    // Takes what is waiting.
    const std::vector<GraphEvent>& Events();
    int CountEvents(long code);

  private:
    HRESULT Settle(HRESULT hr);

    ComPtr<IGraphBuilder> builder_;
    ComPtr<IMediaControl> control_;
    ComPtr<IMediaEvent> event_;
    std::vector<ComPtr<IBaseFilter>> filters_;
    std::vector<GraphEvent> events_;
};

}  // namespace tavo_test
