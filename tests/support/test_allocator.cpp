// Allocator with a pool of guarded samples.
#include "tests/support/test_allocator.h"

#include <vfwmsgs.h>

#include <algorithm>

namespace tavo_test {

ComPtr<TestAllocator> TestAllocator::Create(const AllocatorConfig& config) {
    return ComPtr<TestAllocator>::Adopt(new TestAllocator(config));
}

std::vector<BufferRequest> TestAllocator::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

void TestAllocator::ForgetRequests() {
    std::lock_guard lock(mutex_);
    requests_.clear();
}

bool TestAllocator::committed() const {
    std::lock_guard lock(mutex_);
    return committed_;
}

int TestAllocator::samplesOut() const {
    std::lock_guard lock(mutex_);
    return out_;
}

ALLOCATOR_PROPERTIES TestAllocator::asked() const {
    std::lock_guard lock(mutex_);
    return asked_;
}

ALLOCATOR_PROPERTIES TestAllocator::granted() const {
    std::lock_guard lock(mutex_);
    return granted_;
}

int TestAllocator::damagedSamples() const {
    std::lock_guard lock(mutex_);
    return damaged_;
}

void TestAllocator::AttachTypeOnce(const AM_MEDIA_TYPE& type) {
    std::lock_guard lock(mutex_);
    typeOnce_ = MediaType(type);
}

void TestAllocator::SetConfig(const AllocatorConfig& config) {
    std::lock_guard lock(mutex_);
    config_ = config;
}

STDMETHODIMP TestAllocator::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IMemAllocator;
    *object = known ? static_cast<IMemAllocator*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) TestAllocator::AddRef() { return static_cast<ULONG>(++references_); }

STDMETHODIMP_(ULONG) TestAllocator::Release() {
    const long left = --references_;
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

STDMETHODIMP TestAllocator::SetProperties(ALLOCATOR_PROPERTIES* request,
                                          ALLOCATOR_PROPERTIES* actual) {
    if (const auto injected = calls_.Enter("SetProperties")) return *injected;
    if (!request || !actual) return E_POINTER;
    std::lock_guard lock(mutex_);
    if (committed_) return VFW_E_ALREADY_COMMITTED;
    if (out_ > 0) return VFW_E_BUFFERS_OUTSTANDING;
    if (request->cbAlign == 0) return VFW_E_BADALIGN;
    asked_ = *request;
    granted_ = *request;
    granted_.cBuffers = config_.count.value_or(request->cBuffers);
    granted_.cbBuffer = std::max(0L, config_.size.value_or(request->cbBuffer) + config_.sizeChange);
    granted_.cbAlign = config_.align.value_or(request->cbAlign);
    *actual = granted_;
    return S_OK;
}

STDMETHODIMP TestAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    if (const auto injected = calls_.Enter("GetProperties")) return *injected;
    if (!properties) return E_POINTER;
    std::lock_guard lock(mutex_);
    *properties = granted_;
    return S_OK;
}

STDMETHODIMP TestAllocator::Commit() {
    if (const auto injected = calls_.Enter("Commit")) return *injected;
    std::lock_guard lock(mutex_);
    if (committed_) return S_OK;
    if (granted_.cbBuffer == 0) return VFW_E_SIZENOTSET;
    if (granted_.cBuffers == 0) return VFW_E_BUFFER_NOTSET;
    committed_ = true;
    if (out_ > 0) return S_OK;  // recommitted before all came back: the old pool serves on
    const SampleConfig sample = {.size = config_.bufferSize.value_or(granted_.cbBuffer),
                                 .sample2 = config_.sample2,
                                 .guard = config_.guard,
                                 .align = static_cast<size_t>(std::max(16L, granted_.cbAlign)),
                                 .claimedSize = config_.claimedSize};
    pool_.clear();
    free_.clear();
    for (long i = 0; i < granted_.cBuffers; ++i) {
        pool_.push_back(std::make_unique<TestSample>(sample, static_cast<SampleOwner*>(this)));
        free_.push_back(pool_.back().get());
    }
    return S_OK;
}

STDMETHODIMP TestAllocator::Decommit() {
    if (const auto injected = calls_.Enter("Decommit")) return *injected;
    std::lock_guard lock(mutex_);
    committed_ = false;
    freed_.notify_all();
    return S_OK;
}

STDMETHODIMP TestAllocator::GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start,
                                      REFERENCE_TIME* stop, DWORD flags) {
    const auto injected = calls_.Enter("GetBuffer");
    if (!buffer) return E_POINTER;
    *buffer = nullptr;
    std::unique_lock lock(mutex_);
    requests_.push_back({start ? std::optional(*start) : std::nullopt,
                         stop ? std::optional(*stop) : std::nullopt, flags});
    if (injected) return *injected;
    if (flags & AM_GBF_NOWAIT) {
        if (committed_ && free_.empty()) return VFW_E_TIMEOUT;
    } else {
        freed_.wait(lock, [this] { return !committed_ || !free_.empty(); });
    }
    if (!committed_) return VFW_E_NOT_COMMITTED;
    TestSample* sample = free_.front();
    free_.erase(free_.begin());
    ++out_;
    Prepare(*sample);
    *buffer = sample;
    return S_OK;
}

void TestAllocator::Prepare(TestSample& sample) {
    sample.ResetProperties();
    if (config_.actualLength) sample.SetActualDataLength(*config_.actualLength);
    if (typeOnce_) {
        sample.AttachType(typeOnce_->Get());
        typeOnce_.reset();
    }
    if (config_.onHandOut) config_.onHandOut(sample);
    sample.Revive();
    AddRef();
}

STDMETHODIMP TestAllocator::ReleaseBuffer(IMediaSample* buffer) {
    calls_.Add("ReleaseBuffer");
    return buffer ? S_OK : E_POINTER;
}

void TestAllocator::OnFinalRelease(TestSample* sample) {
    {
        std::lock_guard lock(mutex_);
        if (!sample->buffer().Intact()) ++damaged_;
        free_.push_back(sample);
        --out_;
        freed_.notify_one();
    }
    Release();
}

}  // namespace tavo_test
