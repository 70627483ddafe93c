// The AVI sink's pin of sound: types, times, ends, and what goes wrong.

#include <gtest/gtest.h>
#include <mmreg.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <thread>

#include "host/filters/avi_sink_filter.h"
#include "host/filters/sound_type.h"
#include "tests/host/avi/avi_checker.h"
#include "tests/host/avi/memory_store.h"
#include "tests/support/graph.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_source.h"

namespace tavo {
namespace {

using tavo_test::CheckAvi;
using tavo_test::CheckedAvi;
using tavo_test::CurrentLiveCounts;
using tavo_test::Graph;
using tavo_test::MakeVideoType;
using tavo_test::MediaType;
using tavo_test::TestSource;
using tavo_test::VideoSpec;

constexpr int64_t kMs = 10'000;
constexpr LONG kSide = 16;
constexpr size_t kFrameBytes = kSide * kSide * 2;
// A block is a byte, and 1000 of them are a second.
constexpr SoundFormat kBytes = {1, 1000, 8, false};

// What may wait for the first frame.
constexpr size_t kHeld = 64u << 20;

struct SoundSpec {
    WORD tag = WAVE_FORMAT_PCM;
    WORD channels = 1;
    DWORD rate = 1000;
    WORD bits = 8;
    std::optional<GUID> samples = {};  // of an extensible header
    std::optional<WORD> blockAlign = {};
    ULONG formatBytes = sizeof(WAVEFORMATEXTENSIBLE);
    GUID majortype = MEDIATYPE_Audio;
    GUID formattype = FORMAT_WaveFormatEx;
};

MediaType MakeSoundType(const SoundSpec& spec) {
    WAVEFORMATEXTENSIBLE wave = {};
    wave.Format.wFormatTag = spec.samples ? WORD{WAVE_FORMAT_EXTENSIBLE} : spec.tag;
    wave.Format.nChannels = spec.channels;
    wave.Format.nSamplesPerSec = spec.rate;
    wave.Format.wBitsPerSample = spec.bits;
    wave.Format.nBlockAlign =
        spec.blockAlign.value_or(static_cast<WORD>(spec.channels * spec.bits / 8));
    wave.Format.nAvgBytesPerSec = spec.rate * wave.Format.nBlockAlign;
    if (spec.samples) wave.SubFormat = *spec.samples;
    AM_MEDIA_TYPE type = {};
    type.majortype = spec.majortype;
    type.subtype = MEDIASUBTYPE_PCM;
    type.formattype = spec.formattype;
    type.lSampleSize = 1;
    type.cbFormat = spec.formatBytes;
    type.pbFormat = reinterpret_cast<BYTE*>(&wave);
    return MediaType(type);
}

std::vector<std::byte> Blocks(BYTE value, size_t count) {
    return std::vector<std::byte>(count, std::byte{value});
}

std::vector<std::byte> Joined(std::initializer_list<std::vector<std::byte>> parts) {
    std::vector<std::byte> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A disk on which frames wait until it is opened.
class SlowStore final : public tavo_test::MemoryStore {
  public:
    IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) override {
        if (source.size() == kFrameBytes) {
            std::unique_lock lock(mutex_);
            opened_.wait(lock, [&] { return open_; });
        }
        return MemoryStore::WriteAt(offset, source);
    }

    void Open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        opened_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

class AviSinkSound : public testing::Test {
  protected:
    void SetUp() override {
        before_ = CurrentLiveCounts();
        HRESULT hr = S_OK;
        sink_ = new CAviSink(&hr);
        ASSERT_EQ(hr, S_OK);
        reference_ = ComPtr<IBaseFilter>(sink_);
    }

    void TearDown() override {
        graph_.reset();
        frames_.Reset();
        sound_.Reset();
        reference_.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        EXPECT_EQ(CurrentLiveCounts(), before_);
    }

    // Frames of 100 ms, and sound.
    void Start(const TimeSection& section = {}, bool together = false) {
        VideoSpec video = {.subtype = MEDIASUBTYPE_YUY2, .width = kSide, .height = kSide};
        video.timePerFrame = 100 * kMs;
        frames_ = TestSource::Create({.types = {MakeVideoType(video)}});
        sound_ = TestSource::Create({.types = {MakeSoundType({})}, .wish = {2, 1 << 16, 1, 0}});
        graph_ = std::make_unique<Graph>();
        ASSERT_EQ(graph_->Add(frames_.Get(), L"frames"), S_OK);
        ASSERT_EQ(graph_->Add(sound_.Get(), L"sound"), S_OK);
        ASSERT_EQ(graph_->Add(sink_, L"sink"), S_OK);
        sink_->AddSoundPin();
        ASSERT_EQ(graph_->Connect(&frames_->pin(), sink_->GetPin(0)), S_OK);
        ASSERT_EQ(graph_->Connect(&sound_->pin(), sink_->GetPin(1)), S_OK);
        sink_->SoundPin().SetSection(section);
        if (together) sink_->KeepTogether();
        ASSERT_EQ(sink_->OpenStore(*target_, {.maxSoundHeld = kHeld}), IoResult::Ok);
        ASSERT_EQ(graph_->Run(), S_OK);
    }

    HRESULT Frame(int64_t ms) {
        return frames_->pin().Deliver({.start = ms * kMs, .stop = (ms + 100) * kMs});
    }

    HRESULT Sound(BYTE value, size_t blocks, std::optional<int64_t> ms) {
        const auto start = ms ? std::optional(*ms * kMs) : std::nullopt;
        return sound_->pin().Deliver({.start = start,
                                      .stop = start.value_or(0) + 1,
                                      .bytes = std::vector<BYTE>(blocks, value)});
    }

    CheckedAvi Finish() {
        EXPECT_EQ(graph_->Stop(), S_OK);
        result_ = sink_->FinishFile();
        CheckedAvi avi = CheckAvi(store_);
        EXPECT_EQ(avi.fault, "");
        EXPECT_EQ(result_.soundBlocks, avi.sound.size());
        return avi;
    }

    tavo_test::MemoryStore store_;
    ByteStore* target_ = &store_;
    CAviSink* sink_ = nullptr;
    ComPtr<IBaseFilter> reference_;
    tavo_test::ComPtr<TestSource> frames_;
    tavo_test::ComPtr<TestSource> sound_;
    std::unique_ptr<Graph> graph_;
    CAviSink::Result result_;
    tavo_test::LiveCounts before_;
};

TEST_F(AviSinkSound, TakesUncompressedSound) {
    const struct {
        SoundSpec spec;
        SoundFormat sound;
    } rows[] = {
        {{.channels = 2, .rate = 48000, .bits = 16}, {2, 48000, 16, false}},
        {{.channels = 6, .rate = 96000, .bits = 24}, {6, 96000, 24, false}},
        {{.bits = 32, .formatBytes = sizeof(WAVEFORMATEX)}, {1, 1000, 32, false}},
        {{.tag = WAVE_FORMAT_IEEE_FLOAT, .bits = 32}, {1, 1000, 32, true}},
        {{.tag = WAVE_FORMAT_IEEE_FLOAT, .bits = 64}, {1, 1000, 64, true}},
        {{.bits = 16, .samples = MEDIASUBTYPE_PCM}, {1, 1000, 16, false}},
        {{.bits = 32, .samples = MEDIASUBTYPE_IEEE_FLOAT}, {1, 1000, 32, true}},
    };
    sink_->AddSoundPin();
    for (const auto& row : rows) {
        const MediaType type = MakeSoundType(row.spec);
        EXPECT_EQ(ReadSoundType(*type.Get()), row.sound);
        EXPECT_EQ(sink_->GetPin(1)->QueryAccept(type.Get()), S_OK);
    }
}

TEST_F(AviSinkSound, RefusesEverythingElse) {
    const SoundSpec specs[] = {
        {.tag = 0x55},
        {.bits = 12, .blockAlign = WORD{2}},
        {.bits = 64},
        {.bits = 0},
        {.tag = WAVE_FORMAT_IEEE_FLOAT, .bits = 16},
        {.channels = 0},
        {.channels = 65},
        {.rate = 0},
        {.rate = 1'000'001},
        {.bits = 16, .blockAlign = WORD{1}},
        {.formatBytes = sizeof(WAVEFORMATEX) - 1},
        {.formatBytes = 0},
        {.samples = MEDIASUBTYPE_PCM, .formatBytes = sizeof(WAVEFORMATEXTENSIBLE) - 1},
        {.samples = MEDIASUBTYPE_YUY2},
        {.majortype = MEDIATYPE_Video},
        {.formattype = FORMAT_VideoInfo},
    };
    sink_->AddSoundPin();
    int row = 0;
    for (const SoundSpec& spec : specs) {
        EXPECT_EQ(sink_->GetPin(1)->QueryAccept(MakeSoundType(spec).Get()), S_FALSE) << row;
        ++row;
    }
}

TEST_F(AviSinkSound, ThePinIsThereWhenItIsAdded) {
    EXPECT_EQ(sink_->GetPinCount(), 1);
    EXPECT_EQ(sink_->GetPin(1), nullptr);
    sink_->AddSoundPin();
    EXPECT_EQ(sink_->GetPinCount(), 2);
    EXPECT_EQ(sink_->GetPin(1), &sink_->SoundPin());
    EXPECT_EQ(sink_->GetPin(2), nullptr);
    sink_->RemoveSoundPin();
    EXPECT_EQ(sink_->GetPinCount(), 1);
}

TEST_F(AviSinkSound, LiesBehindItsFramesAndIsComplete) {
    Start();
    EXPECT_EQ(Sound(1, 100, 0), S_OK);
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(Frame(100), S_OK);
    EXPECT_EQ(Sound(2, 100, 100), S_OK);
    EXPECT_EQ(Sound(3, 300, {}), S_OK);
    EXPECT_EQ(Finish().sound, Joined({Blocks(1, 100), Blocks(2, 100), Blocks(3, 300)}));
    EXPECT_EQ(result_.sound, kBytes);
    EXPECT_EQ(result_.frames, 2u);
}

TEST_F(AviSinkSound, SoundThatBeginsLaterFollowsSilence) {
    Start();
    EXPECT_EQ(Frame(2000), S_OK);
    EXPECT_EQ(Sound(1, 50, 2130), S_OK);
    EXPECT_EQ(Finish().sound, Joined({Blocks(0x80, 130), Blocks(1, 50)}));
}

TEST_F(AviSinkSound, TheRunEndsWithBothStreams) {
    for (const bool soundFirst : {false, true}) {
        if (graph_) {
            TearDown();
            store_.bytes.clear();
            SetUp();
        }
        Start();
        EXPECT_EQ(Frame(0), S_OK);
        tavo_test::TestOutputPin& first = soundFirst ? sound_->pin() : frames_->pin();
        tavo_test::TestOutputPin& second = soundFirst ? frames_->pin() : sound_->pin();
        EXPECT_TRUE(sink_->WantsMore());
        EXPECT_EQ(first.SendEndOfStream(), S_OK);
        EXPECT_EQ(sink_->WantsMore(), !soundFirst);
        EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 0);
        const size_t blocks = soundFirst ? 0 : 100;
        if (blocks > 0) {
            ASSERT_EQ(Sound(7, blocks, 0), S_OK);
        }
        EXPECT_EQ(second.SendEndOfStream(), S_OK);
        EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
        EXPECT_EQ(Finish().sound, Blocks(7, blocks));
    }
}

// Positions count from the segment, and those in the file from the section.
TEST_F(AviSinkSound, ASectionIsCutToTheSample) {
    Start({1000 * kMs, 250 * kMs});
    EXPECT_EQ(sound_->pin().SendNewSegment(800 * kMs, INT64_MAX, 1.0), S_OK);
    EXPECT_EQ(Sound(1, 150, {}), S_OK);
    EXPECT_EQ(Sound(2, 150, 150), S_OK);
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(frames_->pin().SendEndOfStream(), S_OK);
    EXPECT_EQ(graph_->CountEvents(EC_COMPLETE), 0);
    EXPECT_EQ(Sound(3, 300, 300), S_OK);
    EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
    EXPECT_EQ(Sound(4, 300, 600), S_OK) << "the source goes on";
    EXPECT_EQ(Finish().sound, Joined({Blocks(2, 100), Blocks(3, 150)}));
}

TEST_F(AviSinkSound, ASectionIsNotFilledUpToLaterSound) {
    Start({1000 * kMs, 250 * kMs});
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(Sound(1, 100, 1000), S_OK);
    EXPECT_EQ(Sound(2, 100, 50'000), S_OK);
    EXPECT_EQ(frames_->pin().SendEndOfStream(), S_OK);
    EXPECT_TRUE(graph_->WaitForEvent(EC_COMPLETE));
    EXPECT_EQ(Finish().sound, Blocks(1, 100));
}

// Sources seek to before the section, where times are negative.
TEST_F(AviSinkSound, ASectionWithoutAnEnd) {
    Start({1000 * kMs, INT64_MAX});
    EXPECT_EQ(sound_->pin().SendNewSegment(800 * kMs, INT64_MAX, 1.0), S_OK);
    EXPECT_EQ(Sound(1, 150, 0), S_OK);
    EXPECT_EQ(Sound(2, 150, {}), S_OK);
    EXPECT_EQ(Frame(0), S_OK);
    EXPECT_EQ(Sound(3, 300, 300), S_OK);
    EXPECT_EQ(Finish().sound, Joined({Blocks(2, 100), Blocks(3, 300)}));
}

TEST_F(AviSinkSound, TimesThatCannotBe) {
    constexpr TimeSection kSections[] = {
        {}, {1000 * kMs, INT64_MAX}, {1000 * kMs, 250 * kMs}, {INT64_MAX / 8, INT64_MAX - 1}};
    for (const TimeSection& section : kSections) {
        if (graph_) {
            TearDown();
            store_.bytes.clear();
            SetUp();
        }
        Start(section);
        for (const int64_t segment : {INT64_MAX - 1, INT64_MIN}) {
            sound_->pin().SendNewSegment(segment, INT64_MAX, 1.0);
            for (const int64_t time : {INT64_MIN, INT64_MIN + 1, INT64_MAX - 1}) {
                EXPECT_EQ(
                    sound_->pin().Deliver({.start = time, .stop = time + 1, .bytes = {1, 2, 3}}),
                    S_OK);
                EXPECT_EQ(Sound(4, 3, {}), S_OK);
            }
        }
        EXPECT_EQ(Frame(0), S_OK);
        EXPECT_LE(Finish().sound.size(), 36u);
    }
}

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
