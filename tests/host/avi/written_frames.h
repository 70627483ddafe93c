// Frames for tests of the AVI writer, and files of them.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "host/avi/avi_writer.h"
#include "tests/host/avi/avi_checker.h"
#include "tests/host/avi/memory_store.h"

namespace tavo_test {

inline tavo::VideoFormat Video(tavo::PixelFormat format, int32_t width, int32_t height) {
    return {format, tavo::InfoOf(format).compression, width, height};
}

inline std::vector<std::byte> Picture(const tavo::VideoFormat& video, uint32_t number) {
    std::vector<std::byte> frame(*tavo::FrameSize(video));
    for (size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<std::byte>(i * 7 + number * 31 + 1);
    }
    return frame;
}

inline void WriteFrames(tavo::AviWriter& writer, const tavo::VideoFormat& video, uint32_t count) {
    for (uint32_t n = 0; n < count; ++n) {
        ASSERT_EQ(writer.WriteFrame(Picture(video, n)), tavo::IoResult::Ok) << n;
    }
}

inline CheckedAvi WriteAndCheck(MemoryStore& store, const tavo::VideoFormat& video, uint32_t frames,
                                tavo::AviLimits limits = {}) {
    tavo::AviWriter writer(store, video, {30000, 1001}, limits);
    EXPECT_EQ(writer.Begin(), tavo::IoResult::Ok);
    WriteFrames(writer, video, frames);
    EXPECT_EQ(writer.Finish(), tavo::IoResult::Ok);
    EXPECT_EQ(writer.FrameCount(), frames);
    EXPECT_EQ(writer.BytesWritten(), store.bytes.size());
    return CheckAvi(store);
}

}  // namespace tavo_test
