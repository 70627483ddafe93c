// The boxes of an MP4 or QuickTime file.

#include "host/avi/media_containers.h"

#include <algorithm>
#include <optional>

#include "host/avi/box_reader.h"
#include "host/avi/pixel_format.h"

namespace tavo {
namespace {

std::optional<Box> ReadMp4(BoxReader& file, uint64_t at) {
    const auto size = file.Number(at, 4, true);
    const auto code = file.Number(at + 4, 4, false);
    if (!code || !size) return std::nullopt;
    Box box = {static_cast<uint32_t>(*code), at + 8, at + *size};
    if (*size == 0) box.end = file.Size();
    if (*size == 1) {
        const auto large = file.Number(at + 8, 8, true);
        if (!large || *large > INT64_MAX) return std::nullopt;
        box.data = at + 16;
        box.end = at + *large;
    }
    return box;
}

struct Mp4Track {
    uint32_t handler = 0;
    std::string codec;
    AspectRatio pixelAspect;
    int rotation = 0;
    bool isEmpty = false;
    uint32_t timescale = 0;
    // Of the list of edits: what is empty at its start, and the stamp of what comes then.
    uint64_t emptyTime = 0;
    uint64_t firstStamp = 0;

    // In units of 100 ns; 0 for lists that make no sense.
    int64_t Lead(uint32_t movieTimescale) const {
        const auto units = [](uint64_t time, uint32_t scale) -> int64_t {
            constexpr uint64_t kSecond = 10'000'000;
            constexpr uint64_t kMostSeconds = 3600;
            if (scale == 0 || time / scale >= kMostSeconds) return 0;
            return static_cast<int64_t>(time * kSecond / scale);
        };
        return units(firstStamp, timescale) - units(emptyTime, movieTimescale);
    }
};

// The first field behind the times of creation and change, which version 1 has in 8 bytes each.
uint32_t TimescaleOf(BoxReader& file, const Box& header) {
    const bool large = file.Number(header.data, 1, true).value_or(0) == 1;
    return file.Big(header.data + (large ? 20 : 12));
}

void ReadEdits(BoxReader& file, const Box& list, Mp4Track& track) {
    const bool large = file.Number(list.data, 1, true).value_or(0) == 1;
    const unsigned bytes = large ? 8 : 4;
    const uint64_t none = large ? UINT64_MAX : UINT32_MAX;
    const uint64_t entry = 2 * bytes + 4;
    track.emptyTime = 0;
    for (uint64_t at = list.data + 8; at + entry <= list.end && file.Step(); at += entry) {
        const uint64_t stamp = file.Number(at + bytes, bytes, true).value_or(0);
        if (stamp != none) {
            track.firstStamp = stamp;
            return;
        }
        track.emptyTime += file.Number(at, bytes, true).value_or(0);
    }
}

// From the first row of the matrix; (0 1) is a quarter turn clockwise.
int RotationOf(BoxReader& file, const Box& header) {
    const bool large = file.Number(header.data, 1, true).value_or(0) == 1;
    const uint64_t matrix = header.data + (large ? 52 : 40);
    if (matrix + 36 > header.end) return 0;
    const auto a = static_cast<int32_t>(file.Big(matrix));
    const auto b = static_cast<int32_t>(file.Big(matrix + 4));
    if (a == 0 && b > 0) return 90;
    if (a < 0 && b == 0) return 180;
    return a == 0 && b < 0 ? 270 : 0;
}

void ReadSampleEntries(BoxReader& file, const Box& list, Mp4Track& track) {
    constexpr uint64_t kVideoEntry = 78;
    const auto entry = ReadMp4(file, list.data + 8);
    if (!entry) return;
    track.codec = CodeText(entry->code);
    if (track.handler != FourCc('v', 'i', 'd', 'e')) return;
    ForEachBox(file, entry->data + kVideoEntry, std::min(entry->end, list.end), ReadMp4,
               [&](const Box& box) {
                   if (box.code != FourCc('p', 'a', 's', 'p')) return;
                   track.pixelAspect = Reduced(file.Big(box.data), file.Big(box.data + 4));
               });
}

void ReadTrack(BoxReader& file, const Box& parent, Mp4Track& track, int depth) {
    ForEachBox(file, parent.data, parent.end, ReadMp4, [&](const Box& box) {
        switch (box.code) {
            case FourCc('t', 'k', 'h', 'd'): track.rotation = RotationOf(file, box); break;
            case FourCc('h', 'd', 'l', 'r'):
                if (track.handler == 0) track.handler = file.Little(box.data + 8);
                break;
            case FourCc('s', 't', 's', 'z'): track.isEmpty = file.Big(box.data + 8) == 0; break;
            case FourCc('s', 't', 's', 'd'): ReadSampleEntries(file, box, track); break;
            case FourCc('m', 'd', 'h', 'd'): track.timescale = TimescaleOf(file, box); break;
            case FourCc('e', 'l', 's', 't'): ReadEdits(file, box, track); break;
            case FourCc('e', 'd', 't', 's'):
            case FourCc('m', 'd', 'i', 'a'):
            case FourCc('m', 'i', 'n', 'f'):
            case FourCc('s', 't', 'b', 'l'):
                if (depth < 3) ReadTrack(file, box, track, depth + 1);
                break;
            default: break;
        }
    });
}

void ReadMovie(BoxReader& file, const Box& movie, MediaFacts& facts) {
    facts.hasHeaders = true;
    bool inFragments = false;
    uint32_t timescale = 0;
    ForEachBox(file, movie.data, movie.end, ReadMp4, [&](const Box& box) {
        if (box.code == FourCc('m', 'v', 'e', 'x')) inFragments = true;
        if (box.code == FourCc('m', 'v', 'h', 'd')) timescale = TimescaleOf(file, box);
        if (box.code != FourCc('t', 'r', 'a', 'k')) return;
        Mp4Track track;
        ReadTrack(file, box, track, 0);
        if (track.handler == FourCc('s', 'o', 'u', 'n')) {
            if (!facts.hasSound) facts.soundLead = track.Lead(timescale);
            facts.hasSound = true;
        }
        if (track.handler != FourCc('v', 'i', 'd', 'e')) return;
        if (!facts.hasVideo) {
            facts.pixelAspect = track.pixelAspect;
            facts.rotation = track.rotation;
            facts.isEmpty = track.isEmpty;
            facts.videoLead = track.Lead(timescale);
        }
        facts.AddVideo(track.codec);
    });
    if (inFragments) facts.isEmpty = false;
}

}  // namespace

void ProbeMp4(ByteStore& store, MediaFacts& facts) {
    BoxReader file(store);
    ForEachBox(file, 0, file.Size(), ReadMp4, [&](const Box& box) {
        const bool isMovie = box.code == FourCc('m', 'o', 'o', 'v');
        const bool isMedia = isMovie || box.code == FourCc('m', 'd', 'a', 't') ||
                             box.code == FourCc('m', 'o', 'o', 'f');
        if (box.isTruncated && isMedia) facts.truncated = true;
        if (isMovie) ReadMovie(file, box, facts);
    });
    if (!facts.hasHeaders) facts.truncated = true;
}

}  // namespace tavo
