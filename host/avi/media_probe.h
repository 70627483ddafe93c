// Looks into a media file before the platform does: its kind, whether it is complete, and what
// decoders do not tell. Errors can say more with that.

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
    Sound,  // kinds that hold sound only
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
    bool truncated = false;   // the file ends too early
    bool hasHeaders = false;  // the facts below are from the file
    bool hasVideo = false;
    bool hasSound = false;
    bool isEmpty = false;     // no frames in its video
    std::string codec;        // of the first video, as the file names it: "avc1", "V_VP9"
    AspectRatio pixelAspect;  // of the first video; unknown also when pixels are square
    int rotation = 0;         // degrees clockwise for display: 0, 90, 180, 270
    // How much earlier the first video is shown than its frames are stamped, and the same of the
    // first sound, in units of 100 ns.
    int64_t videoLead = 0;
    int64_t soundLead = 0;

    // Keeps the codec of the first video.
    void AddVideo(const std::string& name) {
        if (!hasVideo) codec = name;
        hasVideo = true;
    }
};

// Reads little of the file. Nothing in it is trusted.
MediaFacts ProbeMedia(ByteStore& store);

}  // namespace tavo
