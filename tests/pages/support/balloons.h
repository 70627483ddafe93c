// The balloon that this thread shows, if any.
//
//   Type(frame.Control(IDC_WIDTH), "wide");
//   EXPECT_NE(BalloonText(), L"");
#pragma once

#include <windows.h>

#include <string>

namespace tavo_test {

// Null where there is none.
HWND Balloon();
std::wstring BalloonText();

}  // namespace tavo_test
