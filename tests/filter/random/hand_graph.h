// A filter graph in the hands of a test: it connects pins again as the platform's does, or fails at
// it in one of several ways. Lives on the stack of a test, which checks that its references are
// back.
#pragma once

#include <windows.h>

#include <control.h>
#include <strmif.h>
#include <vfwmsgs.h>

#include <atomic>

#include "tests/support/com_ptr.h"

namespace tavo_test {

enum class Reconnects { AsAsked, Later, Refuses, OnlyParts, kCount };

class HandGraph final : public IFilterGraph2, public IMediaEventSink {
  public:
    virtual ~HandGraph() = default;
    IFilterGraph* graph() { return static_cast<IFilterGraph2*>(this); }

    Reconnects reconnects = Reconnects::AsAsked;
    std::atomic<long> references = 1;
    std::atomic<long> events = 0;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid == IID_IUnknown || iid == IID_IFilterGraph || iid == IID_IGraphBuilder ||
            iid == IID_IFilterGraph2) {
            *object = graph();
        } else if (iid == IID_IMediaEventSink) {
            *object = static_cast<IMediaEventSink*>(this);
        }
        if (!*object) return E_NOINTERFACE;
        ++references;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }

    STDMETHODIMP Notify(LONG, LONG_PTR, LONG_PTR) override {
        ++events;
        return S_OK;
    }
    STDMETHODIMP ReconnectEx(IPin* pin, const AM_MEDIA_TYPE* type) override {
        if (reconnects == Reconnects::Later) return S_OK;
        if (reconnects == Reconnects::Refuses) return VFW_E_NOT_STOPPED;
        ComPtr<IPin> peer;
        if (FAILED(pin->ConnectedTo(peer.Put()))) return VFW_E_NOT_CONNECTED;
        peer->Disconnect();
        pin->Disconnect();
        return reconnects == Reconnects::OnlyParts ? E_FAIL : pin->Connect(peer.Get(), type);
    }
    STDMETHODIMP Reconnect(IPin* pin) override { return ReconnectEx(pin, nullptr); }
    STDMETHODIMP ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) override {
        return output->Connect(input, type);
    }

    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }
    STDMETHODIMP Connect(IPin*, IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP Render(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP RenderFile(LPCWSTR, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP AddSourceFilter(LPCWSTR, LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP SetLogFile(DWORD_PTR) override { return E_NOTIMPL; }
    STDMETHODIMP Abort() override { return E_NOTIMPL; }
    STDMETHODIMP ShouldOperationContinue() override { return E_NOTIMPL; }
    STDMETHODIMP AddSourceFilterForMoniker(IMoniker*, IBindCtx*, LPCWSTR, IBaseFilter**) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP RenderEx(IPin*, DWORD, DWORD*) override { return E_NOTIMPL; }
};

}  // namespace tavo_test
