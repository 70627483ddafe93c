// Walks boxes inside boxes. Each step moves on by at least a box header, lists are entered to the
// depth that the code names, and how many steps there are is limited.

#include "host/avi/media_boxes.h"

#include <algorithm>
#include <array>
#include <optional>

#include "host/avi/riff.h"

namespace tavo {
namespace {

constexpr int kMostSteps = 20000;

struct Box {
    uint32_t code = 0;
    uint64_t data = 0;
    uint64_t end = 0;
    bool isCut = false;  // by the end of the file
};

class Walker {
  public:
    explicit Walker(ByteStore& store) : store_(store), size_(store.Size()) {}

    uint64_t Size() const { return size_; }
    bool Step() { return ++steps_ < kMostSteps; }

    std::optional<uint64_t> Number(uint64_t at, unsigned bytes, bool bigEndian) {
        std::array<std::byte, 8> data{};
        if (at > size_ || size_ - at < bytes ||
            store_.ReadAt(at, std::span(data).first(bytes)) != IoResult::Ok) {
            return std::nullopt;
        }
        uint64_t value = 0;
        for (unsigned i = 0; i < bytes; ++i) {
            const auto byte = std::to_integer<uint64_t>(data[i]);
            value |= byte << 8 * (bigEndian ? bytes - 1 - i : i);
        }
        return value;
    }
    uint32_t Little(uint64_t at) { return static_cast<uint32_t>(Number(at, 4, false).value_or(0)); }
    uint32_t Big(uint64_t at) { return static_cast<uint32_t>(Number(at, 4, true).value_or(0)); }

    std::string Text(uint64_t at, uint64_t length) {
        std::string text;
        for (uint64_t i = 0; i < std::min<uint64_t>(length, 40); ++i) {
            const auto c = Number(at + i, 1, true);
            if (!c || *c == 0) break;
            text += static_cast<char>(*c);
        }
        return text;
    }

  private:
    ByteStore& store_;
    const uint64_t size_;
    int steps_ = 0;
};

std::string CodeText(uint32_t code) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(code >> shift & 0xFF);
    return text;
}

// Calls take(box) for each box between the two.
template <typename Read, typename Take>
void ForEach(Walker& file, uint64_t at, uint64_t end, Read read, Take take) {
    while (at < std::min(end, file.Size()) && file.Step()) {
        std::optional<Box> box = read(file, at);
        if (!box || box->end <= at) return;
        at = box->end;
        box->isCut = box->end > file.Size();
        box->end = std::min({box->end, end, file.Size()});
        take(*box);
    }
}

std::optional<Box> ReadRiff(Walker& file, uint64_t at) {
    const auto code = file.Number(at, 4, false);
    const auto size = file.Number(at + 4, 4, false);
    if (!code || !size) return std::nullopt;
    return Box{static_cast<uint32_t>(*code), at + 8, at + 8 + Padded(*size)};
}

std::optional<Box> ReadMp4(Walker& file, uint64_t at) {
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

void TakeVideo(MediaFacts& facts, const std::string& codec) {
    if (!facts.hasVideo) facts.codec = codec;
    facts.hasVideo = true;
}

void ProbeAviStream(Walker& file, const Box& list, MediaFacts& facts) {
    uint32_t kind = 0;
    uint32_t code = 0;
    AspectRatio shown;
    int32_t width = 0;
    int32_t height = 0;
    ForEach(file, list.data + 4, list.end, ReadRiff, [&](const Box& box) {
        if (box.code == kStreamHeader) kind = file.Little(box.data);
        if (box.code == kStreamFormat) {
            width = static_cast<int32_t>(file.Little(box.data + 4));
            height = static_cast<int32_t>(file.Little(box.data + 8));
            code = file.Little(box.data + 16);
        }
        if (box.code == kVideoProperties && box.end - box.data >= 24) {
            const uint32_t aspect = file.Little(box.data + 20);
            shown = {aspect >> 16, aspect & 0xFFFF};
        }
    });
    if (kind == FourCc('a', 'u', 'd', 's')) facts.hasSound = true;
    // Digital video from tape: both in one stream.
    if (kind == FourCc('i', 'a', 'v', 's')) TakeVideo(facts, "dvsd");
    if (kind != kVideoStream) return;
    if (!facts.hasVideo && shown.IsKnown() && width > 0) {
        const uint64_t rows = RowCount(height);
        facts.pixel = Reduced(shown.x * rows, uint64_t{shown.y} * static_cast<uint32_t>(width));
    }
    TakeVideo(facts, code > 0xFFFF ? CodeText(code) : "");
}

struct Mp4Track {
    uint32_t handler = 0;
    std::string codec;
    AspectRatio pixel;
    int rotation = 0;
    bool isEmpty = false;
};

// The first two columns of the matrix turn: (0 1 -1 0) is a quarter clockwise.
int RotationOf(Walker& file, const Box& header) {
    const bool large = file.Number(header.data, 1, true).value_or(0) == 1;
    const uint64_t matrix = header.data + (large ? 52 : 40);
    if (matrix + 36 > header.end) return 0;
    const auto a = static_cast<int32_t>(file.Big(matrix));
    const auto b = static_cast<int32_t>(file.Big(matrix + 4));
    if (a == 0 && b > 0) return 90;
    if (a < 0 && b == 0) return 180;
    return a == 0 && b < 0 ? 270 : 0;
}

void ReadSampleEntries(Walker& file, const Box& list, Mp4Track& track) {
    constexpr uint64_t kVideoEntry = 78;
    const auto entry = ReadMp4(file, list.data + 8);
    if (!entry) return;
    track.codec = CodeText(entry->code);
    if (track.handler != FourCc('v', 'i', 'd', 'e')) return;
    ForEach(file, entry->data + kVideoEntry, std::min(entry->end, list.end), ReadMp4,
            [&](const Box& box) {
                if (box.code != FourCc('p', 'a', 's', 'p')) return;
                track.pixel = Reduced(file.Big(box.data), file.Big(box.data + 4));
            });
}

void ReadTrack(Walker& file, const Box& parent, Mp4Track& track, int depth) {
    ForEach(file, parent.data, parent.end, ReadMp4, [&](const Box& box) {
        switch (box.code) {
            case FourCc('t', 'k', 'h', 'd'): track.rotation = RotationOf(file, box); break;
            case FourCc('h', 'd', 'l', 'r'):
                if (track.handler == 0) track.handler = file.Little(box.data + 8);
                break;
            case FourCc('s', 't', 's', 'z'): track.isEmpty = file.Big(box.data + 8) == 0; break;
            case FourCc('s', 't', 's', 'd'): ReadSampleEntries(file, box, track); break;
            case FourCc('m', 'd', 'i', 'a'):
            case FourCc('m', 'i', 'n', 'f'):
            case FourCc('s', 't', 'b', 'l'):
                if (depth < 3) ReadTrack(file, box, track, depth + 1);
                break;
            default: break;
        }
    });
}

void ReadMovie(Walker& file, const Box& movie, MediaFacts& facts) {
    facts.hasHeaders = true;
    bool inFragments = false;
    ForEach(file, movie.data, movie.end, ReadMp4, [&](const Box& box) {
        if (box.code == FourCc('m', 'v', 'e', 'x')) inFragments = true;
        if (box.code != FourCc('t', 'r', 'a', 'k')) return;
        Mp4Track track;
        ReadTrack(file, box, track, 0);
        if (track.handler == FourCc('s', 'o', 'u', 'n')) facts.hasSound = true;
        if (track.handler != FourCc('v', 'i', 'd', 'e')) return;
        if (!facts.hasVideo) {
            facts.pixel = track.pixel;
            facts.rotation = track.rotation;
            facts.isEmpty = track.isEmpty;
        }
        TakeVideo(facts, track.codec);
    });
    if (inFragments) facts.isEmpty = false;
}

// A number whose first byte tells its length; `keepMark` leaves the telling bit in, as in codes.
std::optional<uint64_t> ReadVariable(Walker& file, uint64_t& at, bool keepMark) {
    const auto first = file.Number(at, 1, true);
    if (!first || *first == 0) return std::nullopt;
    unsigned length = 1;
    while ((*first & (0x80u >> (length - 1))) == 0) ++length;
    const auto value = file.Number(at, length, true);
    if (!value) return std::nullopt;
    at += length;
    return keepMark ? *value : *value & ((uint64_t{1} << 7 * length) - 1);
}

std::optional<Box> ReadElement(Walker& file, uint64_t at) {
    const auto code = ReadVariable(file, at, true);
    const uint64_t sizeAt = at;
    const auto size = code ? ReadVariable(file, at, false) : std::nullopt;
    if (!size || *code > 0xFFFFFFFF) return std::nullopt;
    // All ones: as long as its parent. Those are written live.
    const bool open = *size == (uint64_t{1} << 7 * (at - sizeAt)) - 1;
    const uint64_t end = open ? file.Size() : at + *size;
    return Box{static_cast<uint32_t>(*code), at, end};
}

struct MatroskaTrack {
    uint64_t kind = 0;
    std::string codec;
    uint64_t width = 0;
    uint64_t height = 0;
    uint64_t shownWidth = 0;
    uint64_t shownHeight = 0;
};

void ReadMatroskaTrack(Walker& file, const Box& parent, MatroskaTrack& track, int depth) {
    ForEach(file, parent.data, parent.end, ReadElement, [&](const Box& box) {
        const auto length = static_cast<unsigned>(std::min<uint64_t>(box.end - box.data, 8));
        const uint64_t value = file.Number(box.data, length, true).value_or(0);
        switch (box.code) {
            case 0x83: track.kind = value; break;
            case 0x86: track.codec = file.Text(box.data, box.end - box.data); break;
            case 0xB0: track.width = value; break;
            case 0xBA: track.height = value; break;
            case 0x54B0: track.shownWidth = value; break;
            case 0x54BA: track.shownHeight = value; break;
            case 0xE0:
                if (depth == 0) ReadMatroskaTrack(file, box, track, 1);
                break;
            default: break;
        }
    });
}

void ReadMatroskaTracks(Walker& file, const Box& tracks, MediaFacts& facts) {
    constexpr uint64_t kVideo = 1;
    constexpr uint64_t kSound = 2;
    constexpr uint64_t kLargest = 1 << 20;
    facts.hasHeaders = true;
    ForEach(file, tracks.data, tracks.end, ReadElement, [&](const Box& box) {
        if (box.code != 0xAE) return;
        MatroskaTrack track;
        ReadMatroskaTrack(file, box, track, 0);
        if (track.kind == kSound) facts.hasSound = true;
        if (track.kind != kVideo) return;
        const bool sane =
            std::max({track.width, track.height, track.shownWidth, track.shownHeight}) < kLargest;
        if (!facts.hasVideo && sane) {
            facts.pixel = Reduced(track.shownWidth * track.height, track.shownHeight * track.width);
        }
        TakeVideo(facts, track.codec);
    });
}

bool HasFrames(Walker& file, const Box& movie) {
    const uint32_t first = file.Little(movie.data + 4);
    return movie.end - movie.data != 4 && first != kFirstStreamIndex && first != kOldIndex;
}

}  // namespace

void ProbeAvi(ByteStore& store, MediaFacts& facts) {
    Walker file(store);
    ForEach(file, 0, file.Size(), ReadRiff, [&](const Box& riff) {
        if (riff.code != kRiff) return;
        // A writer that was interrupted leaves a size of 0 behind.
        const bool open = riff.end - riff.data < 4;
        if (riff.isCut || open) facts.cutOff = true;
        const uint64_t end = open ? file.Size() : riff.end;
        ForEach(file, riff.data + 4, end, ReadRiff, [&](const Box& list) {
            if (list.code != kList) return;
            const uint32_t kind = file.Little(list.data);
            // An index may stand there all the same.
            if (kind == kMovieList && HasFrames(file, list)) facts.isEmpty = false;
            if (kind != kHeaderList) return;
            facts.hasHeaders = true;
            facts.isEmpty = !facts.cutOff;  // until there is a movie
            ForEach(file, list.data + 4, list.end, ReadRiff, [&](const Box& box) {
                if (box.code == kList && file.Little(box.data) == kStreamList) {
                    ProbeAviStream(file, box, facts);
                }
            });
        });
    });
}

void ProbeMp4(ByteStore& store, MediaFacts& facts) {
    Walker file(store);
    ForEach(file, 0, file.Size(), ReadMp4, [&](const Box& box) {
        const bool isMovie = box.code == FourCc('m', 'o', 'o', 'v');
        const bool isMedia = isMovie || box.code == FourCc('m', 'd', 'a', 't') ||
                             box.code == FourCc('m', 'o', 'o', 'f');
        if (box.isCut && isMedia) facts.cutOff = true;
        if (isMovie) ReadMovie(file, box, facts);
    });
    if (!facts.hasHeaders) facts.cutOff = true;
}

void ProbeMatroska(ByteStore& store, MediaFacts& facts) {
    constexpr uint32_t kSegment = 0x18538067;
    constexpr uint32_t kTracks = 0x1654AE6B;
    constexpr uint32_t kCluster = 0x1F43B675;
    Walker file(store);
    ForEach(file, 0, file.Size(), ReadElement, [&](const Box& segment) {
        if (segment.code != kSegment) return;
        if (segment.isCut) facts.cutOff = true;
        bool streams = false;  // tracks stand before them
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
