// Progress on standard error: a line that is overwritten, or a line now and then.

#pragma once

#include <string>

#include "host/graph/graph_run.h"

namespace tavo {

class ProgressDisplay final : public RunDisplay {
  public:
    ProgressDisplay();

    DWORD IntervalMs() const override;
    void Update(const RunPosition& position) override;
    void End() override;

  private:
    void Show(std::wstring line);

    const bool terminal_;
    uint64_t lastFrames_ = 0;
    double lastSeconds_ = 0.0;
    double frameSeconds_ = 0.0;  // when the last frame was there
    size_t width_ = 0;           // of the line on the terminal
};

}  // namespace tavo
