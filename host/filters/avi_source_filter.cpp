// One pin and its thread.

#include "host/filters/avi_source_filter.h"

#include <algorithm>
#include <system_error>

#include "dshow/com_ptr.h"
#include "host/filters/stopped_receiver.h"
#include "host/filters/video_type.h"

using tavo::AviReader;
using tavo::ComPtr;

namespace {

// {3B1C5E0E-7C53-4C1F-9D3B-5C2B7B0B6E11}; never registered.
constexpr CLSID kSourceClass = {
    0x3b1c5e0e, 0x7c53, 0x4c1f, {0x9d, 0x3b, 0x5c, 0x2b, 0x7b, 0x0b, 0x6e, 0x11}};

// One buffer is filled while the other is processed downstream.
constexpr long kBuffers = 2;

// Frames are delivered bottom-up, as by nearly all sources.
tavo::VideoFormat BottomUpVideo(const AviReader& reader) {
    tavo::VideoFormat video = reader.Video();
    if (video.height < 0) video.height = -video.height;
    return video;
}

tavo::VideoType TypeOf(const AviReader& reader) {
    return {BottomUpVideo(reader), tavo::DurationOf(reader.Rate())};
}

}  // namespace

CAviSource::CAviSource(std::shared_ptr<tavo::RawMovie> movie, HRESULT* phr)
    : CBaseFilter(NAME("AVI source"), nullptr, &m_lock, kSourceClass),
      m_movie(std::move(movie)),
      m_pin(this, &m_lock, phr) {}

CAviSourcePin::CAviSourcePin(CAviSource* filter, CCritSec* lock, HRESULT* phr)
    : CBaseOutputPin(NAME("AVI source pin"), filter, lock, phr, L"Output"), m_source(*filter) {}

CAviSourcePin::~CAviSourcePin() { JoinThread(); }

HRESULT CAviSourcePin::GetMediaType(int position, CMediaType* type) {
    using tavo::FormatBlock;
    if (position < 0) return E_INVALIDARG;
    if (position > 1) return VFW_S_NO_MORE_ITEMS;
    return tavo::MakeVideoType(TypeOf(m_source.Movie().reader),
                               position == 0 ? FormatBlock::VideoInfo : FormatBlock::VideoInfo2,
                               *type);
}

HRESULT CAviSourcePin::CheckMediaType(const CMediaType* type) {
    const auto wanted = tavo::ReadVideoType(*type);
    const bool same = wanted && wanted->video == BottomUpVideo(m_source.Movie().reader);
    return same ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CAviSourcePin::DecideBufferSize(IMemAllocator* allocator,
                                        ALLOCATOR_PROPERTIES* properties) {
    const long frame = static_cast<long>(m_source.Movie().reader.FrameBytes());
    properties->cBuffers = std::max(properties->cBuffers, kBuffers);
    properties->cbBuffer = std::max(properties->cbBuffer, frame);
    ALLOCATOR_PROPERTIES actual = {};
    const HRESULT hr = allocator->SetProperties(properties, &actual);
    if (FAILED(hr)) return hr;
    return actual.cbBuffer >= frame && actual.cBuffers >= 1 ? S_OK : E_FAIL;
}

HRESULT CAviSourcePin::Active() {
    const HRESULT hr = CBaseOutputPin::Active();
    if (FAILED(hr)) return hr;
    m_stopping = false;
    try {
        m_thread = std::thread([this] { Push(); });
    } catch (const std::system_error&) {
        CBaseOutputPin::Inactive();
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CAviSourcePin::Inactive() {
    // Decommit wakes the thread if it waits for a buffer.
    m_stopping = true;
    const HRESULT hr = CBaseOutputPin::Inactive();
    JoinThread();
    return hr;
}

void CAviSourcePin::JoinThread() {
    if (m_thread.joinable()) m_thread.join();
}

void CAviSourcePin::Push() {
    const bool com = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    DeliverNewSegment(0, MAX_TIME, 1.0);
    const uint32_t count = m_source.Movie().reader.FrameCount();
    HRESULT hr = S_OK;
    for (uint32_t i = m_source.FirstFrame(); i < count && !m_stopping && SUCCEEDED(hr); ++i)
        hr = PushFrame(i);
    if (!m_stopping && !tavo::ReceiverHasStopped(hr)) {
        if (FAILED(hr)) m_source.NotifyEvent(EC_ERRORABORT, hr, 0);
        DeliverEndOfStream();
    }
    if (com) CoUninitialize();
}

// S_FALSE from a receiver can mean a dropped frame as well as the end of the stream. It does not
// end the stream here: a graph that has enough is stopped.
HRESULT CAviSourcePin::PushFrame(uint32_t index) {
    AviReader& reader = m_source.Movie().reader;
    ComPtr<IMediaSample> sample;
    HRESULT hr = GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0);
    if (FAILED(hr)) return hr;
    const long length = static_cast<long>(reader.FrameBytes());
    BYTE* data = nullptr;
    hr = sample->GetPointer(&data);
    if (FAILED(hr)) return hr;
    if (data == nullptr || sample->GetSize() < length) return E_FAIL;

    const std::span<std::byte> frame(reinterpret_cast<std::byte*>(data),
                                     static_cast<size_t>(length));
    if (reader.ReadFrame(index, frame) != tavo::IoResult::Ok) {
        return HRESULT_FROM_WIN32(ERROR_READ_FAULT);
    }
    const tavo::VideoFormat& video = reader.Video();
    if (video.height < 0) {
        const auto width = static_cast<uint32_t>(video.width);
        tavo::FlipRows(frame, tavo::RowStride(video.format, width));
    }
    REFERENCE_TIME start = tavo::FrameStart(reader.Rate(), index);
    REFERENCE_TIME stop = tavo::FrameStart(reader.Rate(), uint64_t{index} + 1);
    LONGLONG number = index;
    LONGLONG next = number + 1;
    sample->SetActualDataLength(length);
    sample->SetTime(&start, &stop);
    sample->SetMediaTime(&number, &next);
    sample->SetSyncPoint(TRUE);
    sample->SetPreroll(FALSE);
    sample->SetDiscontinuity(index == m_source.FirstFrame());
    return Deliver(sample.Get());
}
