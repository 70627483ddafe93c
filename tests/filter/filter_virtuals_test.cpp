// What the overridden members of the filter answer, where a base class would hide it from clients.
#include "tests/filter/support/inside_filter.h"

using namespace tavo_test;

// The module's table, which the base classes expect in every program.
CFactoryTemplate g_Templates[] = {
    {L"Mira Vantrel", &CLSID_VantrelFilter, CVantrelFilter::CreateInstance, nullptr, nullptr}};
int g_cTemplates = 1;

namespace {

using FilterVirtualsTest = InsideFilterTest;

TEST_F(FilterVirtualsTest, AnInputTypeThatFailsTheTestIsNotAccepted) {
    const CMediaType good = TypeFor("YV12");
    EXPECT_EQ(inside->CheckInputType(&good), S_OK);
    inside->SetOutputFormat(VantrelFormatYuy2);
    EXPECT_EQ(inside->CheckInputType(&good), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(inside->CheckInputType(nullptr), E_POINTER);
}

TEST_F(FilterVirtualsTest, AnOutputTypeThatFailsTheTestOrHasAnotherSubtypeIsInvalid) {
    const CMediaType input = TypeFor("YV12");
    const CMediaType other = TypeFor("IYUV");
    const CMediaType smaller = TypeFor("YV12", 32, 24);
    EXPECT_EQ(inside->CheckTransform(&input, &smaller), S_OK);
    EXPECT_EQ(inside->CheckTransform(&input, &other), E_INVALIDARG);
    CMediaType odd = TypeFor("YUY2", 63, 48);
    const CMediaType packed = TypeFor("YUY2");
    EXPECT_EQ(inside->CheckTransform(&packed, &odd), E_INVALIDARG);
    inside->SetVideoType(VantrelTypeMpeg2);
    EXPECT_EQ(inside->CheckTransform(&input, &smaller), E_INVALIDARG);
    EXPECT_EQ(inside->CheckTransform(nullptr, &smaller), E_POINTER);
    EXPECT_EQ(inside->CheckTransform(&input, nullptr), E_POINTER);
}

TEST_F(FilterVirtualsTest, WithoutAnInputThereIsNoTypeAndNoBufferSize) {
    CMediaType type;
    EXPECT_EQ(inside->GetMediaType(0, &type), E_UNEXPECTED);
    EXPECT_EQ(inside->GetMediaType(1, &type), E_UNEXPECTED);
    const auto allocator = TestAllocator::Create();
    ALLOCATOR_PROPERTIES wishes = {};
    EXPECT_EQ(inside->DecideBufferSize(allocator.Get(), &wishes), E_UNEXPECTED);
    EXPECT_EQ(allocator->calls().Count("SetProperties"), 0);
    EXPECT_EQ(inside->DecideBufferSize(nullptr, &wishes), E_POINTER);
}

TEST_F(FilterVirtualsTest, PositionsOtherThanZeroHoldNoType) {
    FilterRig rig;
    rig.Use(owner);
    ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK);
    CMediaType type;
    EXPECT_EQ(inside->GetMediaType(0, &type), S_OK);
    for (const int position : {1, 2, 100, -1})
        EXPECT_EQ(inside->GetMediaType(position, &type), VFW_S_NO_MORE_ITEMS);
}

TEST_F(FilterVirtualsTest, TheBufferSizeIsThatOfTheOutputAndTheResultTheAllocators) {
    FilterRig rig;
    rig.Use(owner);
    rig.settings->SetOutputSize(6, 5);
    ASSERT_EQ(rig.Connect(TypeOf(Format("YVU9"), 64, 48)), S_OK);
    const auto allocator = TestAllocator::Create();
    ALLOCATOR_PROPERTIES wishes = {9, 9, 9, 9};
    EXPECT_EQ(inside->DecideBufferSize(allocator.Get(), &wishes), S_OK);
    EXPECT_EQ(allocator->asked().cBuffers, 1);
    EXPECT_EQ(allocator->asked().cbBuffer, 9 * 6 * 5 / 8);
    EXPECT_EQ(allocator->asked().cbAlign, 1);
    EXPECT_EQ(allocator->asked().cbPrefix, 0);
    for (const HRESULT result : {VFW_E_BADALIGN, E_OUTOFMEMORY, S_FALSE}) {
        allocator->calls().Inject("SetProperties", result, 1);
        EXPECT_EQ(inside->DecideBufferSize(allocator.Get(), &wishes), result);
        allocator->calls().ClearInjections();
    }
}

TEST_F(FilterVirtualsTest, ThereAreTwoPins) {
    EXPECT_EQ(inside->GetPinCount(), 2);
    EXPECT_NE(inside->GetPin(0), nullptr);
    EXPECT_NE(inside->GetPin(1), nullptr);
    for (const int index : {2, 3, -1}) EXPECT_EQ(inside->GetPin(index), nullptr);
}

TEST_F(FilterVirtualsTest, AFrameWithoutAConversionFails) {
    EXPECT_EQ(inside->Transform(nullptr, nullptr), E_POINTER);
    const auto sample = TestSample::Create({.size = 100});
    inside->GetPin(0);
    EXPECT_EQ(inside->Transform(sample.Get(), sample.Get()), E_FAIL);
}

TEST_F(FilterVirtualsTest, StreamingMayStartTwiceWithoutAStop) {
    inside->GetPin(0);
    EXPECT_EQ(inside->StartStreaming(), S_OK);
    EXPECT_EQ(inside->StartStreaming(), S_OK);
    EXPECT_EQ(inside->StopStreaming(), S_OK);
    EXPECT_EQ(inside->StopStreaming(), S_OK);
}

}  // namespace
