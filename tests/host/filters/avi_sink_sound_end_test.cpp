// The AVI sink's pin of sound: waiting, ends, and what goes wrong.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "tests/host/filters/avi_sink_sound_fixture.h"
#include "tests/host/filters/slow_store.h"

namespace tavo {
namespace {

using tavo_test::CheckedAvi;

TEST_F(AviSinkSound, AnotherFormatEndsTheRun) {
    Start();
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(sound_->pin().Deliver({.bytes = {1, 1}, .type = MakeSoundType({})}), S_OK);
    EXPECT_EQ(sound_->pin().Deliver({.bytes = {2, 2}, .type = MakeSoundType({.rate = 2000})}),
              E_FAIL);
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(Frame(100), E_FAIL);
    EXPECT_EQ(Finish().sound, Blocks(1, 2));
    EXPECT_TRUE(result_.soundChanged);
    EXPECT_FALSE(result_.typeChanged);
}

TEST_F(AviSinkSound, AnotherFormatDoesNotWaitForTheDisk) {
    SlowStore slow;
    target_ = &slow;
    Start();
    EXPECT_EQ(Frame(0), S_OK);
    std::atomic<bool> done = false;
    std::thread source([&] {
        EXPECT_EQ(sound_->pin().Deliver({.bytes = {2, 2}, .type = MakeSoundType({.rate = 2000})}),
                  E_FAIL);
        done = true;
    });
    EXPECT_TRUE(tavo_test::WaitUntil([&] { return done.load(); }));
    slow.Open();
    source.join();
    EXPECT_EQ(Frame(100), E_FAIL);
    EXPECT_EQ(graph_->Stop(), S_OK);
    result_ = sink_->FinishFile();
    EXPECT_TRUE(result_.soundChanged);
    EXPECT_EQ(result_.frames, 1u);
    EXPECT_EQ(CheckAvi(slow).fault, "");
}

// A source that sends both from one thread would stand still for ever if it had to wait.
TEST_F(AviSinkSound, NeverWaitsForFrames) {
    Start();
    constexpr size_t kPieces = (kHeld >> 16) + 2;
    for (size_t n = 0; n < kPieces; ++n) ASSERT_EQ(Sound(1, 1 << 16, {}), S_OK);
    EXPECT_FALSE(sink_->WantsMore()) << "enough";
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(frames_->pin().SendEndOfStream(), S_OK);
    EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
    EXPECT_EQ(Finish().sound.size(), kHeld);
    EXPECT_TRUE(result_.soundIsCut);
}

TEST_F(AviSinkSound, OfAPictureThatStandsStillItIsWhole) {
    tavo_test::SparseStore file;
    target_ = &file;
    Start();
    EXPECT_EQ(Frame(0), S_OK);
    constexpr size_t kPieces = (kHeld >> 16) + 300;
    for (size_t n = 0; n < kPieces; ++n) ASSERT_EQ(Sound(1, 1 << 16, {}), S_OK);
    EXPECT_TRUE(sink_->WantsMore());
    EXPECT_EQ(graph_->Stop(), S_OK);
    result_ = sink_->FinishFile();
    EXPECT_EQ(result_.io, IoResult::Ok);
    EXPECT_FALSE(result_.soundIsCut);
    EXPECT_EQ(result_.soundBlocks, kPieces << 16);
}

TEST_F(AviSinkSound, AFullDiskEndsTheRunAlsoBetweenFrames) {
    Start();
    EXPECT_EQ(Frame(0), S_OK);
    store_.capacity = store_.bytes.size() + (10 << 20);
    HRESULT hr = S_OK;
    for (size_t n = 0; n < 600 && SUCCEEDED(hr); ++n) hr = Sound(1, 1 << 16, {});
    EXPECT_EQ(hr, E_FAIL);
    EXPECT_TRUE(graph_->WaitForEvent(EC_ERRORABORT));
    EXPECT_EQ(Frame(100), E_FAIL);
    EXPECT_EQ(Finish().sound.size(), 8u << 20);
    EXPECT_EQ(result_.io, IoResult::DiskFull);
}

// Sources of their own may run at any speed.
TEST_F(AviSinkSound, StreamsOfTwoSourcesWaitForEachOther) {
    Start({}, true);
    constexpr int64_t kTenths = 60;
    std::atomic<int64_t> tenths = 0;
    std::thread source([&] {
        for (; tenths < kTenths; ++tenths) {
            if (Sound(1, 100, {}) != S_OK) break;
        }
        sound_->pin().SendEndOfStream();
    });
    for (int64_t n = 0; n < kTenths; ++n) {
        EXPECT_LE(tenths, n + 11);
        EXPECT_EQ(Frame(n * 100), S_OK);
        EXPECT_GE(tenths + 11, n);
    }
    EXPECT_EQ(frames_->pin().SendEndOfStream(), S_OK);
    source.join();
    const CheckedAvi avi = Finish();
    EXPECT_EQ(avi.sound, Blocks(1, kTenths * 100));
    EXPECT_EQ(avi.frames.size(), static_cast<size_t>(kTenths));
}

TEST_F(AviSinkSound, AStopReleasesTheStreamThatWaits) {
    Start({}, true);
    std::thread source([&] {
        while (Sound(1, 100, {}) == S_OK) continue;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(graph_->Stop(), S_OK);
    source.join();
    EXPECT_EQ(graph_->Run(), S_OK);
    std::thread frames([&] {
        for (int64_t n = 0; Frame(n * 100) == S_OK; ++n) continue;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    sink_->FinishFile();
    frames.join();
    Finish();
}

TEST_F(AviSinkSound, FlushAndStopKeepWhatWaits) {
    Start();
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(Sound(1, 100, 0), S_OK);
    EXPECT_EQ(sound_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(sound_->pin().SendBeginFlush(), S_OK);
    EXPECT_EQ(Sound(9, 100, 100), S_FALSE);
    EXPECT_EQ(sound_->pin().SendEndFlush(), S_OK);
    EXPECT_EQ(Sound(2, 100, 100), S_OK);
    EXPECT_EQ(graph_->Stop(), S_OK);
    EXPECT_EQ(graph_->Run(), S_OK);
    EXPECT_EQ(Sound(3, 100, {}), S_OK);
    EXPECT_EQ(Finish().sound, Joined({Blocks(1, 100), Blocks(2, 100), Blocks(3, 100)}));
    EXPECT_EQ(Sound(4, 1, {}), VFW_E_NOT_COMMITTED);
}

TEST_F(AviSinkSound, FullDisk) {
    Start();
    // Sound of all frames that wait can lie behind the first one.
    store_.capacity = store_.bytes.size() + 12 * (kFrameBytes + 8 + 108);
    HRESULT hr = S_OK;
    for (int64_t n = 0; n < 100 && SUCCEEDED(hr); ++n) {
        hr = Frame(n * 100);
        if (SUCCEEDED(hr)) Sound(static_cast<BYTE>(n), 100, n * 100);
    }
    EXPECT_EQ(hr, E_FAIL);
    EXPECT_EQ(Sound(9, 100, {}), E_FAIL);
    EXPECT_EQ(sound_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(frames_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 0);
    const CheckedAvi avi = Finish();
    EXPECT_EQ(result_.io, IoResult::DiskFull);
    EXPECT_EQ(avi.frames.size(), result_.frames);
    EXPECT_GE(avi.frames.size(), 2u);
    EXPECT_EQ(avi.sound.size() % 100, 0u);
}

TEST_F(AviSinkSound, NothingIsTakenAfterTheFileIsFinished) {
    Start();
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(Sound(1, 10, 0), S_OK);
    EXPECT_EQ(sink_->FinishFile().soundBlocks, 10u);
    EXPECT_EQ(Sound(2, 10, {}), E_FAIL);
    EXPECT_EQ(Finish().sound, Blocks(1, 10));
}

}  // namespace
}  // namespace tavo
