// The message loop of a playing graph: its own, or that of the property frame.

#include "host/playback.h"

#include <olectl.h>

#include <new>
#include <string_view>

#include "host/error_text.h"
#include "host/graph_events.h"
#include "host/graph_pins.h"

namespace tavo {
namespace {

constexpr wchar_t kCaption[] = L"Mira Vantrel";
// How often the property frame's loop looks at the graph.
constexpr UINT kLookMs = 100;
// The pages appear at the left of the screen, and the video beside them; in pixels at 96 dpi.
constexpr UINT kPagesPlace = 20;
constexpr int kVideoLeft = 460;
constexpr int kVideoTop = 40;
constexpr int kUsualDpi = 96;

class Player {
  public:
    Player(VideoGraph& graph, StopRequest& stop, bool besidePages)
        : graph_(graph),
          stop_(stop),
          besidePages_(besidePages),
          control_(graph.builder.As<IMediaControl>(IID_IMediaControl)),
          events_(graph.builder.As<IMediaEvent>(IID_IMediaEvent)) {}
    ~Player() {
        if (control_) control_->Stop();
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    bool Start() {
        OAEVENT event = 0;
        if (!control_ || !events_ || FAILED(events_->GetEventHandle(&event))) {
            return Fail(E_NOINTERFACE);
        }
        event_ = reinterpret_cast<HANDLE>(event);
        PrepareWindow();
        const HRESULT hr = control_->Run();
        return SUCCEEDED(hr) || Fail(hr);
    }

    // Takes what has happened; false when the playing is over.
    bool GoesOn() {
        if (over_) return false;
        if (stop_.IsSet()) {
            result_.stopped = true;
            return End();
        }
        HRESULT reason = S_OK;
        switch (TakeEvents(*events_.Get(), reason)) {
            case Ending::None: return true;
            case Ending::Complete: return besidePages_ ? Rewind() : End();
            case Ending::ClosedByUser: return End();
            case Ending::Aborted: return Fail(FAILED(reason) ? reason : E_FAIL);
        }
        return true;
    }

    HANDLE Event() const { return event_; }
    bool IsOver() const { return over_; }

    PlayResult Finish() {
        if (!over_) End();
        return result_;
    }

  private:
    void PrepareWindow() {
        const auto window = graph_.builder.As<IVideoWindow>(IID_IVideoWindow);
        if (!window) return;
        const BSTR caption = SysAllocString(kCaption);
        window->put_Caption(caption);
        SysFreeString(caption);
        if (!besidePages_) return;
        const HDC screen = GetDC(nullptr);
        const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
        ReleaseDC(nullptr, screen);
        window->put_Left(MulDiv(kVideoLeft, dpi, kUsualDpi));
        window->put_Top(MulDiv(kVideoTop, dpi, kUsualDpi));
    }

    // The figures are gone once the graph is stopped.
    bool End() {
        over_ = true;
        result_.figures = ReadFigures(*graph_.settings.Get());
        ConnectionTypeOf(FirstPin(graph_.filter.Get(), PINDIR_OUTPUT).Get(), graph_.outputType);
        return false;
    }

    bool Fail(HRESULT hr) {
        result_.error = L"the video cannot be played: " + ErrorText(hr);
        return End();
    }

    // A source that does not seek begins anew by itself.
    bool Rewind() {
        control_->Stop();
        LONGLONG start = 0;
        if (const auto seeking = graph_.builder.As<IMediaSeeking>(IID_IMediaSeeking)) {
            seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr,
                                  AM_SEEKING_NoPositioning);
        }
        const HRESULT hr = control_->Run();
        return SUCCEEDED(hr) || Fail(hr);
    }

    VideoGraph& graph_;
    StopRequest& stop_;
    const bool besidePages_;
    ComPtr<IMediaControl> control_;
    ComPtr<IMediaEvent> events_;
    HANDLE event_ = nullptr;
    bool over_ = false;
    PlayResult result_;
};

// The renderer's window lives on this thread.
void HandleMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void PlayInWindow(Player& player, const StopRequest& stop) {
    const HANDLE handles[] = {player.Event(), stop.Event()};
    const DWORD count = stop.Event() != nullptr ? 2 : 1;
    do {
        if (MsgWaitForMultipleObjects(count, handles, FALSE, INFINITE, QS_ALLINPUT) ==
            WAIT_FAILED) {
            return;
        }
        HandleMessages();
    } while (player.GoesOn());
}

BOOL CALLBACK CloseDialog(HWND window, LPARAM) {
    wchar_t name[16] = {};
    GetClassNameW(window, name, 16);
    if (std::wstring_view(name) == L"#32770") PostMessageW(window, WM_CLOSE, 0, 0);
    return TRUE;
}

// Looks after the player while the property frame runs its own message loop; one at a time. When
// the playing is over, it closes the frame and whatever stands before it.
class FrameWatch {
  public:
    explicit FrameWatch(Player& player) : timer_(SetTimer(nullptr, 0, kLookMs, Look)) {
        watched = &player;
    }
    ~FrameWatch() {
        KillTimer(nullptr, timer_);
        watched = nullptr;
    }
    FrameWatch(const FrameWatch&) = delete;
    FrameWatch& operator=(const FrameWatch&) = delete;

  private:
    // A timer's procedure has no argument to carry it.
    static inline Player* watched = nullptr;

    static void CALLBACK Look(HWND, UINT, UINT_PTR, DWORD) {
        if (watched == nullptr) return;
        bool goesOn = false;
        try {
            goesOn = watched->GoesOn();
        } catch (const std::bad_alloc&) {
            // Must not leave through the system's message loop.
        }
        if (!goesOn) EnumThreadWindows(GetCurrentThreadId(), CloseDialog, 0);
    }

    const UINT_PTR timer_;
};

std::wstring ShowPages(IBaseFilter* filter, Player& player) {
    ISpecifyPropertyPages* specify = nullptr;
    CAUUID pages = {};
    HRESULT hr =
        filter->QueryInterface(IID_ISpecifyPropertyPages, reinterpret_cast<void**>(&specify));
    if (SUCCEEDED(hr)) {
        hr = specify->GetPages(&pages);
        specify->Release();
    }
    if (SUCCEEDED(hr)) {
        const FrameWatch watch(player);
        IUnknown* object = filter;
        hr = OleCreatePropertyFrame(nullptr, kPagesPlace, kPagesPlace, kCaption, 1, &object,
                                    pages.cElems, pages.pElems, GetUserDefaultLCID(), 0, nullptr);
    }
    CoTaskMemFree(pages.pElems);
    return FAILED(hr) ? L"the property pages cannot be shown: " + ErrorText(hr) : L"";
}

}  // namespace

PlayResult PlayGraph(VideoGraph& graph, StopRequest& stop, bool withPages) {
    Player player(graph, stop, withPages);
    std::wstring error;
    if (player.Start()) {
        if (withPages) {
            error = ShowPages(graph.filter.Get(), player);
        } else {
            PlayInWindow(player, stop);
        }
    }
    PlayResult result = player.Finish();
    if (result.error.empty()) result.error = error;
    return result;
}

}  // namespace tavo
