// The header lists of an AVI file.

#include "host/avi/media_containers.h"

#include "host/avi/box_reader.h"
#include "host/avi/riff.h"

namespace tavo {
namespace {

std::optional<Box> ReadRiff(BoxReader& file, uint64_t at) {
    const auto code = file.Number(at, 4, false);
    const auto size = file.Number(at + 4, 4, false);
    if (!code || !size) return std::nullopt;
    return Box{static_cast<uint32_t>(*code), at + 8, at + 8 + Padded(*size)};
}

void ProbeAviStream(BoxReader& file, const Box& list, MediaFacts& facts) {
    uint32_t kind = 0;
    uint32_t code = 0;
    AspectRatio displayAspect;
    int32_t width = 0;
    int32_t height = 0;
    ForEachBox(file, list.data + 4, list.end, ReadRiff, [&](const Box& box) {
        if (box.code == kStreamHeader) kind = file.Little(box.data);
        if (box.code == kStreamFormat) {
            width = static_cast<int32_t>(file.Little(box.data + 4));
            height = static_cast<int32_t>(file.Little(box.data + 8));
            code = file.Little(box.data + 16);
        }
        if (box.code == kVideoProperties && box.end - box.data >= 24) {
            const uint32_t packed = file.Little(box.data + 20);
            displayAspect = {packed >> 16, packed & 0xFFFF};
        }
    });
    if (kind == FourCc('a', 'u', 'd', 's')) facts.hasSound = true;
    // DV type 1: video and audio in one stream.
    if (kind == FourCc('i', 'a', 'v', 's')) facts.AddVideo("dvsd");
    if (kind != kVideoStream) return;
    if (!facts.hasVideo && displayAspect.IsKnown() && width > 0) {
        const uint64_t rows = RowCount(height);
        facts.pixelAspect = Reduced(displayAspect.x * rows,
                                    uint64_t{displayAspect.y} * static_cast<uint32_t>(width));
    }
    facts.AddVideo(code > 0xFFFF ? CodeText(code) : "");
}

bool HasFrames(BoxReader& file, const Box& movie) {
    const uint32_t first = file.Little(movie.data + 4);
    return movie.end - movie.data != 4 && first != kFirstStreamIndex && first != kOldIndex;
}

}  // namespace

void ProbeAvi(ByteStore& store, MediaFacts& facts) {
    BoxReader file(store);
    ForEachBox(file, 0, file.Size(), ReadRiff, [&](const Box& riff) {
        if (riff.code != kRiff) return;
        // An interrupted writer leaves a size of 0.
        const bool open = riff.end - riff.data < 4;
        if (riff.isTruncated || open) facts.truncated = true;
        const uint64_t end = open ? file.Size() : riff.end;
        ForEachBox(file, riff.data + 4, end, ReadRiff, [&](const Box& list) {
            if (list.code != kList) return;
            const uint32_t kind = file.Little(list.data);
            // A movie list can have an index and no frames.
            if (kind == kMovieList && HasFrames(file, list)) facts.isEmpty = false;
            if (kind != kHeaderList) return;
            facts.hasHeaders = true;
            facts.isEmpty = !facts.truncated;  // until a movie list is found
            ForEachBox(file, list.data + 4, list.end, ReadRiff, [&](const Box& box) {
                if (box.code == kList && file.Little(box.data) == kStreamList) {
                    ProbeAviStream(file, box, facts);
                }
            });
        });
    });
}

}  // namespace tavo
