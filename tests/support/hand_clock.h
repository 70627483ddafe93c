// A reference clock that stands still until it is set. Lives on the stack of a test, which checks
// at the end that all other references are gone.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <atomic>

namespace tavo_test {

class HandClock final : public IReferenceClock {
  public:
    std::atomic<REFERENCE_TIME> now = 0;
    // What GetTime answers; the time is only given on success.
    std::atomic<HRESULT> answer = S_OK;
    std::atomic<long> references = 1;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || iid == IID_IReferenceClock;
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
    STDMETHODIMP GetTime(REFERENCE_TIME* time) override {
        if (SUCCEEDED(answer.load())) *time = now;
        return answer;
    }
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unadvise(DWORD_PTR) override { return E_NOTIMPL; }
};

}  // namespace tavo_test
