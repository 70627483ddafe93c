// The reference clock's time, which never goes back, its timer, and its construction.
#include <atomic>
#include <thread>
#include <type_traits>

#include "tests/dshow/clock_probe.h"
#include "tests/support/nothrow_new.h"

using namespace tavo_test;

namespace {

static_assert(!std::is_destructible_v<CBaseReferenceClock>);
static_assert(!std::is_abstract_v<CBaseReferenceClock>);
static_assert(std::is_base_of_v<CCritSec, CBaseReferenceClock>);

TEST_F(Clock, ObjectsAndInterfaces) {
    MakeClock();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_ + 2);
    const ComPtr<IUnknown> unknown = clock_.As<IUnknown>();
    for (REFIID iid : {IID_IReferenceClock, __uuidof(IReferenceClockTimerControl)}) {
        const ComPtr<IUnknown> same = clock_.As<IUnknown>(iid);
        ASSERT_TRUE(same);
        EXPECT_EQ(same.As<IUnknown>().Get(), unknown.Get());
    }
    EXPECT_FALSE(clock_.As<IPersist>());
    EXPECT_FALSE(clock_.As<IMediaFilter>());
    EXPECT_NE(clock_->GetSchedule(), nullptr);
}

TEST_F(Clock, TimeNeverGoesBack) {
    MakeManual();
    EXPECT_EQ(manual_->GetTime(nullptr), E_POINTER);
    REFERENCE_TIME time = 0;
    EXPECT_EQ(manual_->GetTime(&time), S_OK);
    EXPECT_EQ(time, 1000);
    time = 0;
    EXPECT_EQ(manual_->GetTime(&time), S_FALSE);  // no later than before
    EXPECT_EQ(time, 1000);
    manual_->now = 400;
    time = 0;
    EXPECT_EQ(manual_->GetTime(&time), S_FALSE);
    EXPECT_EQ(time, 1000);
    manual_->now = 1001;
    EXPECT_EQ(manual_->GetTime(&time), S_OK);
    EXPECT_EQ(time, 1001);
    manual_->Restart(5000);
    EXPECT_EQ(manual_->GetTime(&time), S_FALSE);
    EXPECT_EQ(time, 5000);
    manual_->Restart();
    EXPECT_EQ(manual_->GetTime(&time), S_OK);
    EXPECT_EQ(time, 1001);
}

TEST_F(Clock, RunsOnMilliseconds) {
    MakeClock();
    const DWORD outerStart = timeGetTime();
    const REFERENCE_TIME before = Now(*clock_);
    const DWORD innerStart = timeGetTime();
    Sleep(150);
    const DWORD innerEnd = timeGetTime();
    const REFERENCE_TIME elapsed = Now(*clock_) - before;
    const DWORD outerEnd = timeGetTime();
    EXPECT_GE(elapsed, (innerEnd - innerStart) * kMillisecond);
    EXPECT_LE(elapsed, (outerEnd - outerStart) * kMillisecond);
    EXPECT_EQ(before % kMillisecond, 0);
    int repeated = 0;
    for (int i = 0; i < 100000 && !repeated; ++i) {
        REFERENCE_TIME time;
        repeated += clock_->GetTime(&time) == S_FALSE;
    }
    EXPECT_GT(repeated, 0);  // twice in one millisecond
}

TEST_F(Clock, ShiftForward) {
    MakeClock();
    const REFERENCE_TIME before = Now(*clock_);
    EXPECT_EQ(clock_->SetTimeDelta(kHour), NOERROR);
    EXPECT_GE(Now(*clock_), before + kHour);
}

TEST_F(Clock, ShiftBackwardStandsStill) {
    MakeClock();
    const REFERENCE_TIME before = Now(*clock_);
    EXPECT_EQ(clock_->SetTimeDelta(-kHour), NOERROR);
    REFERENCE_TIME time = 0;
    EXPECT_EQ(clock_->GetTime(&time), S_FALSE);
    EXPECT_EQ(time, before);
    EXPECT_LT(clock_->GetPrivateTime(), before - kHour / 2);
    EXPECT_EQ(clock_->SetTimeDelta(2 * kHour), NOERROR);
    EXPECT_EQ(clock_->GetTime(&time), S_OK);
    EXPECT_GT(time, before);
}

TEST_F(Clock, TimerResolution) {
    MakeClock();
    const auto control = clock_.As<IReferenceClockTimerControl>();
    TIMECAPS caps = {};
    ASSERT_EQ(timeGetDevCaps(&caps, sizeof caps), UINT(TIMERR_NOERROR));
    REFERENCE_TIME resolution = 0;
    EXPECT_EQ(control->GetDefaultTimerResolution(nullptr), E_POINTER);
    EXPECT_EQ(control->GetDefaultTimerResolution(&resolution), S_OK);
    EXPECT_EQ(resolution, REFERENCE_TIME(caps.wPeriodMin) * kMillisecond);
    EXPECT_EQ(control->SetDefaultTimerResolution(50 * kMillisecond), S_OK);
    EXPECT_EQ(control->GetDefaultTimerResolution(&resolution), S_OK);
    EXPECT_EQ(resolution, 50 * kMillisecond);
    EXPECT_EQ(control->SetDefaultTimerResolution(1), S_OK);
    EXPECT_EQ(control->GetDefaultTimerResolution(&resolution), S_OK);
    EXPECT_EQ(resolution, REFERENCE_TIME(caps.wPeriodMin) * kMillisecond);
    EXPECT_EQ(control->SetDefaultTimerResolution(0), S_OK);
    EXPECT_EQ(control->GetDefaultTimerResolution(&resolution), S_OK);
    EXPECT_EQ(resolution, 0);
}

TEST_F(Clock, FailedConstruction) {
    HRESULT hr = S_OK;
    for (int after = 0;; ++after) {
        ComPtr<CBaseReferenceClock> broken;
        {
            // The object itself comes from plain new.
            FailNothrowNew fail(after);
            hr = S_OK;
            broken =
                ComPtr<CBaseReferenceClock>(new CBaseReferenceClock(NAME("clock"), nullptr, &hr));
            if (fail.refused() == 0) break;
        }
        EXPECT_EQ(hr, E_OUTOFMEMORY);
        broken.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
    }
    EXPECT_EQ(hr, S_OK);
}

TEST_F(Clock, TimeFromManyThreads) {
    MakeClock();
    std::atomic<bool> done = false;
    std::atomic<int> wentBack = 0;
    const auto read = [&] {
        REFERENCE_TIME last = 0;
        while (!done) {
            const REFERENCE_TIME time = Now(*clock_);
            wentBack += time < last;
            last = time;
        }
    };
    std::thread first(read), second(read);
    for (int i = 0; i < 50; ++i) {
        clock_->SetTimeDelta(i % 2 ? -3 * kMillisecond : 4 * kMillisecond);
        DWORD_PTR cookie = 0;
        clock_->AdviseTime(Now(*clock_), kMillisecond, Event(), &cookie);
        Sleep(2);
    }
    done = true;
    first.join();
    second.join();
    EXPECT_EQ(wentBack, 0);
}

TEST_F(Clock, AsTheSourceOfStreamTime) {
    MakeManual();
    const ComPtr<HostFilter> host = MakeHost();
    host->SetSyncSource(manual_.Get());
    host->Run(400);
    CRefTime time;
    EXPECT_EQ(host->StreamTime(time), S_OK);
    EXPECT_EQ(time, 600);
    EXPECT_EQ(host->StreamTime(time), S_OK);  // the clock says S_FALSE now
    EXPECT_EQ(time, 600);
    host->SetSyncSource(nullptr);
}

TEST_F(Clock, SystemClock) {
    HRESULT hr = S_OK;
    ComPtr<CSystemClock> clock(new CSystemClock(NAME("system"), nullptr, &hr));
    ASSERT_EQ(hr, S_OK);
    const auto persist = clock.As<IPersist>();
    const auto adjust = clock.As<IAMClockAdjust>(IID_IAMClockAdjust);
    ASSERT_TRUE(persist);
    ASSERT_TRUE(adjust);
    EXPECT_TRUE(clock.As<IReferenceClock>());
    EXPECT_EQ(persist.As<IUnknown>().Get(), adjust.As<IUnknown>().Get());
    CLSID clsid = {};
    EXPECT_EQ(persist->GetClassID(nullptr), E_POINTER);
    EXPECT_EQ(persist->GetClassID(&clsid), S_OK);
    EXPECT_TRUE(clsid == CLSID_SystemClock);
    const REFERENCE_TIME before = Now(*clock);
    EXPECT_EQ(adjust->SetClockDelta(kHour), NOERROR);
    EXPECT_GE(Now(*clock), before + kHour);
}

}  // namespace
