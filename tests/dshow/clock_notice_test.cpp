// Notices of the reference clock: when they come, when they do not, and what the clock's end does
// to them.
#include "tests/dshow/clock_probe.h"
#include "tests/support/nothrow_new.h"

using namespace tavo_test;

namespace {

TEST_F(Clock, AdviseTimeChecksItsArguments) {
    MakeClock();
    DWORD_PTR cookie = 77;
    EXPECT_EQ(clock_->AdviseTime(1, 1, Event(), nullptr), E_POINTER);
    const struct {
        REFERENCE_TIME base, stream;
    } rows[] = {{0, 0}, {-5, 5}, {-10, 3}, {MAX_TIME, 0}, {MAX_TIME - 3, 3}};
    for (const auto& row : rows) {
        cookie = 77;
        EXPECT_EQ(clock_->AdviseTime(row.base, row.stream, Event(), &cookie), E_INVALIDARG)
            << row.base << ' ' << row.stream;
        EXPECT_EQ(cookie, 0u);
    }
    EXPECT_EQ(clock_->GetSchedule()->GetAdviseCount(), 0u);
    FailNothrowNew fail;
    cookie = 77;
    EXPECT_EQ(clock_->AdviseTime(Now(*clock_), kHour, Event(), &cookie), E_OUTOFMEMORY);
    EXPECT_EQ(cookie, 0u);
}

TEST_F(Clock, AdvisePeriodicChecksItsArguments) {
    MakeClock();
    EXPECT_EQ(clock_->AdvisePeriodic(1, 1, Semaphore(), nullptr), E_POINTER);
    const struct {
        REFERENCE_TIME start, period;
    } rows[] = {{0, 10}, {-1, 10}, {10, 0}, {10, -1}, {MAX_TIME, 10}};
    for (const auto& row : rows) {
        DWORD_PTR cookie = 77;
        EXPECT_EQ(clock_->AdvisePeriodic(row.start, row.period, Semaphore(), &cookie), E_INVALIDARG)
            << row.start << ' ' << row.period;
        EXPECT_EQ(cookie, 0u);
    }
}

TEST_F(Clock, NoticeComesInTime) {
    MakeClock();
    const REFERENCE_TIME start = Now(*clock_);
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdviseTime(start, 200 * kMillisecond, Event(), &cookie), NOERROR);
    EXPECT_NE(cookie, 0u);
    ASSERT_TRUE(Signalled(kPatience));
    EXPECT_GE(clock_->GetPrivateTime() - start, 199 * kMillisecond);  // a millisecond early at most
    EXPECT_EQ(clock_->Unadvise(cookie), S_FALSE);
}

TEST_F(Clock, NoticeForThePastComesAtOnce) {
    MakeClock();
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdviseTime(1, 0, Event(), &cookie), NOERROR);
    EXPECT_TRUE(Signalled(kPatience));
}

TEST_F(Clock, EarlierNoticeOvertakesALaterOne) {
    MakeClock();
    DWORD_PTR later = 0, sooner = 0;
    ASSERT_EQ(clock_->AdviseTime(Now(*clock_), kHour, Event(), &later), NOERROR);
    Sleep(50);
    const HANDLE other = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_EQ(clock_->AdviseTime(Now(*clock_), 50 * kMillisecond, reinterpret_cast<HEVENT>(other),
                                 &sooner),
              NOERROR);
    EXPECT_GT(sooner, later);
    EXPECT_EQ(WaitForSingleObject(other, kPatience), WAIT_OBJECT_0);
    EXPECT_FALSE(Signalled(0));
    EXPECT_EQ(clock_->Unadvise(later), S_OK);
    CloseHandle(other);
}

TEST_F(Clock, PeriodicNotices) {
    MakeClock();
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdvisePeriodic(Now(*clock_), 5 * kMillisecond, Semaphore(), &cookie),
              NOERROR);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(WaitForSingleObject(semaphore_, kPatience), WAIT_OBJECT_0) << i;
    EXPECT_EQ(clock_->Unadvise(cookie), S_OK);
    EXPECT_EQ(clock_->Unadvise(cookie), S_FALSE);
    while (WaitForSingleObject(semaphore_, 0) == WAIT_OBJECT_0) {
    }
    EXPECT_EQ(WaitForSingleObject(semaphore_, 200), DWORD(WAIT_TIMEOUT));
}

TEST_F(Clock, MissedPeriodsAreMadeUp) {
    MakeManual();
    DWORD_PTR cookie = 0;
    ASSERT_EQ(manual_->AdvisePeriodic(kHour, UNITS, Semaphore(), &cookie), NOERROR);
    manual_->now = kHour + 4 * UNITS;
    manual_->TriggerThread();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(WaitForSingleObject(semaphore_, kPatience), WAIT_OBJECT_0) << i;
    EXPECT_EQ(WaitForSingleObject(semaphore_, 150), DWORD(WAIT_TIMEOUT));
}

TEST_F(Clock, UnadvisedNoticeDoesNotCome) {
    MakeClock();
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdviseTime(Now(*clock_), kHour, Event(), &cookie), NOERROR);
    EXPECT_EQ(clock_->Unadvise(cookie), S_OK);
    EXPECT_EQ(clock_->SetTimeDelta(2 * kHour), NOERROR);
    EXPECT_FALSE(Signalled(200));
    EXPECT_EQ(clock_->Unadvise(12345), S_FALSE);
}

TEST_F(Clock, ShiftForwardWakesTheThread) {
    MakeClock();
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdviseTime(Now(*clock_), kHour, Event(), &cookie), NOERROR);
    EXPECT_FALSE(Signalled(150));
    EXPECT_EQ(clock_->SetTimeDelta(kHour), NOERROR);
    EXPECT_TRUE(Signalled(kPatience));
}

TEST_F(Clock, ThreadSleepsUntilTheFirstNotice) {
    MakeManual();
    Sleep(200);
    EXPECT_EQ(manual_->callsFromElsewhere, 0);
    DWORD_PTR cookie = 0;
    ASSERT_EQ(manual_->AdviseTime(500, 0, Event(), &cookie), NOERROR);
    EXPECT_TRUE(Signalled(kPatience));
    EXPECT_GT(manual_->callsFromElsewhere, 0);
}

TEST_F(Clock, ReleaseDropsPendingNoticesAndEndsTheThread) {
    MakeClock();
    const int with = ThreadsOfThisProcess();
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdviseTime(Now(*clock_), kHour, Event(), &cookie), NOERROR);
    ASSERT_EQ(clock_->AdvisePeriodic(Now(*clock_) + kHour, UNITS, Semaphore(), &cookie), NOERROR);
    clock_.Reset();
    EXPECT_EQ(ThreadsOfThisProcess(), with - 1);
    EXPECT_FALSE(Signalled(0));
    EXPECT_EQ(WaitForSingleObject(semaphore_, 0), DWORD(WAIT_TIMEOUT));
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects_);
}

TEST_F(Clock, ManyClocksComeAndGo) {
    const int threads = ThreadsOfThisProcess();
    for (int i = 0; i < 30; ++i) {
        MakeClock();
        DWORD_PTR cookie = 0;
        clock_->AdviseTime(Now(*clock_), i % 3 ? kHour : 1, Event(), &cookie);
        clock_.Reset();
    }
    EXPECT_EQ(ThreadsOfThisProcess(), threads);
    ResetEvent(event_);
}

TEST_F(Clock, WithAScheduleOfSomebodyElse) {
    const HANDLE wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    {
        CAMSchedule schedule(wake);
        const int threads = ThreadsOfThisProcess();
        HRESULT hr = S_OK;
        manual_ = ComPtr<ManualClock>(new ManualClock(&hr, &schedule));
        EXPECT_EQ(hr, S_OK);
        EXPECT_EQ(ThreadsOfThisProcess(), threads);
        EXPECT_EQ(manual_->GetSchedule(), &schedule);
        EXPECT_EQ(manual_->m_pSchedule, &schedule);
        DWORD_PTR cookie = 0;
        EXPECT_EQ(manual_->AdviseTime(5000, 1, Event(), &cookie), NOERROR);
        EXPECT_EQ(WaitForSingleObject(wake, 0), WAIT_OBJECT_0);
        EXPECT_EQ(schedule.GetNextAdviseTime(), 5001);
        manual_->TriggerThread();
        EXPECT_EQ(WaitForSingleObject(wake, 0), WAIT_OBJECT_0);
        manual_.Reset();
        EXPECT_EQ(schedule.GetAdviseCount(), 1u);  // not deleted
        EXPECT_EQ(schedule.Unadvise(cookie), S_OK);
    }
    CloseHandle(wake);
}

}  // namespace
