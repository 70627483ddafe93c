// A look into a media file, ahead of the platform's own: what kind it is, whether it is whole, and
// what decoders do not tell. Says what went wrong better than they do.

#pragma once

#include <cstdint>
#include <string>

#include "host/avi/aspect_ratio.h"
#include "host/avi/byte_store.h"

namespace tavo {

enum class MediaKind {
    Unknown,
    Text,
    Picture,
    Sound,  // a kind of file that holds nothing else
    Avi,
    Mp4,
    Matroska,
    Ogg,
    Flv,
    Asf,
    MpegTs,
    MpegPs,
};

struct MediaFacts {
    MediaKind kind = MediaKind::Unknown;
    bool cutOff = false;      // ends before it should
    bool hasHeaders = false;  // what follows was told by the file
    bool hasVideo = false;
    bool hasSound = false;
    bool isEmpty = false;  // its video has no frames
    std::string codec;     // of the first video, as the file names it: "avc1", "V_VP9"
    AspectRatio pixel;     // of the first video; unknown when it is square or not told
    int rotation = 0;      // degrees clockwise, for showing it: 0, 90, 180, 270

    // The codec counts for the first video only.
    void AddVideo(const std::string& name) {
        if (!hasVideo) codec = name;
        hasVideo = true;
    }
};

// Reads little of the file. Nothing in it is trusted.
MediaFacts ProbeMedia(ByteStore& store);

}  // namespace tavo
