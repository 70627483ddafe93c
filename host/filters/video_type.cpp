// Reads and makes video media types.

#include "host/filters/video_type.h"

#include <dvdmedia.h>

#include <cstring>

#include "host/avi/frame_rate.h"
#include "picture/subtype.h"

namespace tavo {
namespace {

GUID SubtypeOf(const VideoFormat& video) {
    // I420 is no format of its own here.
    const PictureFormat* const format = FormatOfFourCc(video.compression);
    return SubtypeOf(format ? *format : InfoOf(video.format));
}

void FillBitmapHeader(const VideoFormat& video, BITMAPINFOHEADER& bitmap) {
    bitmap.biSize = sizeof(bitmap);
    bitmap.biWidth = video.width;
    bitmap.biHeight = video.height;
    bitmap.biPlanes = 1;
    bitmap.biBitCount = InfoOf(video.format).bitsPerPixel;
    bitmap.biCompression = video.compression;
    bitmap.biSizeImage = FrameSize(video).value_or(0);
}

// `Header` is VIDEOINFOHEADER or VIDEOINFOHEADER2; RGB565 is followed by its masks.
template <typename Header>
HRESULT FillBlock(const VideoType& video, CMediaType& type) {
    const bool masks = video.video.compression == kCompressionBitFields;
    const ULONG length = sizeof(Header) + (masks ? sizeof(kMasks565) : 0);
    BYTE* const block = type.AllocFormatBuffer(length);
    if (block == nullptr) return E_OUTOFMEMORY;
    Header header = {};
    const RECT all = {0, 0, video.video.width, static_cast<LONG>(RowCount(video.video.height))};
    header.rcSource = all;
    header.rcTarget = all;
    header.AvgTimePerFrame = video.frameDuration;
    if (video.frameDuration > 0) {
        const double bits = 8.0 * FrameSize(video.video).value_or(0) * kUnitsPerSecond /
                            static_cast<double>(video.frameDuration);
        header.dwBitRate = bits < 4294967295.0 ? static_cast<DWORD>(bits) : 0xFFFFFFFF;
    }
    FillBitmapHeader(video.video, header.bmiHeader);
    if constexpr (requires { header.dwPictAspectRatioX; }) {
        header.dwPictAspectRatioX = static_cast<DWORD>(all.right);
        header.dwPictAspectRatioY = static_cast<DWORD>(all.bottom);
    }
    std::memcpy(block, &header, sizeof(header));
    if (masks) std::memcpy(block + sizeof(header), kMasks565.data(), sizeof(kMasks565));
    return S_OK;
}

}  // namespace

bool IsCodeSubtype(const GUID& subtype) {
    return IsEqualGUID(subtype, FOURCCMap(subtype.Data1)) != FALSE;
}

std::optional<VideoFormat> VideoFormatOf(const GUID& subtype) {
    const PictureFormat* const format = FormatOfSubtype(subtype);
    if (!format) return std::nullopt;
    return VideoFormat{static_cast<PixelFormat>(format->setting), format->compression};
}

REFERENCE_TIME FrameDurationOf(const AM_MEDIA_TYPE& type) {
    // Both blocks have this field at the same offset.
    static_assert(offsetof(VIDEOINFOHEADER, AvgTimePerFrame) ==
                  offsetof(VIDEOINFOHEADER2, AvgTimePerFrame));
    const auto duration = reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat)->AvgTimePerFrame;
    return duration > 0 ? duration : 0;
}

const BITMAPINFOHEADER* BitmapHeaderOf(const AM_MEDIA_TYPE& type) {
    if (type.pbFormat == nullptr) return nullptr;
    if (type.formattype == FORMAT_VideoInfo && type.cbFormat >= sizeof(VIDEOINFOHEADER)) {
        return &reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat)->bmiHeader;
    }
    if (type.formattype == FORMAT_VideoInfo2 && type.cbFormat >= sizeof(VIDEOINFOHEADER2)) {
        return &reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat)->bmiHeader;
    }
    return nullptr;
}

std::optional<VideoType> ReadVideoType(const AM_MEDIA_TYPE& type) {
    const BITMAPINFOHEADER* const bitmap = BitmapHeaderOf(type);
    if (type.majortype != MEDIATYPE_Video || bitmap == nullptr) return std::nullopt;
    auto video = VideoFormatOf(type.subtype);
    if (!video) return std::nullopt;
    // LONG_MIN has no magnitude.
    if (bitmap->biHeight == LONG_MIN) return std::nullopt;
    video->width = bitmap->biWidth;
    video->height = bitmap->biHeight;
    if (InfoOf(video->format).group != FormatGroup::Rgb && video->height < 0) {
        video->height = -video->height;
    }
    if (!FrameSize(*video)) return std::nullopt;
    return VideoType{*video, FrameDurationOf(type)};
}

HRESULT MakeVideoType(const VideoType& video, FormatBlock block, CMediaType& type) {
    const GUID subtype = SubtypeOf(video.video);
    const bool info2 = block == FormatBlock::VideoInfo2;
    type.SetType(&MEDIATYPE_Video);
    type.SetSubtype(&subtype);
    type.SetFormatType(info2 ? &FORMAT_VideoInfo2 : &FORMAT_VideoInfo);
    type.SetSampleSize(FrameSize(video.video).value_or(0));
    type.SetTemporalCompression(FALSE);
    return info2 ? FillBlock<VIDEOINFOHEADER2>(video, type)
                 : FillBlock<VIDEOINFOHEADER>(video, type);
}

}  // namespace tavo
