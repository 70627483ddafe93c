// CBaseReferenceClock: IReferenceClock on the multimedia timer, with a thread that gives notices.

#pragma once

#include <atomic>

#include "dshow/advise_schedule.h"
#include "dshow/base_object.h"
#include "dshow/crit_sec.h"
#include "dshow/platform.h"

// Usable as it is. Safe on all threads; its own lock (the CCritSec) guards the times and may be
// held by derived classes around several calls. The last release waits for the clock's thread: it
// must not come from DllMain, nor with the clock's lock held. Notices still pending then are
// dropped.
class CBaseReferenceClock : public CUnknown,
                            public IReferenceClock,
                            public CCritSec,
                            public IReferenceClockTimerControl {
  protected:
    ~CBaseReferenceClock() override;

  public:
    // With a schedule given, whoever owns that gives the notices, and there is no thread here.
    // *phr gets E_OUTOFMEMORY or E_FAIL.
    CBaseReferenceClock(LPCTSTR pName, LPUNKNOWN pUnk, HRESULT* phr, CAMSchedule* pSched = nullptr);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IReferenceClock. GetTime never goes back: S_FALSE, and the last time again, while the clock
    // stands still. The notices may come up to one millisecond early.
    STDMETHODIMP GetTime(REFERENCE_TIME* pTime) override;
    STDMETHODIMP AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT hEvent,
                            DWORD_PTR* pCookie) override;
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime,
                                HSEMAPHORE hSemaphore, DWORD_PTR* pCookie) override;
    STDMETHODIMP Unadvise(DWORD_PTR cookie) override;

    // IReferenceClockTimerControl, in units of 100 nanoseconds; 0 gives the raised resolution back.
    STDMETHODIMP SetDefaultTimerResolution(REFERENCE_TIME resolution) override;
    STDMETHODIMP GetDefaultTimerResolution(REFERENCE_TIME* pResolution) override;

    // The time that GetTime and the notices go by; may go back. Also called by the clock's thread.
    virtual REFERENCE_TIME GetPrivateTime();

    // Shifts the private time.
    STDMETHODIMP SetTimeDelta(const REFERENCE_TIME& delta);

    CAMSchedule* GetSchedule() const { return m_pSchedule; }
    // Makes the thread look at the schedule again.
    void TriggerThread();

  protected:
    // From here on GetTime gives what is later than minimum.
    void Restart(REFERENCE_TIME minimum = 0);

    CAMSchedule* m_pSchedule;

  private:
    HRESULT MakeSchedule();
    HRESULT StartThread();
    static DWORD WINAPI ThreadEntry(void* clock);
    void GiveNotices();

    REFERENCE_TIME m_privateTime = 0;
    REFERENCE_TIME m_lastTime = 0;
    DWORD m_lastTick = 0;
    UINT m_timerPeriod = 0;  // milliseconds; 0 when not raised
    HANDLE m_ownEvent = nullptr;
    CAMSchedule* m_ownSchedule = nullptr;
    HANDLE m_thread = nullptr;
    std::atomic<bool> m_abort = false;
};
