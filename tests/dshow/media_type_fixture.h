// Types for tests of CMediaType and of the functions beside it.

#pragma once

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"
#include "tests/support/task_memory.h"

namespace tavo_test {

class MediaTypes : public DshowTest {
  protected:
    ~MediaTypes() override { EXPECT_EQ(LiveTaskBlocks(), blocks_); }
    const long blocks_ = LiveTaskBlocks();
};

// A type with every field set; `unknown` may be null.
inline MediaType FullType(IUnknown* unknown = nullptr) {
    static BYTE bytes[] = {1, 2, 3, 4, 5};
    AM_MEDIA_TYPE type = {};
    type.majortype = MEDIATYPE_Video;
    type.subtype = MEDIASUBTYPE_YUY2;
    type.formattype = FORMAT_VideoInfo;
    type.bFixedSizeSamples = TRUE;
    type.bTemporalCompression = TRUE;
    type.lSampleSize = 99;
    type.pUnk = unknown;
    type.cbFormat = sizeof bytes;
    type.pbFormat = bytes;
    return MediaType(type);
}

inline void ExpectEmpty(const AM_MEDIA_TYPE& type) {
    EXPECT_TRUE(type.majortype == GUID_NULL);
    EXPECT_TRUE(type.subtype == GUID_NULL);
    EXPECT_TRUE(type.formattype == GUID_NULL);
    EXPECT_TRUE(type.bFixedSizeSamples);
    EXPECT_FALSE(type.bTemporalCompression);
    EXPECT_EQ(type.lSampleSize, 1u);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_EQ(type.cbFormat, 0u);
    EXPECT_EQ(type.pbFormat, nullptr);
}

}  // namespace tavo_test
