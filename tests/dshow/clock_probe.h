// Clocks for the tests: the base class as it is, and one that runs on a time that the test sets.
#pragma once

#include "tests/dshow/probes.h"

#include <tlhelp32.h>

#include <atomic>

#include "tests/support/patience.h"

namespace tavo_test {

inline constexpr REFERENCE_TIME kMillisecond = 10000;
inline constexpr REFERENCE_TIME kHour = 3600 * UNITS;

// Runs on a time that the test sets.
class ManualClock final : public CBaseReferenceClock {
  public:
    explicit ManualClock(HRESULT* hr, CAMSchedule* schedule = nullptr)
        : CBaseReferenceClock(NAME("manual"), nullptr, hr, schedule),
          maker_(GetCurrentThreadId()) {}
    std::atomic<REFERENCE_TIME> now = 1000;
    std::atomic<int> callsFromElsewhere = 0;
    REFERENCE_TIME GetPrivateTime() override {
        if (GetCurrentThreadId() != maker_) ++callsFromElsewhere;
        return now;
    }
    using CBaseReferenceClock::m_pSchedule;
    using CBaseReferenceClock::Restart;

  private:
    const DWORD maker_;
};

inline int ThreadsOfThisProcess() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}

class Clock : public DshowTest {
  protected:
    ~Clock() override {
        clock_.Reset();
        manual_.Reset();
        CloseHandle(event_);
        CloseHandle(semaphore_);
    }
    void MakeClock() {
        HRESULT hr = S_OK;
        clock_ = ComPtr<CBaseReferenceClock>(new CBaseReferenceClock(NAME("clock"), nullptr, &hr));
        ASSERT_EQ(hr, S_OK);
    }
    void MakeManual() {
        HRESULT hr = S_OK;
        manual_ = ComPtr<ManualClock>(new ManualClock(&hr));
        ASSERT_EQ(hr, S_OK);
    }
    static REFERENCE_TIME Now(CBaseReferenceClock& clock) {
        REFERENCE_TIME now = 0;
        EXPECT_TRUE(SUCCEEDED(clock.GetTime(&now)));
        return now;
    }
    HEVENT Event() { return reinterpret_cast<HEVENT>(event_); }
    HSEMAPHORE Semaphore() { return reinterpret_cast<HSEMAPHORE>(semaphore_); }
    bool Signalled(DWORD milliseconds) {
        return WaitForSingleObject(event_, milliseconds) == WAIT_OBJECT_0;
    }

    HANDLE event_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE semaphore_ = CreateSemaphoreW(nullptr, 0, 100000, nullptr);
    ComPtr<CBaseReferenceClock> clock_;
    ComPtr<ManualClock> manual_;
};

}  // namespace tavo_test
