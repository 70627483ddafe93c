// Small macros of the framework: object names, checks that cost nothing in a release build, and
// helpers for records that hold a counted pointer.

#pragma once

#include "dshow/platform.h"

// Object names serve debugging only. A bare NULL instead of NAME is ambiguous in UNICODE builds.
#define NAME(x) (static_cast<LPTSTR>(nullptr))

#define ASSERT(x) static_cast<void>(0)
#define EXECUTE_ASSERT(x) static_cast<void>(x)
#define DbgLog(x) static_cast<void>(0)
#define DbgBreak(x) static_cast<void>(0)
#define NOTE(x) static_cast<void>(0)
#define ValidateReadPtr(p, n) static_cast<void>(0)
#define ValidateWritePtr(p, n) static_cast<void>(0)
#define ValidateReadWritePtr(p, n) static_cast<void>(0)

// Leaves the enclosing function with r when p is null.
#define CheckPointer(p, r)              \
    {                                   \
        if ((p) == nullptr) return (r); \
    }

#define NUMELMS(a) (sizeof(a) / sizeof((a)[0]))

// Sizes of a RECT that is given by pointer.
#define WIDTH(pRect) ((pRect)->right - (pRect)->left)
#define HEIGHT(pRect) ((pRect)->bottom - (pRect)->top)

// The queries for PIN_INFO and FILTER_INFO hand out a reference; these give it back.
#define QueryPinInfoReleaseFilter(pi)                         \
    {                                                         \
        if ((pi).pFilter != nullptr) (pi).pFilter->Release(); \
    }
#define QueryFilterInfoReleaseGraph(fi)                     \
    {                                                       \
        if ((fi).pGraph != nullptr) (fi).pGraph->Release(); \
    }

// Marks classes that are never built on their own, for compilers that can drop their tables.
#ifndef AM_NOVTABLE
#ifdef _MSC_VER
#define AM_NOVTABLE __declspec(novtable)
#else
#define AM_NOVTABLE
#endif
#endif
