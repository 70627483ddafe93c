// The renderer's window during playback: keeps the shape of the picture, and reports keys.

#pragma once

#include <windows.h>

#include <functional>

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

// The largest rectangle centred in `client` with the aspect ratio of a picture of that size.
RECT PictureWithin(const RECT& client, LONG width, LONG height);

// Subclasses the renderer's window of a graph during its life; one at a time. The window may belong
// to another thread of this process.
class VideoWindow {
  public:
    using KeyHandler = std::function<void(WPARAM key)>;

    // `onKey` is called on the window's thread for each key press, not for repetitions.
    VideoWindow(const ComPtr<IGraphBuilder>& graph, KeyHandler onKey);
    ~VideoWindow();
    VideoWindow(const VideoWindow&) = delete;
    VideoWindow& operator=(const VideoWindow&) = delete;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    void PlacePicture();
    bool PaintBorders(HDC dc) const;

    // A window procedure gets no context argument.
    static inline VideoWindow* watched_ = nullptr;

    ComPtr<IBasicVideo> video_;
    KeyHandler onKey_;
    HWND window_ = nullptr;
    WNDPROC original_ = nullptr;
    RECT picture_ = {};
};

}  // namespace tavo
