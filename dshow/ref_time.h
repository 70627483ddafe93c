// Units of time, and CRefTime, a time in units of 100 nanoseconds.

#pragma once

#include "dshow/platform.h"

const LONGLONG MILLISECONDS = 1000;        // in a second
const LONGLONG NANOSECONDS = 1000000000;   // in a second
const LONGLONG UNITS = NANOSECONDS / 100;  // in a second
const LONGLONG MAX_TIME = 0x7FFFFFFFFFFFFFFF;

// A plain value: one member, no checks for overflow. A LONG counts milliseconds, a REFERENCE_TIME
// units; from a plain int the construction is ambiguous, because nobody can tell which is meant.
class CRefTime {
  public:
    REFERENCE_TIME m_time;

    CRefTime() : m_time(0) {}
    CRefTime(LONG milliseconds) : m_time(milliseconds * (UNITS / MILLISECONDS)) {}
    CRefTime(REFERENCE_TIME units) : m_time(units) {}

    operator REFERENCE_TIME() const { return m_time; }

    CRefTime& operator=(const CRefTime& other) = default;
    CRefTime& operator=(LONGLONG units) {
        m_time = units;
        return *this;
    }
    CRefTime& operator+=(const CRefTime& other) {
        m_time += other.m_time;
        return *this;
    }
    CRefTime& operator-=(const CRefTime& other) {
        m_time -= other.m_time;
        return *this;
    }

    LONG Millisecs() { return static_cast<LONG>(m_time / (UNITS / MILLISECONDS)); }
    LONGLONG GetUnits() { return m_time; }
};
