// The renderer's window while a video plays: its picture keeps its shape, and keys are heard.

#pragma once

#include <windows.h>

#include <functional>

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

// The largest rectangle in the middle of `client` with the shape of a picture of that size.
RECT PictureWithin(const RECT& client, LONG width, LONG height);

// Watches the window of a graph's renderer from now on, until it goes; one at a time. The window
// may belong to another thread of this process.
class VideoWindow {
  public:
    using KeyHandler = std::function<void(WPARAM key)>;

    // `onKey` is called on the window's thread for each key that is pressed, not for repetitions.
    VideoWindow(const ComPtr<IGraphBuilder>& graph, KeyHandler onKey);
    ~VideoWindow();
    VideoWindow(const VideoWindow&) = delete;
    VideoWindow& operator=(const VideoWindow&) = delete;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    void PlacePicture();
    bool PaintBorders(HDC dc) const;

    // A window's procedure has no argument to carry it.
    static inline VideoWindow* watched_ = nullptr;

    ComPtr<IBasicVideo> video_;
    KeyHandler onKey_;
    HWND window_ = nullptr;
    WNDPROC original_ = nullptr;
    RECT picture_ = {};
};

}  // namespace tavo
