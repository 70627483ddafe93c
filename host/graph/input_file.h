// The input: whether it can be read, what it is, and a reader of our own for it if there is one.

#pragma once

#include <memory>
#include <string>

#include "host/avi/media_probe.h"
#include "host/avi/raw_movie.h"

namespace tavo {

struct InputFile {
    std::wstring path;
    MediaFacts facts;
    // Null unless the file is an AVI that the program can read itself.
    std::shared_ptr<RawMovie> movie;

    std::wstring Name() const { return L"\"" + path + L"\""; }
    bool IsCutOff() const { return facts.cutOff || (movie && movie->reader.IsCutOff()); }
};

// Nothing when there may be a video in it, else one line for the user.
std::wstring OpenInput(const std::wstring& path, InputFile& input);

// Why the platform found no way to decode it.
std::wstring WhyNotDecodedHere(const InputFile& input);

}  // namespace tavo
