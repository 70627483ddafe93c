// The elements of a Matroska or WebM file.

#include "host/avi/media_containers.h"

#include <algorithm>
#include <optional>

#include "host/avi/box_reader.h"

namespace tavo {
namespace {

// Element codes, with their length bits.
constexpr uint32_t kSegment = 0x18538067;
constexpr uint32_t kTracks = 0x1654AE6B;
constexpr uint32_t kCluster = 0x1F43B675;
constexpr uint32_t kTrackEntry = 0xAE;
constexpr uint32_t kTrackType = 0x83;
constexpr uint32_t kCodecId = 0x86;
constexpr uint32_t kVideoSettings = 0xE0;
constexpr uint32_t kPixelWidth = 0xB0;
constexpr uint32_t kPixelHeight = 0xBA;
constexpr uint32_t kDisplayWidth = 0x54B0;
constexpr uint32_t kDisplayHeight = 0x54BA;

// A number of variable length: the highest bit set in the first byte gives the length. Codes keep
// that bit. `at` moves past the number.
std::optional<uint64_t> ReadVariable(BoxReader& file, uint64_t& at, bool keepLengthBit) {
    const auto first = file.Number(at, 1, true);
    if (!first || *first == 0) return std::nullopt;
    unsigned length = 1;
    while ((*first & (0x80u >> (length - 1))) == 0) ++length;
    const auto value = file.Number(at, length, true);
    if (!value) return std::nullopt;
    at += length;
    return keepLengthBit ? *value : *value & ((uint64_t{1} << 7 * length) - 1);
}

std::optional<Box> ReadElement(BoxReader& file, uint64_t at) {
    const auto code = ReadVariable(file, at, true);
    const uint64_t sizeAt = at;
    const auto size = code ? ReadVariable(file, at, false) : std::nullopt;
    if (!size || *code > 0xFFFFFFFF) return std::nullopt;
    // All ones: an unknown size, as in live streams.
    const bool open = *size == (uint64_t{1} << 7 * (at - sizeAt)) - 1;
    const uint64_t end = open ? file.Size() : at + *size;
    return Box{static_cast<uint32_t>(*code), at, end};
}

struct MatroskaTrack {
    uint64_t kind = 0;
    std::string codec;
    uint64_t width = 0;
    uint64_t height = 0;
    uint64_t displayWidth = 0;
    uint64_t displayHeight = 0;
};

void ReadMatroskaTrack(BoxReader& file, const Box& parent, MatroskaTrack& track, int depth) {
    ForEachBox(file, parent.data, parent.end, ReadElement, [&](const Box& box) {
        const auto length = static_cast<unsigned>(std::min<uint64_t>(box.end - box.data, 8));
        const uint64_t value = file.Number(box.data, length, true).value_or(0);
        switch (box.code) {
            case kTrackType: track.kind = value; break;
            case kCodecId: track.codec = file.Text(box.data, box.end - box.data); break;
            case kPixelWidth: track.width = value; break;
            case kPixelHeight: track.height = value; break;
            case kDisplayWidth: track.displayWidth = value; break;
            case kDisplayHeight: track.displayHeight = value; break;
            case kVideoSettings:
                if (depth == 0) ReadMatroskaTrack(file, box, track, 1);
                break;
            default: break;
        }
    });
}

void ReadMatroskaTracks(BoxReader& file, const Box& tracks, MediaFacts& facts) {
    constexpr uint64_t kVideo = 1;
    constexpr uint64_t kSound = 2;
    constexpr uint64_t kLargest = 1 << 20;
    facts.hasHeaders = true;
    ForEachBox(file, tracks.data, tracks.end, ReadElement, [&](const Box& box) {
        if (box.code != kTrackEntry) return;
        MatroskaTrack track;
        ReadMatroskaTrack(file, box, track, 0);
        if (track.kind == kSound) facts.hasSound = true;
        if (track.kind != kVideo) return;
        const bool sane = std::max({track.width, track.height, track.displayWidth,
                                    track.displayHeight}) < kLargest;
        if (!facts.hasVideo && sane) {
            facts.pixelAspect =
                Reduced(track.displayWidth * track.height, track.displayHeight * track.width);
        }
        facts.AddVideo(track.codec);
    });
}

}  // namespace

void ProbeMatroska(ByteStore& store, MediaFacts& facts) {
    BoxReader file(store);
    ForEachBox(file, 0, file.Size(), ReadElement, [&](const Box& segment) {
        if (segment.code != kSegment) return;
        if (segment.isTruncated) facts.truncated = true;
        bool streams = false;  // tracks come before clusters
        uint64_t at = segment.data;
        while (!streams && !facts.hasHeaders && at < segment.end && file.Step()) {
            const std::optional<Box> box = ReadElement(file, at);
            if (!box || box->end <= at) return;
            streams = box->code == kCluster;
            if (box->code == kTracks) ReadMatroskaTracks(file, *box, facts);
            at = box->end;
        }
    });
}

}  // namespace tavo
