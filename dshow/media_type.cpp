// CMediaType.

#include "dshow/media_type.h"

#include <algorithm>
#include <cstring>

namespace {

bool SameBlock(const AM_MEDIA_TYPE& a, const AM_MEDIA_TYPE& b) {
    if (a.cbFormat != b.cbFormat) return false;
    if (a.cbFormat == 0 || a.pbFormat == b.pbFormat) return true;
    return a.pbFormat && b.pbFormat && std::memcmp(a.pbFormat, b.pbFormat, a.cbFormat) == 0;
}

bool Matches(const GUID& open, const GUID& settled) { return open == GUID_NULL || open == settled; }

// Gives mt a block of n bytes that begins with the first kept bytes of source (which may lie in the
// present block). Without memory a present block that is large enough serves, at its old length.
// Null, and nothing changed, when there is none, and for n = 0, which has no block.
BYTE* ReplaceBlock(CMediaType& mt, ULONG n, const BYTE* source, ULONG kept) {
    BYTE* block = mt.pbFormat;
    const bool same = block && n == mt.cbFormat;
    if (!same) {
        auto* fresh = n ? static_cast<BYTE*>(CoTaskMemAlloc(n)) : nullptr;
        if (fresh) {
            block = fresh;
        } else if (n > mt.cbFormat) {
            return nullptr;
        }
    }
    if (!block) return nullptr;
    if (kept) std::memmove(block, source, kept);
    if (block != mt.pbFormat) {
        mt.ResetFormatBuffer();
        mt.pbFormat = block;
        mt.cbFormat = n;
    }
    return block;
}

}  // namespace

CMediaType::CMediaType() { InitMediaType(); }

CMediaType::CMediaType(const GUID* major) {
    InitMediaType();
    majortype = *major;
}

CMediaType::CMediaType(const AM_MEDIA_TYPE& mt, HRESULT* phr) {
    const HRESULT hr = CopyMediaType(this, &mt);
    if (FAILED(hr) && phr) *phr = hr;
}

CMediaType::CMediaType(const CMediaType& mt, HRESULT* phr)
    : CMediaType(static_cast<const AM_MEDIA_TYPE&>(mt), phr) {}

CMediaType::~CMediaType() { FreeMediaType(*this); }

CMediaType& CMediaType::operator=(const CMediaType& mt) {
    Set(mt);
    return *this;
}

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& mt) {
    Set(mt);
    return *this;
}

HRESULT CMediaType::Set(const CMediaType& mt) { return Set(static_cast<const AM_MEDIA_TYPE&>(mt)); }

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& mt) {
    if (&mt == this) return S_OK;
    FreeMediaType(*this);
    return CopyMediaType(this, &mt);
}

BOOL CMediaType::operator==(const CMediaType& mt) const {
    return majortype == mt.majortype && subtype == mt.subtype && formattype == mt.formattype &&
           SameBlock(*this, mt);
}

BOOL CMediaType::operator!=(const CMediaType& mt) const { return !(*this == mt); }

BOOL CMediaType::IsValid() const { return majortype != GUID_NULL; }

void CMediaType::SetType(const GUID* pType) { majortype = *pType; }

void CMediaType::SetSubtype(const GUID* pType) { subtype = *pType; }

void CMediaType::SetFormatType(const GUID* pType) { formattype = *pType; }

void CMediaType::SetTemporalCompression(BOOL compressed) { bTemporalCompression = compressed; }

ULONG CMediaType::GetSampleSize() const { return IsFixedSize() ? lSampleSize : 0; }

void CMediaType::SetSampleSize(ULONG size) {
    if (size == 0) {
        SetVariableSize();
        return;
    }
    bFixedSizeSamples = TRUE;
    lSampleSize = size;
}

void CMediaType::SetVariableSize() { bFixedSizeSamples = FALSE; }

BOOL CMediaType::SetFormat(BYTE* pFormat, ULONG n) {
    return pFormat && n && ReplaceBlock(*this, n, pFormat, n);
}

BYTE* CMediaType::AllocFormatBuffer(ULONG n) { return ReplaceBlock(*this, n, nullptr, 0); }

BYTE* CMediaType::ReallocFormatBuffer(ULONG n) {
    const ULONG kept = pbFormat ? std::min(n, cbFormat) : 0;
    return ReplaceBlock(*this, n, pbFormat, kept);
}

void CMediaType::ResetFormatBuffer() {
    if (cbFormat) CoTaskMemFree(pbFormat);
    cbFormat = 0;
    pbFormat = nullptr;
}

void CMediaType::InitMediaType() {
    static_cast<AM_MEDIA_TYPE&>(*this) = {};
    lSampleSize = 1;
    bFixedSizeSamples = TRUE;
}

BOOL CMediaType::IsPartiallySpecified() const {
    return majortype == GUID_NULL || formattype == GUID_NULL;
}

BOOL CMediaType::MatchesPartial(const CMediaType* pPartial) const {
    if (!Matches(pPartial->majortype, majortype) || !Matches(pPartial->subtype, subtype)) {
        return FALSE;
    }
    if (pPartial->formattype == GUID_NULL) return TRUE;
    return pPartial->formattype == formattype && SameBlock(*pPartial, *this);
}
