// Pins, their peers and their types.

#include "host/graph/graph_pins.h"

namespace tavo {

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction) {
    std::vector<ComPtr<IPin>> pins;
    ComPtr<IEnumPins> list;
    if (FAILED(filter->EnumPins(list.Put()))) return pins;
    ComPtr<IPin> pin;
    while (list->Next(1, pin.Put(), nullptr) == S_OK) {
        PIN_DIRECTION found = PINDIR_INPUT;
        if (SUCCEEDED(pin->QueryDirection(&found)) && found == direction) pins.push_back(pin);
    }
    return pins;
}

ComPtr<IPin> FirstPin(IBaseFilter* filter, PIN_DIRECTION direction) {
    const std::vector<ComPtr<IPin>> pins = PinsOf(filter, direction);
    return pins.empty() ? ComPtr<IPin>() : pins.front();
}

ComPtr<IPin> PeerOf(IPin* pin) {
    ComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(peer.Put()))) return {};
    return peer;
}

ComPtr<IBaseFilter> FilterOf(IPin* pin) {
    PIN_INFO info = {};
    ComPtr<IBaseFilter> filter;
    if (SUCCEEDED(pin->QueryPinInfo(&info))) *filter.Put() = info.pFilter;
    return filter;
}

std::wstring NameOf(IBaseFilter* filter) {
    FILTER_INFO info = {};
    if (FAILED(filter->QueryFilterInfo(&info))) return L"?";
    QueryFilterInfoReleaseGraph(info);
    return info.achName;
}

bool ConnectionTypeOf(IPin* pin, CMediaType& type) {
    CMediaType found;
    if (FAILED(pin->ConnectionMediaType(&found))) {
        type = CMediaType();
        return false;
    }
    return SUCCEEDED(type.Set(found));
}

}  // namespace tavo
