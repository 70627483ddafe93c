// Texts of error codes.

#pragma once

#include <windows.h>

#include <string>

#include "host/avi/avi_reader.h"
#include "host/avi/byte_store.h"

namespace tavo {

// The meaning and the code of a failure: "no combination of filters leads there
// (0x80040217)".
std::wstring ErrorText(HRESULT hr);

// The same for a code of GetLastError.
std::wstring SystemErrorText(DWORD error);

const wchar_t* IoText(IoResult result);

}  // namespace tavo
