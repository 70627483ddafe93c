// Facts about files of all kinds: complete, cut off, damaged.

#include "host/avi/media_probe.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "host/avi/avi_writer.h"
#include "host/avi/media_text.h"
#include "tests/host/avi/memory_store.h"

namespace tavo {
namespace {

using tavo_test::MemoryStore;

MemoryStore StoreOf(const std::string& text) {
    MemoryStore store;
    for (const char c : text) store.bytes.push_back(static_cast<std::byte>(c));
    return store;
}

MediaFacts Probe(const std::string& text) {
    MemoryStore store = StoreOf(text);
    return ProbeMedia(store);
}

std::string Big(uint64_t value, int bytes = 4) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) text += static_cast<char>(value >> 8 * i);
    return text;
}

std::string Box(const std::string& code, const std::string& data) {
    return Big(data.size() + 8) + code + data;
}

struct Mp4 {
    std::string handler = "vide";
    std::string codec = "avc1";
    std::string matrix = Big(0x10000) + std::string(12, '\0') + Big(0x10000);
    std::string pixel = {};
    uint32_t samples = 10;
    uint32_t timescale = 1000;
    std::string edits = {};  // a list with its box
};

std::string TrackOf(const Mp4& mp4) {
    const std::string header = std::string(40, '\0') + mp4.matrix + std::string(40, '\0');
    const std::string entry = Box(mp4.codec, std::string(78, '\0') + mp4.pixel);
    const std::string table =
        Box("stsd", Big(0) + Big(1) + entry) + Box("stsz", Big(0) + Big(100) + Big(mp4.samples));
    return Box("trak", Box("tkhd", header) + Box("edts", mp4.edits) +
                           Box("mdia", Box("mdhd", std::string(12, '\0') + Big(mp4.timescale)) +
                                           Box("hdlr", std::string(8, '\0') + mp4.handler +
                                                           std::string(12, '\0')) +
                                           Box("minf", Box("stbl", table))));
}

std::string FileOf(const std::string& tracks) {
    return Box("ftyp", "isom") + Box("moov", tracks) + Box("mdat", std::string(1000, 'x'));
}

TEST(MediaProbe, Kinds) {
    using namespace std::literals;
    const std::pair<std::string, MediaKind> rows[] = {
        {"", MediaKind::Text},
        {"just words\n", MediaKind::Text},
        {"gr\xC3\xBC\xC3\x9F", MediaKind::Text},
        {"\x01\x02\x03"s, MediaKind::Unknown},
        {"YUV4MPEG2 W64 H48\n"s, MediaKind::Unknown},
        {"\x89PNG\r\n"s, MediaKind::Picture},
        {"\xFF\xD8\xFF\xE0"s, MediaKind::Picture},
        {"ID3\x04"s, MediaKind::Sound},
        {"\xFF\xFB\x90\x00"s, MediaKind::Sound},
        {"RIFF\x24\0\0\0WAVEfmt "s, MediaKind::Sound},
        {"FLV\x01\x05\0\0\0\x09\0\0\0\0"s, MediaKind::Flv},
        {"\0\0\x01\xBA"s, MediaKind::MpegPs},
        {"\x30\x26\xB2\x75\x8E\x66\xCF\x11"s, MediaKind::Asf},
    };
    for (const auto& [bytes, kind] : rows) EXPECT_EQ(Probe(bytes).kind, kind) << bytes;
    std::string stream;
    for (int i = 0; i < 3; ++i) stream += 'G' + std::string(187, '\xFF');
    EXPECT_EQ(Probe(stream).kind, MediaKind::MpegTs);
    EXPECT_FALSE(Probe(stream).truncated);
    EXPECT_TRUE(Probe(stream + "G").truncated);
}

TEST(MediaProbe, Mp4) {
    const std::string whole = FileOf(TrackOf({.handler = "soun", .codec = "mp4a"}) + TrackOf({}));
    const MediaFacts facts = Probe(whole);
    EXPECT_EQ(facts.kind, MediaKind::Mp4);
    EXPECT_TRUE(facts.hasVideo && facts.hasSound && facts.hasHeaders);
    EXPECT_EQ(facts.codec, "avc1");
    EXPECT_FALSE(facts.truncated || facts.isEmpty || facts.pixelAspect.IsKnown());
    EXPECT_EQ(facts.rotation, 0);
    EXPECT_EQ(WhyNoVideo(L"x", facts), L"");

    EXPECT_TRUE(Probe(whole.substr(0, whole.size() - 1)).truncated);
    const MediaFacts start = Probe(whole.substr(0, 30));
    EXPECT_TRUE(start.truncated);
    const MediaFacts headless = Probe(Box("ftyp", "isom") + Box("mdat", "xxxx"));
    EXPECT_NE(WhyNoVideo(L"x", headless).find(L"x is cut off"), std::wstring::npos);

    EXPECT_EQ(WhyNoVideo(L"x", Probe(FileOf(TrackOf({.handler = "soun"})))),
              L"x has no video in it, only sound");
    EXPECT_EQ(WhyNoVideo(L"x", Probe(FileOf(""))), L"x has no video in it");
    EXPECT_EQ(WhyNoVideo(L"x", Probe(FileOf(TrackOf({.samples = 0})))),
              L"x has a video without frames");
    EXPECT_EQ(WhyNoVideo(L"x", Probe(FileOf(TrackOf({.samples = 0}) + Box("mvex", "")))), L"");
}

TEST(MediaProbe, Mp4RotationAndPixels) {
    const std::string one = Big(0x10000);
    const std::string minus = Big(0xFFFF0000);
    const std::string zero = Big(0);
    const std::pair<std::string, int> rows[] = {{zero + one + zero + minus + zero, 90},
                                                {minus + zero + zero + zero + minus, 180},
                                                {zero + minus + zero + one + zero, 270},
                                                {one + zero + zero + zero + one, 0}};
    for (const auto& [matrix, degrees] : rows) {
        EXPECT_EQ(Probe(FileOf(TrackOf({.matrix = matrix}))).rotation, degrees);
    }
    const MediaFacts facts = Probe(FileOf(TrackOf({.pixel = Box("pasp", Big(64) + Big(45))})));
    EXPECT_EQ(facts.pixelAspect, (AspectRatio{64, 45}));
    EXPECT_FALSE(
        Probe(FileOf(TrackOf({.pixel = Box("pasp", Big(1) + Big(1))}))).pixelAspect.IsKnown());
}

// Reordered frames and the run-up of a sound decoder are stamped later than they are shown.
TEST(MediaProbe, Mp4Edits) {
    const std::string movie = Box("mvhd", std::string(12, '\0') + Big(600));
    const std::string none = Big(UINT32_MAX);
    const std::string large(8, '\xFF');
    const std::string rate = Big(0x10000);
    const std::string edits =
        Box("elst", Big(0) + Big(2) + Big(300) + none + rate + Big(60) + Big(1024) + rate);
    const std::string wide = Box("elst", Big(0x01000000) + Big(2) + Big(300, 8) + large + rate +
                                             Big(60, 8) + Big(1024, 8) + rate);
    const std::string video = TrackOf(
        {.timescale = 12800, .edits = Box("elst", Big(0) + Big(1) + Big(2400) + Big(1024) + rate)});
    for (const std::string& list : {edits, wide}) {
        const MediaFacts facts = Probe(
            FileOf(movie + TrackOf({.handler = "soun", .timescale = 48000, .edits = list}) + video +
                   TrackOf({.edits = edits}) + TrackOf({.handler = "soun", .edits = edits})));
        EXPECT_EQ(facts.videoLead, 800'000);
        EXPECT_EQ(facts.soundLead, 213'333 - 5'000'000);
    }
    const MediaFacts plain = Probe(FileOf(movie + TrackOf({}) + TrackOf({.handler = "soun"})));
    EXPECT_EQ(plain.videoLead, 0);
    EXPECT_EQ(plain.soundLead, 0);
    const std::string distant = Box("elst", Big(0) + Big(1) + Big(1) + Big(UINT32_MAX - 1) + rate);
    EXPECT_EQ(Probe(FileOf(movie + TrackOf({.timescale = 1, .edits = distant}))).videoLead, 0);
    EXPECT_EQ(Probe(FileOf(movie + TrackOf({.timescale = 0, .edits = distant}))).videoLead, 0);
}

std::string Element(const std::string& code, const std::string& data) {
    return code + Big(0x10000000 | data.size()) + data;
}

std::string MatroskaOf(const std::string& tracks) {
    const std::string segment =
        Element("\x16\x54\xAE\x6B", tracks) + Element("\x1F\x43\xB6\x75", std::string(500, 'x'));
    return Element("\x1A\x45\xDF\xA3", "x") + Element("\x18\x53\x80\x67", segment);
}

TEST(MediaProbe, Matroska) {
    const std::string sizes = Element("\xB0", Big(720)) + Element("\xBA", Big(576)) +
                              Element("\x54\xB0", Big(1024)) + Element("\x54\xBA", Big(576));
    const std::string video = Element(
        "\xAE", Element("\x83", "\x01") + Element("\x86", "V_VP9") + Element("\xE0", sizes));
    const std::string sound = Element("\xAE", Element("\x83", "\x02") + Element("\x86", "A_OPUS"));
    const std::string whole = MatroskaOf(sound + video);
    const MediaFacts facts = Probe(whole);
    EXPECT_EQ(facts.kind, MediaKind::Matroska);
    EXPECT_TRUE(facts.hasVideo && facts.hasSound);
    EXPECT_EQ(facts.codec, "V_VP9");
    EXPECT_EQ(facts.pixelAspect, (AspectRatio{64, 45}));
    EXPECT_FALSE(facts.truncated);
    EXPECT_TRUE(Probe(whole.substr(0, whole.size() - 1)).truncated);
    EXPECT_EQ(WhyNoVideo(L"x", Probe(MatroskaOf(sound))), L"x has no video in it, only sound");
}

TEST(MediaProbe, Avi) {
    const VideoFormat video = {PixelFormat::YUY2, FourCc('Y', 'U', 'Y', '2'), 720, 576};
    for (const uint32_t frames : {0u, 3u}) {
        MemoryStore store;
        AviWriter writer(store, video, {25, 1});
        writer.SetDisplayAspect({16, 9});
        ASSERT_EQ(writer.Begin(), IoResult::Ok);
        const std::vector<std::byte> frame(*FrameSize(video));
        for (uint32_t n = 0; n < frames; ++n) ASSERT_EQ(writer.WriteFrame(frame), IoResult::Ok);
        ASSERT_EQ(writer.Finish(), IoResult::Ok);
        const MediaFacts facts = ProbeMedia(store);
        EXPECT_EQ(facts.kind, MediaKind::Avi);
        EXPECT_TRUE(facts.hasVideo);
        EXPECT_FALSE(facts.hasSound || facts.truncated);
        EXPECT_EQ(facts.isEmpty, frames == 0);
        EXPECT_EQ(facts.codec, "YUY2");
        EXPECT_EQ(facts.pixelAspect, (AspectRatio{64, 45}));
        store.bytes.pop_back();
        EXPECT_TRUE(ProbeMedia(store).truncated);
    }
}

TEST(MediaProbe, AviWithBothInOneStream) {
    const auto chunk = [](const std::string& code, const std::string& data) {
        const std::string size = Big(data.size());
        return code + std::string(size.rbegin(), size.rend()) + data;
    };
    const std::string stream = "strl" + chunk("strh", "iavsdvsd" + std::string(48, '\0'));
    const std::string movie = "movi" + chunk("00__", std::string(100, 'x'));
    const MediaFacts facts = Probe(chunk(
        "RIFF", "AVI " + chunk("LIST", "hdrl" + chunk("LIST", stream)) + chunk("LIST", movie)));
    EXPECT_EQ(facts.codec, "dvsd");
    EXPECT_EQ(WhyNoVideo(L"x", facts), L"");
    EXPECT_FALSE(facts.truncated);
}

TEST(MediaProbe, Ogg) {
    const auto page = [](int flags, const std::string& packet) {
        return "OggS" + std::string(1, '\0') + static_cast<char>(flags) + std::string(20, '\0') +
               '\1' + static_cast<char>(packet.size()) + packet;
    };
    const std::string sound = page(2, "\x01vorbis  ");
    const std::string video = page(2, "\x80theora  ");
    EXPECT_EQ(WhyNoVideo(L"x", Probe(sound + page(4, "end"))), L"x has no video in it, only sound");
    const MediaFacts facts = Probe(sound + video + page(4, "end"));
    EXPECT_TRUE(facts.hasVideo && facts.hasSound);
    EXPECT_EQ(facts.codec, "theora");
    EXPECT_FALSE(facts.truncated);
    EXPECT_TRUE(Probe(sound + video + page(0, "more")).truncated);
    EXPECT_TRUE(Probe(sound + page(2, std::string("\x01video\0\0", 8))).hasVideo);
    EXPECT_FALSE(Probe(page(2, "fishead ") + sound).hasVideo);
}

TEST(MediaProbe, Flv) {
    const auto flv = [](char flags) {
        const std::string tag = "\x09" + Big(5, 3) + std::string(7, '\0') + "video";
        return std::string("FLV\x01") + flags + Big(9) + Big(0) + tag + Big(16);
    };
    EXPECT_TRUE(Probe(flv(5)).hasVideo);
    EXPECT_FALSE(Probe(flv(5)).truncated);
    EXPECT_TRUE(Probe(flv(5).substr(0, 25)).truncated);
    EXPECT_EQ(WhyNoVideo(L"x", Probe(flv(4))), L"x has no video in it, only sound");
    EXPECT_EQ(WhyNoVideo(L"x", Probe(flv(0))), L"");
}

TEST(MediaProbe, WhatHelps) {
    MediaFacts facts;
    facts.kind = MediaKind::Mp4;
    facts.hasHeaders = facts.hasVideo = true;
    facts.codec = "av01";
    EXPECT_EQ(WhyNotDecoded(L"x", facts, Platform::Wine32),
              L"nothing on this system decodes the AV1 video in x (MP4); on Debian, Wine gets that "
              L"from gstreamer1.0-plugins-good:i386 and gstreamer1.0-plugins-bad:i386");
    facts.truncated = true;
    EXPECT_NE(WhyNotDecoded(L"x", facts, Platform::Wine64).find(L"cut off; on Debian"),
              std::wstring::npos);
    EXPECT_NE(WhyNotDecoded(L"x", facts, Platform::Windows).find(L"DirectShow"),
              std::wstring::npos);
    facts.kind = MediaKind::MpegTs;
    facts.codec.clear();
    EXPECT_NE(WhyNotDecoded(L"x", facts, Platform::Wine64)
                  .find(L"gstreamer1.0-plugins-bad:amd64 and gstreamer1.0-libav:amd64"),
              std::wstring::npos);
    facts.kind = MediaKind::Text;
    EXPECT_EQ(WhyNotDecoded(L"x", facts, Platform::Wine32), L"x is a text, no media file");
    facts.kind = MediaKind::Picture;
    EXPECT_EQ(WhyNoFrames(L"x", facts), L"x is a picture, no video");
}

// Any bytes: probing ends, and stays within the file.
TEST(MediaProbe, BrokenFiles) {
    std::mt19937 random(3);
    const std::string files[] = {FileOf(TrackOf({}) + TrackOf({.pixel = Box("pasp", Big(4))})),
                                 MatroskaOf(Element("\xAE", Element("\x83", "\x01"))),
                                 "RIFF" + Big(0x64000000) + "AVI LIST" + Big(0x40000000) + "hdrl"};
    for (const std::string& file : files) {
        for (int run = 0; run < 3000; ++run) {
            std::string broken = file;
            for (int i = 0; i < 3; ++i) {
                broken[random() % broken.size()] = static_cast<char>(random());
            }
            broken.resize(broken.size() - random() % 20);
            Probe(broken);
        }
        for (size_t length = 0; length < std::min<size_t>(file.size(), 300); ++length) {
            Probe(file.substr(0, length));
        }
    }
}

}  // namespace
}  // namespace tavo
