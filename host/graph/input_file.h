// The input file: whether it can be read, what it is, and a reader for it if this program has one.

#pragma once

#include <memory>
#include <string>

#include "host/avi/media_probe.h"
#include "host/avi/raw_movie.h"
#include "host/graph/quoted.h"

namespace tavo {

struct InputFile {
    std::wstring path;
    MediaFacts facts;
    // Null unless the program can read the file itself.
    std::shared_ptr<RawMovie> movie;

    std::wstring Name() const { return Quoted(path); }
    bool IsTruncated() const { return facts.truncated || (movie && movie->reader.IsTruncated()); }
};

// Empty when the file may have video, else one line for the user.
std::wstring OpenInput(const std::wstring& path, InputFile& input);

// Why this platform found no way to decode it.
std::wstring WhyNotDecodedHere(const InputFile& input);

}  // namespace tavo
