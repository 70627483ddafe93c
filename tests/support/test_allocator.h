// Allocator of the tests, with the rules of the platform's own plus faults on request.
//
//   ComPtr<TestAllocator> allocator = TestAllocator::Create({.sizeChange = -1});  // short buffers
//   allocator->calls().Inject("SetProperties", E_FAIL);
//   allocator->AttachTypeOnce(*type);        // the next sample handed out carries a new type
//   EXPECT_EQ(allocator->requests().back().flags, AM_GBF_NOTASYNCPOINT);
//   EXPECT_EQ(allocator->damagedSamples(), 0);
//
// As on the platform: properties cannot change while committed or while samples are out; GetBuffer
// waits for a free sample; Decommit wakes it; samples keep their allocator alive while they are
// out.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "tests/support/call_log.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_sample.h"

namespace tavo_test {

struct AllocatorConfig {
    bool sample2 = true;
    BufferGuard guard = BufferGuard::kCanary;
    // Granted instead of what SetProperties asks for, and reported.
    std::optional<long> count = {};
    std::optional<long> size = {};
    std::optional<long> align = {};
    // Added to the size that is asked for: slack, or short buffers. Reported.
    long sizeChange = 0;
    // Size of the buffers actually handed out, whatever was granted and reported.
    std::optional<long> bufferSize = {};
    // GetSize of the samples, whatever their buffers hold.
    std::optional<long> claimedSize = {};
    // Actual data length that samples have when handed out (else that of their previous use).
    std::optional<long> actualLength = {};
    // Called for every sample that is handed out, with the allocator's lock held.
    std::function<void(TestSample&)> onHandOut = {};
};

struct BufferRequest {
    std::optional<REFERENCE_TIME> start;
    std::optional<REFERENCE_TIME> stop;
    DWORD flags;
};

class TestAllocator : public IMemAllocator,
                      private SampleOwner,
                      private LiveObject<LiveKind::kAllocator> {
  public:
    static ComPtr<TestAllocator> Create(const AllocatorConfig& config = {});

    CallLog& calls() { return calls_; }
    std::vector<BufferRequest> requests() const;
    void ForgetRequests();
    bool committed() const;
    int samplesOut() const;
    // What the last SetProperties asked for, and what it was granted.
    ALLOCATOR_PROPERTIES asked() const;
    ALLOCATOR_PROPERTIES granted() const;
    // Samples that came back with bytes outside their buffer changed.
    int damagedSamples() const;
    void AttachTypeOnce(const AM_MEDIA_TYPE& type);
    // Takes effect with the next Commit.
    void SetConfig(const AllocatorConfig& config);

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request,
                               ALLOCATOR_PROPERTIES* actual) override;
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    STDMETHODIMP Commit() override;
    STDMETHODIMP Decommit() override;
    STDMETHODIMP GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override;
    STDMETHODIMP ReleaseBuffer(IMediaSample* buffer) override;

  private:
    explicit TestAllocator(const AllocatorConfig& config) : config_(config) {}
    virtual ~TestAllocator() = default;
    void OnFinalRelease(TestSample* sample) override;
    void Prepare(TestSample& sample);

    std::atomic<long> references_ = 1;
    CallLog calls_;
    mutable std::mutex mutex_;
    std::condition_variable freed_;
    AllocatorConfig config_;
    ALLOCATOR_PROPERTIES asked_ = {};
    ALLOCATOR_PROPERTIES granted_ = {};
    bool committed_ = false;
    int out_ = 0;
    int damaged_ = 0;
    std::vector<std::unique_ptr<TestSample>> pool_;
    std::vector<TestSample*> free_;
    std::vector<BufferRequest> requests_;
    std::optional<MediaType> typeOnce_;
};

}  // namespace tavo_test
