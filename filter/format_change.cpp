// Changing the output type of a stream that is under way, in the ways that the platform documents.
// ApplySettings asks the sink and posts the type. The streaming thread takes it before its next
// frame: the type goes with that frame's sample where the sink's buffers are large enough, else the
// sink is connected anew while it runs, with larger ones. Until the sink has the first frame of the
// new type, the old one can go on without a frame lost.

#include "filter/format_change.h"

#include <cstdlib>
#include <utility>

#include "filter/output_type.h"
#include "filter/type_picture.h"
#include "filter/type_swap.h"
#include "filter/vantrel_filter.h"

using tavo::Picture;

namespace {

// Of a type that states no size, no picture.
OutputSize SizeOf(const Picture& picture) { return {picture.width, std::abs(picture.height)}; }

bool HaveSameSize(const Picture& a, const Picture& b) {
    return a.width == b.width && std::abs(a.height) == std::abs(b.height);
}

}  // namespace

// No lock is held while the sink is asked.
int CVantrelFilter::PostOutputType(IPin* sink, CMediaType& type) {
    if (sink->QueryAccept(&type) != S_OK) return 0;
    CAutoLock lock(&settingsLock_);
    SwapTypes(postedType_, type);
    isTypePosted_ = true;
    return 1;
}

// A type that was posted later counts.
void CVantrelFilter::PostAgain(CMediaType& type) {
    CAutoLock lock(&settingsLock_);
    if (isTypePosted_) return;
    SwapTypes(postedType_, type);
    isTypePosted_ = true;
}

void CVantrelFilter::ForgetPostedType() {
    CAutoLock lock(&settingsLock_);
    isTypePosted_ = false;
}

// One frame. Anything but S_OK from the sink leaves it unknown whether it has seen the new type.
HRESULT CVantrelFilter::SendFrame(IMediaSample* sample) {
    if (!isTypePosted_) return CTransformFilter::Receive(sample);
    FormatChange change;
    if (!TakePostedType(change)) return CTransformFilter::Receive(sample);

    change_ = &change;
    const HRESULT result = CTransformFilter::Receive(sample);
    change_ = nullptr;
    if (change.isMade && result == S_OK) {
        offeredType_.Set(m_pOutput->CurrentMediaType());
        return result;
    }
    if (change.isMade) UndoChange(change);
    if (!change.isMade || SUCCEEDED(result) || SampleIsAbandoned()) {
        PostAgain(change.type);
        return result;
    }
    ShowPresentSize(change.picture);
    return CTransformFilter::Receive(sample);
}

// Whether the type goes with the sample of the next frame.
bool CVantrelFilter::TakePostedType(FormatChange& change) {
    CMediaType type;
    {
        CAutoLock lock(&settingsLock_);
        SwapTypes(type, postedType_);
        isTypePosted_ = false;
    }
    Picture picture = ReadPicture(type);
    if (picture.format && !picture.format->keepsHeightSign) {
        picture.height = std::abs(picture.height);
    }
    // What the sink has made of an offer, such as a surface's pitch, stays when nothing new is
    // offered.
    const bool isNew =
        type != offeredType_ || !conversion_ || !HaveSameSize(picture, conversion_->Output());
    if (!isNew) return false;
    if (FAILED(PrepareChange(type, picture, change))) {
        ShowPresentSize(picture);
        return false;
    }
    auto* const pin = static_cast<CVantrelOutputPin*>(m_pOutput);
    const auto bytes = static_cast<LONG>(change.conversion->OutputFrameBytes());
    if (pin->HasRoomFor(bytes)) return true;
    if (FAILED(pin->ConnectAnew(change.type, bytes))) {
        ShowPresentSize(picture);
        return false;
    }
    MakeChange(change);
    offeredType_.Set(m_pOutput->CurrentMediaType());
    return false;
}

HRESULT CVantrelFilter::PrepareChange(const CMediaType& type, const Picture& picture,
                                      FormatChange& change) {
    HRESULT result = change.type.Set(type);
    if (SUCCEEDED(result)) result = change.pinType.Set(type);
    if (FAILED(result)) return result;
    Picture source;
    {
        CAutoLock lock(&settingsLock_);
        source = source_;
    }
    // The input may have changed since the type was posted.
    if (!picture.format || *change.type.Subtype() != *m_pInput->CurrentMediaType().Subtype()) {
        return E_INVALIDARG;
    }
    change.picture = picture;
    return BuildConversion(source, picture, change.conversion);
}

// What the sink may have put on the buffer was meant for the old type. Without memory for the new
// one the frame is of the old one, and the next frame tries again.
HRESULT CVantrelFilter::MakeChangeWith(IMediaSample* output) {
    if (FAILED(output->SetMediaType(&change_->pinType))) return FollowOutputSampleType(output);
    MakeChange(*change_);
    return S_OK;
}

// The stream goes on: its slots stay where they are. Figures are those of the new size.
void CVantrelFilter::MakeChange(FormatChange& change) {
    change.regulator = regulator_;
    ExchangeOutput(change);
    regulator_.ForgetKeptPicture();
    statistics_.BeginStream(timeGetTime());
    change.isMade = true;
}

void CVantrelFilter::UndoChange(FormatChange& change) {
    ExchangeOutput(change);
    regulator_ = change.regulator;
}

void CVantrelFilter::ExchangeOutput(FormatChange& change) {
    {
        CAutoLock lock(&settingsLock_);
        SwapTypes(outputType_, change.type);
        std::swap(output_, change.picture);
        bitsPerPixel_ = output_.bitsPerPixel;
    }
    static_cast<CVantrelOutputPin*>(m_pOutput)->KeepType(change.pinType);
    std::swap(conversion_, change.conversion);
}

// A change that came to nothing shows as the size of the frames that go on.
void CVantrelFilter::ShowPresentSize(const Picture& refused) {
    if (conversion_) StoreNegotiatedSize(SizeOf(refused), SizeOf(conversion_->Output()));
}
