// Converts media types into formats of sound.

#pragma once

#include <optional>

#include "host/avi/sound_format.h"
#include "streams.h"

namespace tavo {

// The sound that a type describes. Nothing unless it is uncompressed, in whole numbers of 8 to 32
// bits or floating point, in a complete WAVEFORMATEX or WAVEFORMATEXTENSIBLE.
std::optional<SoundFormat> ReadSoundType(const AM_MEDIA_TYPE& type);

// The header in a format block; null for other or short blocks.
const WAVEFORMATEX* WaveHeaderOf(const AM_MEDIA_TYPE& type);

}  // namespace tavo
