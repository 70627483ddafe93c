// Lays out the header lists of an AVI file.

#include "host/avi/avi_header.h"

#include <algorithm>

#include "host/avi/riff.h"

namespace tavo {
namespace {

constexpr uint32_t kHasIndex = 0x10;
constexpr uint32_t kIsInterleaved = 0x100;
constexpr uint32_t kTrustChunkTypes = 0x800;
constexpr uint32_t kDefaultQuality = 0xFFFFFFFF;
constexpr uint32_t kIndexOfIndexes = 0;
constexpr uint32_t kLongsPerSuperEntry = 4;
constexpr uint32_t kSuperEntryBytes = 16;
// The extended header is one number and unused space.
constexpr uint32_t kExtendedHeaderBytes = 248;

uint32_t Clamp32(double value) {
    return value < 4294967295.0 ? static_cast<uint32_t>(value) : 0xFFFFFFFF;
}

uint32_t FrameBytes(const AviHeader& header) { return FrameSize(header.video).value_or(0); }

void PutMainHeader(RiffBlock& block, const AviHeader& header) {
    const double fps = header.rate.Fps();
    const size_t chunk = block.Open(kMainHeader);
    block.Put32(Clamp32(1'000'000.0 / fps + 0.5));
    block.Put32(Clamp32((FrameBytes(header) + 8.0) * fps + header.sound.BytesPerSecond() + 0.5));
    block.Put32(0);  // granularity
    const uint32_t interleaved = header.sound.IsKnown() ? kIsInterleaved : 0;
    block.Put32(kHasIndex | interleaved | kTrustChunkTypes);
    // Frames that a reader without OpenDML can reach.
    block.Put32(header.segments.empty() ? 0 : header.segments.front().length);
    block.Put32(0);                               // initial frames
    block.Put32(header.sound.IsKnown() ? 2 : 1);  // streams
    block.Put32(FrameBytes(header));
    block.Put32(static_cast<uint32_t>(header.video.width));
    block.Put32(RowCount(header.video.height));
    block.PutZeros(16);
    block.Close(chunk);
}

void PutStreamHeader(RiffBlock& block, const AviHeader& header) {
    const VideoFormat& video = header.video;
    const bool dib = InfoOf(video.format).group == FormatGroup::Rgb;
    const size_t chunk = block.Open(kStreamHeader);
    block.Put32(kVideoStream);
    block.Put32(dib ? FourCc('D', 'I', 'B', ' ') : video.compression);
    block.Put32(0);  // flags
    block.Put32(0);  // priority and language
    block.Put32(0);  // initial frames
    block.Put32(header.rate.scale);
    block.Put32(header.rate.rate);
    block.Put32(0);  // start
    block.Put32(header.totalFrames);
    block.Put32(FrameBytes(header));
    block.Put32(kDefaultQuality);
    block.Put32(0);  // sample size: varies
    constexpr uint32_t kMaxSide = 0x7FFF;
    block.Put16(0);
    block.Put16(0);
    block.Put16(std::min(static_cast<uint32_t>(video.width), kMaxSide));
    block.Put16(std::min(RowCount(video.height), kMaxSide));
    block.Close(chunk);
}

void PutStreamFormat(RiffBlock& block, const AviHeader& header) {
    const VideoFormat& video = header.video;
    const PictureFormat& info = InfoOf(video.format);
    const bool masks = video.compression == kCompressionBitFields;
    const bool signedHeight = info.group == FormatGroup::Rgb;
    const size_t chunk = block.Open(kStreamFormat);
    block.Put32(kBitmapHeader);
    block.Put32(static_cast<uint32_t>(video.width));
    block.Put32(signedHeight ? static_cast<uint32_t>(video.height) : RowCount(video.height));
    block.Put16(1);  // planes
    block.Put16(static_cast<uint16_t>(info.bitsPerPixel));
    block.Put32(video.compression);
    block.Put32(FrameBytes(header));
    block.PutZeros(16);  // pixels per metre, palette
    if (masks) {
        for (const uint32_t mask : video.format == PixelFormat::RGB555 ? kMasks555 : kMasks565) {
            block.Put32(mask);
        }
    }
    block.Close(chunk);
}

void PutSuperIndex(RiffBlock& block, uint32_t code, std::span<const SegmentEntry> segments,
                   uint32_t maxSegments) {
    const size_t chunk = block.Open(kSuperIndex);
    block.Put16(kLongsPerSuperEntry);
    block.Put16(kIndexOfIndexes << 8);  // sub type, type
    block.Put32(static_cast<uint32_t>(segments.size()));
    block.Put32(code);
    block.PutZeros(12);
    for (const SegmentEntry& entry : segments) {
        block.Put64(entry.offset);
        block.Put32(entry.size);
        block.Put32(entry.length);
    }
    block.PutZeros((maxSegments - segments.size()) * kSuperEntryBytes);
    block.Close(chunk);
}

// The display aspect ratio. The fields about video signals are 0.
void PutVideoProperties(RiffBlock& block, const AviHeader& header) {
    if (!header.displayAspect.IsKnown()) return;
    const auto width = static_cast<uint32_t>(header.video.width);
    const uint32_t height = RowCount(header.video.height);
    const size_t chunk = block.Open(kVideoProperties);
    block.Put32(0);  // format, standard
    block.Put32(0);
    block.Put32(Clamp32(header.rate.Fps() + 0.5));
    block.Put32(width);
    block.Put32(height);
    block.Put32(header.displayAspect.x << 16 | header.displayAspect.y);
    block.Put32(width);
    block.Put32(height);
    block.Put32(1);  // fields per frame, then each field's rectangles
    for (const uint32_t value : {height, width, height, width, 0u, 0u, 0u, 0u}) block.Put32(value);
    block.Close(chunk);
}

void PutSoundHeader(RiffBlock& block, const AviHeader& header) {
    const SoundFormat& sound = header.sound;
    const size_t chunk = block.Open(kStreamHeader);
    block.Put32(kSoundStream);
    block.PutZeros(16);  // handler, flags, priority and language, initial frames
    block.Put32(sound.BlockBytes());
    block.Put32(sound.BytesPerSecond());
    block.Put32(0);  // start
    block.Put32(Clamp32(static_cast<double>(header.soundBlocks)));
    block.Put32(sound.BytesPerSecond());  // buffer
    block.Put32(kDefaultQuality);
    block.Put32(sound.BlockBytes());
    block.PutZeros(8);  // a rectangle
    block.Close(chunk);
}

void PutSoundFormat(RiffBlock& block, const SoundFormat& sound) {
    constexpr uint32_t kPcm = 1;
    constexpr uint32_t kFloat = 3;
    const size_t chunk = block.Open(kStreamFormat);
    block.Put16(sound.isFloat ? kFloat : kPcm);
    block.Put16(sound.channels);
    block.Put32(sound.rate);
    block.Put32(sound.BytesPerSecond());
    block.Put16(sound.BlockBytes());
    block.Put16(sound.bits);
    block.Put16(0);  // more
    block.Close(chunk);
}

void PutSoundStream(RiffBlock& block, const AviHeader& header) {
    if (!header.sound.IsKnown()) return;
    const size_t stream = block.OpenList(kList, kStreamList);
    PutSoundHeader(block, header);
    PutSoundFormat(block, header.sound);
    PutSuperIndex(block, kSoundChunk, header.soundSegments, header.maxSegments);
    block.Close(stream);
}

void PutExtendedHeader(RiffBlock& block, const AviHeader& header) {
    const size_t list = block.OpenList(kList, kExtendedList);
    const size_t chunk = block.Open(kExtendedHeader);
    block.Put32(header.totalFrames);
    block.PutZeros(kExtendedHeaderBytes - 4);
    block.Close(chunk);
    block.Close(list);
}

}  // namespace

uint32_t FrameChunkCode(const VideoFormat& video) {
    return InfoOf(video.format).group == FormatGroup::Rgb ? FourCc('0', '0', 'd', 'b')
                                                          : FourCc('0', '0', 'd', 'c');
}

std::vector<std::byte> HeaderList(const AviHeader& header) {
    RiffBlock block;
    const size_t list = block.OpenList(kList, kHeaderList);
    PutMainHeader(block, header);
    const size_t stream = block.OpenList(kList, kStreamList);
    PutStreamHeader(block, header);
    PutStreamFormat(block, header);
    PutSuperIndex(block, header.chunkCode, header.segments, header.maxSegments);
    PutVideoProperties(block, header);
    block.Close(stream);
    PutSoundStream(block, header);
    PutExtendedHeader(block, header);
    block.Close(list);
    return block.Take();
}

}  // namespace tavo
