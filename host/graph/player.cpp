// Runs the graph, and sets up its window.

#include "host/graph/player.h"

#include <new>

#include "host/graph/error_text.h"
#include "host/graph/graph_events.h"
#include "host/graph/graph_pins.h"
#include "host/graph/wine.h"

namespace tavo {
namespace {

// Beside the pages, in pixels at 96 dpi.
constexpr int kVideoLeft = 460;
constexpr int kVideoTop = 40;
constexpr int kDefaultDpi = 96;
// Figures of a shorter run are not reliable.
constexpr ULONGLONG kMinMeasuredMs = 1000;

// Wine's system clock can hang in its last release while it waits for its thread. So one reference
// is leaked on purpose.
void LeakClock(const ComPtr<IGraphBuilder>& builder) {
    const auto filter = builder.As<IMediaFilter>(IID_IMediaFilter);
    IReferenceClock* clock = nullptr;
    if (filter) filter->GetSyncSource(&clock);
}

}  // namespace

int ScaleToScreen(int pixels) {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return MulDiv(pixels, dpi, kDefaultDpi);
}

Player::Player(VideoGraph& graph, StopRequest& stop, bool besidePages)
    : graph_(graph),
      stop_(stop),
      besidePages_(besidePages),
      control_(graph.builder.As<IMediaControl>(IID_IMediaControl)),
      events_(graph.builder.As<IMediaEvent>(IID_IMediaEvent)) {}

Player::~Player() {
    if (control_) control_->Stop();
    if (RunsUnderWine()) LeakClock(graph_.builder);
}

bool Player::Start() {
    OAEVENT event = 0;
    if (!control_ || !events_ || FAILED(events_->GetEventHandle(&event))) {
        return Fail(E_NOINTERFACE);
    }
    event_ = reinterpret_cast<HANDLE>(event);
    PrepareWindow();
    return Run();
}

bool Player::Poll() {
    if (ended_) return false;
    if (stop_.IsSet()) {
        result_.stopped = true;
        return End();
    }
    if (endRequested_) return End();
    HRESULT reason = S_OK;
    switch (DrainEvents(*events_.Get(), reason)) {
        case Ending::None: return true;
        case Ending::Complete:
            // The graph will report it again after it resumes.
            if (applying_) return true;
            return besidePages_ ? Rewind() : End();
        case Ending::ClosedByUser: return End();
        case Ending::Aborted: return Fail(FAILED(reason) ? reason : E_FAIL);
    }
    return true;
}

void Player::TogglePause() {
    if (ended_ || applying_) return;
    if (paused_) {
        Run();
    } else {
        SaveFigures();
        control_->Pause();
    }
    paused_ = !paused_;
}

PlayResult Player::Finish() {
    if (!ended_) End();
    if (outOfMemory_) throw std::bad_alloc();
    return result_;
}

void Player::BeforeApply() {
    if (ended_) return;
    resumeAt_ = 0;
    if (const auto seeking = graph_.builder.As<IMediaSeeking>(IID_IMediaSeeking)) {
        seeking->GetCurrentPosition(&resumeAt_);
    }
    SaveFigures();
    applying_ = true;
    control_->Stop();
}

void Player::AfterApply() {
    applying_ = false;
    if (ended_) return;
    Seek(resumeAt_);
    try {
        Run();
    } catch (const std::bad_alloc&) {
        ended_ = true;
        outOfMemory_ = true;
    }
}

void Player::PrepareWindow() {
    const auto window = graph_.builder.As<IVideoWindow>(IID_IVideoWindow);
    if (!window) return;
    const BSTR caption = SysAllocString(kCaption);
    window->put_Caption(caption);
    SysFreeString(caption);
    if (!besidePages_) return;
    window->put_Left(ScaleToScreen(kVideoLeft));
    window->put_Top(ScaleToScreen(kVideoTop));
}

bool Player::Run() {
    runningSince_ = GetTickCount64();
    const HRESULT hr = control_->Run();
    return SUCCEEDED(hr) || Fail(hr);
}

// The filter loses its figures when the graph stops.
bool Player::End() {
    ended_ = true;
    SaveFigures();
    ConnectionTypeOf(FirstPin(graph_.filter.Get(), PINDIR_OUTPUT).Get(), graph_.outputType);
    return false;
}

// Shortly after a start, the figures from before are better.
void Player::SaveFigures() {
    const FilterFigures now = ReadFigures(*graph_.settings.Get());
    const bool isFirst = result_.figures.systemFps <= 0.0;
    if (isFirst || GetTickCount64() - runningSince_ >= kMinMeasuredMs) {
        result_.figures = now;
    } else {
        result_.figures.frameRate = now.frameRate;
    }
}

bool Player::Fail(HRESULT hr) {
    result_.error = L"the video cannot be played: " + ErrorText(hr);
    return End();
}

bool Player::Rewind() {
    SaveFigures();
    control_->Stop();
    Seek(0);
    return Run();
}

// A source that does not seek starts again by itself.
void Player::Seek(LONGLONG position) {
    if (const auto seeking = graph_.builder.As<IMediaSeeking>(IID_IMediaSeeking)) {
        seeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                              AM_SEEKING_NoPositioning);
    }
}

}  // namespace tavo
