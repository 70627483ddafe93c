// Planar kernels on one picture.

#include "tests/resample/support/kernel_trial.h"

#include <cstdlib>
#include <sstream>
#include <utility>

#include "tests/resample/support/engine_map.h"

namespace tavo::test {
namespace {

KernelCaller& SharedCaller() {
    static KernelCaller caller;
    return caller;
}

}  // namespace

KernelTrial::KernelTrial(const FrameShape& shape, Pattern pattern, uint64_t seed)
    : KernelTrial(shape, MakeAxisEntries(shape.srcWidth, shape.dstWidth),
                  MakeAxisEntries(shape.srcHeight, shape.dstHeight),
                  MakeBytes(pattern, shape.srcWidth, std::abs(shape.srcHeight), seed)) {
    dataName_ = NameOf(pattern);
}

KernelTrial::KernelTrial(const FrameShape& shape, AxisEntries xMap, AxisEntries yMap,
                         std::vector<uint8_t> source)
    : shape_(shape),
      maps_{FirstEntries(std::move(xMap), shape.dstWidth),
            FirstEntries(std::move(yMap), std::abs(shape.dstHeight))},
      source_{Format::Planar, shape.srcWidth, std::abs(shape.srcHeight), std::move(source)},
      dataName_("given data") {}

Expectation KernelTrial::Expect(Oracle oracle) const {
    Canvas canvas(Format::Planar, shape_.dstWidth, shape_.dstHeight);
    oracle(canvas, source_, maps_);
    return Expectation(std::move(canvas));
}

testing::AssertionResult KernelTrial::Run(ScaleKernel kernel, const Expectation& expected,
                                          BufferGuard guard) const {
    const std::string description =
        Describe() +
        (guard == BufferGuard::kPageAfter ? ", guard page after" : ", guard page before");
    SetCurrentTrial(description.c_str());
    KernelCaller& caller = SharedCaller();
    caller.Place(source_, maps_, guard);
    const std::string wrong =
        caller.Run(kernel, expected, shape_.dstWidth, shape_.dstHeight, {shape_.srcHeight});
    if (wrong.empty()) return testing::AssertionSuccess();
    return testing::AssertionFailure() << description << ": " << wrong;
}

testing::AssertionResult KernelTrial::Matches(ScaleKernel kernel, Oracle oracle) const {
    const Expectation expected = Expect(oracle);
    const auto after = Run(kernel, expected, BufferGuard::kPageAfter);
    return after ? Run(kernel, expected, BufferGuard::kPageBefore) : after;
}

std::vector<uint8_t> KernelTrial::Output(ScaleKernel kernel) const {
    constexpr uint8_t kUntouched = 0xa7;
    const auto rows = static_cast<size_t>(std::abs(shape_.dstHeight));
    std::vector<uint8_t> written(static_cast<size_t>(shape_.dstWidth) * rows, kUntouched);
    const EngineMap xMap(maps_.x);
    const EngineMap yMap(maps_.y);
    kernel(written.data(), source_.bytes.data(), shape_.dstWidth, shape_.dstHeight, shape_.srcWidth,
           shape_.srcHeight, xMap.Record(), yMap.Record());
    return written;
}

std::string KernelTrial::Describe() const {
    std::ostringstream text;
    text << shape_.srcWidth << 'x' << shape_.srcHeight << " to " << shape_.dstWidth << 'x'
         << shape_.dstHeight << ", " << dataName_;
    return text.str();
}

}  // namespace tavo::test
