// Error texts for media files without usable video.

#pragma once

#include <string>

#include "host/avi/media_probe.h"

namespace tavo {

// Why no decoder can help: the file has no video. Empty when it may have one. `name` stands for the
// file in the text.
std::wstring WhyNoVideo(const std::wstring& name, const MediaFacts& facts);

// The platform that provides the decoders.
enum class Platform { Windows, Wine32, Wine64 };

// Why the platform found no way to decode the file, and what would help.
std::wstring WhyNotDecoded(const std::wstring& name, const MediaFacts& facts, Platform platform);

// The file was decoded and gave no frame.
std::wstring WhyNoFrames(const std::wstring& name, const MediaFacts& facts);

}  // namespace tavo
