// CAMSchedule: the pending notices of a clock, ordered by time.

#pragma once

#include "dshow/base_object.h"
#include "dshow/crit_sec.h"
#include "dshow/platform.h"

// Safe on all threads. It owns neither the event given at construction nor the handles of the
// notices, which must stay valid while they are pending.
class CAMSchedule : private CBaseObject {
  public:
    // ev is signalled whenever a new notice becomes the earliest.
    CAMSchedule(HANDLE ev);
    ~CAMSchedule();

    HANDLE GetEvent() const { return m_event; }
    DWORD GetAdviseCount();
    // MAX_TIME when there is none.
    REFERENCE_TIME GetNextAdviseTime();

    // A cookie, never 0 and rising; 0 without memory. h is an event, for a periodic notice a
    // semaphore.
    DWORD_PTR AddAdvisePacket(const REFERENCE_TIME& time, const REFERENCE_TIME& period, HANDLE h,
                              BOOL periodic);
    // S_FALSE when the notice is unknown or has been given.
    HRESULT Unadvise(DWORD_PTR cookie);
    // Gives all notices that are due at now; the earliest time left, or MAX_TIME.
    REFERENCE_TIME Advise(const REFERENCE_TIME& now);

  private:
    struct Notice;

    Notice** PlaceBefore(REFERENCE_TIME time);
    Notice** PlaceBehind(REFERENCE_TIME time);
    void Repeat(Notice* notice, REFERENCE_TIME now);

    const HANDLE m_event;
    CCritSec m_lock;
    Notice* m_first = nullptr;  // earliest first
    DWORD m_count = 0;
    DWORD_PTR m_lastCookie = 0;
};
