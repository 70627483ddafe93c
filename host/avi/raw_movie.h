// An input file that the program can read itself: an AVI with uncompressed video.

#pragma once

#include "host/avi/avi_reader.h"
#include "host/avi/file_store.h"

namespace tavo {

struct RawMovie {
    FileStore file;
    AviReader reader;

    // In units of 100 ns.
    int64_t Duration() const { return FrameStart(reader.Rate(), reader.FrameCount()); }
};

}  // namespace tavo
