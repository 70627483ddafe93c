// Source filter: connection, allocator agreement, and sending by hand.
#include "tests/support/test_source.h"

#include <vfwmsgs.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "tests/support/source_seeking.h"

namespace tavo_test {
namespace {

void FillBytes(const SampleSpec& spec, IMediaSample& sample) {
    BYTE* data = nullptr;
    sample.GetPointer(&data);
    const auto size = static_cast<size_t>(sample.GetSize());
    const size_t length = std::min(size, spec.bytes.size());
    if (length) std::memcpy(data, spec.bytes.data(), length);
    const size_t actual = spec.bytes.empty() ? size : length;
    sample.SetActualDataLength(spec.actualLength.value_or(static_cast<long>(actual)));
}

void SetStreamId(IMediaSample& sample, DWORD id) {
    const auto sample2 = ComPtr<IMediaSample>(&sample).As<IMediaSample2>();
    if (!sample2) return;
    AM_SAMPLE2_PROPERTIES properties = {};
    const DWORD covered = offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId) + sizeof(DWORD);
    sample2->GetProperties(covered, reinterpret_cast<BYTE*>(&properties));
    properties.cbData = covered;
    properties.dwStreamId = id;
    sample2->SetProperties(covered, reinterpret_cast<const BYTE*>(&properties));
}

void FillProperties(const SampleSpec& spec, IMediaSample& sample) {
    REFERENCE_TIME start = spec.start.value_or(0);
    REFERENCE_TIME stop = spec.stop.value_or(0);
    sample.SetTime(spec.start ? &start : nullptr, spec.start && spec.stop ? &stop : nullptr);
    LONGLONG mediaStart = spec.mediaStart.value_or(0);
    LONGLONG mediaEnd = spec.mediaEnd.value_or(0);
    if (spec.mediaStart) sample.SetMediaTime(&mediaStart, &mediaEnd);
    sample.SetSyncPoint(spec.syncPoint);
    sample.SetPreroll(spec.preroll);
    sample.SetDiscontinuity(spec.discontinuity);
    if (spec.type) sample.SetMediaType(const_cast<AM_MEDIA_TYPE*>(spec.type->Get()));
    if (spec.streamId != AM_STREAM_MEDIA) SetStreamId(sample, spec.streamId);
}

}  // namespace

ComPtr<TestSource> TestSource::Create(const SourceConfig& config) {
    return ComPtr<TestSource>::Adopt(new TestSource(config));
}

TestOutputPin::TestOutputPin(TestFilter& filter, const SourceConfig& config)
    : TestPin(filter, PINDIR_OUTPUT, L"Output"), config_(config) {
    offered = config.types;
    if (config.seeking) seeking_ = std::make_unique<SourceSeeking>(*this);
}

TestOutputPin::~TestOutputPin() = default;

std::vector<QualityNotice> TestOutputPin::notices() const {
    std::lock_guard lock(noticesMutex_);
    return notices_;
}

STDMETHODIMP TestOutputPin::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IPin)
        *object = static_cast<IPin*>(this);
    else if (iid == IID_IQualityControl && config_.qualityControl)
        *object = static_cast<IQualityControl*>(this);
    else if (iid == IID_IMediaSeeking && seeking_)
        *object = static_cast<IMediaSeeking*>(seeking_.get());
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP TestOutputPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (const auto injected = calls().Enter("Connect")) return *injected;
    if (!receiver) return E_POINTER;
    if (connected()) return VFW_E_ALREADY_CONNECTED;
    if (filter_.state() != State_Stopped) return VFW_E_NOT_STOPPED;
    if (type && type->majortype != GUID_NULL && type->formattype != GUID_NULL)
        return TryType(receiver, *type);
    HRESULT hr = VFW_E_NO_ACCEPTABLE_TYPES;
    for (const MediaType& candidate : offered) {
        const bool fits =
            !type || ((type->majortype == GUID_NULL || type->majortype == candidate->majortype) &&
                      (type->subtype == GUID_NULL || type->subtype == candidate->subtype));
        if (!fits) continue;
        hr = TryType(receiver, *candidate);
        if (SUCCEEDED(hr)) return hr;
    }
    return hr;
}

HRESULT TestOutputPin::TryType(IPin* receiver, const AM_MEDIA_TYPE& type) {
    ComPtr<IMemInputPin> input = ComPtr<IPin>(receiver).As<IMemInputPin>();
    if (!input) return VFW_E_NO_TRANSPORT;
    SetConnection(receiver, type);
    HRESULT hr = receiver->ReceiveConnection(this, &type);
    if (SUCCEEDED(hr)) {
        input_ = input;
        hr = NegotiateAllocator(type);
        if (FAILED(hr)) receiver->Disconnect();
    }
    if (FAILED(hr)) {
        OnDisconnected();
        SetConnection(nullptr, AM_MEDIA_TYPE{});
    }
    return hr;
}

HRESULT TestOutputPin::NegotiateAllocator(const AM_MEDIA_TYPE& type) {
    ALLOCATOR_PROPERTIES wish = {};
    input_->GetAllocatorRequirements(&wish);
    wish.cBuffers = std::max(wish.cBuffers, config_.wish.cBuffers);
    wish.cbBuffer = std::max(
        wish.cbBuffer, config_.wish.cbBuffer ? config_.wish.cbBuffer : LONG(type.lSampleSize));
    wish.cbAlign = std::max({wish.cbAlign, config_.wish.cbAlign, 1L});
    wish.cbPrefix = std::max(wish.cbPrefix, config_.wish.cbPrefix);
    if (config_.choice == AllocatorChoice::kPeerThenOwn) {
        ComPtr<IMemAllocator> offer;
        if (SUCCEEDED(input_->GetAllocator(offer.Put())) &&
            SUCCEEDED(TryAllocator(offer.Get(), wish)))
            return S_OK;
    }
    if (config_.choice == AllocatorChoice::kPlatformOnly) {
        const auto platform = CreateObject<IMemAllocator>(CLSID_MemoryAllocator);
        return platform ? TryAllocator(platform.Get(), wish) : E_OUTOFMEMORY;
    }
    ComPtr<TestAllocator> own = TestAllocator::Create(config_.allocator);
    const HRESULT hr = TryAllocator(own.Get(), wish);
    if (SUCCEEDED(hr)) testAllocator_ = own;
    return hr;
}

HRESULT TestOutputPin::TryAllocator(IMemAllocator* allocator, ALLOCATOR_PROPERTIES wish) {
    ALLOCATOR_PROPERTIES granted = {};
    HRESULT hr = allocator->SetProperties(&wish, &granted);
    if (FAILED(hr)) return hr;
    hr = input_->NotifyAllocator(allocator, config_.readOnly);
    if (SUCCEEDED(hr)) allocator_ = ComPtr<IMemAllocator>(allocator);
    return hr;
}

void TestOutputPin::OnDisconnected() {
    if (allocator_) allocator_->Decommit();
    allocator_.Reset();
    testAllocator_.Reset();
    input_.Reset();
}

STDMETHODIMP TestOutputPin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (const auto injected = calls().Enter("QueryAccept")) return *injected;
    if (!type) return E_POINTER;
    const MediaType asked(*type);
    const bool known = std::find(offered.begin(), offered.end(), asked) != offered.end();
    return known ? S_OK : S_FALSE;
}

STDMETHODIMP TestOutputPin::Notify(IBaseFilter* sender, Quality quality) {
    if (const auto injected = calls().Enter("Notify")) return *injected;
    std::lock_guard lock(noticesMutex_);
    notices_.push_back({sender, quality});
    return S_OK;
}

STDMETHODIMP TestOutputPin::SetSink(IQualityControl* sink) {
    calls().Add("SetSink");
    qualitySink_ = sink;
    return S_OK;
}

ComPtr<IMediaSample> TestOutputPin::MakeSample(const SampleSpec& spec, HRESULT* result) {
    ComPtr<IMediaSample> sample;
    HRESULT hr = S_OK;
    if (spec.freestanding) {
        sample = TestSample::Create(*spec.freestanding).As<IMediaSample>();
    } else {
        hr = allocator_ ? allocator_->GetBuffer(sample.Put(), nullptr, nullptr, 0)
                        : VFW_E_NO_ALLOCATOR;
        if (FAILED(hr)) sample.Detach();
    }
    if (result) *result = hr;
    if (sample) {
        FillBytes(spec, *sample);
        FillProperties(spec, *sample);
    }
    return sample;
}

HRESULT TestOutputPin::Deliver(const SampleSpec& spec) {
    HRESULT hr = S_OK;
    const ComPtr<IMediaSample> sample = MakeSample(spec, &hr);
    return sample ? Deliver(sample.Get()) : hr;
}

HRESULT TestOutputPin::Deliver(IMediaSample* sample) {
    return input_ ? input_->Receive(sample) : VFW_E_NOT_CONNECTED;
}

HRESULT TestOutputPin::SendEndOfStream() {
    return peer() ? peer()->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT TestOutputPin::SendBeginFlush() {
    return peer() ? peer()->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT TestOutputPin::SendEndFlush() { return peer() ? peer()->EndFlush() : VFW_E_NOT_CONNECTED; }

HRESULT TestOutputPin::SendNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    return peer() ? peer()->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}

}  // namespace tavo_test
