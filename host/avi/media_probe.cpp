// Recognises files by their first bytes, and reads the headers of common containers.

#include "host/avi/media_probe.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "host/avi/media_containers.h"
#include "host/avi/riff.h"

namespace tavo {
namespace {

using std::string_view;

constexpr size_t kStart = 4096;
constexpr size_t kPacket = 188;  // of a transport stream

bool StartsWith(string_view start, string_view magic, size_t at = 0) {
    return start.size() >= at + magic.size() && start.substr(at, magic.size()) == magic;
}

bool IsMpegAudio(string_view start) {
    return start.size() > 2 && start[0] == '\xFF' && (start[1] & 0xE6) == 0xE2;
}

bool IsTransportStream(string_view start) {
    return start.size() > 2 * kPacket && start[0] == 'G' && start[kPacket] == 'G' &&
           start[2 * kPacket] == 'G';
}

uint32_t BigNumber(ByteStore& store, uint64_t at, size_t bytes) {
    std::array<std::byte, 4> data{};
    if (store.ReadAt(at, std::span(data).first(bytes)) != IoResult::Ok) return 0;
    uint32_t value = 0;
    for (size_t i = 0; i < bytes; ++i) value = value << 8 | std::to_integer<uint32_t>(data[i]);
    return value;
}

// Texts have no control characters but blanks and line ends.
bool IsText(string_view start) {
    return std::ranges::all_of(start, [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return code >= 0x20 ? code != 0x7F : code == '\t' || code == '\n' || code == '\r';
    });
}

MediaKind KindOf(string_view start) {
    using namespace std::literals;
    struct Row {
        size_t at;
        string_view magic;
        MediaKind kind;
    };
    static constexpr Row kRows[] = {
        {8, "AVI "sv, MediaKind::Avi},
        {8, "WAVE"sv, MediaKind::Sound},
        {4, "ftyp"sv, MediaKind::Mp4},
        {4, "moov"sv, MediaKind::Mp4},
        {4, "mdat"sv, MediaKind::Mp4},
        {4, "wide"sv, MediaKind::Mp4},
        {0, "\x1A\x45\xDF\xA3"sv, MediaKind::Matroska},
        {0, "OggS"sv, MediaKind::Ogg},
        {0, "FLV\x01"sv, MediaKind::Flv},
        {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11"sv, MediaKind::Asf},
        {0, "\x00\x00\x01\xBA"sv, MediaKind::MpegPs},
        {0, "ID3"sv, MediaKind::Sound},
        {0, "fLaC"sv, MediaKind::Sound},
        {0, "\x89PNG"sv, MediaKind::Picture},
        {0, "\xFF\xD8\xFF"sv, MediaKind::Picture},
        {0, "YUV4MPEG2 "sv, MediaKind::Unknown},
    };
    for (const Row& row : kRows) {
        if (StartsWith(start, row.magic, row.at)) return row.kind;
    }
    if (IsMpegAudio(start)) return MediaKind::Sound;
    if (IsTransportStream(start)) return MediaKind::MpegTs;
    return IsText(start) ? MediaKind::Text : MediaKind::Unknown;
}

// The last page is marked.
bool HasOggEnd(ByteStore& store) {
    constexpr uint64_t kMaxPageSize = 65307;
    constexpr char kEnds = 4;
    std::vector<char> bytes(static_cast<size_t>(std::min(kMaxPageSize, store.Size())));
    if (store.ReadAt(store.Size() - bytes.size(), std::as_writable_bytes(std::span(bytes))) !=
        IoResult::Ok) {
        return true;
    }
    const string_view end(bytes.data(), bytes.size());
    const size_t at = end.rfind("OggS");
    return at != string_view::npos && at + 5 < end.size() && (end[at + 5] & kEnds) != 0;
}

// Each stream of an Ogg file begins with a page of its own, all at the start.
void ProbeOgg(ByteStore& store, string_view start, MediaFacts& facts) {
    facts.truncated = !HasOggEnd(store);
    constexpr size_t kPageHeader = 27;
    constexpr char kBegins = 2;
    size_t at = 0;
    while (StartsWith(start, "OggS", at) && at + kPageHeader < start.size() &&
           (start[at + 5] & kBegins) != 0) {
        const auto segments = static_cast<unsigned char>(start[at + 26]);
        size_t next = at + kPageHeader + segments;
        if (next + 8 > start.size()) return;
        const string_view packet = start.substr(next, 8);
        // Unknown codecs may be video.
        const bool theora = StartsWith(packet, "theora", 1);
        const bool sound = StartsWith(packet, "vorbis", 1) || StartsWith(packet, "OpusHead") ||
                           StartsWith(packet, "Speex") || StartsWith(packet, "FLAC", 1);
        if (sound) {
            facts.hasSound = true;
        } else if (!StartsWith(packet, "fishead")) {
            facts.AddVideo(theora ? "theora" : "");
        }
        facts.hasHeaders = true;
        for (size_t i = 0; i < segments; ++i) {
            next += static_cast<unsigned char>(start[at + kPageHeader + i]);
        }
        at = next;
    }
}

// All packets have the same length.
void ProbeTransportStream(ByteStore& store, MediaFacts& facts) {
    facts.truncated = store.Size() % kPacket != 0;
}

// Each tag is followed by its length.
void ProbeFlv(ByteStore& store, string_view start, MediaFacts& facts) {
    if (start.size() < 5) return;
    // With neither flag, the writer did not know yet.
    facts.hasHeaders = (start[4] & 5) != 0;
    facts.hasVideo = (start[4] & 1) != 0;
    facts.hasSound = (start[4] & 4) != 0;
    const uint64_t size = store.Size();
    constexpr uint32_t kTagHeader = 11;
    const uint32_t last = BigNumber(store, size - 4, 4);
    facts.truncated = last < kTagHeader || last + uint64_t{13} > size ||
                      BigNumber(store, size - 3 - last, 3) + kTagHeader != last;
}

// The file properties object, one of the first, has the file size.
void ProbeAsf(ByteStore& store, string_view start, MediaFacts& facts) {
    constexpr string_view kProperties("\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11", 8);
    const size_t at = start.find(kProperties);
    if (at == string_view::npos || at + 48 > start.size()) return;
    uint64_t length = 0;
    for (size_t i = 0; i < 8; ++i) {
        length |= uint64_t{static_cast<unsigned char>(start[at + 40 + i])} << 8 * i;
    }
    facts.truncated = length > store.Size();
}

}  // namespace

MediaFacts ProbeMedia(ByteStore& store) {
    std::vector<char> bytes(static_cast<size_t>(std::min<uint64_t>(kStart, store.Size())));
    MediaFacts facts;
    if (store.ReadAt(0, std::as_writable_bytes(std::span(bytes))) != IoResult::Ok) return facts;
    const string_view start(bytes.data(), bytes.size());
    facts.kind = KindOf(start);
    switch (facts.kind) {
        case MediaKind::Avi: ProbeAvi(store, facts); break;
        case MediaKind::Mp4: ProbeMp4(store, facts); break;
        case MediaKind::Matroska: ProbeMatroska(store, facts); break;
        case MediaKind::Ogg: ProbeOgg(store, start, facts); break;
        case MediaKind::Flv: ProbeFlv(store, start, facts); break;
        case MediaKind::Asf: ProbeAsf(store, start, facts); break;
        case MediaKind::MpegTs: ProbeTransportStream(store, facts); break;
        case MediaKind::Sound:
            facts.hasHeaders = true;
            facts.hasSound = true;
            break;
        default: break;
    }
    if (facts.pixelAspect.x == facts.pixelAspect.y) facts.pixelAspect = {};
    return facts;
}

}  // namespace tavo
