// Accepts only AVI files of the shape that the writer makes.

#include "tests/host/avi/avi_checker.h"

#include <algorithm>

namespace tavo_test {
namespace {

class Checker {
  public:
    Checker(tavo::ByteStore& store, CheckedAvi& avi) : store_(store), avi_(avi) {}

    void Run() {
        uint64_t at = 0;
        while (at < store_.Size() && avi_.fault.empty()) at = Riff(at);
        if (at != store_.Size()) Fault("the RIFF chunks do not fill the file");
        SuperIndex(superIndex_, superLength_, false);
        if (avi_.openDmlIndex != avi_.chunks) Fault("the OpenDML index is not the list of frames");
        std::vector<uint64_t> first(
            avi_.chunks.begin(),
            avi_.chunks.begin() + std::min<size_t>(avi_.mainFrames, avi_.chunks.size()));
        if (avi_.oldIndex != first) Fault("idx1 is not the list of the first segment's frames");
        Sound();
    }

  private:
    void Fault(const std::string& text) {
        if (avi_.fault.empty()) avi_.fault = text;
    }

    uint64_t Number(uint64_t at, int bytes) {
        std::byte data[8] = {};
        if (store_.ReadAt(at, std::span(data).first(static_cast<size_t>(bytes))) !=
            tavo::IoResult::Ok) {
            Fault("the file ends too early");
        }
        uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) value |= std::to_integer<uint64_t>(data[i]) << 8 * i;
        return value;
    }
    uint32_t U32(uint64_t at) { return static_cast<uint32_t>(Number(at, 4)); }

    std::string Code(uint64_t at) {
        std::string text;
        for (int i = 0; i < 4; ++i)
            text += static_cast<char>(Number(at + static_cast<uint64_t>(i), 1));
        return text;
    }

    // Calls take(code, data, size) for each chunk; they must fill the range exactly.
    template <typename Take>
    void Chunks(uint64_t at, uint64_t end, Take take) {
        while (at < end && avi_.fault.empty()) {
            const uint32_t size = U32(at + 4);
            take(Code(at), at + 8, size);
            at += 8 + ((uint64_t{size} + 1) & ~uint64_t{1});
        }
        if (at != end) Fault("chunks do not fill their parent");
    }

    uint64_t Riff(uint64_t at) {
        const uint64_t size = U32(at + 4);
        const bool first = at == 0;
        if (Code(at) != "RIFF" || Code(at + 8) != (first ? "AVI " : "AVIX")) Fault("no RIFF chunk");
        avi_.segmentStarts.push_back(at);
        avi_.longestSegment = std::max(avi_.longestSegment, size + 8);
        Chunks(at + 12, at + 8 + size,
               [&](const std::string& code, uint64_t data, uint32_t length) {
                   const std::string kind = code == "LIST" ? Code(data) : "";
                   if (kind == "hdrl" && first) return Header(data + 4, data + length);
                   if (kind == "movi") return Movie(data, data + length);
                   if (code == "idx1" && first) return OldIndex(data, length);
                   if (code == "JUNK" && first && !avi_.oldIndex.empty()) return;
                   Fault("unexpected chunk " + code + kind);
               });
        return at + 8 + size;
    }

    void Header(uint64_t at, uint64_t end) {
        Chunks(at, end, [&](const std::string& code, uint64_t data, uint32_t length) {
            if (code == "avih") {
                avi_.mainFlags = U32(data + 12);
                avi_.mainFrames = U32(data + 16);
                streams_ = U32(data + 24);
                if (length != 56 || streams_ < 1 || streams_ > 2) Fault("avih");
            } else if (code == "LIST" && Code(data) == "strl" && superIndex_ == 0) {
                Chunks(data + 4, data + length,
                       [&](const std::string& c, uint64_t d, uint32_t l) { Stream(c, d, l); });
            } else if (code == "LIST" && Code(data) == "strl" && streams_ == 2) {
                Chunks(data + 4, data + length,
                       [&](const std::string& c, uint64_t d, uint32_t l) { SoundStream(c, d, l); });
            } else if (code == "LIST" && Code(data) == "odml") {
                avi_.totalFrames = U32(data + 12);
            } else {
                Fault("unexpected header chunk " + code);
            }
        });
    }

    void Stream(const std::string& code, uint64_t data, uint32_t length) {
        if (code == "strh") {
            if (length != 56 || Code(data) != "vids") Fault("strh");
            avi_.handler = Code(data + 4);
            avi_.scale = U32(data + 20);
            avi_.rate = U32(data + 24);
            avi_.streamFrames = U32(data + 32);
        } else if (code == "strf") {
            avi_.width = static_cast<int32_t>(U32(data + 4));
            avi_.height = static_cast<int32_t>(U32(data + 8));
            avi_.bitCount = static_cast<uint32_t>(Number(data + 14, 2));
            const uint32_t compression = U32(data + 16);
            avi_.compression = compression < 256
                                   ? std::string("#").append(std::to_string(compression))
                                   : Code(data + 16);
            avi_.imageSize = U32(data + 20);
            for (uint32_t at = 40; at < length; at += 4) avi_.masks.push_back(U32(data + at));
        } else if (code == "indx") {
            superIndex_ = data;
            superLength_ = length;
        } else if (code == "vprp") {
            avi_.displayAspect = U32(data + 20);
            if (length != 68 || U32(data + 32) != 1) Fault("vprp");
        } else {
            Fault("unexpected stream chunk " + code);
        }
    }

    void SoundStream(const std::string& code, uint64_t data, uint32_t length) {
        if (code == "strh") {
            if (length != 56 || Code(data) != "auds" || U32(data + 28) != 0) Fault("sound: strh");
            blockBytes_ = U32(data + 44);
            if (blockBytes_ == 0 || U32(data + 20) != blockBytes_) Fault("sound: scale");
            bytesPerSecond_ = U32(data + 24);
            avi_.soundBlocks = U32(data + 32);
        } else if (code == "strf") {
            avi_.soundTag = static_cast<uint32_t>(Number(data, 2));
            avi_.channels = static_cast<uint32_t>(Number(data + 2, 2));
            avi_.soundRate = U32(data + 4);
            avi_.soundBits = static_cast<uint32_t>(Number(data + 14, 2));
            if (length != 18 || U32(data + 8) != bytesPerSecond_) Fault("sound: strf");
            if (Number(data + 12, 2) != blockBytes_) Fault("sound: block");
            if (avi_.soundRate * blockBytes_ != bytesPerSecond_) Fault("sound: rate");
            if (avi_.channels * avi_.soundBits != 8 * blockBytes_) Fault("sound: bits");
        } else if (code == "indx") {
            soundSuperIndex_ = data;
            soundSuperLength_ = length;
        } else {
            Fault("unexpected stream chunk " + code);
        }
    }

    void SoundChunk(uint64_t data, uint32_t length) {
        if (streams_ != 2 || avi_.frames.empty() || length == 0 || length % blockBytes_ != 0) {
            Fault("unexpected sound");
        }
        avi_.soundChunks.push_back(data);
        avi_.framesBefore.push_back(static_cast<uint32_t>(avi_.frames.size()));
        const size_t before = avi_.sound.size();
        avi_.sound.resize(before + length);
        if (store_.ReadAt(data, std::span(avi_.sound).subspan(before)) != tavo::IoResult::Ok) {
            Fault("the file ends too early");
        }
    }

    void Sound() {
        if (streams_ != 2) return;
        SuperIndex(soundSuperIndex_, soundSuperLength_, true);
        if (avi_.openDmlSoundIndex != avi_.soundChunks) Fault("ix01 is not the list of the sound");
        std::vector<uint64_t> first;
        for (const uint64_t data : avi_.soundChunks) {
            if (avi_.segmentStarts.size() < 2 || data < avi_.segmentStarts[1])
                first.push_back(data);
        }
        if (avi_.oldSoundIndex != first) Fault("idx1 is not the list of the first segment's sound");
        if (uint64_t{avi_.soundBlocks} * blockBytes_ != avi_.sound.size()) Fault("sound: length");
    }

    void Movie(uint64_t list, uint64_t end) {
        indexes_.push_back(0);
        soundIndexes_.push_back(0);
        movies_.push_back(list);
        Chunks(list + 4, end, [&](const std::string& code, uint64_t data, uint32_t length) {
            if (code == "ix00") {
                indexes_.back() = data - 8;
                return;
            }
            if (code == "ix01" && streams_ == 2 && indexes_.back() != 0) {
                soundIndexes_.back() = data - 8;
                return;
            }
            if (code == "JUNK") return;
            if (code == "01wb" && indexes_.back() == 0) return SoundChunk(data, length);
            if (avi_.frameCode.empty()) avi_.frameCode = code;
            if (code != avi_.frameCode || indexes_.back() != 0) Fault("unexpected chunk " + code);
            avi_.chunks.push_back(data);
            if (length == 0 && !avi_.repeats.empty()) {
                ++avi_.repeats.back();
                return;
            }
            if (length != avi_.imageSize) Fault("a frame of another length");
            avi_.frames.push_back(data);
            avi_.repeats.push_back(0);
        });
    }

    void OldIndex(uint64_t data, uint32_t length) {
        uint32_t last = 0;
        for (uint32_t at = 0; at < length; at += 16) {
            const bool sound = streams_ == 2 && Code(data + at) == "01wb";
            if (Code(data + at) != avi_.frameCode && !sound) Fault("idx1: code");
            const uint32_t size = U32(data + at + 12);
            if (U32(data + at + 8) <= last) Fault("idx1: order");
            last = U32(data + at + 8);
            if (U32(data + at + 4) != (size != 0 ? 0x10 : 0)) Fault("idx1: not a key frame");
            if (size != U32(movies_.at(0) + U32(data + at + 8) + 4)) Fault("idx1: length");
            (sound ? avi_.oldSoundIndex : avi_.oldIndex)
                .push_back(movies_.at(0) + U32(data + at + 8) + 8);
        }
    }

    void SuperIndex(uint64_t super, uint32_t superLength, bool sound) {
        const std::vector<uint64_t>& indexes = sound ? soundIndexes_ : indexes_;
        const uint32_t used = U32(super + 4);
        if (Number(super, 2) != 4 || Number(super + 2, 2) != 0) Fault("indx: kind");
        if (sound && Code(super + 8) != "01wb") Fault("indx: code");
        if (used != indexes.size() || superLength < 24 + used * 16) return Fault("indx: entries");
        for (uint32_t i = 0; i < used; ++i) {
            const uint64_t entry = super + 24 + i * 16;
            const uint64_t chunk = Number(entry, 8);
            if (chunk != indexes[i] || Code(chunk) != (sound ? "ix01" : "ix00")) {
                return Fault("indx: offset");
            }
            if (U32(entry + 8) != U32(chunk + 4) + 8) Fault("indx: length");
            const uint64_t bytes = SegmentIndex(chunk + 8, sound);
            if (U32(entry + 12) != (sound ? bytes / blockBytes_ : U32(chunk + 12))) {
                Fault("indx: duration");
            }
        }
    }

    // Returns the bytes of its chunks.
    uint64_t SegmentIndex(uint64_t data, bool sound) {
        std::vector<uint64_t>& found = sound ? avi_.openDmlSoundIndex : avi_.openDmlIndex;
        const std::string code = sound ? "01wb" : avi_.frameCode;
        if (Number(data, 2) != 2 || Number(data + 2, 2) != 0x100) Fault("ix00: kind");
        if (Code(data + 8) != code && U32(data + 4) != 0) Fault("ix00: code");
        const uint64_t base = Number(data + 12, 8);
        uint64_t bytes = 0;
        for (uint32_t i = 0; i < U32(data + 4); ++i) {
            found.push_back(base + U32(data + 24 + i * 8));
            const uint32_t size = U32(found.back() - 4);
            if (U32(data + 28 + i * 8) != (size != 0 ? size : 0x80000000)) Fault("ix00: length");
            bytes += size;
        }
        return bytes;
    }

    tavo::ByteStore& store_;
    CheckedAvi& avi_;
    std::vector<uint64_t> indexes_;
    std::vector<uint64_t> soundIndexes_;
    uint32_t streams_ = 0;
    uint32_t blockBytes_ = 0;
    uint32_t bytesPerSecond_ = 0;
    uint64_t soundSuperIndex_ = 0;
    uint32_t soundSuperLength_ = 0;
    std::vector<uint64_t> movies_;
    uint64_t superIndex_ = 0;
    uint32_t superLength_ = 0;
};

}  // namespace

CheckedAvi CheckAvi(tavo::ByteStore& store) {
    CheckedAvi avi;
    Checker(store, avi).Run();
    return avi;
}

}  // namespace tavo_test
