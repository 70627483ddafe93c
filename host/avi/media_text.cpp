// Texts for the facts about a file.

#include "host/avi/media_text.h"

#include <string_view>

namespace tavo {
namespace {

using std::string_view;
using std::wstring;

struct Codec {
    string_view code;  // prefix of the name in the file
    const wchar_t* text;
    const wchar_t* package;  // Debian's, of GStreamer
};

constexpr wchar_t kGood[] = L"gstreamer1.0-plugins-good";
constexpr wchar_t kBad[] = L"gstreamer1.0-plugins-bad";
constexpr wchar_t kUgly[] = L"gstreamer1.0-plugins-ugly";
constexpr wchar_t kLibav[] = L"gstreamer1.0-libav";

constexpr Codec kCodecs[] = {
    {"avc1", L"H.264", kLibav},
    {"avc3", L"H.264", kLibav},
    {"H264", L"H.264", kLibav},
    {"V_MPEG4/ISO/AVC", L"H.264", kLibav},
    {"hvc1", L"H.265", kLibav},
    {"hev1", L"H.265", kLibav},
    {"V_MPEGH/ISO/HEVC", L"H.265", kLibav},
    {"av01", L"AV1", kBad},
    {"V_AV1", L"AV1", kBad},
    {"vp08", L"VP8", kGood},
    {"V_VP8", L"VP8", kGood},
    {"VP80", L"VP8", kGood},
    {"vp09", L"VP9", kGood},
    {"V_VP9", L"VP9", kGood},
    {"mp4v", L"MPEG-4 video", kLibav},
    {"V_MPEG4/ISO", L"MPEG-4 video", kLibav},
    {"XVID", L"MPEG-4 video", kLibav},
    {"DX50", L"MPEG-4 video", kLibav},
    {"FMP4", L"MPEG-4 video", kLibav},
    {"V_MPEG2", L"MPEG-2 video", kLibav},
    {"MJPG", L"Motion JPEG", kGood},
    {"jpeg", L"Motion JPEG", kGood},
    {"dvsd", L"DV", kLibav},
    {"ap", L"ProRes", kLibav},
    {"theora", L"Theora", nullptr},
};

const Codec* FindCodec(const std::string& codec) {
    for (const Codec& row : kCodecs) {
        if (codec.rfind(row.code, 0) == 0) return &row;
    }
    return nullptr;
}

const wchar_t* ReaderPackage(MediaKind kind) {
    switch (kind) {
        case MediaKind::Avi:
        case MediaKind::Mp4:
        case MediaKind::Matroska:
        case MediaKind::Flv: return kGood;
        case MediaKind::MpegTs:
        case MediaKind::MpegPs: return kBad;
        case MediaKind::Asf: return kUgly;
        default: return nullptr;
    }
}

const wchar_t* KindText(MediaKind kind) {
    switch (kind) {
        case MediaKind::Avi: return L"AVI";
        case MediaKind::Mp4: return L"MP4";
        case MediaKind::Matroska: return L"Matroska";
        case MediaKind::Ogg: return L"Ogg";
        case MediaKind::Flv: return L"Flash video";
        case MediaKind::Asf: return L"Windows Media";
        case MediaKind::MpegTs: return L"MPEG transport stream";
        case MediaKind::MpegPs: return L"MPEG program stream";
        case MediaKind::Unknown:
        case MediaKind::Text:
        case MediaKind::Picture:
        case MediaKind::Sound: break;
    }
    return L"";
}

// The common name, or the one in the file.
wstring CodecText(const std::string& codec) {
    if (const Codec* row = FindCodec(codec)) return row->text;
    wstring text;
    for (const char c : codec) text += c > 0x20 && c < 0x7F ? static_cast<wchar_t>(c) : L'?';
    return text;
}

// The packages of the demuxer and the decoder, joined by " and "; empty when unknown.
wstring PackagesFor(const MediaFacts& facts, const wchar_t* ending) {
    const wchar_t* const reader = ReaderPackage(facts.kind);
    const Codec* const codec = FindCodec(facts.codec);
    const wchar_t* decoder = codec != nullptr ? codec->package : nullptr;
    // One package has nearly all other decoders.
    if (reader != nullptr && codec == nullptr) decoder = kLibav;
    wstring text;
    if (reader != nullptr) text = reader + wstring(ending);
    if (decoder != nullptr && decoder != reader) {
        text += (text.empty() ? L"" : L" and ") + wstring(decoder) + ending;
    }
    return text;
}

}  // namespace

wstring WhyNoVideo(const wstring& name, const MediaFacts& facts) {
    if (facts.kind == MediaKind::Mp4 && !facts.hasHeaders) {
        return name + L" is cut off: the part of an MP4 file that says what is in it is missing";
    }
    if (!facts.hasHeaders) return {};
    if (!facts.hasVideo) {
        return name +
               (facts.hasSound ? L" has no video in it, only sound" : L" has no video in it");
    }
    return facts.isEmpty ? name + L" has a video without frames" : wstring();
}

wstring WhyNotDecoded(const wstring& name, const MediaFacts& facts, Platform platform) {
    switch (facts.kind) {
        case MediaKind::Text: return name + L" is a text, no media file";
        case MediaKind::Picture: return name + L" is a picture, no video";
        case MediaKind::Unknown: return name + L" is no media file of a kind that is known here";
        default: break;
    }
    const wstring codec = CodecText(facts.codec);
    wstring text = L"nothing on this system decodes the " + (codec.empty() ? L"" : codec + L" ") +
                   L"video in " + name + L" (" + KindText(facts.kind) + L")";
    if (facts.truncated) text += L", which is cut off";
    if (platform == Platform::Windows) {
        return text + L"; it takes a splitter and a decoder for DirectShow";
    }
    const wstring packages =
        PackagesFor(facts, platform == Platform::Wine32 ? L":i386" : L":amd64");
    return packages.empty() ? text : text + L"; on Debian, Wine gets that from " + packages;
}

wstring WhyNoFrames(const wstring& name, const MediaFacts& facts) {
    if (facts.kind == MediaKind::Picture) return name + L" is a picture, no video";
    return name + L" gave no frame" + (facts.truncated ? L": it is cut off" : L"");
}

}  // namespace tavo
