// CMediaType.
#include <cstring>
#include <type_traits>

#include "tests/dshow/media_type_fixture.h"

using namespace tavo_test;

namespace {

static_assert(sizeof(CMediaType) == sizeof(AM_MEDIA_TYPE));
static_assert(sizeof(AM_MEDIA_TYPE) == (sizeof(void*) == 4 ? 72 : 88));
static_assert(!std::is_polymorphic_v<CMediaType>);
static_assert(std::is_base_of_v<AM_MEDIA_TYPE, CMediaType>);

TEST_F(MediaTypes, StartsEmpty) {
    ExpectEmpty(CMediaType());
    CMediaType video(&MEDIATYPE_Video);
    EXPECT_TRUE(*video.Type() == MEDIATYPE_Video);
    video.majortype = GUID_NULL;
    ExpectEmpty(video);
}

TEST_F(MediaTypes, InitFreesNothing) {
    FakeOuter unknown;
    CMediaType type;
    type.Set(*FullType(&unknown));
    BYTE* block = type.pbFormat;
    type.InitMediaType();
    ExpectEmpty(type);
    EXPECT_EQ(unknown.references, 1);
    CoTaskMemFree(block);
}

TEST_F(MediaTypes, CopiesAreDeep) {
    FakeOuter unknown;
    {
        const MediaType full = FullType(&unknown);
        HRESULT hr = S_OK;
        const CMediaType fromRecord(*full, &hr);
        const CMediaType fromType(fromRecord, &hr);
        CMediaType assigned;
        assigned = fromType;
        CMediaType assignedRecord;
        assignedRecord = *full;
        EXPECT_EQ(hr, S_OK);
        EXPECT_EQ(unknown.references, 5);
        const CMediaType* const copies[] = {&fromRecord, &fromType, &assigned, &assignedRecord};
        for (const CMediaType* copy : copies) {
            EXPECT_EQ(MediaType(*copy), full);
            EXPECT_NE(copy->pbFormat, full->pbFormat);
        }
        EXPECT_NE(fromRecord.pbFormat, fromType.pbFormat);
    }
    EXPECT_EQ(unknown.references, 0);
}

TEST_F(MediaTypes, FailedCopyTellsWhenAsked) {
    FakeOuter unknown;
    const MediaType full = FullType(&unknown);
    {
        HRESULT hr = S_OK;
        FailTaskMemory fail;
        const CMediaType copy(*full, &hr);
        EXPECT_EQ(hr, E_OUTOFMEMORY);
        EXPECT_EQ(copy.pbFormat, nullptr);
        EXPECT_EQ(copy.cbFormat, 0u);
        const CMediaType again(copy);
        const CMediaType silent(*full);
        EXPECT_EQ(silent.pbFormat, nullptr);
    }
    EXPECT_EQ(unknown.references, 1);
}

TEST_F(MediaTypes, SetOntoItselfChangesNothing) {
    CMediaType type(*FullType());
    BYTE* block = type.pbFormat;
    EXPECT_EQ(type.Set(type), S_OK);
    EXPECT_EQ(type.Set(static_cast<const AM_MEDIA_TYPE&>(type)), S_OK);
    type = static_cast<const CMediaType&>(type);
    EXPECT_EQ(type.pbFormat, block);
    EXPECT_EQ(MediaType(type), FullType());
}

TEST_F(MediaTypes, SetFreesWhatWasHeld) {
    FakeOuter old, fresh;
    CMediaType type(*FullType(&old));
    const MediaType next = FullType(&fresh);
    EXPECT_EQ(type.Set(*next), S_OK);
    EXPECT_EQ(old.references, 1 - 1);
    EXPECT_EQ(fresh.references, 2);
    {
        FailTaskMemory fail;
        EXPECT_EQ(type.Set(*next), E_OUTOFMEMORY);
    }
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(type.cbFormat, 0u);
    EXPECT_EQ(fresh.references, 1);
}

TEST_F(MediaTypes, EqualityLooksAtGuidsAndFormat) {
    const CMediaType reference(*FullType());
    CMediaType other(reference);
    EXPECT_TRUE(reference == other);
    EXPECT_FALSE(reference != other);
    FakeOuter unknown;
    unknown.AddRef();
    other.lSampleSize = 7;
    other.bFixedSizeSamples = FALSE;
    other.bTemporalCompression = FALSE;
    other.pUnk = &unknown;
    EXPECT_TRUE(reference == other);

    CMediaType changed(reference);
    changed.SetType(&MEDIATYPE_Audio);
    EXPECT_TRUE(reference != changed);
    changed = reference;
    changed.SetSubtype(&MEDIASUBTYPE_UYVY);
    EXPECT_FALSE(reference == changed);
    changed = reference;
    changed.SetFormatType(&FORMAT_None);
    EXPECT_FALSE(reference == changed);
    changed = reference;
    changed.pbFormat[4] ^= 1;
    EXPECT_FALSE(reference == changed);
    changed = reference;
    changed.ReallocFormatBuffer(4);
    EXPECT_FALSE(reference == changed);
    EXPECT_TRUE(CMediaType() == CMediaType());
}

TEST_F(MediaTypes, FieldAccess) {
    CMediaType type;
    EXPECT_FALSE(type.IsValid());
    type.SetType(&MEDIATYPE_Video);
    EXPECT_TRUE(type.IsValid());
    type.SetSubtype(&MEDIASUBTYPE_YUY2);
    type.SetFormatType(&FORMAT_VideoInfo2);
    EXPECT_TRUE(*type.Type() == MEDIATYPE_Video);
    EXPECT_TRUE(*type.Subtype() == MEDIASUBTYPE_YUY2);
    EXPECT_TRUE(*type.FormatType() == FORMAT_VideoInfo2);
    type.SetTemporalCompression(TRUE);
    EXPECT_TRUE(type.IsTemporalCompressed());
    type.SetTemporalCompression(FALSE);
    EXPECT_FALSE(type.IsTemporalCompressed());
}

TEST_F(MediaTypes, SampleSize) {
    CMediaType type;
    EXPECT_EQ(type.GetSampleSize(), 1u);
    type.SetSampleSize(50);
    EXPECT_EQ(type.GetSampleSize(), 50u);
    EXPECT_TRUE(type.IsFixedSize());
    type.SetSampleSize(0);
    EXPECT_EQ(type.GetSampleSize(), 0u);
    EXPECT_FALSE(type.IsFixedSize());
    EXPECT_EQ(type.lSampleSize, 50u);
    type.SetSampleSize(60);
    EXPECT_TRUE(type.IsFixedSize());
    type.SetVariableSize();
    EXPECT_FALSE(type.IsFixedSize());
    EXPECT_EQ(type.lSampleSize, 60u);
}

TEST_F(MediaTypes, SetFormat) {
    CMediaType type;
    BYTE bytes[] = {9, 8, 7, 6};
    EXPECT_FALSE(type.SetFormat(bytes, 0));
    EXPECT_TRUE(type.SetFormat(bytes, 4));
    ASSERT_EQ(type.FormatLength(), 4u);
    EXPECT_NE(type.Format(), bytes);
    EXPECT_EQ(std::memcmp(type.Format(), bytes, 4), 0);
    EXPECT_TRUE(type.SetFormat(bytes + 1, 2));
    EXPECT_EQ(type.FormatLength(), 2u);
    EXPECT_EQ(type.Format()[0], 8);
    FailTaskMemory fail;
    EXPECT_FALSE(type.SetFormat(bytes, 4));
    EXPECT_EQ(type.FormatLength(), 2u);
    EXPECT_EQ(type.Format()[0], 8);
}

TEST_F(MediaTypes, AllocFormatBuffer) {
    CMediaType type;
    BYTE* first = type.AllocFormatBuffer(8);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(type.Format(), first);
    EXPECT_EQ(type.FormatLength(), 8u);
    std::memset(first, 3, 8);
    EXPECT_EQ(type.AllocFormatBuffer(8), first);
    EXPECT_EQ(first[7], 3);
    BYTE* second = type.AllocFormatBuffer(100);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(type.FormatLength(), 100u);
    FailTaskMemory fail;
    EXPECT_EQ(type.AllocFormatBuffer(101), nullptr);
    EXPECT_EQ(type.Format(), second);
    EXPECT_EQ(type.FormatLength(), 100u);
    EXPECT_EQ(type.AllocFormatBuffer(60), second);
    EXPECT_EQ(type.FormatLength(), 100u);
}

TEST_F(MediaTypes, ReallocFormatBuffer) {
    CMediaType type;
    BYTE bytes[] = {1, 2, 3, 4, 5, 6};
    ASSERT_TRUE(type.SetFormat(bytes, 6));
    BYTE* block = type.Format();
    EXPECT_EQ(type.ReallocFormatBuffer(6), block);
    ASSERT_NE(type.ReallocFormatBuffer(200), nullptr);
    EXPECT_EQ(type.FormatLength(), 200u);
    EXPECT_EQ(std::memcmp(type.Format(), bytes, 6), 0);
    ASSERT_NE(type.ReallocFormatBuffer(3), nullptr);
    EXPECT_EQ(type.FormatLength(), 3u);
    EXPECT_EQ(std::memcmp(type.Format(), bytes, 3), 0);
    {
        FailTaskMemory fail;
        block = type.Format();
        EXPECT_EQ(type.ReallocFormatBuffer(4), nullptr);
        EXPECT_EQ(type.ReallocFormatBuffer(2), block);
        EXPECT_EQ(type.FormatLength(), 3u);
    }
    CMediaType empty;
    EXPECT_NE(empty.ReallocFormatBuffer(5), nullptr);
    EXPECT_EQ(empty.FormatLength(), 5u);
    empty.ResetFormatBuffer();
    EXPECT_EQ(empty.FormatLength(), 0u);
    EXPECT_EQ(empty.Format(), nullptr);
    empty.ResetFormatBuffer();
}

TEST_F(MediaTypes, PartiallySpecified) {
    for (int bits = 0; bits < 8; ++bits) {
        CMediaType type;
        if (bits & 1) type.SetType(&MEDIATYPE_Video);
        if (bits & 2) type.SetSubtype(&MEDIASUBTYPE_YUY2);
        if (bits & 4) type.SetFormatType(&FORMAT_VideoInfo);
        const bool complete = (bits & 1) && (bits & 4);
        EXPECT_EQ(type.IsPartiallySpecified() != FALSE, !complete) << bits;
    }
}

TEST_F(MediaTypes, MatchesPartialOverAllCombinations) {
    const CMediaType full(*FullType());
    for (int set = 0; set < 8; ++set) {
        // In each GUID that is set: equal, or of another type.
        for (int wrong = 0; wrong < 8; ++wrong) {
            if (wrong & ~set) continue;
            CMediaType partial;
            if (set & 1) partial.SetType(wrong & 1 ? &MEDIATYPE_Audio : &MEDIATYPE_Video);
            if (set & 2) partial.SetSubtype(wrong & 2 ? &MEDIASUBTYPE_UYVY : &MEDIASUBTYPE_YUY2);
            if (set & 4) {
                partial.SetFormatType(wrong & 4 ? &FORMAT_VideoInfo2 : &FORMAT_VideoInfo);
                partial.SetFormat(full.pbFormat, full.cbFormat);
            }
            EXPECT_EQ(full.MatchesPartial(&partial) != FALSE, wrong == 0) << set << ' ' << wrong;
        }
    }
}

TEST_F(MediaTypes, MatchesPartialComparesTheBlockWithTheFormatTypeOnly) {
    const CMediaType full(*FullType());
    CMediaType partial(full);
    partial.pbFormat[0] ^= 1;
    EXPECT_FALSE(full.MatchesPartial(&partial));
    partial.SetFormatType(&GUID_NULL);
    EXPECT_TRUE(full.MatchesPartial(&partial));
    partial = full;
    partial.ResetFormatBuffer();
    EXPECT_FALSE(full.MatchesPartial(&partial));
    EXPECT_TRUE(full.MatchesPartial(&full));
}

}  // namespace
