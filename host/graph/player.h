// Plays a graph in its renderer's window, and holds it while its filter is being set anew.

#pragma once

#include <atomic>
#include <string>

#include "host/graph/filter_figures.h"
#include "host/graph/stop_request.h"
#include "host/graph/video_graph.h"
#include "host/property_frame/property_frame.h"

namespace tavo {

struct PlayResult {
    std::wstring error;    // one line; empty when all is well
    bool stopped = false;  // by Ctrl-C
    FilterFigures figures;
};

// On this screen, from pixels at 96 dpi.
int ScaleToScreen(int pixels);

// Stops the graph at the latest with its own end. What it does to the graph may throw
// std::bad_alloc, unless it says otherwise.
class Player final : public ApplyObserver {
  public:
    Player(VideoGraph& graph, StopRequest& stop, bool besidePages);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    bool Start();
    // Takes what has happened; false when the playing is over.
    bool GoesOn();
    // For the space bar, on the thread that made the player.
    void TogglePause();
    // As when the window is closed.
    void EndByUser() { wantsEnd_ = true; }
    // Signalled when something has happened.
    HANDLE Event() const { return event_; }
    PlayResult Finish();

    // Pins of a running graph cannot be connected anew everywhere: it is stopped, and then goes on
    // where it was. A source that does not seek begins anew. The renderer fits its window to the
    // new picture.
    void BeforeApply() override;
    void AfterApply() override;

  private:
    void PrepareWindow();
    bool Run();
    bool End();
    bool Fail(HRESULT hr);
    bool Rewind();
    void Seek(LONGLONG position);
    void KeepFigures();

    VideoGraph& graph_;
    StopRequest& stop_;
    const bool besidePages_;
    ComPtr<IMediaControl> control_;
    ComPtr<IMediaEvent> events_;
    HANDLE event_ = nullptr;
    ULONGLONG runningSince_ = 0;
    bool over_ = false;
    bool paused_ = false;
    std::atomic<bool> wantsEnd_ = false;
    bool held_ = false;
    bool outOfMemory_ = false;
    LONGLONG heldAt_ = 0;
    PlayResult result_;
};

}  // namespace tavo
