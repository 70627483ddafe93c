// CEnumPins: IEnumPins over the pins of a CBaseFilter.

#pragma once

#include <memory>

#include "dshow/platform.h"

class CBaseFilter;
class CBasePin;

// Born with one reference for its creator; keeps its filter alive. When the filter's pin version
// changes, Next starts over and leaves out what it has given before; Skip and Clone refuse with
// VFW_E_ENUM_OUT_OF_SYNC until a Reset. Counting is atomic, the rest is for one thread at a time.
class CEnumPins : public IEnumPins {
  public:
    // From the start, or with the state of pEnumPins when that is not null.
    CEnumPins(CBaseFilter* pFilter, CEnumPins* pEnumPins);
    virtual ~CEnumPins();
    CEnumPins(const CEnumPins&) = delete;
    CEnumPins& operator=(const CEnumPins&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // Pins are handed out counted. S_FALSE: fewer than n were left. A failure hands out nothing.
    STDMETHODIMP Next(ULONG n, IPin** ppPins, ULONG* pcFetched) override;
    STDMETHODIMP Skip(ULONG n) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumPins** ppEnum) override;

  private:
    bool IsOutOfSync() const;
    void TakeVersion();
    bool ReserveGiven(int capacity);
    bool WasGiven(const CBasePin* pPin) const;

    volatile LONG m_cRef = 1;
    CBaseFilter* const m_filter;
    LONG m_version = 0;
    int m_position = 0;
    int m_pinCount = 0;
    // Pins handed out before; only compared, never called, hence not counted.
    std::unique_ptr<CBasePin*[]> m_given;
    int m_givenCount = 0;
    int m_givenCapacity = 0;
};
