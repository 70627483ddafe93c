#include "filter/stream_clock.h"

#include <new>

StreamClock::~StreamClock() {
    SetGraphClock(nullptr);
    ReleaseOwnClock();
}

void StreamClock::SetGraphClock(IReferenceClock* clock) {
    IReferenceClock* former = nullptr;
    if (clock) clock->AddRef();
    {
        CAutoLock lock(&lock_);
        REFERENCE_TIME now = 0;
        if (streamTime_.HasBegun()) {
            if (Read(&now)) {
                streamTime_.Suspend(now);
            } else {
                streamTime_.Forget();
            }
        }
        former = graphClock_;
        graphClock_ = clock;
        if (streamTime_.IsSuspended() && Read(&now)) streamTime_.Begin(now);
    }
    if (former) former->Release();
}

void StreamClock::BeginStream() {
    CAutoLock lock(&lock_);
    REFERENCE_TIME now = 0;
    streamTime_.Forget();
    if (Read(&now)) streamTime_.Begin(now);
}

void StreamClock::ForgetStream() {
    CAutoLock lock(&lock_);
    streamTime_.Forget();
}

REFERENCE_TIME StreamClock::Now() {
    CAutoLock lock(&lock_);
    REFERENCE_TIME now = 0;
    if (!Read(&now)) return 0;
    if (!streamTime_.HasBegun()) streamTime_.Begin(now);
    return streamTime_.At(now);
}

void StreamClock::ReleaseOwnClock() {
    IReferenceClock* former = nullptr;
    {
        CAutoLock lock(&lock_);
        former = ownClock_;
        ownClock_ = nullptr;
    }
    if (former) former->Release();
}

// Under the lock only.
bool StreamClock::Read(REFERENCE_TIME* now) {
    IReferenceClock* const clock = graphClock_ ? graphClock_ : OwnClock();
    return clock && SUCCEEDED(clock->GetTime(now));
}

IReferenceClock* StreamClock::OwnClock() {
    if (ownClock_) return ownClock_;
    HRESULT result = S_OK;
    auto* const made =
        new (std::nothrow) CBaseReferenceClock(NAME("System Clock"), nullptr, &result);
    if (!made) return nullptr;
    made->AddRef();
    if (FAILED(result)) {
        made->Release();
        return nullptr;
    }
    return ownClock_ = made;
}
