// CBaseReferenceClock.

#include "dshow/reference_clock.h"

#include <algorithm>
#include <climits>
#include <new>

#include "dshow/helpers.h"
#include "dshow/ref_time.h"

namespace {

constexpr REFERENCE_TIME kUnitsPerMillisecond = UNITS / MILLISECONDS;
// A smaller step forward lets no notice become noticeably late.
constexpr REFERENCE_TIME kSmallStep = 5000;

UINT DeviceMinimumPeriod() {
    TIMECAPS caps = {};
    if (timeGetDevCaps(&caps, sizeof(caps)) != TIMERR_NOERROR) return 1;
    return std::max<UINT>(caps.wPeriodMin, 1);
}

}  // namespace

CBaseReferenceClock::CBaseReferenceClock(LPCTSTR pName, LPUNKNOWN pUnk, HRESULT* phr,
                                         CAMSchedule* pSched)
    : CUnknown(pName, pUnk), m_pSchedule(pSched) {
    m_timerPeriod = DeviceMinimumPeriod();
    if (timeBeginPeriod(m_timerPeriod) != TIMERR_NOERROR) m_timerPeriod = 0;
    m_lastTick = timeGetTime();
    m_privateTime = kUnitsPerMillisecond * m_lastTick;

    HRESULT hr = NOERROR;
    if (!m_pSchedule) {
        hr = MakeSchedule();
        if (SUCCEEDED(hr)) hr = StartThread();
    }
    if (FAILED(hr) && phr) *phr = hr;
}

HRESULT CBaseReferenceClock::MakeSchedule() {
    m_ownEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (!m_ownEvent) return E_FAIL;
    m_ownSchedule = new (std::nothrow) CAMSchedule(m_ownEvent);
    m_pSchedule = m_ownSchedule;
    return m_ownSchedule ? NOERROR : E_OUTOFMEMORY;
}

HRESULT CBaseReferenceClock::StartThread() {
    m_thread = CreateThread(nullptr, 0, ThreadEntry, this, 0, nullptr);
    if (!m_thread) return E_FAIL;
    SetThreadPriority(m_thread, THREAD_PRIORITY_TIME_CRITICAL);
    return NOERROR;
}

CBaseReferenceClock::~CBaseReferenceClock() {
    if (m_timerPeriod) timeEndPeriod(m_timerPeriod);
    if (m_thread) {
        m_abort = true;
        SetEvent(m_ownEvent);
        WaitForSingleObject(m_thread, INFINITE);
        CloseHandle(m_thread);
    }
    if (m_ownEvent) CloseHandle(m_ownEvent);
    delete m_ownSchedule;
}

STDMETHODIMP CBaseReferenceClock::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IReferenceClock) return GetInterface(static_cast<IReferenceClock*>(this), ppv);
    if (riid == __uuidof(IReferenceClockTimerControl)) {
        return GetInterface(static_cast<IReferenceClockTimerControl*>(this), ppv);
    }
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CBaseReferenceClock::GetTime(REFERENCE_TIME* pTime) {
    CheckPointer(pTime, E_POINTER);
    CAutoLock lock(this);
    const REFERENCE_TIME now = GetPrivateTime();
    const bool later = now > m_lastTime;
    if (later) m_lastTime = now;
    *pTime = m_lastTime;
    return later ? S_OK : S_FALSE;
}

REFERENCE_TIME CBaseReferenceClock::GetPrivateTime() {
    CAutoLock lock(this);
    // The difference of unsigned ticks is right across their wrap, every 49 days.
    const DWORD tick = timeGetTime();
    m_privateTime += kUnitsPerMillisecond * static_cast<DWORD>(tick - m_lastTick);
    m_lastTick = tick;
    return m_privateTime;
}

STDMETHODIMP CBaseReferenceClock::AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime,
                                             HEVENT hEvent, DWORD_PTR* pCookie) {
    CheckPointer(pCookie, E_POINTER);
    *pCookie = 0;
    if (streamTime > 0 && baseTime > MAX_TIME - streamTime) return E_INVALIDARG;
    if (streamTime < 0 && baseTime <= 0) return E_INVALIDARG;
    const REFERENCE_TIME time = baseTime + streamTime;
    if (time <= 0 || time == MAX_TIME) return E_INVALIDARG;
    *pCookie = m_pSchedule->AddAdvisePacket(time, 0, reinterpret_cast<HANDLE>(hEvent), FALSE);
    return *pCookie ? NOERROR : E_OUTOFMEMORY;
}

STDMETHODIMP CBaseReferenceClock::AdvisePeriodic(REFERENCE_TIME startTime,
                                                 REFERENCE_TIME periodTime, HSEMAPHORE hSemaphore,
                                                 DWORD_PTR* pCookie) {
    CheckPointer(pCookie, E_POINTER);
    *pCookie = 0;
    if (startTime <= 0 || periodTime <= 0 || startTime == MAX_TIME) return E_INVALIDARG;
    *pCookie = m_pSchedule->AddAdvisePacket(startTime, periodTime,
                                            reinterpret_cast<HANDLE>(hSemaphore), TRUE);
    return *pCookie ? NOERROR : E_OUTOFMEMORY;
}

STDMETHODIMP CBaseReferenceClock::Unadvise(DWORD_PTR cookie) {
    return m_pSchedule->Unadvise(cookie);
}

STDMETHODIMP CBaseReferenceClock::SetTimeDelta(const REFERENCE_TIME& delta) {
    {
        CAutoLock lock(this);
        m_privateTime += delta;
    }
    if (delta > kSmallStep && m_pSchedule->GetAdviseCount() > 0) TriggerThread();
    return NOERROR;
}

STDMETHODIMP CBaseReferenceClock::SetDefaultTimerResolution(REFERENCE_TIME resolution) {
    UINT period = 0;
    if (resolution != 0) {
        const REFERENCE_TIME wanted =
            std::clamp<REFERENCE_TIME>(resolution / kUnitsPerMillisecond, 0, INT_MAX);
        period = std::max(DeviceMinimumPeriod(), static_cast<UINT>(wanted));
    }
    CAutoLock lock(this);
    if (period == m_timerPeriod) return S_OK;
    if (m_timerPeriod) timeEndPeriod(m_timerPeriod);
    if (period) timeBeginPeriod(period);
    m_timerPeriod = period;
    return S_OK;
}

STDMETHODIMP CBaseReferenceClock::GetDefaultTimerResolution(REFERENCE_TIME* pResolution) {
    CheckPointer(pResolution, E_POINTER);
    CAutoLock lock(this);
    *pResolution = kUnitsPerMillisecond * m_timerPeriod;
    return S_OK;
}

void CBaseReferenceClock::TriggerThread() { SetEvent(m_pSchedule->GetEvent()); }

void CBaseReferenceClock::Restart(REFERENCE_TIME minimum) {
    CAutoLock lock(this);
    m_lastTime = minimum;
}

DWORD WINAPI CBaseReferenceClock::ThreadEntry(void* clock) {
    static_cast<CBaseReferenceClock*>(clock)->GiveNotices();
    return 0;
}

// Sleeps until a notice becomes the earliest, or until the earliest is due. A notice is given when
// it is due within a millisecond, because a sleep ends on a tick of the timer.
void CBaseReferenceClock::GiveNotices() {
    DWORD sleep = INFINITE;
    for (;;) {
        WaitForSingleObject(m_ownEvent, sleep);
        if (m_abort) return;
        const REFERENCE_TIME now = GetPrivateTime() + kUnitsPerMillisecond;
        const REFERENCE_TIME next = m_ownSchedule->Advise(now);
        if (next == MAX_TIME) {
            sleep = INFINITE;
        } else {
            const REFERENCE_TIME milliseconds = (next - now) / kUnitsPerMillisecond;
            sleep = static_cast<DWORD>(std::clamp<REFERENCE_TIME>(milliseconds, 1, INT_MAX));
        }
    }
}
