// A small IMediaSeeking for the source's output pin: seeking that filters pass upstream ends here.
#pragma once

#include <windows.h>

#include <strmif.h>

#include "tests/support/test_filter.h"

namespace tavo_test {

constexpr LONGLONG kSourceDuration = 123456789;

class SourceSeeking final : public IMediaSeeking {
  public:
    explicit SourceSeeking(TestPin& pin) : pin_(pin) {}
    virtual ~SourceSeeking() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        return pin_.QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return pin_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return pin_.Release(); }

    STDMETHODIMP GetCapabilities(DWORD* capabilities) override;
    STDMETHODIMP CheckCapabilities(DWORD* capabilities) override;
    STDMETHODIMP IsFormatSupported(const GUID* format) override;
    STDMETHODIMP QueryPreferredFormat(GUID* format) override;
    STDMETHODIMP GetTimeFormat(GUID* format) override;
    STDMETHODIMP IsUsingTimeFormat(const GUID* format) override;
    STDMETHODIMP SetTimeFormat(const GUID* format) override;
    STDMETHODIMP GetDuration(LONGLONG* duration) override;
    STDMETHODIMP GetStopPosition(LONGLONG* stop) override;
    STDMETHODIMP GetCurrentPosition(LONGLONG* current) override;
    STDMETHODIMP ConvertTimeFormat(LONGLONG*, const GUID*, LONGLONG, const GUID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop,
                              DWORD stopFlags) override;
    STDMETHODIMP GetPositions(LONGLONG* current, LONGLONG* stop) override;
    STDMETHODIMP GetAvailable(LONGLONG* earliest, LONGLONG* latest) override;
    STDMETHODIMP SetRate(double rate) override;
    STDMETHODIMP GetRate(double* rate) override;
    STDMETHODIMP GetPreroll(LONGLONG* preroll) override;

  private:
    TestPin& pin_;
    LONGLONG current_ = 0;
    LONGLONG stop_ = kSourceDuration;
    double rate_ = 1.0;
};

}  // namespace tavo_test
