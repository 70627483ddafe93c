// The AVI sink's pin of sound: types and times.

#include "tests/host/filters/avi_sink_sound_fixture.h"

#include <cstring>

#include "host/filters/sound_type.h"

namespace tavo {
namespace {

using tavo_test::CheckedAvi;
using tavo_test::MediaType;

// A block is a byte, and 1000 of them are a second.
constexpr SoundFormat kBytes = {1, 1000, 8, false};

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

}  // namespace
}  // namespace tavo
