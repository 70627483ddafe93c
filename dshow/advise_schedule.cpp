// CAMSchedule.

#include "dshow/advise_schedule.h"

#include <algorithm>
#include <climits>
#include <new>
#include <utility>

#include "dshow/ref_time.h"

struct CAMSchedule::Notice {
    REFERENCE_TIME time;
    REFERENCE_TIME period;  // 0: given once
    HANDLE handle;
    DWORD_PTR cookie;
    Notice* next;
};

CAMSchedule::CAMSchedule(HANDLE ev) : CBaseObject(NAME("CAMSchedule")), m_event(ev) {}

CAMSchedule::~CAMSchedule() {
    while (m_first) delete std::exchange(m_first, m_first->next);
}

DWORD CAMSchedule::GetAdviseCount() {
    CAutoLock lock(&m_lock);
    return m_count;
}

REFERENCE_TIME CAMSchedule::GetNextAdviseTime() {
    CAutoLock lock(&m_lock);
    return m_first ? m_first->time : MAX_TIME;
}

DWORD_PTR CAMSchedule::AddAdvisePacket(const REFERENCE_TIME& time, const REFERENCE_TIME& period,
                                       HANDLE h, BOOL periodic) {
    auto* notice = new (std::nothrow) Notice{time, periodic ? period : 0, h, 0, nullptr};
    if (!notice) return 0;

    CAutoLock lock(&m_lock);
    if (++m_lastCookie == 0) ++m_lastCookie;
    notice->cookie = m_lastCookie;
    Notice** place = PlaceBefore(time);
    notice->next = *place;
    *place = notice;
    ++m_count;
    if (place == &m_first) SetEvent(m_event);
    return notice->cookie;
}

HRESULT CAMSchedule::Unadvise(DWORD_PTR cookie) {
    CAutoLock lock(&m_lock);
    for (Notice** link = &m_first; *link; link = &(*link)->next) {
        if ((*link)->cookie != cookie) continue;
        delete std::exchange(*link, (*link)->next);
        --m_count;
        return S_OK;
    }
    return S_FALSE;
}

REFERENCE_TIME CAMSchedule::Advise(const REFERENCE_TIME& now) {
    CAutoLock lock(&m_lock);
    while (m_first && m_first->time <= now) {
        Notice* due = std::exchange(m_first, m_first->next);
        if (due->period > 0) {
            Repeat(due, now);
        } else {
            SetEvent(due->handle);
            delete due;
            --m_count;
        }
    }
    return m_first ? m_first->time : MAX_TIME;
}

namespace {

// As often as the semaphore has room for: one that is nearly full refuses a larger count as a
// whole.
void ReleaseOften(HANDLE semaphore, REFERENCE_TIME times) {
    LONG count = static_cast<LONG>(std::min<REFERENCE_TIME>(times, LONG_MAX));
    for (; count > 0; count /= 2) {
        if (ReleaseSemaphore(semaphore, count, nullptr)) times -= count;
        count = static_cast<LONG>(std::min<REFERENCE_TIME>(times, count));
    }
}

}  // namespace

// Releases the semaphore for every period until now, in one go: they may be shorter than a release
// takes. Then the notice goes back for its next period.
void CAMSchedule::Repeat(Notice* notice, REFERENCE_TIME now) {
    const REFERENCE_TIME missed = (now - notice->time) / notice->period;
    ReleaseOften(notice->handle, missed + 1);
    const REFERENCE_TIME last = notice->time + missed * notice->period;
    notice->time = notice->period < MAX_TIME - last ? last + notice->period : MAX_TIME;

    Notice** place = PlaceBehind(notice->time);
    notice->next = *place;
    *place = notice;
}

// The first link to a notice that is not earlier.
CAMSchedule::Notice** CAMSchedule::PlaceBefore(REFERENCE_TIME time) {
    Notice** link = &m_first;
    while (*link && (*link)->time < time) link = &(*link)->next;
    return link;
}

// The first link to a notice that is later.
CAMSchedule::Notice** CAMSchedule::PlaceBehind(REFERENCE_TIME time) {
    Notice** link = &m_first;
    while (*link && (*link)->time <= time) link = &(*link)->next;
    return link;
}
