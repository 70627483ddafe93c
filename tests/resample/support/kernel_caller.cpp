// Calling kernels and comparing what they wrote.

#include "tests/resample/support/kernel_caller.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "tests/support/odd_stack.h"
#include "tests/support/x87_state.h"

namespace tavo::test {
namespace {

template <typename Kernel, typename... Arguments>
int32_t CallOn([[maybe_unused]] unsigned stack, Kernel kernel, Arguments... arguments) {
#if TAVO_TEST_HAS_ODD_STACK
    return CallOnOddStack(stack, kernel, arguments...);
#else
    return kernel(arguments...);
#endif
}

// The rows of the source at a pitch, with other bytes between them.
std::vector<uint8_t> BytesAtPitch(const Source& source, int pitch) {
    constexpr uint8_t kBetweenRows = 0x3c;
    const int stride = StrideOf(source.format, source.width);
    std::vector<uint8_t> bytes(static_cast<size_t>(pitch) * source.height, kBetweenRows);
    for (int row = 0; row < source.height; ++row) {
        for (int at = 0; at < stride; ++at) {
            bytes[static_cast<size_t>(row) * pitch + at] = static_cast<uint8_t>(source.At(row, at));
        }
    }
    return bytes;
}

int FillOf(BufferGuard guard) { return guard == BufferGuard::kPageAfter ? 0 : 1; }

}  // namespace

Expectation::Expectation(Canvas canvas) : canvas_(std::move(canvas)) {
    for (int fill : {0, 1}) {
        filled_[fill].reserve(canvas_.Size());
        for (size_t place = 0; place < canvas_.Size(); ++place) {
            filled_[fill].push_back(canvas_.Expected(place, kFills[fill]));
        }
    }
}

std::string Expectation::Compare(const uint8_t* actual, int fill) const {
    const size_t size = Size();
    if (size == 0 || std::memcmp(actual, filled_[fill].data(), size) == 0) return {};
    const size_t place = canvas_.FirstDifference(actual, kFills[fill]);
    if (place == size) return {};
    const size_t stride = std::max<size_t>(static_cast<size_t>(canvas_.Stride()), 1);
    return "stored row " + std::to_string(place / stride) + " byte " +
           std::to_string(place % stride) + " (byte " + std::to_string(place) + " of " +
           std::to_string(size) + ") is " + std::to_string(actual[place]) + ", expected " +
           std::to_string(filled_[fill][place]);
}

void KernelCaller::GuardedMap::Place(const AxisEntries& entries, BufferGuard guard, int pitch) {
    const size_t count = entries.indices.size();
    uint8_t* weights = weightBuffer_.Place(count, guard, 0);
    uint8_t* indices = indexBuffer_.Place(count * sizeof(int32_t), guard, 0);
    for (size_t i = 0; i < count; ++i) weights[i] = static_cast<uint8_t>(entries.weights[i]);
    if (count > 0) std::memcpy(indices, entries.indices.data(), count * sizeof(int32_t));
    const int32_t told = entries.wholeCount > 0 ? entries.wholeCount : static_cast<int32_t>(count);
    record_ = {told, entries.srcSpan, 8, weights, reinterpret_cast<int32_t*>(indices), pitch};
    entries_ = &entries;
}

bool KernelCaller::GuardedMap::Intact() const {
    const size_t count = entries_->indices.size();
    if (!weightBuffer_.Intact() || !indexBuffer_.Intact()) return false;
    for (size_t i = 0; i < count; ++i) {
        if (record_.weights[i] != entries_->weights[i]) return false;
    }
    return count == 0 ||
           std::memcmp(record_.indices, entries_->indices.data(), count * sizeof(int32_t)) == 0;
}

void KernelCaller::Place(const Source& source, const Maps& maps, BufferGuard guard, int pitch) {
    guard_ = guard;
    srcWidth_ = source.width;
    srcBytes_ = pitch == 0 ? source.bytes : BytesAtPitch(source, pitch);
    uint8_t* src = srcBuffer_.Place(srcBytes_.size(), guard, 0);
    if (!srcBytes_.empty()) std::memcpy(src, srcBytes_.data(), srcBytes_.size());
    src_ = src;
    xMap_.Place(maps.x, guard, pitch);
    yMap_.Place(maps.y, guard, 0);
}

uint8_t* KernelCaller::PlaceDestination(const Expectation& expectation) {
    dst_ = dstBuffer_.Place(expectation.Size(), guard_, kFills[FillOf(guard_)]);
    return dst_;
}

std::string KernelCaller::Verdict(const Expectation& expectation, int result, int rows) const {
    if (X87TagWord() != kEmptyTagWord) {
        asm volatile("emms");
        return "x87 registers in use (missing emms)";
    }
    if (result != rows) return "returned " + std::to_string(result);
    if (!dstBuffer_.Intact()) return "wrote beside the destination";
    if (!srcBuffer_.Intact() ||
        (!srcBytes_.empty() && std::memcmp(src_, srcBytes_.data(), srcBytes_.size()) != 0)) {
        return "wrote into the source";
    }
    if (!xMap_.Intact() || !yMap_.Intact()) return "wrote into a map";
    return expectation.Compare(dst_, FillOf(guard_));
}

std::string KernelCaller::Run(ScaleKernel kernel, const Expectation& expectation, int dstWidth,
                              int dstHeight, const CallStyle& style) {
    uint8_t* dst = PlaceDestination(expectation);
    const AxisMap* xMap = style.withXMap ? xMap_.Record() : nullptr;
    const AxisMap* yMap = style.withYMap ? yMap_.Record() : nullptr;
    const int32_t result = CallOn(style.stack, kernel, dst, src_, dstWidth, dstHeight, srcWidth_,
                                  style.srcHeight, xMap, yMap);
    return Verdict(expectation, result, std::abs(dstHeight));
}

std::string KernelCaller::Run(CopyKernel kernel, const Expectation& expectation, int width,
                              int height, int bitsPerPixel, unsigned stack) {
    uint8_t* dst = PlaceDestination(expectation);
    const int32_t result = CallOn(stack, kernel, dst, src_, width, height, bitsPerPixel);
    return Verdict(expectation, result, std::abs(height));
}

}  // namespace tavo::test
