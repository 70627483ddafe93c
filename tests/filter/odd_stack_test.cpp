// Methods entered with a stack that is aligned to 4 bytes only, and what they take off it.
#include "tests/support/odd_stack.h"

#include <cstring>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

using namespace tavo_test;

#if TAVO_TEST_HAS_ODD_STACK

using tavo::test::CallOnOddStack;
using tavo::test::MethodAt;
using tavo::test::OddStackResult;
using tavo::test::Word;

namespace {

// Places in the tables of the interfaces, behind the three of IUnknown.
constexpr int kReceive = 6;            // IMemInputPin
constexpr int kReceiveConnection = 4;  // IPin
constexpr int kQueryAccept = 11;
constexpr int kEnumMediaTypes = 12;
constexpr int kPause = 5;          // IBaseFilter
constexpr int kSetFrameRate = 15;  // IVantrelSettings
constexpr int kApplySettings = 13;
constexpr int kGetPages = 3;  // ISpecifyPropertyPages

class OddStackTest : public FilterTest, public testing::WithParamInterface<uint32_t> {
  protected:
    template <typename... Words>
    uint32_t Call(const void* object, int slot, Words... words) {
        const OddStackResult result = CallOnOddStack(
            MethodAt(object, slot), {Word(object), static_cast<uint32_t>(words)...}, GetParam());
        EXPECT_EQ(result.popped, 4 * (1 + sizeof...(words))) << "slot " << slot;
        return result.value;
    }
};

TEST_P(OddStackTest, EntryPointsAndCreation) {
    void* factory = nullptr;
    const auto getClassObject =
        reinterpret_cast<const void*>(GetProcAddress(TheModule().handle(), "DllGetClassObject"));
    const OddStackResult got = CallOnOddStack(
        getClassObject, {Word(&CLSID_VantrelFilter), Word(&IID_IClassFactory), Word(&factory)},
        GetParam());
    EXPECT_EQ(got.value, static_cast<uint32_t>(S_OK));
    EXPECT_EQ(got.popped, 12u);
    ASSERT_NE(factory, nullptr);
    IBaseFilter* filter = nullptr;
    EXPECT_EQ(Call(factory, 3, 0u, Word(&IID_IBaseFilter), Word(&filter)), 0u);
    ASSERT_NE(filter, nullptr);
    EXPECT_EQ(Call(filter, 2), 0u) << "Release";
    EXPECT_EQ(Call(factory, 2), 0u);
}

TEST_P(OddStackTest, SettingsAndNegotiation) {
    FilterRig rig;
    const double fps = 29.97;
    uint32_t halves[2];
    std::memcpy(halves, &fps, sizeof halves);
    EXPECT_EQ(Call(rig.settings.Get(), kSetFrameRate, halves[0], halves[1]), 1u);
    const MediaType type = TypeOf(Format("YV12"), 64, 48);
    EXPECT_EQ(Call(rig.input.Get(), kQueryAccept, Word(type.Get())), 0u);
    EXPECT_EQ(Call(rig.input.Get(), kReceiveConnection,
                   Word(static_cast<IPin*>(&rig.source->pin())), Word(type.Get())),
              0u);
    ComPtr<IEnumMediaTypes> list;
    EXPECT_EQ(Call(rig.output.Get(), kEnumMediaTypes, Word(list.Put())), 0u);
    AM_MEDIA_TYPE* offered = nullptr;
    EXPECT_EQ(Call(list.Get(), 3, 1u, Word(&offered), 0u), 0u);
    ASSERT_NE(offered, nullptr);
    EXPECT_EQ(reinterpret_cast<VIDEOINFOHEADER*>(offered->pbFormat)->AvgTimePerFrame, 333667);
    DeleteType(offered);
    EXPECT_EQ(Call(rig.settings.Get(), kApplySettings), 1u);
    CAUUID pages = {};
    const auto specify = rig.filter.As<ISpecifyPropertyPages>();
    EXPECT_EQ(Call(specify.Get(), kGetPages, Word(&pages)), 0u);
    CoTaskMemFree(pages.pElems);
    EXPECT_EQ(rig.input->Disconnect(), S_OK);
}

TEST_P(OddStackTest, FramesThroughEveryKernel) {
    const PixelFormat& format = Format("YV12");
    const std::vector<BYTE> frame = RandomFrame(format, 64, 48);
    FilterRig rig;
    rig.settings->SetOutputSize(40, 36);
    ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
    ASSERT_EQ(rig.sink->Pause(), S_OK);
    EXPECT_EQ(Call(rig.filter.Get(), kPause), 0u);
    ASSERT_EQ(rig.source->Pause(), S_OK);
    const Expected nearest = NearestPlanar(format, frame, {64, 48}, {40, 36});
    const Expected bilinear = BilinearPlanar(format, frame, {64, 48}, {40, 36});
    for (const int method : {0, 1, 2, 5, 6, 7, 10, 11, 12}) {
        rig.settings->SetScaleMethod(method);
        const ComPtr<IMediaSample> sample = rig.source->pin().MakeSample({.bytes = frame});
        ASSERT_TRUE(sample);
        rig.sink->pin().ClearSamples();
        EXPECT_EQ(Call(rig.source->pin().input(), kReceive, Word(sample.Get())), 0u);
        ASSERT_EQ(rig.samples().size(), 1u);
        const std::vector<BYTE> bytes = rig.samples()[0].bytes;
        EXPECT_TRUE(Matches(nearest, bytes) || Matches(bilinear, bytes)) << "method " << method;
    }
}

TEST_P(OddStackTest, CopiesOfEveryFormat) {
    for (const PixelFormat& format : AllFormats()) {
        const std::vector<BYTE> frame = RandomFrame(format, 38, 22);
        FilterRig rig;
        ASSERT_EQ(rig.Connect(TypeOf(format, 38, 22)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        for (const int method : {0, 1, 2}) {
            rig.settings->SetScaleMethod(method);
            const ComPtr<IMediaSample> sample = rig.source->pin().MakeSample({.bytes = frame});
            rig.sink->pin().ClearSamples();
            EXPECT_EQ(Call(rig.source->pin().input(), kReceive, Word(sample.Get())), 0u);
            EXPECT_TRUE(Matches(CopiedFrame(format, frame, {38, 22}), rig.samples().at(0).bytes));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Offsets, OddStackTest, testing::Values(0, 4, 8, 12));

}  // namespace

#endif
