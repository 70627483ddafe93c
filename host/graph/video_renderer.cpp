// Tries the platform's renderers in turn: systems differ in what each one shows.

#include "host/graph/video_renderer.h"

#include "host/graph/graph_pins.h"
#include "host/system/system_library.h"

namespace tavo {
namespace {

// This renderer crashes without Direct3D, as under Wine without OpenGL.
bool CanRun(const CLSID& renderer) {
    if (renderer != CLSID_VideoRendererDefault) return true;
    using CreateDirect3D = IUnknown*(WINAPI*)(UINT);
    constexpr UINT kVersion = 32;
    const auto create = SystemFunction<CreateDirect3D>(L"d3d9.dll", "Direct3DCreate9");
    IUnknown* const direct3d = create != nullptr ? create(kVersion) : nullptr;
    if (direct3d != nullptr) direct3d->Release();
    return direct3d != nullptr;
}

}  // namespace

HRESULT ConnectRenderer(IGraphBuilder& graph, IPin* output, ComPtr<IBaseFilter>& renderer) {
    HRESULT hr = VFW_E_CANNOT_RENDER;
    for (const CLSID& clsid : {CLSID_VideoRenderer, CLSID_VideoRendererDefault}) {
        ComPtr<IBaseFilter> candidate;
        if (!CanRun(clsid) ||
            FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                    candidate.PutVoid())) ||
            FAILED(graph.AddFilter(candidate.Get(), L"Video renderer"))) {
            continue;
        }
        const ComPtr<IPin> input = FirstPin(candidate.Get(), PINDIR_INPUT);
        hr = input ? graph.Connect(output, input.Get()) : E_UNEXPECTED;
        if (SUCCEEDED(hr)) {
            renderer = candidate;
            return hr;
        }
        graph.RemoveFilter(candidate.Get());
    }
    return hr;
}

}  // namespace tavo
