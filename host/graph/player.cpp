// The graph from its start to its end, and its window.

#include "host/graph/player.h"

#include <new>

#include "host/graph/error_text.h"
#include "host/graph/graph_events.h"
#include "host/graph/graph_pins.h"
#include "host/graph/wine.h"

namespace tavo {
namespace {

constexpr wchar_t kCaption[] = L"Mira Vantrel";
// Beside the pages, which appear at the left of the screen; in pixels at 96 dpi.
constexpr int kVideoLeft = 460;
constexpr int kVideoTop = 40;
constexpr int kUsualDpi = 96;
// Figures of less time than this say little.
constexpr ULONGLONG kTellingMs = 1000;

// A clock of Wine's that renderers were served by can wait for its thread for ever when its last
// reference goes: the thread may have missed that it is to end. This reference goes with the
// process.
void KeepClock(const ComPtr<IGraphBuilder>& builder) {
    const auto filter = builder.As<IMediaFilter>(IID_IMediaFilter);
    IReferenceClock* clock = nullptr;
    if (filter) filter->GetSyncSource(&clock);
}

}  // namespace

int ScaleToScreen(int pixels) {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return MulDiv(pixels, dpi, kUsualDpi);
}

Player::Player(VideoGraph& graph, StopRequest& stop, bool besidePages)
    : graph_(graph),
      stop_(stop),
      besidePages_(besidePages),
      control_(graph.builder.As<IMediaControl>(IID_IMediaControl)),
      events_(graph.builder.As<IMediaEvent>(IID_IMediaEvent)) {}

Player::~Player() {
    if (control_) control_->Stop();
    if (RunsUnderWine()) KeepClock(graph_.builder);
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

bool Player::GoesOn() {
    if (over_) return false;
    if (stop_.IsSet()) {
        result_.stopped = true;
        return End();
    }
    if (wantsEnd_) return End();
    HRESULT reason = S_OK;
    switch (TakeEvents(*events_.Get(), reason)) {
        case Ending::None: return true;
        case Ending::Complete:
            // When it goes on from here, it will be complete again.
            if (held_) return true;
            return besidePages_ ? Rewind() : End();
        case Ending::ClosedByUser: return End();
        case Ending::Aborted: return Fail(FAILED(reason) ? reason : E_FAIL);
    }
    return true;
}

void Player::TogglePause() {
    if (over_ || held_) return;
    if (paused_) {
        Run();
    } else {
        KeepFigures();
        control_->Pause();
    }
    paused_ = !paused_;
}

PlayResult Player::Finish() {
    if (!over_) End();
    if (outOfMemory_) throw std::bad_alloc();
    return result_;
}

void Player::BeforeApply() {
    if (over_) return;
    heldAt_ = 0;
    if (const auto seeking = graph_.builder.As<IMediaSeeking>(IID_IMediaSeeking)) {
        seeking->GetCurrentPosition(&heldAt_);
    }
    KeepFigures();
    held_ = true;
    control_->Stop();
}

void Player::AfterApply() {
    held_ = false;
    if (over_) return;
    Seek(heldAt_);
    try {
        Run();
    } catch (const std::bad_alloc&) {
        over_ = true;
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

// The figures are gone once the graph is stopped.
bool Player::End() {
    over_ = true;
    KeepFigures();
    ConnectionTypeOf(FirstPin(graph_.filter.Get(), PINDIR_OUTPUT).Get(), graph_.outputType);
    return false;
}

// Where the graph has only just been set going again, those from before say more.
void Player::KeepFigures() {
    const FilterFigures now = ReadFigures(*graph_.settings.Get());
    const bool isFirst = result_.figures.systemFps <= 0.0;
    if (isFirst || GetTickCount64() - runningSince_ >= kTellingMs) {
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
    KeepFigures();
    control_->Stop();
    Seek(0);
    return Run();
}

// A source that does not seek begins anew by itself.
void Player::Seek(LONGLONG position) {
    if (const auto seeking = graph_.builder.As<IMediaSeeking>(IID_IMediaSeeking)) {
        seeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                              AM_SEEKING_NoPositioning);
    }
}

}  // namespace tavo
