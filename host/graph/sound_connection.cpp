// Tries pins in the order in which the source has them.

#include "host/graph/sound_connection.h"

#include <algorithm>

#include "host/avi/frame_rate.h"
#include "host/graph/graph_pins.h"

namespace tavo {
namespace {

bool OffersSound(IPin* pin) {
    ComPtr<IEnumMediaTypes> types;
    if (FAILED(pin->EnumMediaTypes(types.Put()))) return false;
    bool found = false;
    AM_MEDIA_TYPE* type = nullptr;
    while (!found && types->Next(1, &type, nullptr) == S_OK) {
        found = type->majortype == MEDIATYPE_Audio;
        DeleteMediaType(type);
    }
    return found;
}

// Each filter once, the nearest first.
std::vector<ComPtr<IBaseFilter>> FiltersUpstream(IPin* input) {
    std::vector<ComPtr<IBaseFilter>> filters;
    const auto add = [&](IPin* pin) {
        const ComPtr<IPin> peer = PeerOf(pin);
        const ComPtr<IBaseFilter> filter = peer ? FilterOf(peer.Get()) : ComPtr<IBaseFilter>();
        const bool isNew = filter && std::ranges::none_of(filters, [&](const auto& other) {
                               return other.Get() == filter.Get();
                           });
        if (isNew) filters.push_back(filter);
    };
    add(input);
    for (size_t n = 0; n < filters.size(); ++n) {
        const ComPtr<IBaseFilter> filter = filters[n];
        for (const ComPtr<IPin>& pin : PinsOf(filter.Get(), PINDIR_INPUT)) add(pin.Get());
    }
    return filters;
}

}  // namespace

std::vector<ComPtr<IPin>> OpenSoundPins(IPin* input) {
    std::vector<ComPtr<IPin>> pins;
    for (const ComPtr<IBaseFilter>& filter : FiltersUpstream(input)) {
        for (const ComPtr<IPin>& pin : PinsOf(filter.Get(), PINDIR_OUTPUT)) {
            if (!PeerOf(pin.Get()) && OffersSound(pin.Get())) pins.push_back(pin);
        }
    }
    return pins;
}

bool ConnectSound(IGraphBuilder& builder, const std::vector<ComPtr<IPin>>& pins, CAviSink& sink) {
    if (pins.empty()) return false;
    sink.AddSoundPin();
    for (const ComPtr<IPin>& pin : pins) {
        if (SUCCEEDED(builder.Connect(pin.Get(), &sink.SoundPin())) &&
            sink.SoundPin().IsConnected()) {
            return true;
        }
    }
    sink.RemoveSoundPin();
    return false;
}

void ReadLongestStream(IPin* input) {
    const ComPtr<IPin> peer = PeerOf(input);
    const ComPtr<IBaseFilter> splitter = peer ? FilterOf(peer.Get()) : ComPtr<IBaseFilter>();
    if (!splitter) return;
    std::vector<ComPtr<IMediaSeeking>> streams;
    LONGLONG longest = 0;
    LONGLONG shortest = INT64_MAX;
    for (const ComPtr<IPin>& pin : PinsOf(splitter.Get(), PINDIR_OUTPUT)) {
        const auto seeking = pin.As<IMediaSeeking>(IID_IMediaSeeking);
        LONGLONG duration = 0;
        if (!seeking || FAILED(seeking->GetDuration(&duration))) continue;
        longest = std::max(longest, duration);
        shortest = std::min(shortest, duration);
        streams.push_back(seeking);
    }
    if (shortest >= longest) return;
    // Durations are rounded; what is beyond the end is not missed.
    LONGLONG stop = longest + kUnitsPerSecond;
    for (const ComPtr<IMediaSeeking>& stream : streams) {
        stream->SetPositions(nullptr, AM_SEEKING_NoPositioning, &stop,
                             AM_SEEKING_AbsolutePositioning);
    }
}

}  // namespace tavo
