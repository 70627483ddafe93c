// Sink filter: connection, recording, holding.
#include "tests/support/test_sink.h"

#include <vfwmsgs.h>

#include <algorithm>
#include <chrono>

namespace tavo_test {
namespace {

ReceivedSample Describe(IMediaSample* sample, bool keepBytes, bool wholeBuffer) {
    ReceivedSample result;
    result.identity = sample;
    result.threadId = GetCurrentThreadId();
    result.actualLength = sample->GetActualDataLength();
    result.size = sample->GetSize();
    sample->GetPointer(&result.pointer);
    const long length =
        wholeBuffer ? result.size : std::clamp(result.actualLength, 0L, std::max(0L, result.size));
    if (keepBytes && result.pointer) result.bytes.assign(result.pointer, result.pointer + length);
    result.timeResult = sample->GetTime(&result.start, &result.stop);
    result.mediaTimeResult = sample->GetMediaTime(&result.mediaStart, &result.mediaEnd);
    result.syncPoint = sample->IsSyncPoint() == S_OK;
    result.preroll = sample->IsPreroll() == S_OK;
    result.discontinuity = sample->IsDiscontinuity() == S_OK;
    AM_MEDIA_TYPE* type = nullptr;
    if (sample->GetMediaType(&type) == S_OK && type) {
        result.type = MediaType(*type);
        DeleteType(type);
    }
    IMediaSample2* sample2 = nullptr;
    if (SUCCEEDED(sample->QueryInterface(IID_IMediaSample2, reinterpret_cast<void**>(&sample2)))) {
        AM_SAMPLE2_PROPERTIES properties = {};
        result.sample2 = true;
        sample2->GetProperties(sizeof properties, reinterpret_cast<BYTE*>(&properties));
        result.sampleFlags = properties.dwSampleFlags;
        result.typeSpecificFlags = properties.dwTypeSpecificFlags;
        result.streamId = properties.dwStreamId;
        sample2->Release();
    }
    return result;
}

}  // namespace

ComPtr<TestSink> TestSink::Create(const SinkConfig& config) {
    return ComPtr<TestSink>::Adopt(new TestSink(config));
}

std::vector<ReceivedSample> TestInputPin::samples() const {
    std::lock_guard lock(mutex_);
    return samples_;
}

std::vector<Segment> TestInputPin::segments() const {
    std::lock_guard lock(mutex_);
    return segments_;
}

void TestInputPin::ClearSamples() {
    std::lock_guard lock(mutex_);
    samples_.clear();
}

bool TestInputPin::WaitForSamples(size_t count, DWORD milliseconds) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds),
                             [this, count] { return samples_.size() >= count; });
}

TestAllocator* TestInputPin::ownAllocator() {
    if (!ownAllocator_) ownAllocator_ = TestAllocator::Create(config.ownAllocator);
    return ownAllocator_.Get();
}

void TestInputPin::HoldReceive() {
    std::lock_guard lock(mutex_);
    hold_ = true;
}

bool TestInputPin::WaitUntilHeld(DWORD milliseconds) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds),
                             [this] { return held_; });
}

void TestInputPin::ReleaseReceive() {
    std::lock_guard lock(mutex_);
    hold_ = false;
    changed_.notify_all();
}

STDMETHODIMP TestInputPin::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IPin)
        *object = static_cast<IPin*>(this);
    else if (iid == IID_IMemInputPin && config.memInputPin)
        *object = static_cast<IMemInputPin*>(this);
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP TestInputPin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (const auto injected = calls().Enter("ReceiveConnection")) return *injected;
    if (!connector || !type) return E_POINTER;
    const bool change = config.typeChangeWhileConnected && peer() == connector;
    if (connected() && !change) return VFW_E_ALREADY_CONNECTED;
    if (filter_.state() != State_Stopped && !change) return VFW_E_NOT_STOPPED;
    if (config.accept && !config.accept(*type)) return VFW_E_TYPE_NOT_ACCEPTED;
    SetConnection(connector, *type);
    if (config.onConnection) config.onConnection(*type);
    return S_OK;
}

STDMETHODIMP TestInputPin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (const auto injected = calls().Enter("QueryAccept")) return *injected;
    if (!type) return E_POINTER;
    if (config.queryAccept) return *config.queryAccept;
    return !config.accept || config.accept(*type) ? S_OK : S_FALSE;
}

STDMETHODIMP TestInputPin::EndOfStream() { return calls().Enter("EndOfStream").value_or(S_OK); }

STDMETHODIMP TestInputPin::BeginFlush() {
    if (const auto injected = calls().Enter("BeginFlush")) return *injected;
    flushing_ = true;
    if (config.flushReleasesHold) ReleaseReceive();
    return S_OK;
}

STDMETHODIMP TestInputPin::EndFlush() {
    if (const auto injected = calls().Enter("EndFlush")) return *injected;
    flushing_ = false;
    return S_OK;
}

STDMETHODIMP TestInputPin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    if (const auto injected = calls().Enter("NewSegment")) return *injected;
    std::lock_guard lock(mutex_);
    segments_.push_back({start, stop, rate});
    return S_OK;
}

STDMETHODIMP TestInputPin::GetAllocator(IMemAllocator** allocator) {
    if (const auto injected = calls().Enter("GetAllocator")) return *injected;
    if (!allocator) return E_POINTER;
    *allocator = nullptr;
    if (config.allocator == SinkAllocator::kNone) return VFW_E_NO_ALLOCATOR;
    if (config.allocator == SinkAllocator::kOwn) {
        *allocator = ComPtr<IMemAllocator>(ownAllocator()).Detach();
        return S_OK;
    }
    if (!platformAllocator_)
        platformAllocator_ = CreateObject<IMemAllocator>(CLSID_MemoryAllocator);
    *allocator = ComPtr<IMemAllocator>(platformAllocator_).Detach();
    return *allocator ? S_OK : VFW_E_NO_ALLOCATOR;
}

STDMETHODIMP TestInputPin::NotifyAllocator(IMemAllocator* allocator, WINBOOL readOnly) {
    if (const auto injected = calls().Enter("NotifyAllocator")) return *injected;
    if (!allocator) return E_POINTER;
    allocator_ = ComPtr<IMemAllocator>(allocator);
    readOnly_ = readOnly != FALSE;
    return S_OK;
}

STDMETHODIMP TestInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) {
    if (const auto injected = calls().Enter("GetAllocatorRequirements")) return *injected;
    if (!properties) return E_POINTER;
    if (!config.requirements) return E_NOTIMPL;
    *properties = *config.requirements;
    return S_OK;
}

STDMETHODIMP TestInputPin::Receive(IMediaSample* sample) {
    if (const auto injected = calls().Enter("Receive")) return *injected;
    if (!sample) return E_POINTER;
    if (flushing_) return S_FALSE;
    {
        std::unique_lock lock(mutex_);
        held_ = hold_;
        if (held_) changed_.notify_all();
        changed_.wait(lock, [this] { return !hold_; });
        held_ = false;
    }
    if (flushing_) return S_FALSE;
    if (config.onReceive) {
        const HRESULT hr = config.onReceive(sample);
        if (hr != S_OK) return hr;
    }
    Record(sample);
    return S_OK;
}

void TestInputPin::Record(IMediaSample* sample) {
    ReceivedSample record = Describe(sample, config.keepBytes, config.keepWholeBuffer);
    std::lock_guard lock(mutex_);
    samples_.push_back(std::move(record));
    changed_.notify_all();
}

STDMETHODIMP TestInputPin::ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) {
    LONG done = 0;
    HRESULT hr = S_OK;
    while (done < count && (hr = Receive(samples[done])) == S_OK) ++done;
    if (processed) *processed = done;
    return hr;
}

STDMETHODIMP TestInputPin::ReceiveCanBlock() {
    return calls().Enter("ReceiveCanBlock").value_or(config.receiveCanBlock);
}

}  // namespace tavo_test
