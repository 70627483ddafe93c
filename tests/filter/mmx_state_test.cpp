// Calls from a thread in whose x87 registers somebody has left MMX values, as a decoder that
// forgets to clear them does: every x87 load gives nonsense then.
#include <cstring>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

namespace {

class MmxStateTest : public FilterTest {};

#if defined(__i386__)
void LeaveMmxState() {
    asm volatile(
        "pcmpeqd %%mm0, %%mm0\n\tmovq %%mm0, %%mm1\n\tmovq %%mm0, %%mm2\n\tmovq %%mm0, %%mm3\n\t"
        "movq %%mm0, %%mm4\n\tmovq %%mm0, %%mm5\n\tmovq %%mm0, %%mm6\n\tmovq %%mm0, %%mm7"
        :
        :
        : "memory");
}
void ClearMmxState() { asm volatile("emms" : : : "memory"); }
#else
void LeaveMmxState() {}
void ClearMmxState() {}
#endif

// SetFrameRate with the rate handed over as integers: the caller's own code must not touch the x87.
int SetFrameRateByHalves(IVantrelSettings* settings, double rate) {
#if defined(__i386__)
    constexpr int kSlot = 15;
    using Method = int(STDMETHODCALLTYPE*)(IVantrelSettings*, uint32_t, uint32_t);
    uint32_t halves[2];
    std::memcpy(halves, &rate, sizeof rate);
    void** const methods = *reinterpret_cast<void***>(settings);
    LeaveMmxState();
    const int result = reinterpret_cast<Method>(methods[kSlot])(settings, halves[0], halves[1]);
    ClearMmxState();
    return result;
#else
    return settings->SetFrameRate(rate);
#endif
}

// What call() gives with MMX values left behind.
template <typename Call>
auto WithMmxState(Call call) {
    LeaveMmxState();
    const auto result = call();
    ClearMmxState();
    return result;
}

TEST_F(MmxStateTest, SizesAreStoredAndReadAsTheyAre) {
    FilterRig rig;
    int width = 0;
    int height = 0;
    EXPECT_EQ(WithMmxState([&] { return rig.settings->SetOutputSize(320, 180); }), 1);
    EXPECT_EQ(WithMmxState([&] { return rig.settings->GetOutputSize(&width, &height); }), 1);
    EXPECT_EQ(width, 320);
    EXPECT_EQ(height, 180);
}

TEST_F(MmxStateTest, TheFrameRateIsStoredAndReadAsItIs) {
    FilterRig rig;
    const double rate = 29.97;
    double read = 0.0;
    EXPECT_EQ(SetFrameRateByHalves(rig.settings.Get(), rate), 1);
    EXPECT_EQ(WithMmxState([&] { return rig.settings->GetFrameRate(&read); }), 1);
    EXPECT_EQ(std::memcmp(&read, &rate, sizeof read), 0);
}

TEST_F(MmxStateTest, TheRegulatorStaysOn) {
    const PixelFormat& format = Format("YV12");
    FilterRig rig;
    rig.settings->SetFrameRate(50.0);
    ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const SampleSpec spec = {.start = 0, .stop = 500000, .bytes = RandomFrame(format, 64, 48)};
    const ComPtr<IMediaSample> sample = rig.source->pin().MakeSample(spec);
    ASSERT_TRUE(sample);
    EXPECT_EQ(WithMmxState([&] { return rig.source->pin().input()->Receive(sample.Get()); }), S_OK);
    EXPECT_EQ(rig.samples().size(), 2u) << "two slots end in 50 ms";
}

TEST_F(MmxStateTest, ATypeOnASampleIsFollowed) {
    const PixelFormat& format = Format("YV12");
    FilterRig rig;
    rig.settings->SetScaleMethod(VantrelMethodNearest);
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
    ASSERT_EQ(rig.Start(), S_OK);
    const std::vector<BYTE> frame = RandomFrame(format, 30, 20);
    const ComPtr<IMediaSample> sample =
        rig.source->pin().MakeSample({.bytes = frame, .type = TypeOf(format, 30, 20)});
    ASSERT_TRUE(sample);
    EXPECT_EQ(WithMmxState([&] { return rig.source->pin().input()->Receive(sample.Get()); }), S_OK);
    ASSERT_EQ(rig.samples().size(), 1u);
    EXPECT_TRUE(Matches(NearestPlanar(format, frame, {30, 20}, {40, 36}), rig.samples()[0].bytes));
}

}  // namespace
