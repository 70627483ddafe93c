// Which media types the filter takes, and the one that it offers.

#include "filter/video_regulator.h"

#include <cstdlib>
#include <cstring>
#include <utility>

using tavo::FindPictureFormat;
using tavo::FormatGroup;
using tavo::LocateVideoHeader;
using tavo::Picture;
using tavo::ReadPicture;
using tavo::VideoHeader;

namespace {

bool IsVideoInfo(const CMediaType& type) { return *type.FormatType() == FORMAT_VideoInfo; }
bool IsVideoInfo2(const CMediaType& type) { return *type.FormatType() == FORMAT_VideoInfo2; }

bool PassesVideoType(const CMediaType& type, int videoType) {
    switch (videoType) {
        case VantrelTypeAuto: {
            if (IsVideoInfo(type)) return true;
            const tavo::PictureFormat* format = FindPictureFormat(*type.Subtype());
            return IsVideoInfo2(type) && !(format && format->group == FormatGroup::Rgb);
        }
        case VantrelTypeMpeg1: return IsVideoInfo(type);
        case VantrelTypeMpeg2: return IsVideoInfo2(type);
        default: return true;  // Deliberate: an unknown code lifts the restriction.
    }
}

bool PassesPixelFormat(const CMediaType& type, int pixelFormat) {
    if (pixelFormat == VantrelFormatAuto) return FindPictureFormat(*type.Subtype()) != nullptr;
    const GUID* wanted = tavo::SubtypeOfSetting(pixelFormat);
    return !wanted || *wanted == *type.Subtype();  // Deliberate: likewise for an unknown code.
}

// A format block that claims to be a video header must be one; a picture that the filter would have
// to scale must have a size and buffers that can hold it.
bool IsSound(const CMediaType& type, bool (*isUsable)(const Picture&)) {
    const bool claimsHeader = IsVideoInfo(type) || IsVideoInfo2(type);
    if (claimsHeader && !LocateVideoHeader(type)) return false;
    const Picture picture = ReadPicture(type);
    return !claimsHeader || !picture.format || isUsable(picture);
}

// Without a copy, which could fail.
void SwapTypes(CMediaType& a, CMediaType& b) {
    std::swap(static_cast<AM_MEDIA_TYPE&>(a), static_cast<AM_MEDIA_TYPE&>(b));
}

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

bool CVantrelFilter::PassesTypeTest(const CMediaType& type) const {
    return *type.Type() == MEDIATYPE_Video && PassesVideoType(type, videoType_) &&
           PassesPixelFormat(type, outputFormat_);
}

HRESULT CVantrelFilter::CheckInputType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    const bool accepted = PassesTypeTest(*type) && IsSound(*type, tavo::IsUsablePicture);
    return accepted ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CVantrelFilter::CheckTransform(const CMediaType* input, const CMediaType* output) {
    CheckPointer(input, E_POINTER);
    CheckPointer(output, E_POINTER);
    const bool accepted = PassesTypeTest(*output) && IsSound(*output, tavo::IsUsableOutput) &&
                          *input->Subtype() == *output->Subtype();
    return accepted ? S_OK : E_INVALIDARG;
}

HRESULT CVantrelFilter::GetMediaType(int position, CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (!m_pInput || !m_pInput->IsConnected()) return E_UNEXPECTED;
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    const HRESULT copied = CopyInputType(type);
    return FAILED(copied) ? copied : BuildOutputType(type);
}

HRESULT CVantrelFilter::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wishes) {
    CheckPointer(allocator, E_POINTER);
    CheckPointer(wishes, E_POINTER);
    if (!m_pInput || !m_pInput->IsConnected()) return E_UNEXPECTED;
    ALLOCATOR_PROPERTIES request = {1, 0, 1, 0};
    {
        CAutoLock lock(&settingsLock_);
        if (output_.format) {
            request.cbBuffer = static_cast<LONG>(tavo::FrameBytes(output_));
        } else if (const VideoHeader header = LocateVideoHeader(outputType_)) {
            request.cbBuffer = static_cast<LONG>(header.bitmap->biSizeImage);
        }
    }
    // Frames of an unknown format fail, but for that they need a buffer.
    if (request.cbBuffer < 1) request.cbBuffer = 1;
    ALLOCATOR_PROPERTIES granted;
    return allocator->SetProperties(&request, &granted);
}

HRESULT CVantrelFilter::SetMediaType(PIN_DIRECTION direction, const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    HRESULT result = S_OK;
    if (direction == PINDIR_INPUT) {
        result = SetInputType(*type);
    } else {
        result = SetOutputType(*type);
        if (SUCCEEDED(result)) {
            ResetFrameCounts();
            // Not when a sample's buffer brings the type: the stream goes on then.
            CAutoLock streamingLock(&m_csReceive);
            regulator_.nextSlotEnd = 0;
        }
    }
    return FAILED(result) ? result : CTransformFilter::SetMediaType(direction, type);
}

// Turns a copy of the input type into the output type of the present settings.
HRESULT CVantrelFilter::BuildOutputType(CMediaType* type) {
    const VideoHeader header = LocateVideoHeader(*type);
    if (!header) return E_INVALIDARG;

    Picture source;
    int32_t bitsPerPixel = 0;
    {
        CAutoLock lock(&settingsLock_);
        source = source_;
        bitsPerPixel = bitsPerPixel_;
    }
    const OutputSize asked = outputSize_.load();
    Picture output{FindPictureFormat(*type->Subtype()), asked.width ? asked.width : source.width,
                   asked.height ? asked.height : source.height, bitsPerPixel};

    *header.source = *header.target = RECT{0, 0, output.width, output.height};
    WriteFrameDuration(header);
    if (!output.format) return S_OK;

    if (!IsUsablePicture(output)) return E_INVALIDARG;
    // Deliberate: the rows are those of the width before it is rounded.
    const int64_t stride = RowStride(output.format->group, output.width, output.bitsPerPixel);
    if (output.format->group == FormatGroup::Packed422) output.width += output.width & 1;
    if (!tavo::IsUsableOutput(output)) return E_INVALIDARG;
    header.bitmap->biBitCount = static_cast<WORD>(output.bitsPerPixel);
    header.bitmap->biWidth = output.width;
    header.bitmap->biHeight = output.height;
    header.bitmap->biSizeImage = static_cast<DWORD>(stride * std::abs(output.height));
    type->SetSampleSize(header.bitmap->biSizeImage);
    StoreNegotiatedSize(asked, {output.width, std::abs(output.height)});
    if (output.format->writtenCompression == BI_BITFIELDS) return AnnounceRgb565Masks(type);
    if (output.format->writtenCompression) {
        header.bitmap->biCompression = output.format->writtenCompression;
    }
    return S_OK;
}

// Asked once: the rate may be switched off at any moment.
void CVantrelFilter::WriteFrameDuration(const VideoHeader& header) const {
    const REFERENCE_TIME duration = frameDuration_.load();
    if (duration > 0) *header.averageTimePerFrame = duration;
}

// A size that somebody set in the meantime stays.
void CVantrelFilter::StoreNegotiatedSize(OutputSize asked, OutputSize negotiated) {
    outputSize_.compare_exchange_strong(asked, negotiated);
}

void CVantrelFilter::TakeSizeWhereUnset(const Picture& source) {
    const OutputSize asked = outputSize_.load();
    StoreNegotiatedSize(asked, {asked.width ? asked.width : source.width,
                                asked.height ? asked.height : source.height});
}

// Everything that can fail comes first: a type that cannot be followed leaves all as it was.
HRESULT CVantrelFilter::SetInputType(const CMediaType& type) {
    const Picture picture = tavo::ReadSourcePicture(type);
    HRESULT result = S_OK;
    CMediaType kept(type, &result);
    if (FAILED(result)) return result;

    CAutoLock streamingLock(&m_csReceive);
    Picture source;
    Picture output;
    {
        CAutoLock lock(&settingsLock_);
        source = source_;
        output = output_;
    }
    // Of a type that the filter does not know only that counts.
    source.format = picture.format;
    if (picture.format) source = picture;
    std::unique_ptr<tavo::Conversion> conversion;
    if (IsOutputSettled()) result = BuildConversion(source, output, conversion);
    if (FAILED(result)) return result;

    {
        CAutoLock lock(&settingsLock_);
        SwapTypes(inputType_, kept);
        source_ = source;
        if (picture.format) bitsPerPixel_ = picture.bitsPerPixel;
    }
    if (picture.format) TakeSizeWhereUnset(picture);
    isSourceLayoutOpen_ = tavo::LeavesLayoutOpen(type);
    if (conversion) ReplaceConversion(std::move(conversion), KeptFrame::Keep);
    return S_OK;
}

// A type that states no frame size leaves the layout of its planes to the first frame.
HRESULT CVantrelFilter::SettleSourceLayout(IMediaSample* sample) {
    if (!isSourceLayoutOpen_ || !conversion_) return S_OK;
    Picture source = conversion_->Source();
    source.layout = LayoutOfFrameBytes(source, sample->GetActualDataLength());
    if (source.layout != conversion_->Source().layout) {
        std::unique_ptr<tavo::Conversion> conversion;
        const HRESULT built = BuildConversion(source, conversion_->Output(), conversion);
        if (FAILED(built)) return built;
        {
            CAutoLock lock(&settingsLock_);
            source_.layout = source.layout;
        }
        ReplaceConversion(std::move(conversion), KeptFrame::Keep);
    }
    isSourceLayoutOpen_ = false;
    return S_OK;
}

HRESULT CVantrelFilter::SetOutputType(const CMediaType& type) {
    Picture output = ReadPicture(type);
    if (output.format && !output.format->keepsHeightSign) output.height = std::abs(output.height);
    HRESULT result = S_OK;
    CMediaType kept(type, &result);
    if (FAILED(result)) return result;
    if (const VideoHeader header = LocateVideoHeader(kept)) WriteFrameDuration(header);

    CAutoLock streamingLock(&m_csReceive);
    Picture source;
    {
        CAutoLock lock(&settingsLock_);
        source = source_;
    }
    std::unique_ptr<tavo::Conversion> conversion;
    result = BuildConversion(source, output, conversion);
    if (FAILED(result)) return result;

    {
        CAutoLock lock(&settingsLock_);
        SwapTypes(outputType_, kept);
        output_ = output;
        if (output.format) bitsPerPixel_ = output.bitsPerPixel;
    }
    if (output.format) outputSize_.store({output.width, std::abs(output.height)});
    ReplaceConversion(std::move(conversion), KeptFrame::Forget);
    return S_OK;
}

// Maps and buffers from one picture to another.
HRESULT CVantrelFilter::BuildConversion(const Picture& source, const Picture& output,
                                        std::unique_ptr<tavo::Conversion>& built) const {
    const bool fits = source.format == output.format &&
                      (!output.format || (IsUsablePicture(source) && IsUsableOutput(output)));
    if (!fits) return E_INVALIDARG;
    built = tavo::Conversion::Build(source, output);
    return built ? S_OK : E_OUTOFMEMORY;
}

// Under the streaming lock: never while a frame is in progress.
void CVantrelFilter::ReplaceConversion(std::unique_ptr<tavo::Conversion> built,
                                       KeptFrame keptFrame) {
    if (keptFrame == KeptFrame::Forget || !conversion_) {
        regulator_.ForgetKeptFrame();
    } else {
        built->TakeWorkBuffer(*conversion_);
    }
    conversion_ = std::move(built);
}

int STDMETHODCALLTYPE CVantrelFilter::ApplySettings() {
    CMediaType type;
    if (FAILED(CopyInputType(&type))) return E_INVALIDARG;
    if (CheckInputType(&type) != S_OK || FAILED(BuildOutputType(&type))) return E_INVALIDARG;

    // The graph and the peer have locks of their own: neither is called under the filter lock.
    IPin* peer = nullptr;
    {
        CAutoLock lock(&m_csFilter);
        CBasePin* const outputPin = GetPin(1);
        if (!outputPin) return E_INVALIDARG;
        outputPin->ConnectedTo(&peer);
        if (!peer) return SUCCEEDED(outputPin->SetMediaType(&type)) ? 1 : 0;
    }
    const int result = ReconnectOutput(peer, type);
    peer->Release();
    return result;
}

// The peer is asked first: a graph may part the pins before it finds out that they do not agree.
int CVantrelFilter::ReconnectOutput(IPin* peer, const CMediaType& type) {
    if (peer->QueryAccept(&type) != S_OK) return 0;
    CMediaType present;
    if (FAILED(CopyOutputType(&present))) return 0;
    if (SUCCEEDED(ReconnectPin(m_pOutput, &type))) return 1;
    FILTER_INFO info = {};
    if (SUCCEEDED(QueryFilterInfo(&info)) && info.pGraph) {
        if (!m_pOutput->IsConnected()) info.pGraph->ConnectDirect(m_pOutput, peer, &present);
        info.pGraph->Release();
    }
    return 0;
}
