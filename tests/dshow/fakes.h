// Stand-ins for the platform objects that a filter talks to: a clock, a graph and a quality sink.
// They live on the test's stack; references are only counted.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/call_log.h"
#include "tests/support/media_types.h"

namespace tavo_test {

// IUnknown for an object that must not delete itself; `references` begins at 0. Where another
// object would have died is counted.
template <typename... Interfaces>
class StackObject : public Interfaces... {
  public:
    virtual ~StackObject() = default;
    std::atomic<long> references = 0;
    std::atomic<int> deaths = 0;

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override {
        const long left = --references;
        if (left == 0) ++deaths;
        return static_cast<ULONG>(left);
    }
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = Find(iid);
        if (!*object) return E_NOINTERFACE;
        ++references;
        return S_OK;
    }

  protected:
    virtual void* Find(REFIID iid) = 0;
};

// Tells the time it is set to, with the result it is set to.
class FakeClock final : public StackObject<IReferenceClock> {
  public:
    REFERENCE_TIME now = 0;
    HRESULT result = S_OK;

    STDMETHODIMP GetTime(REFERENCE_TIME* time) override {
        *time = now;
        return result;
    }
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }

  private:
    void* Find(REFIID iid) override {
        const bool known = iid == IID_IUnknown || iid == IID_IReferenceClock;
        return known ? static_cast<IReferenceClock*>(this) : nullptr;
    }
};

struct SentEvent {
    long code;
    LONG_PTR first;
    LONG_PTR second;
};

// Collects events and reconnections; nothing can be added to it.
class FakeGraph final : public StackObject<IFilterGraph2, IMediaEventSink> {
  public:
    CallLog log;
    bool hasSink = true;
    bool hasGraph2 = true;
    HRESULT notifyResult = S_OK;
    std::vector<SentEvent> events;
    std::function<void()> onNotify;
    IPin* reconnected = nullptr;
    long referencesMeanwhile = 0;
    const AM_MEDIA_TYPE* reconnectType = nullptr;

    STDMETHODIMP_(ULONG) AddRef() override { return StackObject::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return StackObject::Release(); }
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        return StackObject::QueryInterface(iid, object);
    }

    STDMETHODIMP Notify(LONG code, LONG_PTR first, LONG_PTR second) override {
        events.push_back({code, first, second});
        if (onNotify) onNotify();
        return notifyResult;
    }
    STDMETHODIMP Reconnect(IPin* pin) override {
        reconnected = pin;
        referencesMeanwhile = references;
        return log.Enter("Reconnect").value_or(S_OK);
    }
    STDMETHODIMP ReconnectEx(IPin* pin, const AM_MEDIA_TYPE* type) override {
        reconnected = pin;
        referencesMeanwhile = references;
        reconnectType = type;
        return log.Enter("ReconnectEx").value_or(S_OK);
    }

    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
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

    IFilterGraph* graph() { return static_cast<IFilterGraph2*>(this); }

  private:
    void* Find(REFIID iid) override {
        if (iid == IID_IUnknown || iid == IID_IFilterGraph || iid == IID_IGraphBuilder ||
            (iid == IID_IFilterGraph2 && hasGraph2))
            return static_cast<IFilterGraph2*>(this);
        if (iid == IID_IMediaEventSink && hasSink) return static_cast<IMediaEventSink*>(this);
        return nullptr;
    }
};

class FakeQualitySink final : public StackObject<IQualityControl> {
  public:
    HRESULT result = S_OK;
    int notices = 0;
    IBaseFilter* sender = nullptr;
    Quality last = {};

    STDMETHODIMP Notify(IBaseFilter* from, Quality quality) override {
        ++notices;
        sender = from;
        last = quality;
        return result;
    }
    STDMETHODIMP SetSink(IQualityControl*) override { return E_NOTIMPL; }

  private:
    void* Find(REFIID iid) override {
        const bool known = iid == IID_IUnknown || iid == IID_IQualityControl;
        return known ? static_cast<IQualityControl*>(this) : nullptr;
    }
};

// An outer object for aggregation: counts, and knows IUnknown and what the inner object answers.
class FakeOuter final : public StackObject<IUnknown> {
  public:
    IUnknown* inner = nullptr;  // the inner object's non-delegating unknown

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (iid != IID_IUnknown && inner) return inner->QueryInterface(iid, object);
        return StackObject::QueryInterface(iid, object);
    }

  private:
    void* Find(REFIID iid) override { return iid == IID_IUnknown ? this : nullptr; }
};

}  // namespace tavo_test
