// The functions that copy and free media types.
#include <cstring>

#include "tests/dshow/media_type_fixture.h"

using namespace tavo_test;

namespace {

TEST_F(MediaTypes, CreateAndDelete) {
    FakeOuter unknown;
    const MediaType full = FullType(&unknown);
    AM_MEDIA_TYPE* copy = CreateMediaType(full.Get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(MediaType(*copy), full);
    EXPECT_EQ(unknown.references, 2);
    DeleteMediaType(copy);
    EXPECT_EQ(unknown.references, 1);
    DeleteMediaType(nullptr);
    for (int after = 0; after < 2; ++after) {
        FailTaskMemory fail(after);
        EXPECT_EQ(CreateMediaType(full.Get()), nullptr);
    }
    EXPECT_EQ(unknown.references, 1);
}

TEST_F(MediaTypes, CopyLeavesTheOldContentsAlone) {
    const MediaType full = FullType();
    AM_MEDIA_TYPE target = *FullType();
    target.pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(3));
    target.cbFormat = 3;
    BYTE* old = target.pbFormat;
    EXPECT_EQ(CopyMediaType(&target, full.Get()), S_OK);
    EXPECT_EQ(MediaType(target), full);
    CoTaskMemFree(target.pbFormat);
    CoTaskMemFree(old);
}

TEST_F(MediaTypes, CopyOfAnEmptyBlock) {
    MediaType source = MakePartialType(MEDIATYPE_Video);
    AM_MEDIA_TYPE target = {};
    EXPECT_EQ(CopyMediaType(&target, source.Get()), S_OK);
    EXPECT_EQ(target.pbFormat, nullptr);
    EXPECT_EQ(target.cbFormat, 0u);
}

TEST_F(MediaTypes, FailedCopyHoldsNothing) {
    FakeOuter unknown;
    const MediaType full = FullType(&unknown);
    AM_MEDIA_TYPE target = {};
    {
        FailTaskMemory fail;
        EXPECT_EQ(CopyMediaType(&target, full.Get()), E_OUTOFMEMORY);
    }
    EXPECT_EQ(target.pbFormat, nullptr);
    EXPECT_EQ(target.cbFormat, 0u);
    EXPECT_EQ(target.pUnk, nullptr);
    EXPECT_EQ(unknown.references, 1);
}

TEST_F(MediaTypes, FreeKeepsTheRest) {
    FakeOuter unknown;
    const MediaType full = FullType(&unknown);
    AM_MEDIA_TYPE type = {};
    ASSERT_EQ(CopyMediaType(&type, full.Get()), S_OK);
    FreeMediaType(type);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(type.cbFormat, 0u);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_EQ(unknown.references, 1);
    EXPECT_TRUE(type.majortype == MEDIATYPE_Video);
    EXPECT_TRUE(type.subtype == MEDIASUBTYPE_YUY2);
    EXPECT_EQ(type.lSampleSize, 99u);
    FreeMediaType(type);
}

// A block that claims a length and has none must not be read.
TEST_F(MediaTypes, AbsentBlockWithALength) {
    AM_MEDIA_TYPE broken = *MakePartialType(MEDIATYPE_Video, MEDIASUBTYPE_YUY2, FORMAT_VideoInfo);
    broken.cbFormat = 88;
    const CMediaType full(*FullType());
    CMediaType holder;
    const HRESULT hr = holder.Set(broken);
    if (SUCCEEDED(hr)) {
        EXPECT_TRUE(holder.cbFormat == 0 || holder.pbFormat != nullptr);
    }
    CMediaType view;
    static_cast<AM_MEDIA_TYPE&>(view) = broken;
    EXPECT_FALSE(full == view);
    EXPECT_FALSE(full.MatchesPartial(&view));
    view.cbFormat = 0;
}

}  // namespace
