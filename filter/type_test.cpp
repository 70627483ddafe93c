#include "filter/type_test.h"

#include "filter/type_picture.h"
#include "picture/subtype.h"
#include "settings/vantrel_settings.h"

using tavo::FormatGroup;
using tavo::Picture;

namespace {

bool IsVideoInfo(const CMediaType& type) { return *type.FormatType() == FORMAT_VideoInfo; }
bool IsVideoInfo2(const CMediaType& type) { return *type.FormatType() == FORMAT_VideoInfo2; }

bool PassesVideoType(const CMediaType& type, int videoType) {
    switch (videoType) {
        case VantrelTypeAuto: {
            if (IsVideoInfo(type)) return true;
            const tavo::PictureFormat* format = tavo::FormatOfSubtype(*type.Subtype());
            return IsVideoInfo2(type) && !(format && format->group == FormatGroup::Rgb);
        }
        case VantrelTypeMpeg1: return IsVideoInfo(type);
        case VantrelTypeMpeg2: return IsVideoInfo2(type);
        default: return true;  // Deliberate: an unknown code lifts the restriction.
    }
}

bool PassesPixelFormat(const CMediaType& type, int pixelFormat) {
    if (pixelFormat == VantrelFormatAuto) return tavo::FormatOfSubtype(*type.Subtype()) != nullptr;
    const GUID wanted = SubtypeOfSetting(pixelFormat);
    // Deliberate: an unknown code lifts the restriction.
    return wanted == GUID_NULL || wanted == *type.Subtype();
}

}  // namespace

bool PassesSettings(const CMediaType& type, int videoType, int pixelFormat) {
    return *type.Type() == MEDIATYPE_Video && PassesVideoType(type, videoType) &&
           PassesPixelFormat(type, pixelFormat);
}

bool IsWellFormed(const CMediaType& type, bool (*isUsable)(const Picture&)) {
    const bool claimsHeader = IsVideoInfo(type) || IsVideoInfo2(type);
    if (claimsHeader && !LocateVideoHeader(type)) return false;
    const Picture picture = ReadPicture(type);
    return !claimsHeader || !picture.format || isUsable(picture);
}
