// How much stack the kernels use: every slot of every row on every instruction set, while others
// hold the shared work memory and while nobody does. Hosts call from threads of 64 KB.

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "resample/axis_map.h"
#include "resample/kernel_table.h"
#include "tests/kernel_check/backends.h"
#include "tests/resample/support/expected_table.h"
#include "tests/resample/support/held_memory.h"
#include "tests/resample/support/test_data.h"

namespace tavo::test {
namespace {

constexpr size_t kMostStack = 16 * 1024;
constexpr size_t kHostStack = 64 * 1024;
// For what uses too much.
constexpr size_t kLargeStack = 1024 * 1024;
constexpr size_t kProbedBytes = 32 * 1024;

constexpr uint32_t kPattern = 0x5aa5c33c;
// What lies between the probed words and the frame that they are below: red zone, own frame.
constexpr size_t kProbeDistance = 512;

// Fills the words below the caller's frame, or finds the lowest one that was written since.
__attribute__((noinline)) void FillStack(uintptr_t frame, size_t bytes) {
    auto* word = reinterpret_cast<volatile uint32_t*>(frame - kProbeDistance);
    for (size_t i = 0; i < bytes / 4; ++i) *--word = kPattern;
}

__attribute__((noinline)) size_t StackWritten(uintptr_t frame, size_t bytes) {
    auto* word = reinterpret_cast<volatile uint32_t*>(frame - kProbeDistance - bytes / 4 * 4);
    while (word < reinterpret_cast<uint32_t*>(frame - kProbeDistance) && *word == kPattern) ++word;
    return frame - reinterpret_cast<uintptr_t>(word);
}

// The stack that a call uses, this function's own frame included.
template <typename Call>
__attribute__((noinline)) size_t StackUsedBy(Call call) {
    const auto frame = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    FillStack(frame, kProbedBytes);
    call();
    return StackWritten(frame, kProbedBytes);
}

// Runs work on a thread with so much stack, what the C library keeps there included.
template <typename Work>
void RunOnThread(size_t stackBytes, Work& work) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackBytes), 0);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<Work*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

struct Lengths {
    int32_t source;
    int32_t destination;
};
// Larger and smaller by every sort of ratio; the last ones leave most of the source out.
constexpr Lengths kWidths[] = {{4096, 2730}, {2730, 4096}, {4096, 4094}, {4096, 1366}, {64, 4096},
                               {720, 640},   {4096, 640},  {4096, 60},   {4096, 6},    {4096, 2}};
constexpr Lengths kThreeToTwo[] = {{720, 480}, {4092, 2728}};
constexpr Lengths kFourToThree[] = {{640, 480}, {4096, 3072}};
constexpr Lengths kSameWidths[] = {{4096, 4096}, {1001, 1001}};
// Up to the last source row.
constexpr Lengths kHeights[] = {{6, 4}, {3, 7}};

std::vector<Lengths> WidthsOf(Axis axis) {
    switch (axis) {
        case Axis::H720: return {std::begin(kThreeToTwo), std::end(kThreeToTwo)};
        case Axis::H640: return {std::begin(kFourToThree), std::end(kFourToThree)};
        case Axis::Horizontal:
        case Axis::Both: return {std::begin(kWidths), std::end(kWidths)};
        case Axis::Vertical:
        case Axis::Copy: break;
    }
    return {std::begin(kSameWidths), std::end(kSameWidths)};
}

std::vector<Lengths> HeightsOf(Axis axis) {
    if (axis == Axis::Both || axis == Axis::Vertical) {
        return {std::begin(kHeights), std::end(kHeights)};
    }
    return {{5, 5}};
}

// Called for each kernel and size with what runs it.
template <typename Use>
class Walk {
  public:
    explicit Walk(Use& use) : use_(use) {}

    void operator()() {
        for (const Backend& backend : RunnableBackends()) {
            Activate(backend);
            for (int slot = 0; slot < kKernelSlots; ++slot) {
                // Levels are told apart by the slots that they fill.
                if (backend.isLevel != (slot <= SlotBilinearAuto)) continue;
                for (const CopyRow& row : kCopyRows) Copy(row, slot, backend);
                for (const ScaleRow& row : kScaleRows) Scale(row, slot, backend);
            }
        }
        FillKernelTable();
    }

  private:
    void Copy(const CopyRow& row, int slot, const Backend& backend) {
        const CopyKernel kernel = KernelTable[row.row][slot].copy;
        if (!kernel) return;
        const std::string name =
            std::to_string(row.row) + "/" + std::to_string(slot) + ", " + backend.name;
        use_(name, [&] { kernel(dst_.data(), src_.data(), 4096, -5, 24); });
    }

    void Scale(const ScaleRow& row, int slot, const Backend& backend) {
        const ScaleKernel kernel = KernelTable[row.row][slot].scale;
        for (const Lengths& width : WidthsOf(row.axis)) {
            const AxisMapPtr xMap(BuildAxisMap(width.source, width.destination, 0));
            for (const Lengths& height : HeightsOf(row.axis)) {
                const AxisMapPtr yMap(BuildAxisMap(height.source, height.destination, 0));
                const std::string name = std::to_string(row.row) + "/" + std::to_string(slot) +
                                         ", " + backend.name + ", " + std::to_string(width.source) +
                                         " to " + std::to_string(width.destination);
                use_(name, [&] {
                    kernel(dst_.data(), src_.data(), width.destination, height.destination,
                           width.source, height.source, xMap.get(), yMap.get());
                });
            }
        }
    }

    static constexpr size_t kPictureBytes = 4096 * 3 * 8;
    Use& use_;
    std::vector<uint8_t> src_ =
        MakeBytes(Pattern::Random, static_cast<int32_t>(kPictureBytes), 1, 41);
    std::vector<uint8_t> dst_ = std::vector<uint8_t>(kPictureBytes);
};

class KernelStack : public testing::Test {
  protected:
    void SetUp() override { FillKernelTable(); }
};

TEST_F(KernelStack, TheProbeSeesWhatIsUsed) {
    static constexpr size_t kUsed = 20'000;
    size_t used = 0;
    auto work = [&] {
        used = StackUsedBy([] {
            volatile uint8_t bytes[kUsed];
            for (volatile uint8_t& byte : bytes) byte = 1;
        });
    };
    RunOnThread(kLargeStack, work);
    EXPECT_GE(used, kUsed);
    EXPECT_LT(used, kUsed + 2 * kProbeDistance);
}

void ExpectLittleStack() {
    size_t most = 0;
    size_t calls = 0;
    std::string mostName;
    const auto measure = [&](const std::string& name, const auto& call) {
        const size_t used = StackUsedBy(call);
        EXPECT_LE(used, kMostStack) << name;
        if (used > most) mostName = name;
        most = std::max(most, used);
        ++calls;
    };
    Walk walk(measure);
    RunOnThread(kLargeStack, walk);
    std::printf("%zu calls, at the most %zu bytes: %s\n", calls, most, mostName.c_str());
    EXPECT_GT(calls, 1000u);
}

TEST_F(KernelStack, NoKernelUsesMoreThan16KB) { ExpectLittleStack(); }

TEST_F(KernelStack, NoneUsesMoreWithMemoryOfItsOwn) {
    const HeldMemory held;
    ExpectLittleStack();
}

TEST_F(KernelStack, KernelsRunOnAThreadOf64KB) {
    if (sysconf(_SC_THREAD_STACK_MIN) > static_cast<long>(kHostStack)) {
        GTEST_SKIP() << "The system has no threads as small as that";
    }
    const auto run = [](const std::string&, const auto& call) { call(); };
    Walk walk(run);
    RunOnThread(kHostStack, walk);
    const HeldMemory held;
    RunOnThread(kHostStack, walk);
}

}  // namespace
}  // namespace tavo::test
