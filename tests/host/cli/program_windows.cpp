// Looks at windows of another process.

#include "tests/host/cli/program_windows.h"

#include <cstdlib>
#include <utility>

#include "tests/support/unmanaged_windows.h"

namespace tavo_test {
namespace {

const UnmanagedWindows unmanaged(L"vantrel.exe");

// Room for the largest video that is looked at, with its frame.
constexpr SIZE kCorner = {450, 250};

struct WindowSearch {
    DWORD process;
    bool dialog;  // else the window of the video
    HWND found;
};

BOOL CALLBACK Visit(HWND window, LPARAM target) {
    auto& search = *reinterpret_cast<WindowSearch*>(target);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t name[20] = {};
    wchar_t text[60] = {};
    GetClassNameW(window, name, 20);
    GetWindowTextW(window, text, 60);
    const bool isDialog = std::wstring_view(name) == L"#32770";
    const bool fits = search.dialog ? isDialog : !isDialog && text == std::wstring(L"Mira Vantrel");
    if (process != search.process || !IsWindowVisible(window) || !fits) return TRUE;
    search.found = window;
    return FALSE;
}

HWND Find(const RunningProgram& program, bool dialog) {
    WindowSearch search = {program.Id(), dialog, nullptr};
    WaitFor([&] {
        EnumWindows(Visit, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr || program.HasEnded();
    });
    return search.found;
}

BOOL CALLBACK FindControl(HWND window, LPARAM target) {
    auto& search = *reinterpret_cast<std::pair<int, HWND>*>(target);
    if (GetDlgCtrlID(window) == search.first) search.second = window;
    return TRUE;
}

}  // namespace

HWND FindFrame(const RunningProgram& program) { return Find(program, true); }

HWND FindVideo(const RunningProgram& program) {
    const HWND video = Find(program, false);
    SetWindowPos(video, nullptr, GetSystemMetrics(SM_CXSCREEN) - kCorner.cx,
                 GetSystemMetrics(SM_CYSCREEN) - kCorner.cy, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    return video;
}

HWND ControlWithin(HWND frame, int id) {
    std::pair<int, HWND> search = {id, nullptr};
    EnumChildWindows(frame, FindControl, reinterpret_cast<LPARAM>(&search));
    return search.second;
}

std::string TextWithin(HWND frame, int id) {
    char text[40] = {};
    // Texts of controls in another process need a message.
    SendMessageA(ControlWithin(frame, id), WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

double FigureWithin(HWND frame, int id) { return std::atof(TextWithin(frame, id).c_str()); }

void TypeInto(HWND edit, std::string_view text) {
    SendMessageA(edit, EM_SETSEL, 0, -1);
    for (const char c : text) PostMessageA(edit, WM_CHAR, static_cast<WPARAM>(c), 0);
}

void ClickOn(HWND button) {
    PostMessageW(button, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    PostMessageW(button, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
}

bool IsVideoAs(HWND video, int width, int height) {
    RECT client = {};
    GetClientRect(video, &client);
    return client.right == width && client.bottom == height;
}

COLORREF PixelOf(HWND video, int x, int y) {
    const HDC dc = GetDC(video);
    const COLORREF color = GetPixel(dc, x, y);
    ReleaseDC(video, dc);
    return color;
}

int GrayOf(HWND video) {
    const COLORREF color = PixelOf(video, 30, 30);
    const bool isGray = GetRValue(color) == GetGValue(color) && GetRValue(color) < 180;
    return isGray ? GetRValue(color) : -1;
}

std::wstring PlayTest::Movie(uint32_t count, tavo::PixelFormat format) {
    const tavo::VideoFormat video = {format, tavo::InfoOf(format).compression, 160, 120};
    WriteMovie(Path(L"in.avi"), video, NoiseFrames(video, count), {25, 1});
    return Path(L"in.avi");
}

std::wstring PlayTest::GrayMovie(int count, int first, uint32_t fps) {
    const tavo::VideoFormat video = {tavo::PixelFormat::RGB24, 0, 160, 120};
    std::vector<Frame> frames;
    for (int i = 0; i < count; ++i) {
        frames.emplace_back(*tavo::FrameSize(video), std::byte(first + i));
    }
    WriteMovie(Path(L"in.avi"), video, frames, {fps, 1});
    return Path(L"in.avi");
}

void PlayTest::ExpectGoodEnd(const Output& run) {
    EXPECT_EQ(run.exitCode, 0u) << run.error;
    EXPECT_EQ(run.error, "");
    EXPECT_NE(run.out.find("Filter "), std::string::npos) << run.out;
}

}  // namespace tavo_test
