// The platform headers that every client of the base classes gets through streams.h.

#pragma once

// The order is that of their dependencies.
// clang-format off
#include <windows.h>
#include <olectl.h>
#include <mmsystem.h>
#include <strmif.h>
#include <amvideo.h>
#include <control.h>
#include <evcode.h>
#include <uuids.h>
#include <vfwmsgs.h>
// clang-format on
