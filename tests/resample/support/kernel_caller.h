// Calls kernels, one after the other, on a source and maps in guarded memory, and compares what
// they wrote with what the oracle expects.

#pragma once

#include <string>
#include <vector>

#include "resample/scale_kernel.h"
#include "tests/kernel_oracle/kernel_oracle.h"
#include "tests/support/guarded_buffer.h"

namespace tavo::test {

// The bytes that a destination has to hold.
class Expectation {
  public:
    explicit Expectation(Canvas canvas);

    size_t Size() const { return canvas_.Size(); }

    // Returns what is wrong; nothing, if all is right. Untouched bytes hold kFills[fill].
    std::string Compare(const uint8_t* actual, int fill) const;

  private:
    Canvas canvas_;
    std::vector<uint8_t> filled_[2];
};

constexpr uint8_t kFills[2] = {0xa7, 0x58};

// How a kernel is called.
struct CallStyle {
    int srcHeight;         // as passed
    bool withXMap = true;  // otherwise null
    bool withYMap = true;
    unsigned stack = 0;  // 0, 4, 8 or 12 bytes below a multiple of 16, in 32-bit builds
};

class KernelCaller {
  public:
    // Puts source and maps next to their guards. The entries must stay alive. With a pitch the rows
    // of the source lie that far apart, and the horizontal map says so.
    void Place(const Source& source, const Maps& maps, BufferGuard guard, int pitch = 0);

    // Returns what is wrong; nothing, if all is right. A negative height stores the rows bottom-up.
    std::string Run(ScaleKernel kernel, const Expectation& expectation, int dstWidth, int dstHeight,
                    const CallStyle& style);
    std::string Run(CopyKernel kernel, const Expectation& expectation, int width, int height,
                    int bitsPerPixel, unsigned stack);

  private:
    class GuardedMap {
      public:
        void Place(const AxisEntries& entries, BufferGuard guard, int pitch);
        bool Intact() const;
        const AxisMap* Record() const { return &record_; }

      private:
        GuardedBuffer weightBuffer_;
        GuardedBuffer indexBuffer_;
        const AxisEntries* entries_ = nullptr;
        AxisMap record_{};
    };

    uint8_t* PlaceDestination(const Expectation& expectation);
    std::string Verdict(const Expectation& expectation, int result, int rows) const;

    BufferGuard guard_ = BufferGuard::kPageAfter;
    GuardedBuffer dstBuffer_;
    GuardedBuffer srcBuffer_;
    GuardedMap xMap_;
    GuardedMap yMap_;
    int srcWidth_ = 0;
    std::vector<uint8_t> srcBytes_;
    const uint8_t* src_ = nullptr;
    uint8_t* dst_ = nullptr;
};

}  // namespace tavo::test
