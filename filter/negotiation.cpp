// Which media types the filter takes, and the one that it offers.

#include "filter/vantrel_filter.h"

#include <cstdlib>
#include <utility>

#include "filter/type_picture.h"
#include "filter/type_swap.h"
#include "filter/type_test.h"

using tavo::Picture;

bool CVantrelFilter::PassesTypeTest(const CMediaType& type) const {
    return PassesSettings(type, videoType_, outputFormat_);
}

HRESULT CVantrelFilter::CheckInputType(const CMediaType* type) {
    CheckPointer(type, E_POINTER);
    const bool accepted = PassesTypeTest(*type) && IsWellFormed(*type, tavo::IsUsablePicture);
    return accepted ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CVantrelFilter::CheckTransform(const CMediaType* input, const CMediaType* output) {
    CheckPointer(input, E_POINTER);
    CheckPointer(output, E_POINTER);
    const bool accepted = PassesTypeTest(*output) && IsWellFormed(*output, tavo::IsUsableOutput) &&
                          *input->Subtype() == *output->Subtype();
    return accepted ? S_OK : E_INVALIDARG;
}

// Deliberate: offering a type stores the negotiated output size, also where it was 0 for that of
// the source.
HRESULT CVantrelFilter::GetMediaType(int position, CMediaType* type) {
    CheckPointer(type, E_POINTER);
    if (!m_pInput || !m_pInput->IsConnected()) return E_UNEXPECTED;
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    const HRESULT copied = CopyInputType(type);
    return FAILED(copied) ? copied : BuildOffer(type);
}

// Deliberate: one buffer of the frame's size is asked for, whatever the sink wishes, and what the
// allocator grants is not looked at. The frame path tests every buffer that it gets.
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
    // An unknown format fails frame by frame, and a frame needs a buffer to get that far.
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
        CMediaType offered;
        result = offered.Set(*type);
        if (SUCCEEDED(result)) result = SetOutputType(*type, ReadPicture(*type));
        if (SUCCEEDED(result)) {
            statistics_.ResetCounts();
            // Not when a sample's buffer brings the type: the stream goes on then.
            CAutoLock streamingLock(&m_csReceive);
            regulator_.RestartSlots();
            SwapTypes(offeredType_, offered);
            ForgetPostedType();
        }
    }
    return FAILED(result) ? result : CTransformFilter::SetMediaType(direction, type);
}

// Turns a copy of the input type into the output type of the present settings. The duration is
// asked for once: the rate may be switched off at any moment.
HRESULT CVantrelFilter::BuildOffer(CMediaType* type) {
    const OutputSize asked = outputSize_.load();
    OutputWishes wishes = {{}, 0, asked, frameDuration_.load()};
    {
        CAutoLock lock(&settingsLock_);
        wishes.source = source_;
        wishes.bitsPerPixel = bitsPerPixel_;
    }
    OutputSize negotiated = asked;
    const HRESULT built = BuildOutputType(wishes, type, &negotiated);
    if (SUCCEEDED(built)) StoreNegotiatedSize(asked, negotiated);
    return built;
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

// At connection, and on the streaming thread for a type on a sample. Everything that can fail comes
// first: a type that cannot be followed leaves all as it was. An output that is settled stays.
HRESULT CVantrelFilter::SetInputType(const CMediaType& type) {
    const Picture picture = ReadSourcePicture(type);
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
    // For an unknown format: no format, and the former size.
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
    isSourceLayoutOpen_ = LeavesLayoutOpen(type);
    if (conversion) ReplaceConversion(std::move(conversion), KeptPicture::Keep);
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
        ReplaceConversion(std::move(conversion), KeptPicture::Keep);
    }
    isSourceLayoutOpen_ = false;
    return S_OK;
}

HRESULT CVantrelFilter::SetOutputType(const CMediaType& type, Picture output) {
    if (output.format && !output.format->keepsHeightSign) output.height = std::abs(output.height);
    HRESULT result = S_OK;
    CMediaType kept(type, &result);
    if (FAILED(result)) return result;
    WriteFrameDuration(kept, frameDuration_.load());

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
    ReplaceConversion(std::move(conversion), KeptPicture::Forget);
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
void CVantrelFilter::ReplaceConversion(std::unique_ptr<tavo::Conversion> built, KeptPicture kept) {
    if (kept == KeptPicture::Forget || !conversion_) {
        regulator_.ForgetKeptPicture();
    } else {
        built->TakeWorkBuffer(*conversion_);
    }
    conversion_ = std::move(built);
}

int STDMETHODCALLTYPE CVantrelFilter::ApplySettings() {
    CMediaType type;
    if (FAILED(CopyInputType(&type))) return E_INVALIDARG;
    if (CheckInputType(&type) != S_OK || FAILED(BuildOffer(&type))) return E_INVALIDARG;

    // The graph and the peer have locks of their own: neither is called under the filter lock.
    IPin* peer = nullptr;
    bool isStopped = false;
    {
        CAutoLock lock(&m_csFilter);
        isStopped = IsStopped();
        CBasePin* const outputPin = GetPin(1);
        if (!outputPin) return E_INVALIDARG;
        outputPin->ConnectedTo(&peer);
        if (!peer) return SUCCEEDED(outputPin->SetMediaType(&type)) ? 1 : 0;
    }
    const int result = isStopped ? ReconnectOutput(peer, type) : PostOutputType(peer, type);
    peer->Release();
    return result;
}

// The peer is asked first: a graph may part the pins before it finds out that they do not agree, or
// that the output cannot be connected while the input is not.
int CVantrelFilter::ReconnectOutput(IPin* peer, const CMediaType& type) {
    if (!m_pInput->IsConnected()) return 0;
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
