// The message loop during playback: its own, or that of the property frame.

#include "host/graph/playback.h"

#include <olectl.h>

#include <new>
#include <string_view>

#include "host/graph/error_text.h"
#include "host/graph/player.h"
#include "host/graph/video_window.h"
#include "host/graph/wine.h"
#include "host/property_frame/property_frame.h"

namespace tavo {
namespace {

constexpr wchar_t kFrameTitle[] = L"Mira Vantrel Properties";
// How often playback is polled beside the property frame.
constexpr UINT kPollMs = 100;
// The position of the pages, in pixels at 96 dpi.
constexpr int kPagesOffset = 20;

// Wine's property frame never enables Apply, so changes would not reach the filter.
bool DoesPlatformFrameApply() { return !RunsUnderWine(); }

// Keys arrive on the thread of the renderer's window, which posts this message.
constexpr UINT kKeyMessage = WM_APP + 1;

void HandleKey(Player& player, WPARAM key) {
    if (key == VK_SPACE) player.TogglePause();
    if (key == VK_ESCAPE) player.RequestEnd();
}

// The renderer's window may live on this thread.
void HandleMessages(Player& player) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.hwnd == nullptr && message.message == kKeyMessage) {
            HandleKey(player, message.wParam);
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void PlayInWindow(VideoGraph& graph, Player& player, const StopRequest& stop) {
    const HANDLE handles[] = {player.Event(), stop.Event()};
    const DWORD count = stop.Event() != nullptr ? 2 : 1;
    const DWORD thread = GetCurrentThreadId();
    const VideoWindow window(
        graph.builder, [thread](WPARAM key) { PostThreadMessageW(thread, kKeyMessage, key, 0); });
    do {
        if (MsgWaitForMultipleObjects(count, handles, FALSE, INFINITE, QS_ALLINPUT) ==
            WAIT_FAILED) {
            return;
        }
        HandleMessages(player);
    } while (player.Poll());
}

BOOL CALLBACK CloseDialog(HWND window, LPARAM) {
    wchar_t name[16] = {};
    GetClassNameW(window, name, 16);
    if (std::wstring_view(name) == L"#32770") PostMessageW(window, WM_CLOSE, 0, 0);
    return TRUE;
}

// Polls the player from a timer while the property frame runs its own message loop; one at a time.
// When playback is over it closes the frame and any message box.
class FrameWatch {
  public:
    explicit FrameWatch(Player& player) : timer_(SetTimer(nullptr, 0, kPollMs, OnTimer)) {
        watched = &player;
    }
    ~FrameWatch() {
        KillTimer(nullptr, timer_);
        watched = nullptr;
    }
    FrameWatch(const FrameWatch&) = delete;
    FrameWatch& operator=(const FrameWatch&) = delete;

  private:
    // A timer procedure gets no context argument.
    static inline Player* watched = nullptr;

    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD) {
        if (watched == nullptr) return;
        bool playing = false;
        try {
            playing = watched->Poll();
        } catch (const std::bad_alloc&) {
            // Must not propagate through the system's message loop.
        }
        if (!playing) EnumThreadWindows(GetCurrentThreadId(), CloseDialog, 0);
    }

    const UINT_PTR timer_;
};

HRESULT ShowOwnFrame(IUnknown* filter, const CAUUID& pages, Player& player) {
    PropertyFrame frame(&player);
    const int place = ScaleToScreen(kPagesOffset);
    const HRESULT hr =
        frame.Open(kFrameTitle, filter, {pages.pElems, pages.cElems}, {place, place});
    if (SUCCEEDED(hr)) frame.Run();
    return hr;
}

HRESULT ShowPlatformFrame(IUnknown* filter, const CAUUID& pages) {
    const auto place = static_cast<UINT>(kPagesOffset);
    return OleCreatePropertyFrame(nullptr, place, place, kCaption, 1, &filter, pages.cElems,
                                  pages.pElems, GetUserDefaultLCID(), 0, nullptr);
}

std::wstring ShowPages(const ComPtr<IBaseFilter>& filter, Player& player) {
    CAUUID pages = {};
    const auto specify = filter.As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
    HRESULT hr = specify ? specify->GetPages(&pages) : E_NOINTERFACE;
    if (SUCCEEDED(hr)) {
        const FrameWatch watch(player);
        hr = DoesPlatformFrameApply() ? ShowPlatformFrame(filter.Get(), pages)
                                      : ShowOwnFrame(filter.Get(), pages, player);
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
            error = ShowPages(graph.filter, player);
        } else {
            PlayInWindow(graph, player, stop);
        }
    }
    PlayResult result = player.Finish();
    if (result.error.empty()) result.error = error;
    return result;
}

}  // namespace tavo
