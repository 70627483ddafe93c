// Describes media types.

#include "host/graph/type_text.h"

#include "host/avi/frame_rate.h"
#include "host/filters/sound_type.h"
#include "host/filters/video_type.h"
#include "host/graph/number_text.h"

namespace tavo {
namespace {

std::wstring GuidText(const GUID& guid) {
    wchar_t text[64] = {};
    return StringFromGUID2(guid, text, 64) > 0 ? text : L"?";
}

std::wstring CodeText(uint32_t code) {
    std::wstring text;
    for (int shift = 0; shift < 32; shift += 8) {
        const uint32_t c = code >> shift & 0xFF;
        if (c < 0x20 || c > 0x7E) return {};
        text += static_cast<wchar_t>(c);
    }
    return text;
}

std::wstring MajorText(const GUID& major) {
    if (major == MEDIATYPE_Video) return L"video";
    if (major == MEDIATYPE_Audio) return L"audio";
    if (major == MEDIATYPE_Stream) return L"bytes";
    return GuidText(major);
}

std::wstring WaveText(uint32_t channels, uint32_t rate, uint32_t bits) {
    return L", " + std::to_wstring(channels) + (channels == 1 ? L" channel, " : L" channels, ") +
           std::to_wstring(rate) + L" Hz, " + std::to_wstring(bits) + L" bits";
}

}  // namespace

std::wstring SubtypeText(const GUID& subtype) {
    if (const auto video = VideoFormatOf(subtype)) {
        const bool i420 = video->compression == kCompressionI420;
        return i420 ? L"I420" : NameOf(video->format);
    }
    if (subtype == MEDIASUBTYPE_RGB32) return L"RGB32";
    if (subtype == MEDIASUBTYPE_Avi) return L"Avi";
    if (subtype == MEDIASUBTYPE_PCM) return L"PCM";
    if (subtype == MEDIASUBTYPE_IEEE_FLOAT) return L"float";
    if (subtype == GUID_NULL) return L"any";
    if (IsCodeSubtype(subtype)) {
        const std::wstring code = CodeText(subtype.Data1);
        if (!code.empty()) return code;
    }
    return GuidText(subtype);
}

std::wstring SoundText(const SoundFormat& sound) {
    return (sound.isFloat ? L"float" : L"PCM") + WaveText(sound.channels, sound.rate, sound.bits);
}

std::wstring DescribeType(const AM_MEDIA_TYPE& type) {
    std::wstring text = MajorText(type.majortype) + L" " + SubtypeText(type.subtype);
    if (const BITMAPINFOHEADER* const bitmap = BitmapHeaderOf(type)) {
        text += L", " + std::to_wstring(bitmap->biWidth) + L" x " +
                std::to_wstring(bitmap->biHeight) + L", " + std::to_wstring(bitmap->biBitCount) +
                L" bits";
        const REFERENCE_TIME duration = FrameDurationOf(type);
        if (duration > 0) text += L", " + NumberText(RateFromDuration(duration).Fps()) + L" fps";
        text += type.formattype == FORMAT_VideoInfo ? L" (VideoInfo)" : L" (VideoInfo2)";
    }
    if (const WAVEFORMATEX* const wave = WaveHeaderOf(type)) {
        text += WaveText(wave->nChannels, wave->nSamplesPerSec, wave->wBitsPerSample);
    }
    return text;
}

}  // namespace tavo
