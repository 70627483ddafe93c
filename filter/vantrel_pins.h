// The two pins of the filter. The streaming thread replaces their types when a sample carries a new
// one, and must not take the filter lock for that; so whatever reads a type holds the settings
// lock as well. A pin has a new type only once the filter has taken it over. The type of a
// connection stays accepted, whatever the settings are by now.

#pragma once

#include "streams.h"

class CVantrelFilter;

class CVantrelInputPin final : public CTransformInputPin {
  public:
    CVantrelInputPin(CVantrelFilter* filter, HRESULT* result);

    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT Inactive() override;

  private:
    CVantrelFilter* const filter_;
};

class CVantrelOutputPin final : public CTransformOutputPin {
  public:
    CVantrelOutputPin(CVantrelFilter* filter, HRESULT* result);

    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;

    // For a type that a sink has put on a buffer, once the filter follows it. The caller is given
    // the former one.
    void KeepType(CMediaType& type);

  private:
    CVantrelFilter* const filter_;
};
