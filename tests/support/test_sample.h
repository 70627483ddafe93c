// Media sample of the tests: an IMediaSample, on request also an IMediaSample2, over a buffer that
// notices overruns.
//
//   ComPtr<TestSample> sample = TestSample::Create({.size = 1000, .sample2 = false});
//   sample->SetTimes(0, 400000);             // or SetStartOnly, or nothing: no times
//   sample->AttachType(type);                // TYPECHANGED until AttachType(nullptr)
//   EXPECT_TRUE(sample->buffer().Intact());
//
// Freestanding samples die with their last reference; those of a TestAllocator go back to its pool.
#pragma once

#include <windows.h>

#include <strmif.h>

#include <atomic>
#include <optional>

#include "tests/support/com_ptr.h"
#include "tests/support/guarded_buffer.h"
#include "tests/support/media_types.h"

namespace tavo_test {

using tavo::test::BufferGuard;
using tavo::test::GuardedBuffer;

struct SampleConfig {
    long size = 0;
    bool sample2 = true;
    BufferGuard guard = BufferGuard::kCanary;
    size_t align = 16;
    // What GetSize claims, where that shall differ from the buffer's size.
    std::optional<long> claimedSize = {};
};

// Where a sample goes when its last reference is released.
class SampleOwner {
  public:
    virtual void OnFinalRelease(class TestSample* sample) = 0;

  protected:
    ~SampleOwner() = default;
};

class TestSample : public IMediaSample2 {
  public:
    // One reference is the caller's. Without an owner the sample deletes itself.
    static ComPtr<TestSample> Create(const SampleConfig& config);
    explicit TestSample(const SampleConfig& config, SampleOwner* owner = nullptr);
    virtual ~TestSample() = default;
    TestSample(const TestSample&) = delete;
    TestSample& operator=(const TestSample&) = delete;

    const GuardedBuffer& buffer() const { return buffer_; }
    BYTE* data() const { return buffer_.data(); }
    // Another buffer, all bytes set to `fill`. Not while somebody uses the present one.
    void Reshape(long size, BufferGuard guard, BYTE fill);
    void SetTimes(REFERENCE_TIME start, REFERENCE_TIME stop);
    void SetStartOnly(REFERENCE_TIME start);
    void ClearTimes();
    void AttachType(const AM_MEDIA_TYPE* type);
    void SetStreamId(DWORD id) { streamId_ = id; }
    void SetTypeSpecificFlags(DWORD flags) { typeSpecificFlags_ = flags; }
    // Everything but buffer and actual length as new: what an allocator does before each use.
    void ResetProperties();
    // The pool's way to give the sample out.
    void Revive();
    long references() const { return references_; }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetPointer(BYTE** buffer) override;
    STDMETHODIMP_(LONG) GetSize() override;
    STDMETHODIMP GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    STDMETHODIMP SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    STDMETHODIMP IsSyncPoint() override { return HasFlag(AM_SAMPLE_SPLICEPOINT); }
    STDMETHODIMP SetSyncPoint(WINBOOL on) override { return PutFlag(AM_SAMPLE_SPLICEPOINT, on); }
    STDMETHODIMP IsPreroll() override { return HasFlag(AM_SAMPLE_PREROLL); }
    STDMETHODIMP SetPreroll(WINBOOL on) override { return PutFlag(AM_SAMPLE_PREROLL, on); }
    STDMETHODIMP_(LONG) GetActualDataLength() override { return actual_; }
    STDMETHODIMP SetActualDataLength(LONG length) override;
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE** type) override;
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP IsDiscontinuity() override { return HasFlag(AM_SAMPLE_DATADISCONTINUITY); }
    STDMETHODIMP SetDiscontinuity(WINBOOL on) override {
        return PutFlag(AM_SAMPLE_DATADISCONTINUITY, on);
    }
    STDMETHODIMP GetMediaTime(LONGLONG* start, LONGLONG* end) override;
    STDMETHODIMP SetMediaTime(LONGLONG* start, LONGLONG* end) override;

    STDMETHODIMP GetProperties(DWORD size, BYTE* properties) override;
    STDMETHODIMP SetProperties(DWORD size, const BYTE* properties) override;

  private:
    HRESULT HasFlag(DWORD flag) const { return (flags_ & flag) ? S_OK : S_FALSE; }
    HRESULT PutFlag(DWORD flag, WINBOOL on);

    std::atomic<long> references_ = 0;
    SampleOwner* owner_;
    const bool sample2_;
    GuardedBuffer buffer_;
    long claimedSize_;
    DWORD flags_ = 0;
    DWORD typeSpecificFlags_ = 0;
    DWORD streamId_ = AM_STREAM_MEDIA;
    REFERENCE_TIME start_ = 0;
    REFERENCE_TIME stop_ = 0;
    bool hasMediaTime_ = false;
    LONGLONG mediaStart_ = 0;
    LONGLONG mediaEnd_ = 0;
    LONG actual_;
    MediaType type_;
};

}  // namespace tavo_test
