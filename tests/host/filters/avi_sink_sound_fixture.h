// An AVI sink with a source of frames and one of sound, in a graph.

#pragma once

#include <gtest/gtest.h>
#include <mmreg.h>

#include <memory>
#include <optional>
#include <vector>

#include "host/filters/avi_sink_filter.h"
#include "tests/host/avi/avi_checker.h"
#include "tests/host/avi/memory_store.h"
#include "tests/host/filters/small_frames.h"
#include "tests/support/graph.h"
#include "tests/support/live_objects.h"
#include "tests/support/test_source.h"
#include "tests/support/time_units.h"

namespace tavo {

using tavo_test::kMs;

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

inline tavo_test::MediaType MakeSoundType(const SoundSpec& spec) {
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
    return tavo_test::MediaType(type);
}

inline std::vector<std::byte> Blocks(BYTE value, size_t count) {
    return std::vector<std::byte>(count, std::byte{value});
}

inline std::vector<std::byte> Joined(std::initializer_list<std::vector<std::byte>> parts) {
    std::vector<std::byte> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

class AviSinkSound : public testing::Test {
  protected:
    void SetUp() override {
        before_ = tavo_test::CurrentLiveCounts();
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
        EXPECT_EQ(tavo_test::CurrentLiveCounts(), before_);
    }

    // Frames of 100 ms, and sound.
    void Start(const TimeSection& section = {}, bool together = false) {
        tavo_test::VideoSpec video = {
            .subtype = MEDIASUBTYPE_YUY2, .width = kSide, .height = kSide};
        video.timePerFrame = 100 * kMs;
        frames_ = tavo_test::TestSource::Create({.types = {tavo_test::MakeVideoType(video)}});
        sound_ = tavo_test::TestSource::Create(
            {.types = {MakeSoundType({})}, .wish = {2, 1 << 16, 1, 0}});
        graph_ = std::make_unique<tavo_test::Graph>();
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

    tavo_test::CheckedAvi Finish() {
        EXPECT_EQ(graph_->Stop(), S_OK);
        result_ = sink_->FinishFile();
        tavo_test::CheckedAvi avi = tavo_test::CheckAvi(store_);
        EXPECT_EQ(avi.fault, "");
        EXPECT_EQ(result_.soundBlocks, avi.sound.size());
        return avi;
    }

    tavo_test::MemoryStore store_;
    ByteStore* target_ = &store_;
    CAviSink* sink_ = nullptr;
    ComPtr<IBaseFilter> reference_;
    tavo_test::ComPtr<tavo_test::TestSource> frames_;
    tavo_test::ComPtr<tavo_test::TestSource> sound_;
    std::unique_ptr<tavo_test::Graph> graph_;
    CAviSink::Result result_;
    tavo_test::LiveCounts before_;
};

}  // namespace tavo
