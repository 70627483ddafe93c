// CMediaType and the functions that copy and free AM_MEDIA_TYPE records.

#pragma once

#include "dshow/platform.h"

// An AM_MEDIA_TYPE that owns its format block (task memory) and its pUnk (counted). It adds no data
// and nothing virtual, so that any AM_MEDIA_TYPE may be viewed as one. Not safe on several threads.
class CMediaType : public AM_MEDIA_TYPE {
  public:
    CMediaType();
    CMediaType(const GUID* majortype);
    // Deep copies; E_OUTOFMEMORY goes to *phr when given.
    CMediaType(const AM_MEDIA_TYPE& mt, HRESULT* phr = nullptr);
    CMediaType(const CMediaType& mt, HRESULT* phr = nullptr);
    ~CMediaType();

    CMediaType& operator=(const CMediaType& mt);
    CMediaType& operator=(const AM_MEDIA_TYPE& mt);
    // Deep copy over what was here. E_OUTOFMEMORY leaves it without a block.
    HRESULT Set(const CMediaType& mt);
    HRESULT Set(const AM_MEDIA_TYPE& mt);

    // Equal: the three GUIDs and the format block; sample size, flags and pUnk do not count.
    BOOL operator==(const CMediaType& mt) const;
    BOOL operator!=(const CMediaType& mt) const;

    BOOL IsValid() const;

    const GUID* Type() const { return &majortype; }
    const GUID* Subtype() const { return &subtype; }
    const GUID* FormatType() const { return &formattype; }
    void SetType(const GUID* pType);
    void SetSubtype(const GUID* pType);
    void SetFormatType(const GUID* pType);

    BOOL IsFixedSize() const { return bFixedSizeSamples; }
    BOOL IsTemporalCompressed() const { return bTemporalCompression; }
    void SetTemporalCompression(BOOL compressed);
    // 0 when the size varies.
    ULONG GetSampleSize() const;
    // 0 means variable; the old size then stays in the record.
    void SetSampleSize(ULONG size);
    void SetVariableSize();

    BYTE* Format() const { return pbFormat; }
    ULONG FormatLength() const { return cbFormat; }
    // Copies n bytes into the format block, also from within the present block. FALSE, and nothing
    // changed, without memory, without bytes or with n = 0.
    BOOL SetFormat(BYTE* pFormat, ULONG n);
    // A block of n bytes with undefined contents; the present one if it has that length already.
    // Without memory the present block if it is large enough, else null and nothing changed.
    BYTE* AllocFormatBuffer(ULONG n);
    // The same, keeping what fits of the present contents.
    BYTE* ReallocFormatBuffer(ULONG n);
    void ResetFormatBuffer();

    // The empty type: all zero but a fixed sample size of 1. Frees nothing.
    void InitMediaType();

    // TRUE when the major or the format type is open. An open subtype alone is not partial.
    BOOL IsPartiallySpecified() const;
    // TRUE when everything that pPartial settles is the same here.
    BOOL MatchesPartial(const CMediaType* pPartial) const;
};

static_assert(sizeof(CMediaType) == sizeof(AM_MEDIA_TYPE));

// A deep copy in task memory, or null. DeleteMediaType frees it.
AM_MEDIA_TYPE* WINAPI CreateMediaType(const AM_MEDIA_TYPE* pSource);

// Deep copy; what the target held is not freed. E_OUTOFMEMORY leaves neither block nor pUnk in it.
HRESULT WINAPI CopyMediaType(AM_MEDIA_TYPE* pTarget, const AM_MEDIA_TYPE* pSource);

// Frees the format block and releases pUnk; the other fields stay.
void WINAPI FreeMediaType(AM_MEDIA_TYPE& mt);

// FreeMediaType, then the record itself, which is task memory. Null is allowed.
void WINAPI DeleteMediaType(AM_MEDIA_TYPE* pmt);
