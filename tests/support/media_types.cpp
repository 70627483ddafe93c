// Owning media type and the builder of video types.
#include "tests/support/media_types.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace tavo_test {
namespace {

constexpr DWORD Code(char a, char b, char c, char d) {
    return static_cast<DWORD>(static_cast<unsigned char>(a)) |
           static_cast<DWORD>(static_cast<unsigned char>(b)) << 8 |
           static_cast<DWORD>(static_cast<unsigned char>(c)) << 16 |
           static_cast<DWORD>(static_cast<unsigned char>(d)) << 24;
}

// Depth for a bitmap header and the subsampling of chroma planes; 0 for packed formats.
struct Layout {
    WORD bitCount;
    DWORD compression;
    int chromaX;
    int chromaY;
};

std::optional<Layout> LayoutOf(const GUID& subtype) {
    if (subtype == MEDIASUBTYPE_RGB8) return Layout{8, BI_RGB, 0, 0};
    if (subtype == MEDIASUBTYPE_RGB555) return Layout{16, BI_RGB, 0, 0};
    if (subtype == MEDIASUBTYPE_RGB565) return Layout{16, BI_BITFIELDS, 0, 0};
    if (subtype == MEDIASUBTYPE_RGB24) return Layout{24, BI_RGB, 0, 0};
    if (subtype == MEDIASUBTYPE_RGB32) return Layout{32, BI_RGB, 0, 0};
    switch (subtype.Data1) {
        case Code('Y', 'U', 'Y', '2'):
        case Code('U', 'Y', 'V', 'Y'):
        case Code('Y', 'V', 'Y', 'U'):
        case Code('Y', 'U', 'Y', 'V'): return Layout{16, subtype.Data1, 0, 0};
        case Code('Y', 'V', '1', '2'):
        case Code('I', '4', '2', '0'):
        case Code('I', 'Y', 'U', 'V'): return Layout{12, subtype.Data1, 2, 2};
        case Code('Y', 'V', 'U', '9'): return Layout{9, subtype.Data1, 4, 4};
    }
    return std::nullopt;
}

void FillBitmapHeader(const VideoSpec& spec, BITMAPINFOHEADER& header) {
    const std::optional<Layout> layout = LayoutOf(spec.subtype);
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = spec.width;
    header.biHeight = spec.height;
    header.biPlanes = 1;
    header.biBitCount = spec.bitCount.value_or(layout ? layout->bitCount : 24);
    header.biCompression = spec.compression.value_or(layout ? layout->compression : BI_RGB);
    header.biSizeImage = spec.sizeImage.value_or(FrameBytes(spec.subtype, spec.width, spec.height));
    header.biClrUsed = spec.paletteEntries;
}

// What VIDEOINFOHEADER and VIDEOINFOHEADER2 have in common.
template <typename Header>
BITMAPINFOHEADER& FillHeader(const VideoSpec& spec, Header& header) {
    const RECT whole = {0, 0, 0, 0};
    header.rcSource = spec.source.value_or(whole);
    header.rcTarget = spec.target.value_or(whole);
    header.AvgTimePerFrame = spec.timePerFrame;
    FillBitmapHeader(spec, header.bmiHeader);
    return header.bmiHeader;
}

std::vector<BYTE> FormatBlock(const VideoSpec& spec) {
    const bool second = spec.formattype == FORMAT_VideoInfo2;
    const size_t headerBytes = second ? sizeof(VIDEOINFOHEADER2) : sizeof(VIDEOINFOHEADER);
    std::vector<BYTE> block(headerBytes + 3 * sizeof(DWORD) + spec.paletteEntries * 4);
    BITMAPINFOHEADER* bitmap;
    if (second) {
        auto& header = *reinterpret_cast<VIDEOINFOHEADER2*>(block.data());
        bitmap = &FillHeader(spec, header);
        header.dwPictAspectRatioX = spec.aspectX;
        header.dwPictAspectRatioY = spec.aspectY;
        header.dwInterlaceFlags = spec.interlaceFlags;
    } else {
        bitmap = &FillHeader(spec, *reinterpret_cast<VIDEOINFOHEADER*>(block.data()));
    }
    size_t extra = spec.paletteEntries * 4;
    if (bitmap->biCompression == BI_BITFIELDS) {
        const DWORD masks[3] = {0xF800, 0x07E0, 0x001F};
        std::memcpy(block.data() + headerBytes, masks, sizeof masks);
        extra = std::max(extra, sizeof masks);
    }
    block.resize(headerBytes + extra);
    return block;
}

}  // namespace

MediaType::MediaType(const AM_MEDIA_TYPE& type) : type_(type) {
    if (type.cbFormat && type.pbFormat) {
        type_.pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(type.cbFormat));
        if (!type_.pbFormat) std::abort();
        std::memcpy(type_.pbFormat, type.pbFormat, type.cbFormat);
    } else {
        type_.pbFormat = nullptr;
    }
    if (type_.pUnk) type_.pUnk->AddRef();
}

MediaType::MediaType(MediaType&& other) noexcept : type_(other.type_) { other.type_ = {}; }

MediaType& MediaType::operator=(MediaType other) noexcept {
    std::swap(type_, other.type_);
    return *this;
}

void MediaType::Reset() {
    CoTaskMemFree(type_.pbFormat);
    if (type_.pUnk) type_.pUnk->Release();
    type_ = {};
}

AM_MEDIA_TYPE* MediaType::Put() {
    Reset();
    return &type_;
}

VIDEOINFOHEADER* MediaType::Video() const {
    const bool fits = type_.formattype == FORMAT_VideoInfo && type_.pbFormat &&
                      type_.cbFormat >= sizeof(VIDEOINFOHEADER);
    return fits ? reinterpret_cast<VIDEOINFOHEADER*>(type_.pbFormat) : nullptr;
}

VIDEOINFOHEADER2* MediaType::Video2() const {
    const bool fits = type_.formattype == FORMAT_VideoInfo2 && type_.pbFormat &&
                      type_.cbFormat >= sizeof(VIDEOINFOHEADER2);
    return fits ? reinterpret_cast<VIDEOINFOHEADER2*>(type_.pbFormat) : nullptr;
}

BITMAPINFOHEADER* MediaType::Bitmap() const {
    if (VIDEOINFOHEADER* video = Video()) return &video->bmiHeader;
    if (VIDEOINFOHEADER2* video = Video2()) return &video->bmiHeader;
    return nullptr;
}

bool MediaType::operator==(const MediaType& other) const {
    const AM_MEDIA_TYPE& a = type_;
    const AM_MEDIA_TYPE& b = other.type_;
    return a.majortype == b.majortype && a.subtype == b.subtype && a.formattype == b.formattype &&
           a.bFixedSizeSamples == b.bFixedSizeSamples &&
           a.bTemporalCompression == b.bTemporalCompression && a.lSampleSize == b.lSampleSize &&
           a.pUnk == b.pUnk && a.cbFormat == b.cbFormat &&
           (a.pbFormat == nullptr) == (b.pbFormat == nullptr) &&
           (!a.pbFormat || std::memcmp(a.pbFormat, b.pbFormat, a.cbFormat) == 0);
}

GUID FourCC(const char (&code)[5]) {
    return {Code(code[0], code[1], code[2], code[3]),
            0x0000,
            0x0010,
            {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

DWORD FrameBytes(const GUID& subtype, LONG width, LONG height) {
    const std::optional<Layout> layout = LayoutOf(subtype);
    if (!layout) return 0;
    const auto columns = static_cast<DWORD>(std::abs(width));
    const auto rows = static_cast<DWORD>(std::abs(height));
    if (layout->chromaX == 0) return (columns * layout->bitCount + 31) / 32 * 4 * rows;
    return columns * rows + 2 * (columns / layout->chromaX) * (rows / layout->chromaY);
}

MediaType MakeVideoType(const VideoSpec& spec) {
    std::vector<BYTE> block = FormatBlock(spec);
    const DWORD sizeImage =
        spec.sizeImage.value_or(FrameBytes(spec.subtype, spec.width, spec.height));
    block.resize(spec.formatBytes.value_or(static_cast<ULONG>(block.size())));
    AM_MEDIA_TYPE type = {};
    type.majortype = spec.majortype;
    type.subtype = spec.subtype;
    type.formattype = spec.formattype;
    type.bFixedSizeSamples = TRUE;
    type.lSampleSize = sizeImage;
    if (spec.absentFormat) {
        type.cbFormat = spec.formatBytes.value_or(0);
        return MediaType(type);
    }
    type.cbFormat = static_cast<ULONG>(block.size());
    type.pbFormat = block.empty() ? nullptr : block.data();
    return MediaType(type);
}

MediaType MakePartialType(const GUID& majortype, const GUID& subtype, const GUID& formattype) {
    AM_MEDIA_TYPE type = {};
    type.majortype = majortype;
    type.subtype = subtype;
    type.formattype = formattype;
    return MediaType(type);
}

void DeleteType(AM_MEDIA_TYPE* type) {
    if (!type) return;
    CoTaskMemFree(type->pbFormat);
    if (type->pUnk) type->pUnk->Release();
    CoTaskMemFree(type);
}

}  // namespace tavo_test
