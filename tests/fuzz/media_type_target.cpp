// A header of settings and GUIDs, then the format block of a media type. A type that passes the
// tests must describe a picture that can be scaled, and the output type that is made of it must
// pass them too.

#include <cstdlib>
#include <cstring>

#include "filter/output_type.h"
#include "filter/type_picture.h"
#include "filter/type_test.h"
#include "picture/subtype.h"
#include "tests/fuzz/fuzz_input.h"

using namespace tavo;

namespace tavo_test {
namespace {

GUID TakeMajorType(FuzzInput& input) { return input.Below(16) == 15 ? GUID_NULL : MEDIATYPE_Video; }

GUID TakeSubtype(FuzzInput& input) {
    const auto formats = AllPictureFormats();
    const size_t choice = input.Take<uint8_t>() % (formats.size() + 1);
    if (choice < formats.size()) return SubtypeOf(formats[choice]);
    GUID any = MEDIATYPE_Video;
    any.Data1 = input.Take<uint32_t>();
    return any;
}

GUID TakeFormatType(FuzzInput& input) {
    constexpr GUID kFormatTypes[] = {FORMAT_VideoInfo, FORMAT_VideoInfo2, GUID_NULL};
    return kFormatTypes[input.Below(3)];
}

// A block of exactly its bytes. A length without a block comes up too.
CMediaType TakeType(FuzzInput& input) {
    CMediaType type;
    type.majortype = TakeMajorType(input);
    type.subtype = TakeSubtype(input);
    type.formattype = TakeFormatType(input);
    const FuzzBytes block = input.TakeBytes(256);
    if (!block.empty()) {
        Require(type.AllocFormatBuffer(static_cast<ULONG>(block.size())) != nullptr);
        std::memcpy(type.pbFormat, block.data(), block.size());
    }
    return type;
}

// What the filter has set: settings, and what the connection left behind.
struct Settings {
    int videoType;
    int pixelFormat;
    OutputSize size;
    int32_t bitsPerPixel;  // 0: those of the type
    REFERENCE_TIME frameDuration;
};

Settings TakeSettings(FuzzInput& input) {
    Settings settings;
    settings.videoType = input.Take<int8_t>();
    settings.pixelFormat = input.Take<int8_t>();
    const bool isAnySize = input.Below(2);
    settings.size.width = isAnySize ? input.Take<int32_t>() : input.Take<uint8_t>();
    settings.size.height = isAnySize ? input.Take<int32_t>() : input.Take<uint8_t>();
    settings.bitsPerPixel = input.Below(4) == 3 ? input.Take<uint16_t>() : 0;
    settings.frameDuration = input.Take<int32_t>();
    return settings;
}

// A type's own text of the format block, beyond what the filter writes.
bool HasSameGuids(const CMediaType& a, const CMediaType& b) {
    return a.majortype == b.majortype && a.subtype == b.subtype && a.formattype == b.formattype;
}

void CheckOffer(const CMediaType& input, const Picture& source, const Settings& settings) {
    CMediaType offer(input);
    OutputWishes wishes = {source, settings.bitsPerPixel, settings.size, settings.frameDuration};
    if (wishes.bitsPerPixel == 0) wishes.bitsPerPixel = source.bitsPerPixel;
    OutputSize size = {-1, -1};
    const HRESULT built = BuildOutputType(wishes, &offer, &size);
    Require(built == S_OK || built == E_INVALIDARG);
    Require(HasSameGuids(offer, input) && offer.cbFormat >= input.cbFormat);
    if (built != S_OK) return;
    Require(PassesSettings(offer, settings.videoType, settings.pixelFormat));
    if (!source.format) {
        Require(size.width == -1 && size.height == -1);
        return;
    }
    Require(IsWellFormed(offer, IsUsableOutput));
    const Picture output = ReadPicture(offer);
    Require(IsUsableOutput(output) && KernelBytes(output) <= FrameBytes(output));
    Require(size.width == output.width && size.height == std::abs(output.height));
    const VideoHeader header = LocateVideoHeader(offer);
    Require(header.target->right == wishes.size.width || wishes.size.width == 0);
    Require(header.bitmap->biSizeImage == offer.GetSampleSize());
    Require(header.bitmap->biSizeImage <= FrameBytes(output));
    if (settings.frameDuration > 0) {
        Require(*header.averageTimePerFrame == settings.frameDuration);
    }
}

}  // namespace

void FuzzMediaType(FuzzBytes bytes) {
    FuzzInput input(bytes);
    const Settings settings = TakeSettings(input);
    const CMediaType type = TakeType(input);
    const CMediaType before(type);
    const Picture source = ReadSourcePicture(type);
    const bool isAccepted = PassesSettings(type, settings.videoType, settings.pixelFormat) &&
                            IsWellFormed(type, IsUsablePicture);
    const VideoHeader header = LocateVideoHeader(type);
    Require(!LeavesLayoutOpen(type) || (header && header.bitmap->biSizeImage == 0));
    Require(type == before);
    if (!isAccepted || !header) return;
    if (source.format) Require(IsUsablePicture(source));
    CheckOffer(type, source, settings);
}

}  // namespace tavo_test
