// CAMSchedule by itself, with times that the test makes up.
#include <type_traits>

#include "tests/dshow/probes.h"
#include "tests/support/nothrow_new.h"

using namespace tavo_test;

namespace {

static_assert(std::is_base_of_v<CBaseObject, CAMSchedule>);
static_assert(!std::is_convertible_v<CAMSchedule*, CBaseObject*>);

class Schedule : public DshowTest {
  protected:
    ~Schedule() override {
        for (HANDLE handle : {event_, first_, second_, semaphore_}) CloseHandle(handle);
    }
    static bool Taken(HANDLE handle) { return WaitForSingleObject(handle, 0) == WAIT_OBJECT_0; }
    int Releases() {
        int count = 0;
        while (Taken(semaphore_)) ++count;
        return count;
    }
    DWORD_PTR Once(REFERENCE_TIME time, HANDLE handle) {
        return schedule_.AddAdvisePacket(time, 0, handle, FALSE);
    }

    HANDLE event_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE first_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE second_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE semaphore_ = CreateSemaphoreW(nullptr, 0, 1000, nullptr);
    CAMSchedule schedule_{event_};
};

TEST_F(Schedule, StartsEmpty) {
    EXPECT_EQ(schedule_.GetEvent(), event_);
    EXPECT_EQ(schedule_.GetAdviseCount(), 0u);
    EXPECT_EQ(schedule_.GetNextAdviseTime(), MAX_TIME);
    EXPECT_EQ(schedule_.Advise(1000), MAX_TIME);
    EXPECT_FALSE(Taken(event_));
}

TEST_F(Schedule, CountsAsAModuleObject) {
    const LONG before = CBaseObject::ObjectsActive();
    {
        CAMSchedule other(event_);
        EXPECT_EQ(CBaseObject::ObjectsActive(), before + 1);
    }
    EXPECT_EQ(CBaseObject::ObjectsActive(), before);
    SetEvent(event_);
    EXPECT_TRUE(Taken(event_));  // it was not closed
}

TEST_F(Schedule, OnlyANewHeadIsSignalled) {
    const DWORD_PTR middle = Once(100, first_);
    EXPECT_NE(middle, 0u);
    EXPECT_TRUE(Taken(event_));
    const DWORD_PTR later = Once(200, first_);
    EXPECT_GT(later, middle);
    EXPECT_FALSE(Taken(event_));
    const DWORD_PTR earlier = Once(50, first_);
    EXPECT_GT(earlier, later);
    EXPECT_TRUE(Taken(event_));
    EXPECT_NE(Once(50, first_), 0u);  // before entries of the same time: a new head
    EXPECT_TRUE(Taken(event_));
    EXPECT_EQ(schedule_.GetAdviseCount(), 4u);
    EXPECT_EQ(schedule_.GetNextAdviseTime(), 50);
}

TEST_F(Schedule, FiresWhatIsDue) {
    Once(100, first_);
    Once(200, second_);
    EXPECT_EQ(schedule_.Advise(99), 100);
    EXPECT_FALSE(Taken(first_));
    EXPECT_EQ(schedule_.Advise(100), 200);
    EXPECT_TRUE(Taken(first_));
    EXPECT_FALSE(Taken(second_));
    EXPECT_EQ(schedule_.GetAdviseCount(), 1u);
    EXPECT_EQ(schedule_.Advise(5000), MAX_TIME);
    EXPECT_TRUE(Taken(second_));
    EXPECT_FALSE(Taken(first_));
    EXPECT_EQ(schedule_.GetAdviseCount(), 0u);
}

TEST_F(Schedule, FiresAllThatAreDueAtOnce) {
    Once(100, first_);
    Once(150, second_);
    EXPECT_EQ(schedule_.Advise(1000), MAX_TIME);
    EXPECT_TRUE(Taken(first_));
    EXPECT_TRUE(Taken(second_));
}

TEST_F(Schedule, MissedPeriodsAreMadeUpOneByOne) {
    const DWORD_PTR cookie = schedule_.AddAdvisePacket(100, 10, semaphore_, TRUE);
    EXPECT_EQ(schedule_.Advise(100), 110);
    EXPECT_EQ(Releases(), 1);
    EXPECT_EQ(schedule_.Advise(109), 110);
    EXPECT_EQ(Releases(), 0);
    EXPECT_EQ(schedule_.Advise(150), 160);
    EXPECT_EQ(Releases(), 5);
    EXPECT_EQ(schedule_.GetAdviseCount(), 1u);
    EXPECT_EQ(schedule_.Unadvise(cookie), S_OK);
    EXPECT_EQ(schedule_.Advise(1000), MAX_TIME);
    EXPECT_EQ(Releases(), 0);
}

// A thousand million periods are made up without a step for each.
TEST_F(Schedule, PeriodsShorterThanARelease) {
    const HANDLE roomy = CreateSemaphoreW(nullptr, 0, LONG_MAX, nullptr);
    schedule_.AddAdvisePacket(1, 1, roomy, TRUE);
    EXPECT_EQ(schedule_.Advise(1'000'000'000), 1'000'000'001);
    LONG before = 0;
    EXPECT_TRUE(ReleaseSemaphore(roomy, 1, &before));
    EXPECT_EQ(before, 1'000'000'000);
    // More than a semaphore can hold.
    EXPECT_EQ(schedule_.Advise(20'000'000'000), 20'000'000'001);
    EXPECT_FALSE(ReleaseSemaphore(roomy, 1, &before)) << "it is full";
    CloseHandle(roomy);
}

TEST_F(Schedule, ASemaphoreIsFilledAsFarAsItGoes) {
    const HANDLE small = CreateSemaphoreW(nullptr, 0, 7, nullptr);
    schedule_.AddAdvisePacket(10, 10, small, TRUE);
    EXPECT_EQ(schedule_.Advise(50), 60);
    EXPECT_EQ(schedule_.Advise(105), 110);
    int releases = 0;
    while (WaitForSingleObject(small, 0) == WAIT_OBJECT_0) ++releases;
    EXPECT_EQ(releases, 7);
    CloseHandle(small);
}

TEST_F(Schedule, PeriodicAndSingleNoticesTogether) {
    schedule_.AddAdvisePacket(10, 10, semaphore_, TRUE);
    Once(25, first_);
    EXPECT_EQ(schedule_.Advise(20), 25);
    EXPECT_EQ(Releases(), 2);
    EXPECT_FALSE(Taken(first_));
    EXPECT_EQ(schedule_.Advise(25), 30);
    EXPECT_TRUE(Taken(first_));
    EXPECT_EQ(Releases(), 0);
}

TEST_F(Schedule, PeriodicNearTheEndOfTime) {
    const DWORD_PTR cookie = schedule_.AddAdvisePacket(MAX_TIME - 5, 10, semaphore_, TRUE);
    EXPECT_EQ(schedule_.Advise(MAX_TIME - 5) <= MAX_TIME, true);  // and does not spin for ever
    EXPECT_EQ(Releases(), 1);
    EXPECT_TRUE(SUCCEEDED(schedule_.Unadvise(cookie)));
}

TEST_F(Schedule, Unadvise) {
    const DWORD_PTR a = Once(100, first_);
    const DWORD_PTR b = Once(200, second_);
    const DWORD_PTR c = Once(300, second_);
    EXPECT_EQ(schedule_.Unadvise(b), S_OK);
    EXPECT_EQ(schedule_.Unadvise(b), S_FALSE);
    EXPECT_EQ(schedule_.Unadvise(0), S_FALSE);
    EXPECT_EQ(schedule_.Unadvise(c + 1), S_FALSE);
    EXPECT_EQ(schedule_.GetAdviseCount(), 2u);
    schedule_.Advise(100);
    EXPECT_EQ(schedule_.Unadvise(a), S_FALSE);  // has fired
    EXPECT_EQ(schedule_.Unadvise(c), S_OK);
    EXPECT_EQ(schedule_.GetAdviseCount(), 0u);
    EXPECT_FALSE(Taken(second_));
}

TEST_F(Schedule, WithoutMemory) {
    {
        FailNothrowNew fail;
        EXPECT_EQ(Once(100, first_), 0u);
    }
    EXPECT_EQ(schedule_.GetAdviseCount(), 0u);
    EXPECT_NE(Once(100, first_), 0u);
}

}  // namespace
