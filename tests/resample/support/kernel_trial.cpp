// The trial.

#include "tests/resample/support/kernel_trial.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

constexpr uint8_t kUntouched = 0xa7;

// One axis map in guarded memory, exactly as many entries as the kernel may read.
class PlacedMap {
  public:
    const AxisMap* Place(const OracleMap& map, size_t entries, BufferGuard guard) {
        weights_ = weightBuffer_.Place(entries, guard, 0);
        indices_ = indexBuffer_.Place(entries * sizeof(int32_t), guard, 0);
        if (entries > 0) {
            std::memcpy(weights_, map.weights.data(), entries);
            std::memcpy(indices_, map.indices.data(), entries * sizeof(int32_t));
        }
        record_ = {static_cast<int32_t>(map.indices.size()), map.srcSpan, 8, weights_,
                   reinterpret_cast<int32_t*>(indices_)};
        return &record_;
    }

    bool Unchanged(const OracleMap& map, size_t entries) const {
        return weightBuffer_.Intact() && indexBuffer_.Intact() &&
               (entries == 0 ||
                (std::memcmp(weights_, map.weights.data(), entries) == 0 &&
                 std::memcmp(indices_, map.indices.data(), entries * sizeof(int32_t)) == 0));
    }

  private:
    GuardedBuffer weightBuffer_;
    GuardedBuffer indexBuffer_;
    uint8_t* weights_ = nullptr;
    uint8_t* indices_ = nullptr;
    AxisMap record_{};
};

struct Workspace {
    GuardedBuffer dst;
    GuardedBuffer src;
    PlacedMap xMap;
    PlacedMap yMap;
};

Workspace& SharedWorkspace() {
    static Workspace workspace;
    return workspace;
}

testing::AssertionResult CompareBytes(const uint8_t* actual, const std::vector<uint8_t>& expected,
                                      int32_t stride) {
    const auto difference = std::mismatch(expected.begin(), expected.end(), actual);
    if (difference.first == expected.end()) return testing::AssertionSuccess();
    const auto at = difference.first - expected.begin();
    return testing::AssertionFailure()
           << "stored row " << at / stride << " byte " << at % stride << " is "
           << int{*difference.second} << ", expected " << int{*difference.first};
}

OracleMap MapFor(int32_t srcLen, int32_t dstLen) {
    return dstLen == 0 ? OracleMap{} : MakeOracleMap(srcLen, dstLen);
}

}  // namespace

KernelTrial::KernelTrial(const PictureLayout& layout, const FrameShape& shape, Pattern pattern,
                         uint64_t seed)
    : layout_(layout),
      shape_(shape),
      xMap_(MapFor(shape.srcWidth, shape.dstWidth)),
      yMap_(MapFor(shape.srcHeight, shape.dstHeight)),
      source_(MakeBytes(pattern, layout.Stride(shape.srcWidth), std::abs(shape.srcHeight), seed)),
      dataName_(NameOf(pattern)) {}

KernelTrial::KernelTrial(const PictureLayout& layout, const FrameShape& shape, OracleMap xMap,
                         OracleMap yMap, std::vector<uint8_t> source)
    : layout_(layout),
      shape_(shape),
      xMap_(std::move(xMap)),
      yMap_(std::move(yMap)),
      source_(std::move(source)),
      dataName_("given data") {}

size_t KernelTrial::DestinationSize() const {
    return static_cast<size_t>(layout_.Stride(shape_.dstWidth)) *
           static_cast<size_t>(std::abs(shape_.dstHeight));
}

std::vector<uint8_t> KernelTrial::Expect(ScaleOracle oracle) const {
    std::vector<uint8_t> expected(DestinationSize(), kUntouched);
    oracle(expected.data(), source_.data(), shape_, xMap_, yMap_);
    return expected;
}

testing::AssertionResult KernelTrial::Run(ScaleKernel kernel, const std::vector<uint8_t>& expected,
                                          BufferGuard guard) const {
    const std::string description =
        Describe() + (guard == BufferGuard::kPageAfter ? ", guard behind" : ", guard in front");
    SetCurrentTrial(description.c_str());

    Workspace& space = SharedWorkspace();
    const auto columns = static_cast<size_t>(shape_.dstWidth);
    const auto rows = static_cast<size_t>(std::abs(shape_.dstHeight));
    uint8_t* dst = space.dst.Place(DestinationSize(), guard, kUntouched);
    uint8_t* src = space.src.Place(source_.size(), guard, 0);
    std::memcpy(src, source_.data(), source_.size());
    const AxisMap* xMap = space.xMap.Place(xMap_, columns, guard);
    const AxisMap* yMap = space.yMap.Place(yMap_, rows, guard);

    const int32_t result = kernel(dst, src, shape_.dstWidth, shape_.dstHeight, shape_.srcWidth,
                                  shape_.srcHeight, xMap, yMap);
    const uint16_t tags = X87TagWord();

    const auto fail = [&] { return testing::AssertionFailure() << description << ": "; };
    if (tags != kEmptyTagWord) return fail() << "x87 registers in use (missing emms)";
    if (result != static_cast<int32_t>(rows)) return fail() << "returned " << result;
    if (!space.dst.Intact()) return fail() << "wrote beside the destination";
    if (!space.src.Intact() || std::memcmp(src, source_.data(), source_.size()) != 0) {
        return fail() << "wrote into the source";
    }
    if (!space.xMap.Unchanged(xMap_, columns) || !space.yMap.Unchanged(yMap_, rows)) {
        return fail() << "wrote into a map";
    }
    const auto compared = CompareBytes(dst, expected, layout_.Stride(shape_.dstWidth));
    if (!compared) return fail() << compared.message();
    return testing::AssertionSuccess();
}

testing::AssertionResult KernelTrial::Matches(ScaleKernel kernel, ScaleOracle oracle) const {
    const std::vector<uint8_t> expected = Expect(oracle);
    const auto behind = Run(kernel, expected, BufferGuard::kPageAfter);
    return behind ? Run(kernel, expected, BufferGuard::kPageBefore) : behind;
}

std::vector<uint8_t> KernelTrial::Output(ScaleKernel kernel) const {
    std::vector<uint8_t> written(DestinationSize(), kUntouched);
    Workspace& space = SharedWorkspace();
    const auto rows = static_cast<size_t>(std::abs(shape_.dstHeight));
    kernel(written.data(), source_.data(), shape_.dstWidth, shape_.dstHeight, shape_.srcWidth,
           shape_.srcHeight,
           space.xMap.Place(xMap_, static_cast<size_t>(shape_.dstWidth), BufferGuard::kPageAfter),
           space.yMap.Place(yMap_, rows, BufferGuard::kPageAfter));
    return written;
}

std::string KernelTrial::Describe() const {
    std::ostringstream text;
    text << layout_.name << ' ' << shape_.srcWidth << 'x' << shape_.srcHeight << " to "
         << shape_.dstWidth << 'x' << shape_.dstHeight << ", " << dataName_;
    return text.str();
}

}  // namespace tavo::test
