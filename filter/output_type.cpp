#include "filter/output_type.h"

#include <cstdlib>
#include <cstring>

#include "filter/type_picture.h"
#include "picture/subtype.h"

using tavo::FormatGroup;
using tavo::Picture;

namespace {

// Makes an RGB565 type one of BI_BITFIELDS. The colour masks that this announces are written unless
// the type has some already.
HRESULT AnnounceRgb565Masks(CMediaType* type) {
    BITMAPINFOHEADER* const bitmap = LocateVideoHeader(*type).bitmap;
    constexpr DWORD kMasks[3] = {0xf800, 0x07e0, 0x001f};
    const auto masksAt = static_cast<ULONG>(reinterpret_cast<BYTE*>(bitmap) - type->Format() +
                                            sizeof(BITMAPINFOHEADER));
    const bool hasRoom = type->FormatLength() >= masksAt + sizeof(kMasks);
    if (hasRoom && bitmap->biCompression == BI_BITFIELDS) return S_OK;
    bitmap->biCompression = BI_BITFIELDS;
    BYTE* const block =
        hasRoom ? type->Format() : type->ReallocFormatBuffer(masksAt + sizeof(kMasks));
    if (!block) return E_OUTOFMEMORY;
    std::memcpy(block + masksAt, kMasks, sizeof(kMasks));
    return S_OK;
}

}  // namespace

HRESULT BuildOutputType(const OutputWishes& wishes, CMediaType* type, OutputSize* size) {
    const VideoHeader header = LocateVideoHeader(*type);
    if (!header) return E_INVALIDARG;
    Picture output;
    output.format = tavo::FormatOfSubtype(*type->Subtype());
    output.width = wishes.size.width ? wishes.size.width : wishes.source.width;
    output.height = wishes.size.height ? wishes.size.height : wishes.source.height;
    output.bitsPerPixel = wishes.bitsPerPixel;

    *header.source = *header.target = RECT{0, 0, output.width, output.height};
    WriteFrameDuration(*type, wishes.frameDuration);
    if (!output.format) return S_OK;

    if (!IsUsablePicture(output)) return E_INVALIDARG;
    // Deliberate: the rows are those of the width before it is rounded.
    const int64_t stride = RowStride(output.format->group, output.width, output.bitsPerPixel);
    if (output.format->group == FormatGroup::Packed422) output.width += output.width & 1;
    if (!IsUsableOutput(output)) return E_INVALIDARG;
    header.bitmap->biBitCount = static_cast<WORD>(output.bitsPerPixel);
    header.bitmap->biWidth = output.width;
    header.bitmap->biHeight = output.height;
    header.bitmap->biSizeImage = static_cast<DWORD>(stride * std::abs(output.height));
    type->SetSampleSize(header.bitmap->biSizeImage);
    *size = {output.width, std::abs(output.height)};
    if (!output.format->writesCompression) return S_OK;
    if (output.format->compression == tavo::kCompressionBitFields) return AnnounceRgb565Masks(type);
    header.bitmap->biCompression = output.format->compression;
    return S_OK;
}

void WriteFrameDuration(const CMediaType& type, REFERENCE_TIME duration) {
    const VideoHeader header = LocateVideoHeader(type);
    if (header && duration > 0) *header.averageTimePerFrame = duration;
}
