#include "filter/vantrel_pins.h"

#include <utility>

#include "filter/type_swap.h"

namespace {

void SwapTypesLocked(PinOwner& owner, CMediaType& a, CMediaType& b) {
    CAutoLock lock(&owner.SettingsLock());
    SwapTypes(a, b);
}

// `kept` is the pin's own type. It changes only once the filter has taken over the new one.
HRESULT SettleType(CTransformFilter& filter, PinOwner& owner, PIN_DIRECTION direction,
                   const CMediaType& type, CMediaType& kept) {
    HRESULT result = S_OK;
    CMediaType copy(type, &result);
    if (SUCCEEDED(result)) result = filter.SetMediaType(direction, &type);
    if (FAILED(result)) return result;
    SwapTypesLocked(owner, kept, copy);
    return S_OK;
}

// Without the filter lock, which the base takes: a sink may ask on the streaming thread.
HRESULT CopyConnectionType(PinOwner& owner, bool isConnected, const CMediaType& kept,
                           AM_MEDIA_TYPE* type) {
    CAutoLock lock(&owner.SettingsLock());
    if (isConnected) return CopyMediaType(type, &kept);
    static_cast<CMediaType*>(type)->InitMediaType();
    return VFW_E_NOT_CONNECTED;
}

bool IsSameType(PinOwner& owner, const CMediaType& type, const CMediaType& kept) {
    CAutoLock lock(&owner.SettingsLock());
    return type == kept;
}

}  // namespace

CVantrelInputPin::CVantrelInputPin(CTransformFilter* filter, PinOwner* owner, HRESULT* result)
    : CTransformInputPin(NAME("Vantrel input pin"), filter, result, L"Input"),
      filter_(filter),
      owner_(owner) {}

STDMETHODIMP CVantrelInputPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    CheckPointer(type, E_POINTER);
    return CopyConnectionType(*owner_, IsConnected(), m_mt, type);
}

HRESULT CVantrelInputPin::CheckMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (IsConnected() && IsSameType(*owner_, *type, m_mt)) return S_OK;
    const HRESULT checked = filter_->CheckInputType(type);
    if (checked != S_OK) return checked;
    CBasePin* const outputPin = filter_->GetPin(1);
    if (!outputPin || !outputPin->IsConnected()) return S_OK;
    return owner_->CheckBesideOutputType(*type);
}

HRESULT CVantrelInputPin::SetMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    return SettleType(*filter_, *owner_, PINDIR_INPUT, *type, m_mt);
}

// Without a connection no stream begins, whatever a source sends that was not told.
HRESULT CVantrelInputPin::CheckStreaming() {
    return IsConnected() ? CTransformInputPin::CheckStreaming() : VFW_E_NOT_CONNECTED;
}

// Runs before Stop waits for the sample in progress.
HRESULT CVantrelInputPin::Inactive() {
    owner_->AbandonSample();
    return CTransformInputPin::Inactive();
}

CVantrelOutputPin::CVantrelOutputPin(CTransformFilter* filter, PinOwner* owner, HRESULT* result)
    : CTransformOutputPin(NAME("Vantrel output pin"), filter, result, L"Output"),
      filter_(filter),
      owner_(owner) {}

STDMETHODIMP CVantrelOutputPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    CheckPointer(type, E_POINTER);
    return CopyConnectionType(*owner_, IsConnected(), m_mt, type);
}

HRESULT CVantrelOutputPin::CheckMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (!filter_->GetPin(0)->IsConnected()) return E_INVALIDARG;
    if (IsConnected() && IsSameType(*owner_, *type, m_mt)) return S_OK;
    return owner_->CheckBesideInputType(*type);
}

HRESULT CVantrelOutputPin::SetMediaType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    return SettleType(*filter_, *owner_, PINDIR_OUTPUT, *type, m_mt);
}

void CVantrelOutputPin::KeepType(CMediaType& type) { SwapTypesLocked(*owner_, m_mt, type); }

bool CVantrelOutputPin::HasRoomFor(LONG bytes) const {
    ALLOCATOR_PROPERTIES present = {};
    return m_pAllocator && SUCCEEDED(m_pAllocator->GetProperties(&present)) &&
           present.cbBuffer >= bytes;
}

HRESULT CVantrelOutputPin::ConnectAnew(const CMediaType& type, LONG bytes) {
    if (!m_Connected || !m_pInputPin || !m_pAllocator) return VFW_E_NOT_CONNECTED;
    ALLOCATOR_PROPERTIES present = {};
    HRESULT result = m_pAllocator->GetProperties(&present);
    if (SUCCEEDED(result)) result = m_Connected->ReceiveConnection(this, &type);
    if (FAILED(result)) return result;

    m_pAllocator->Decommit();
    result = ShareAllocator(*m_pAllocator, bytes);
    if (FAILED(result)) result = ReplaceAllocator(bytes);
    if (SUCCEEDED(result)) return result;

    m_Connected->ReceiveConnection(this, &m_mt);
    ALLOCATOR_PROPERTIES granted = {};
    m_pAllocator->SetProperties(&present, &granted);
    m_pInputPin->NotifyAllocator(m_pAllocator, FALSE);
    m_pAllocator->Commit();
    return result;
}

// Of the decommitted allocator of the connection, or of a new one.
HRESULT CVantrelOutputPin::ShareAllocator(IMemAllocator& allocator, LONG bytes) {
    ALLOCATOR_PROPERTIES request = {1, bytes, 1, 0};
    ALLOCATOR_PROPERTIES granted = {};
    HRESULT result = allocator.SetProperties(&request, &granted);
    if (SUCCEEDED(result) && granted.cbBuffer < bytes) result = E_FAIL;
    if (SUCCEEDED(result)) result = m_pInputPin->NotifyAllocator(&allocator, FALSE);
    return SUCCEEDED(result) ? allocator.Commit() : result;
}

// A sink may hold a buffer of the old allocator for as long as it likes.
HRESULT CVantrelOutputPin::ReplaceAllocator(LONG bytes) {
    IMemAllocator* allocator = nullptr;
    HRESULT result = InitAllocator(&allocator);
    if (FAILED(result)) return result;
    result = ShareAllocator(*allocator, bytes);
    if (SUCCEEDED(result)) std::swap(m_pAllocator, allocator);
    allocator->Release();
    return result;
}
