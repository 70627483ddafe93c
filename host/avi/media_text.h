// What can be said of a media file that gives no video.

#pragma once

#include <string>

#include "host/avi/media_probe.h"

namespace tavo {

// What no decoder can change: the file has no video to decode. Empty when it may have one. `name`
// is how the file is called in the text.
std::wstring WhyNoVideo(const std::wstring& name, const MediaFacts& facts);

// Where decoders come from.
enum class Platform { Windows, Wine32, Wine64 };

// Why a file that the platform found no way to decode was not decoded, and what would help.
std::wstring WhyNotDecoded(const std::wstring& name, const MediaFacts& facts, Platform platform);

// A file that gave no frame though there was a way to decode it.
std::wstring WhyNoFrames(const std::wstring& name, const MediaFacts& facts);

}  // namespace tavo
