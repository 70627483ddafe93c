// CCritSec and CAutoLock: a recursive lock and its scope guard.

#pragma once

#include "dshow/platform.h"

// A recursive lock: the thread that holds it may lock it again, and unlocks as often.
class CCritSec {
  public:
    CCritSec() { InitializeCriticalSection(&m_section); }
    ~CCritSec() { DeleteCriticalSection(&m_section); }
    CCritSec(const CCritSec&) = delete;
    CCritSec& operator=(const CCritSec&) = delete;

    void Lock() { EnterCriticalSection(&m_section); }
    void Unlock() { LeaveCriticalSection(&m_section); }

  private:
    CRITICAL_SECTION m_section;
};

// Holds a lock from construction to the end of its scope. The lock must outlive it.
class CAutoLock {
  public:
    CAutoLock(CCritSec* pLock) : m_lock(pLock) { m_lock->Lock(); }
    ~CAutoLock() { m_lock->Unlock(); }
    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = delete;

  private:
    CCritSec* const m_lock;
};

// For assertions only: tells nothing in a release build, so no code may branch on it.
#define CritCheckIn(x) (TRUE)
