// The two pins of the filter. The streaming thread replaces their types when a sample carries a new
// one, and must not take the filter lock for that; so whatever reads a type holds the settings
// lock instead. A pin has a new type only once the filter has taken it over. The type of a
// connection stays accepted, whatever the settings are by now.

#pragma once

#include "streams.h"

// What the pins ask of their filter beside what the base class has.
class PinOwner {
  public:
    // Held while a pin's media type is replaced or copied.
    virtual CCritSec& SettingsLock() = 0;
    // CheckTransform with the type that the other pin was given last. Nothing is copied: want of
    // memory must not look like a type that is refused, which ends the stream.
    virtual HRESULT CheckBesideOutputType(const CMediaType& input) = 0;
    virtual HRESULT CheckBesideInputType(const CMediaType& output) = 0;
    // Streaming is about to stop: a sample in progress makes no more frames.
    virtual void AbandonSample() = 0;

  protected:
    ~PinOwner() = default;
};

class CVantrelInputPin final : public CTransformInputPin {
  public:
    CVantrelInputPin(CTransformFilter* filter, PinOwner* owner, HRESULT* result);

    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT CheckStreaming() override;
    HRESULT Inactive() override;

  private:
    CTransformFilter* const filter_;
    PinOwner* const owner_;
};

class CVantrelOutputPin final : public CTransformOutputPin {
  public:
    CVantrelOutputPin(CTransformFilter* filter, PinOwner* owner, HRESULT* result);

    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;

    // Swaps the pin's type with `type`, which the filter has taken over: from a sink's buffer, or
    // applied while frames flow.
    void KeepType(CMediaType& type);

    // On the streaming thread, while connected.
    // Whether the buffers of the connection hold so many bytes.
    bool HasRoomFor(LONG bytes) const;
    // Gives the sink another type and buffers of so many bytes, while it runs. A failure leaves the
    // connection with its type and buffers.
    HRESULT ConnectAnew(const CMediaType& type, LONG bytes);

  private:
    HRESULT ShareAllocator(IMemAllocator& allocator, LONG bytes);
    HRESULT ReplaceAllocator(LONG bytes);

    CTransformFilter* const filter_;
    PinOwner* const owner_;
};
