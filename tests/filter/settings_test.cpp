// The settings: defaults, setters and getters, the order of the methods, and ApplySettings without
// a graph.
#include <climits>
#include <limits>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/support/odd_stack.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

class SettingsTest : public FilterTest {};

// Bypasses the header: what counts for old callers is the place in the table.
template <typename... Arguments>
int CallSlot(IVantrelSettings* settings, int slot, Arguments... arguments) {
    using Method = int(STDMETHODCALLTYPE*)(IVantrelSettings*, Arguments...);
    const auto method =
        reinterpret_cast<Method>(const_cast<void*>(tavo::test::MethodAt(settings, slot)));
    return method(settings, arguments...);
}

TEST_F(SettingsTest, DefaultsAreAutoAndZero) {
    FilterRig rig;
    ASSERT_TRUE(rig.settings);
    EXPECT_EQ(rig.OutputSize(), std::pair(0, 0));
    int value = -1;
    EXPECT_EQ(rig.settings->GetScaleMethod(&value), 1);
    EXPECT_EQ(value, 0);
    value = -1;
    EXPECT_EQ(rig.settings->GetOutputFormat(&value), 1);
    EXPECT_EQ(value, 0);
    value = -1;
    EXPECT_EQ(rig.settings->GetVideoType(&value), 1);
    EXPECT_EQ(value, 0);
    double fps = -1;
    EXPECT_EQ(rig.settings->GetFrameRate(&fps), 1);
    EXPECT_EQ(fps, 0.0);
}

TEST_F(SettingsTest, SettersAcceptAnyValueAndReturnOne) {
    FilterRig rig;
    for (const int value : {0, 1, 2, 3, 10, 11, 12, 13, -1, 12345, INT_MAX, INT_MIN}) {
        int read = 0;
        EXPECT_EQ(rig.settings->SetScaleMethod(value), 1);
        EXPECT_EQ(rig.settings->GetScaleMethod(&read), 1);
        EXPECT_EQ(read, value);
        EXPECT_EQ(rig.settings->SetOutputFormat(value), 1);
        EXPECT_EQ(rig.settings->GetOutputFormat(&read), 1);
        EXPECT_EQ(read, value);
        EXPECT_EQ(rig.settings->SetVideoType(value), 1);
        EXPECT_EQ(rig.settings->GetVideoType(&read), 1);
        EXPECT_EQ(read, value);
        EXPECT_EQ(rig.settings->SetOutputSize(value, -7), 1);
        EXPECT_EQ(rig.OutputSize(), std::pair(value, -7));
        EXPECT_EQ(rig.settings->SetOutputSize(-7, value), 1);
        EXPECT_EQ(rig.OutputSize(), std::pair(-7, value));
    }
}

TEST_F(SettingsTest, MethodsStandInTheirSlots) {
    FilterRig rig;
    IVantrelSettings* const settings = rig.settings.Get();
    int first = 0;
    int second = 0;
    EXPECT_EQ(CallSlot(settings, 3, 320, 240), 1);
    EXPECT_EQ(CallSlot(settings, 4, &first, &second), 1);
    EXPECT_EQ(std::pair(first, second), std::pair(320, 240));
    EXPECT_EQ(CallSlot(settings, 5, 12), 1);
    EXPECT_EQ(CallSlot(settings, 6, &first), 1);
    EXPECT_EQ(first, 12);
    EXPECT_EQ(CallSlot(settings, 7, 9), 1);
    EXPECT_EQ(CallSlot(settings, 8, &first), 1);
    EXPECT_EQ(first, 9);
    EXPECT_EQ(CallSlot(settings, 9, 2), 1);
    EXPECT_EQ(CallSlot(settings, 10, &first), 1);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(CallSlot(settings, 13), int{E_INVALIDARG});
    EXPECT_EQ(CallSlot(settings, 15, 12.5), 1);
    for (const int statistic : {11, 12, 14}) {
        double value = -1;
        EXPECT_EQ(CallSlot(settings, statistic, &value), 1);
        EXPECT_EQ(value, 0.0);
    }
    double fps = 0;
    EXPECT_EQ(CallSlot(settings, 16, &fps), 1);
    EXPECT_EQ(fps, 12.5);
}

TEST_F(SettingsTest, OutputSizeZeroTakesTheSizeOfTheFirstInputType) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 352, 288)), S_OK);
    EXPECT_EQ(rig.OutputSize(), std::pair(352, 288));
    rig.DisconnectInput();
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_EQ(rig.OutputSize(), std::pair(352, 288)) << "only the first type sets the size";
}

TEST_F(SettingsTest, OneZeroDimensionTakesThatOfTheSource) {
    FilterRig wide;
    wide.settings->SetOutputSize(100, 0);
    ASSERT_EQ(wide.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_EQ(wide.OutputSize(), std::pair(100, 48));
    FilterRig tall;
    tall.settings->SetOutputSize(0, 100);
    ASSERT_EQ(tall.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    EXPECT_EQ(tall.OutputSize(), std::pair(64, 100));
}

TEST_F(SettingsTest, ATopDownSourceGivesANegativeHeightUntilTheOutputTypeIsSet) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("RGB24"), 64, -48)), S_OK);
    EXPECT_EQ(rig.OutputSize(), std::pair(64, -48));
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    EXPECT_EQ(rig.OutputSize(), std::pair(64, 48));
}

TEST_F(SettingsTest, ApplyWithoutAnInputIsRefused) {
    FilterRig rig;
    EXPECT_EQ(rig.settings->ApplySettings(), int{E_INVALIDARG});
}

TEST_F(SettingsTest, ApplyWithTheOutputUnconnectedSettlesTheOutputType) {
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YUY2"), 64, 48)), S_OK);
    rig.settings->SetOutputSize(175, 100);
    EXPECT_EQ(rig.settings->ApplySettings(), 1);
    EXPECT_EQ(rig.OutputSize(), std::pair(176, 100)) << "rounded up to an even width";
}

TEST_F(SettingsTest, ApplyWithSettingsThatTheInputCannotSatisfyIsRefused) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    const MediaType before = rig.ConnectionTypeOf(rig.output.Get());
    rig.settings->SetOutputFormat(VantrelFormatRgb24);
    EXPECT_EQ(rig.settings->ApplySettings(), int{E_INVALIDARG});
    rig.settings->SetOutputFormat(VantrelFormatAuto);
    rig.settings->SetVideoType(VantrelTypeMpeg2);
    EXPECT_EQ(rig.settings->ApplySettings(), int{E_INVALIDARG});
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), before);
    EXPECT_EQ(rig.sink->pin().calls().Count("QueryAccept"), 0);
    EXPECT_EQ(rig.sink->pin().calls().Count("Disconnect"), 0);
}

TEST_F(SettingsTest, ApplyWithASizeThatCannotBeBuiltLeavesTheOutputAsItWas) {
    for (const auto& [width, height] : std::initializer_list<std::pair<int, int>>{
             {-5, 48}, {INT_MIN, 48}, {INT_MAX, 48}, {64, INT_MIN}, {65536, 65536}, {INT_MAX, 1}}) {
        FilterRig rig;
        ASSERT_EQ(rig.Connect(TypeOf(Format("YUY2"), 64, 48)), S_OK);
        const MediaType before = rig.ConnectionTypeOf(rig.output.Get());
        rig.settings->SetOutputSize(width, height);
        EXPECT_EQ(rig.settings->ApplySettings(), int{E_INVALIDARG}) << width << "x" << height;
        EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()), before);
        EXPECT_EQ(rig.OutputSize(), std::pair(width, height));
        ASSERT_EQ(rig.Start(), S_OK);
        EXPECT_EQ(rig.Deliver(RandomFrame(Format("YUY2"), 64, 48)), S_OK);
    }
}

TEST_F(SettingsTest, ApplyWithAPeerThatRefusesGivesZero) {
    FilterRig rig({.queryAccept = S_FALSE});
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 0);
    EXPECT_EQ(rig.sink->pin().calls().Count("QueryAccept"), 1);
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 64);
}

TEST_F(SettingsTest, ApplyWithoutAGraphToReconnectGivesZero) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    rig.settings->SetOutputSize(32, 24);
    EXPECT_EQ(rig.settings->ApplySettings(), 0);
    EXPECT_TRUE(rig.sink->pin().connected());
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 64);
}

TEST_F(SettingsTest, ApplyWithoutMemoryFailsAndChangesNothing) {
    FilterRig rig;
    ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
    rig.settings->SetOutputSize(32, 24);
    for (int after = 0; after < 3; ++after) {
        const FailTaskMemory fail(after);
        EXPECT_NE(rig.settings->ApplySettings(), 1);
    }
    EXPECT_EQ(rig.ConnectionTypeOf(rig.output.Get()).Bitmap()->biWidth, 64);
}

}  // namespace
