// What TestSource and TestSink share: a filter with exactly one pin, whose reference count the pin
// uses as well. Every call is noted, and can be made to fail, through the calls() of filter or pin.
//
//   source->calls().Inject("Pause", E_FAIL);
//   source->pin().calls().Count("BeginFlush");
#pragma once

#include <windows.h>

#include <strmif.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/call_log.h"
#include "tests/support/com_ptr.h"
#include "tests/support/live_objects.h"
#include "tests/support/media_types.h"

namespace tavo_test {

class TestPin;

class TestFilter : public IBaseFilter, private LiveObject<LiveKind::kFilter> {
  public:
    CallLog& calls() { return calls_; }
    FILTER_STATE state() const { return state_; }
    IFilterGraph* graph() const { return graph_; }  // not counted
    long references() const { return references_; }
    virtual TestPin& basePin() = 0;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetClassID(CLSID* clsid) override;
    STDMETHODIMP Stop() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP GetState(DWORD timeout, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;
    STDMETHODIMP EnumPins(IEnumPins** pins) override;
    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    STDMETHODIMP QueryVendorInfo(LPWSTR*) override { return E_NOTIMPL; }

  protected:
    virtual ~TestFilter() = default;
    // Called before the state changes; a failure keeps the old one.
    virtual HRESULT OnStop() { return S_OK; }
    virtual HRESULT OnPauseFromStopped() { return S_OK; }

  private:
    HRESULT GoTo(FILTER_STATE state);  // paused or running

    std::atomic<long> references_ = 1;
    CallLog calls_;
    std::atomic<FILTER_STATE> state_ = State_Stopped;
    std::mutex clockMutex_;
    ComPtr<IReferenceClock> clock_;
    IFilterGraph* graph_ = nullptr;
    std::wstring name_;
};

// The half of IPin that does not depend on the direction.
class TestPin : public IPin {
  public:
    CallLog& calls() { return calls_; }
    IPin* peer() const { return peer_.Get(); }
    bool connected() const { return peer_.Get() != nullptr; }
    const MediaType& connectionType() const { return type_; }
    // Types that EnumMediaTypes offers.
    std::vector<MediaType> offered;

    STDMETHODIMP_(ULONG) AddRef() override { return filter_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return filter_.Release(); }
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** peer) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override;
    STDMETHODIMP QueryId(LPWSTR* id) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** types) override;
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }

  protected:
    TestPin(TestFilter& filter, PIN_DIRECTION direction, const wchar_t* name)
        : filter_(filter), direction_(direction), name_(name) {}
    virtual ~TestPin() = default;
    virtual void OnDisconnected() {}
    void SetConnection(IPin* peer, const AM_MEDIA_TYPE& type);

    TestFilter& filter_;

  private:
    const PIN_DIRECTION direction_;
    const std::wstring name_;
    CallLog calls_;
    ComPtr<IPin> peer_;
    MediaType type_;
};

}  // namespace tavo_test
