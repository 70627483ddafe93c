// Plays a graph in its renderer's window, and stops it while settings are applied.

#pragma once

#include <atomic>
#include <string>

#include "host/graph/filter_figures.h"
#include "host/graph/stop_request.h"
#include "host/graph/video_graph.h"
#include "host/property_frame/property_frame.h"

namespace tavo {

// Of the video's window and of the pages'.
inline constexpr wchar_t kCaption[] = L"Mira Vantrel";

struct PlayResult {
    std::wstring error;    // one line; empty when all is well
    bool stopped = false;  // by Ctrl-C
    FilterFigures figures;
};

// From pixels at 96 dpi to those of the screen.
int ScaleToScreen(int pixels);

// The destructor stops the graph. Members may throw std::bad_alloc unless they say otherwise.
class Player final : public ApplyObserver {
  public:
    Player(VideoGraph& graph, StopRequest& stop, bool besidePages);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    bool Start();
    // Handles pending events. False when playback is over.
    bool Poll();
    // On the thread that made the player.
    void TogglePause();
    // As if the window were closed.
    void RequestEnd() { endRequested_ = true; }
    // Signalled when there are events.
    HANDLE Event() const { return event_; }
    PlayResult Finish();

    // Some graphs cannot reconnect pins while they run: this one is stopped, and resumes where it
    // was. A source that does not seek starts again. The renderer fits its window to the new size.
    void BeforeApply() override;
    void AfterApply() override;

  private:
    void PrepareWindow();
    bool Run();
    bool End();
    bool Fail(HRESULT hr);
    bool Rewind();
    void Seek(LONGLONG position);
    void SaveFigures();

    VideoGraph& graph_;
    StopRequest& stop_;
    const bool besidePages_;
    ComPtr<IMediaControl> control_;
    ComPtr<IMediaEvent> events_;
    HANDLE event_ = nullptr;
    ULONGLONG runningSince_ = 0;
    bool ended_ = false;
    bool paused_ = false;
    std::atomic<bool> endRequested_ = false;
    bool applying_ = false;
    bool outOfMemory_ = false;
    LONGLONG resumeAt_ = 0;
    PlayResult result_;
};

}  // namespace tavo
