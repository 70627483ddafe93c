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

HRESULT CVantrelFilter::SetInputType(const CMediaType& type) {
    const Picture picture = tavo::ReadSourcePicture(type);
    {
        CAutoLock lock(&settingsLock_);
        const HRESULT copied = inputType_.Set(type);
        if (FAILED(copied)) return copied;
        source_.format = picture.format;
        if (picture.format) {
            source_ = picture;
            bitsPerPixel_ = picture.bitsPerPixel;
        }
    }
    if (picture.format) TakeSizeWhereUnset(picture);
    CAutoLock streamingLock(&m_csReceive);
    isSourceLayoutOpen_ = tavo::LeavesLayoutOpen(type);
    const bool isOutputSettled = m_pOutput && m_pOutput->IsConnected();
    return isOutputSettled ? RebuildConversion(KeptFrame::Keep) : S_OK;
}

// A type that states no frame size leaves the layout of its planes to the first frame.
HRESULT CVantrelFilter::SettleSourceLayout(IMediaSample* sample) {
    if (!isSourceLayoutOpen_ || !conversion_) return S_OK;
    isSourceLayoutOpen_ = false;
    const tavo::PlaneLayout layout =
        LayoutOfFrameBytes(conversion_->Source(), sample->GetActualDataLength());
    if (layout == conversion_->Source().layout) return S_OK;
    {
        CAutoLock lock(&settingsLock_);
        source_.layout = layout;
    }
    return RebuildConversion(KeptFrame::Keep);
}

HRESULT CVantrelFilter::SetOutputType(const CMediaType& type) {
    Picture picture = ReadPicture(type);
    {
        CAutoLock lock(&settingsLock_);
        const HRESULT copied = outputType_.Set(type);
        if (FAILED(copied)) return copied;
        const VideoHeader header = LocateVideoHeader(outputType_);
        if (header) WriteFrameDuration(header);
        if (picture.format) {
            bitsPerPixel_ = picture.bitsPerPixel;
            if (!picture.format->keepsHeightSign) picture.height = std::abs(picture.height);
        }
        output_ = picture;
    }
    if (picture.format) outputSize_.store({picture.width, std::abs(picture.height)});
    return RebuildConversion(KeptFrame::Forget);
}

// Replaces maps and buffers once the frame in progress, if any, is through. On failure there is no
// conversion, and frames fail until a type is set that can be followed.
HRESULT CVantrelFilter::RebuildConversion(KeptFrame keptFrame) {
    Picture source;
    Picture output;
    {
        CAutoLock lock(&settingsLock_);
        source = source_;
        output = output_;
    }
    CAutoLock streamingLock(&m_csReceive);
    const std::unique_ptr<tavo::Conversion> former = std::move(conversion_);
    // What an earlier failure has taken away cannot be kept.
    if (keptFrame == KeptFrame::Forget || !former) regulator_.ForgetKeptFrame();
    const bool fits = source.format == output.format &&
                      (!output.format || (IsUsablePicture(source) && IsUsableOutput(output)));
    if (!fits) return E_INVALIDARG;
    conversion_ = tavo::Conversion::Build(source, output);
    if (!conversion_) return E_OUTOFMEMORY;
    if (former && keptFrame == KeptFrame::Keep) conversion_->TakeWorkBuffer(*former);
    return S_OK;
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
