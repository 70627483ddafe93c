// Words for result codes.

#pragma once

#include <windows.h>

#include <string>

#include "host/avi/avi_reader.h"
#include "host/avi/byte_store.h"

namespace tavo {

// What a failure means, and its code: "no combination of filters connects the pins (0x80040217)".
std::wstring ErrorText(HRESULT hr);

// The same for a code of GetLastError.
std::wstring SystemErrorText(DWORD error);

const wchar_t* IoText(IoResult result);

}  // namespace tavo
