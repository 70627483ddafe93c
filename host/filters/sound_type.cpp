// Reads audio media types.

#include "host/filters/sound_type.h"

#include <mmreg.h>

#include <cstring>

namespace tavo {
namespace {

constexpr WORD kPcm = 1;
constexpr WORD kFloat = 3;
constexpr WORD kExtensible = 0xFFFE;
// Beyond these, sizes could overflow.
constexpr WORD kMaxChannels = 64;
constexpr DWORD kMaxRate = 1'000'000;

// The tag of the samples; of an extensible header the one that its GUID begins with.
WORD TagOf(const AM_MEDIA_TYPE& type, const WAVEFORMATEX& wave) {
    if (wave.wFormatTag != kExtensible) return wave.wFormatTag;
    if (type.cbFormat < sizeof(WAVEFORMATEXTENSIBLE)) return 0;
    GUID samples = {};
    std::memcpy(&samples, type.pbFormat + offsetof(WAVEFORMATEXTENSIBLE, SubFormat),
                sizeof(samples));
    const bool isTag = IsEqualGUID(samples, FOURCCMap(samples.Data1)) && samples.Data1 <= 0xFFFF;
    return isTag ? static_cast<WORD>(samples.Data1) : WORD{0};
}

}  // namespace

const WAVEFORMATEX* WaveHeaderOf(const AM_MEDIA_TYPE& type) {
    const bool isWhole = type.formattype == FORMAT_WaveFormatEx && type.pbFormat != nullptr &&
                         type.cbFormat >= sizeof(WAVEFORMATEX);
    return isWhole ? reinterpret_cast<const WAVEFORMATEX*>(type.pbFormat) : nullptr;
}

std::optional<SoundFormat> ReadSoundType(const AM_MEDIA_TYPE& type) {
    const WAVEFORMATEX* const wave = WaveHeaderOf(type);
    if (type.majortype != MEDIATYPE_Audio || wave == nullptr) return std::nullopt;
    const WORD tag = TagOf(type, *wave);
    const WORD bits = wave->wBitsPerSample;
    const bool isWhole = tag == kPcm && bits >= 8 && bits <= 32 && bits % 8 == 0;
    const bool isFloat = tag == kFloat && (bits == 32 || bits == 64);
    if (!isWhole && !isFloat) return std::nullopt;
    const bool isSane = wave->nChannels > 0 && wave->nChannels <= kMaxChannels &&
                        wave->nSamplesPerSec > 0 && wave->nSamplesPerSec <= kMaxRate;
    if (!isSane) return std::nullopt;
    const SoundFormat sound = {wave->nChannels, wave->nSamplesPerSec, bits, isFloat};
    if (wave->nBlockAlign != sound.BlockBytes()) return std::nullopt;
    return sound;
}

}  // namespace tavo
