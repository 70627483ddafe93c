// Filter graph helper.
#include "tests/support/graph.h"

#include <uuids.h>
#include <vfwmsgs.h>

#include <algorithm>
#include <cstdlib>

namespace tavo_test {

ComPtr<IPin> GetPin(IBaseFilter* filter, PIN_DIRECTION direction) {
    ComPtr<IEnumPins> pins;
    if (FAILED(filter->EnumPins(pins.Put()))) return nullptr;
    ComPtr<IPin> pin;
    while (pins->Next(1, pin.Put(), nullptr) == S_OK) {
        PIN_DIRECTION found;
        if (SUCCEEDED(pin->QueryDirection(&found)) && found == direction) return pin;
    }
    pin.Detach();
    return nullptr;
}

HRESULT ConnectPins(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
    return output->Connect(input, type);
}

HRESULT DisconnectPins(IPin* output, IPin* input) {
    const HRESULT first = input->Disconnect();
    const HRESULT second = output->Disconnect();
    return first != S_OK ? first : second;
}

Graph::Graph() : builder_(CreateObject<IGraphBuilder>(CLSID_FilterGraph)) {
    if (!builder_) std::abort();
    control_ = builder_.As<IMediaControl>(IID_IMediaControl);
    event_ = builder_.As<IMediaEvent>(IID_IMediaEvent);
    if (!control_ || !event_) std::abort();
    // Without a clock nothing waits for presentation times.
    builder_.As<IMediaFilter>(IID_IMediaFilter)->SetSyncSource(nullptr);
}

Graph::~Graph() {
    Stop();
    for (const ComPtr<IBaseFilter>& filter : filters_) builder_->RemoveFilter(filter.Get());
}

HRESULT Graph::Add(IBaseFilter* filter, const wchar_t* name) {
    const HRESULT hr = builder_->AddFilter(filter, name);
    if (SUCCEEDED(hr)) filters_.emplace_back(filter);
    return hr;
}

HRESULT Graph::Remove(IBaseFilter* filter) {
    const HRESULT hr = builder_->RemoveFilter(filter);
    if (SUCCEEDED(hr))
        std::erase_if(filters_, [filter](const auto& held) { return held.Get() == filter; });
    return hr;
}

HRESULT Graph::Connect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
    return builder_->ConnectDirect(output, input, type);
}

HRESULT Graph::Disconnect(IPin* pin) { return builder_->Disconnect(pin); }

HRESULT Graph::Settle(HRESULT hr) {
    if (FAILED(hr)) return hr;
    OAFilterState state;
    const HRESULT reached = control_->GetState(kPatience, &state);
    return FAILED(reached) ? reached : hr;
}

HRESULT Graph::Pause() { return Settle(control_->Pause()); }

HRESULT Graph::Run() { return Settle(control_->Run()); }

HRESULT Graph::Stop() { return Settle(control_->Stop()); }

bool Graph::WaitForEvent(long code, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        const ULONGLONG now = GetTickCount64();
        const DWORD left = now < end ? static_cast<DWORD>(end - now) : 0;
        GraphEvent event;
        if (FAILED(event_->GetEvent(&event.code, &event.first, &event.second,
                                    static_cast<long>(left)))) {
            // Behind the last event the platform's graph may answer too early that there is none.
            if (left > 0) continue;
            return false;
        }
        event_->FreeEventParams(event.code, event.first, event.second);
        events_.push_back(event);
        if (event.code == code) return true;
    }
}

const std::vector<GraphEvent>& Graph::Events() {
    GraphEvent event;
    while (SUCCEEDED(event_->GetEvent(&event.code, &event.first, &event.second, 0))) {
        event_->FreeEventParams(event.code, event.first, event.second);
        events_.push_back(event);
    }
    return events_;
}

int Graph::CountEvents(long code) {
    Events();
    return static_cast<int>(std::count_if(
        events_.begin(), events_.end(), [code](const auto& event) { return event.code == code; }));
}

}  // namespace tavo_test
