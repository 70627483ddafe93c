// Subclasses the renderer's window.

#include "host/graph/video_window.h"

#include <string_view>

namespace tavo {
namespace {

struct Search {
    std::wstring_view caption;
    HWND found;
};

BOOL CALLBACK Visit(HWND window, LPARAM target) {
    auto& search = *reinterpret_cast<Search*>(target);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t text[80] = {};
    wchar_t name[20] = {};
    GetWindowTextW(window, text, 80);
    GetClassNameW(window, name, 20);
    const bool isDialog = std::wstring_view(name) == L"#32770";
    if (process != GetCurrentProcessId() || isDialog || text != search.caption) return TRUE;
    search.found = window;
    return FALSE;
}

// Renderers do not tell the handle of their window.
HWND FindRendererWindow(const ComPtr<IGraphBuilder>& graph) {
    const auto window = graph.As<IVideoWindow>(IID_IVideoWindow);
    BSTR caption = nullptr;
    if (!window || FAILED(window->get_Caption(&caption)) || caption == nullptr) return nullptr;
    Search search = {std::wstring_view(caption, SysStringLen(caption)), nullptr};
    EnumWindows(Visit, reinterpret_cast<LPARAM>(&search));
    SysFreeString(caption);
    return search.found;
}

constexpr LPARAM kWasDown = 1 << 30;

}  // namespace

RECT PictureWithin(const RECT& client, LONG width, LONG height) {
    const LONG room = client.right - client.left;
    const LONG rows = client.bottom - client.top;
    if (width <= 0 || height <= 0 || room <= 0 || rows <= 0) return client;
    LONG shownWidth = room;
    LONG shownHeight = MulDiv(room, height, width);
    if (shownHeight > rows) {
        shownHeight = rows;
        shownWidth = MulDiv(rows, width, height);
    }
    if (shownWidth < 1) shownWidth = 1;
    if (shownHeight < 1) shownHeight = 1;
    const LONG left = client.left + (room - shownWidth) / 2;
    const LONG top = client.top + (rows - shownHeight) / 2;
    return {left, top, left + shownWidth, top + shownHeight};
}

VideoWindow::VideoWindow(const ComPtr<IGraphBuilder>& graph, KeyHandler onKey)
    : video_(graph.As<IBasicVideo>(IID_IBasicVideo)), onKey_(std::move(onKey)) {
    window_ = FindRendererWindow(graph);
    if (window_ == nullptr || watched_ != nullptr) return;
    watched_ = this;
    original_ = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
        window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&VideoWindow::Procedure)));
}

VideoWindow::~VideoWindow() {
    if (original_ != nullptr && IsWindow(window_)) {
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(original_));
    }
    if (watched_ == this) watched_ = nullptr;
}

LRESULT CALLBACK VideoWindow::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
    VideoWindow* const self = watched_;
    if (self == nullptr || window != self->window_) return DefWindowProcW(window, message, w, l);
    const WNDPROC original = self->original_;
    switch (message) {
        case WM_KEYDOWN:
            if ((l & kWasDown) == 0) self->onKey_(w);
            return 0;
        case WM_ERASEBKGND:
            if (self->PaintBorders(reinterpret_cast<HDC>(w))) return 1;
            return CallWindowProcW(original, window, message, w, l);
        case WM_SIZE: {
            const LRESULT result = CallWindowProcW(original, window, message, w, l);
            if (watched_ == self) self->PlacePicture();
            return result;
        }
        default: return CallWindowProcW(original, window, message, w, l);
    }
}

// The size of the video may change during playback.
void VideoWindow::PlacePicture() {
    RECT client = {};
    LONG width = 0;
    LONG height = 0;
    if (!video_ || !GetClientRect(window_, &client) || FAILED(video_->get_VideoWidth(&width)) ||
        FAILED(video_->get_VideoHeight(&height))) {
        return;
    }
    picture_ = PictureWithin(client, width, height);
    video_->SetDestinationPosition(picture_.left, picture_.top, picture_.right - picture_.left,
                                   picture_.bottom - picture_.top);
    InvalidateRect(window_, nullptr, TRUE);
}

// False until the picture has been placed.
bool VideoWindow::PaintBorders(HDC dc) const {
    if (picture_.right <= picture_.left) return false;
    RECT client = {};
    GetClientRect(window_, &client);
    const auto black = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    const RECT bars[] = {{client.left, client.top, client.right, picture_.top},
                         {client.left, picture_.bottom, client.right, client.bottom},
                         {client.left, picture_.top, picture_.left, picture_.bottom},
                         {picture_.right, picture_.top, client.right, picture_.bottom}};
    for (const RECT& bar : bars) FillRect(dc, &bar, black);
    return true;
}

}  // namespace tavo
