// Media sample with every property held in plain fields.
#include "tests/support/test_sample.h"

#include <vfwmsgs.h>

#include <cstddef>
#include <cstring>

#include "tests/support/live_objects.h"

namespace tavo_test {

ComPtr<TestSample> TestSample::Create(const SampleConfig& config) {
    auto* sample = new TestSample(config);
    sample->Revive();
    return ComPtr<TestSample>::Adopt(sample);
}

TestSample::TestSample(const SampleConfig& config, SampleOwner* owner)
    : owner_(owner),
      sample2_(config.sample2),
      buffer_(static_cast<size_t>(config.size), config.guard, config.align),
      claimedSize_(config.claimedSize.value_or(config.size)),
      actual_(config.size) {}

void TestSample::Revive() {
    references_ = 1;
    CountLive(LiveKind::kSample, 1);
}

void TestSample::ResetProperties() {
    flags_ = 0;
    typeSpecificFlags_ = 0;
    streamId_ = AM_STREAM_MEDIA;
    start_ = stop_ = 0;
    hasMediaTime_ = false;
    type_.Reset();
}

void TestSample::Reshape(long size, BufferGuard guard, BYTE fill) {
    buffer_.Place(static_cast<size_t>(size), guard, fill);
    claimedSize_ = actual_ = size;
}

void TestSample::SetTimes(REFERENCE_TIME start, REFERENCE_TIME stop) { SetTime(&start, &stop); }

void TestSample::SetStartOnly(REFERENCE_TIME start) { SetTime(&start, nullptr); }

void TestSample::ClearTimes() { SetTime(nullptr, nullptr); }

void TestSample::AttachType(const AM_MEDIA_TYPE* type) {
    type_ = type ? MediaType(*type) : MediaType();
    PutFlag(AM_SAMPLE_TYPECHANGED, type != nullptr);
}

HRESULT TestSample::PutFlag(DWORD flag, WINBOOL on) {
    flags_ = on ? flags_ | flag : flags_ & ~flag;
    return S_OK;
}

STDMETHODIMP TestSample::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    const bool known =
        iid == IID_IUnknown || iid == IID_IMediaSample || (sample2_ && iid == IID_IMediaSample2);
    *object = known ? static_cast<IMediaSample2*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) TestSample::AddRef() { return static_cast<ULONG>(++references_); }

STDMETHODIMP_(ULONG) TestSample::Release() {
    const long left = --references_;
    if (left == 0) {
        CountLive(LiveKind::kSample, -1);
        if (owner_)
            owner_->OnFinalRelease(this);
        else
            delete this;
    }
    return static_cast<ULONG>(left);
}

STDMETHODIMP TestSample::GetPointer(BYTE** buffer) {
    if (!buffer) return E_POINTER;
    *buffer = buffer_.data();
    return S_OK;
}

STDMETHODIMP_(LONG) TestSample::GetSize() { return claimedSize_; }

STDMETHODIMP TestSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (!start || !stop) return E_POINTER;
    if (!(flags_ & AM_SAMPLE_TIMEVALID)) return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = start_;
    if (!(flags_ & AM_SAMPLE_STOPVALID)) {
        *stop = start_ + 1;
        return VFW_S_NO_STOP_TIME;
    }
    *stop = stop_;
    return S_OK;
}

STDMETHODIMP TestSample::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (stop && !start) return E_INVALIDARG;
    PutFlag(AM_SAMPLE_TIMEVALID, start != nullptr);
    PutFlag(AM_SAMPLE_STOPVALID, stop != nullptr);
    if (start) start_ = *start;
    if (stop) stop_ = *stop;
    return S_OK;
}

STDMETHODIMP TestSample::SetActualDataLength(LONG length) {
    if (length < 0 || length > claimedSize_) return VFW_E_BUFFER_OVERFLOW;
    actual_ = length;
    return S_OK;
}

STDMETHODIMP TestSample::GetMediaType(AM_MEDIA_TYPE** type) {
    if (!type) return E_POINTER;
    *type = nullptr;
    if (!(flags_ & AM_SAMPLE_TYPECHANGED)) return S_FALSE;
    auto* copy = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (!copy) return E_OUTOFMEMORY;
    MediaType owned(*type_);
    *copy = *owned;
    *owned.Get() = {};
    *type = copy;
    return S_OK;
}

STDMETHODIMP TestSample::SetMediaType(AM_MEDIA_TYPE* type) {
    AttachType(type);
    return S_OK;
}

STDMETHODIMP TestSample::GetMediaTime(LONGLONG* start, LONGLONG* end) {
    if (!start || !end) return E_POINTER;
    if (!hasMediaTime_) return VFW_E_MEDIA_TIME_NOT_SET;
    *start = mediaStart_;
    *end = mediaEnd_;
    return S_OK;
}

STDMETHODIMP TestSample::SetMediaTime(LONGLONG* start, LONGLONG* end) {
    hasMediaTime_ = start && end;
    if (hasMediaTime_) {
        mediaStart_ = *start;
        mediaEnd_ = *end;
    }
    return S_OK;
}

STDMETHODIMP TestSample::GetProperties(DWORD size, BYTE* properties) {
    if (!properties) return E_POINTER;
    AM_SAMPLE2_PROPERTIES full = {};
    full.cbData = std::min<DWORD>(size, sizeof full);
    full.dwTypeSpecificFlags = typeSpecificFlags_;
    full.dwSampleFlags = flags_;
    full.lActual = actual_;
    full.tStart = start_;
    full.tStop = stop_;
    full.dwStreamId = streamId_;
    full.pMediaType = (flags_ & AM_SAMPLE_TYPECHANGED) ? type_.Get() : nullptr;
    full.pbBuffer = buffer_.data();
    full.cbBuffer = claimedSize_;
    std::memcpy(properties, &full, full.cbData);
    return S_OK;
}

STDMETHODIMP TestSample::SetProperties(DWORD size, const BYTE* properties) {
    if (!properties) return E_POINTER;
    AM_SAMPLE2_PROPERTIES given = {};
    std::memcpy(&given, properties, std::min<size_t>(size, sizeof given));
    const auto covers = [&given, size](size_t offset, size_t length) {
        const size_t end = offset + length;
        return given.cbData >= end && size >= end;
    };
    using P = AM_SAMPLE2_PROPERTIES;
    if (covers(offsetof(P, pMediaType), sizeof given.pMediaType)) AttachType(given.pMediaType);
    if (covers(offsetof(P, dwTypeSpecificFlags), 4)) typeSpecificFlags_ = given.dwTypeSpecificFlags;
    if (covers(offsetof(P, dwSampleFlags), 4)) flags_ = given.dwSampleFlags;
    if (covers(offsetof(P, lActual), 4)) {
        if (given.lActual < 0 || given.lActual > claimedSize_) return VFW_E_BUFFER_OVERFLOW;
        actual_ = given.lActual;
    }
    if (covers(offsetof(P, tStart), 8)) start_ = given.tStart;
    if (covers(offsetof(P, tStop), 8)) stop_ = given.tStop;
    if (covers(offsetof(P, dwStreamId), 4)) streamId_ = given.dwStreamId;
    return S_OK;
}

}  // namespace tavo_test
