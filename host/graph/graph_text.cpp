// Lists filters in the order of the data flow.

#include "host/graph/graph_text.h"

#include <algorithm>

#include "host/graph/graph_pins.h"
#include "host/graph/type_text.h"

namespace tavo {
namespace {

std::vector<ComPtr<IBaseFilter>> FiltersOf(IFilterGraph* graph) {
    std::vector<ComPtr<IBaseFilter>> filters;
    ComPtr<IEnumFilters> list;
    if (FAILED(graph->EnumFilters(list.Put()))) return filters;
    ComPtr<IBaseFilter> filter;
    while (list->Next(1, filter.Put(), nullptr) == S_OK) filters.push_back(filter);
    return filters;
}

// Whether every filter upstream is in `placed`.
bool IsReady(IBaseFilter* filter, const std::vector<ComPtr<IBaseFilter>>& placed) {
    for (const ComPtr<IPin>& pin : PinsOf(filter, PINDIR_INPUT)) {
        const ComPtr<IPin> peer = PeerOf(pin.Get());
        if (!peer) continue;
        const ComPtr<IBaseFilter> upstream = FilterOf(peer.Get());
        const bool found = std::ranges::any_of(
            placed, [&](const auto& other) { return other.Get() == upstream.Get(); });
        if (!found) return false;
    }
    return true;
}

std::vector<ComPtr<IBaseFilter>> UpstreamFirst(std::vector<ComPtr<IBaseFilter>> filters) {
    // Graphs enumerate the last added filter first.
    std::ranges::reverse(filters);
    std::vector<ComPtr<IBaseFilter>> placed;
    while (!filters.empty()) {
        auto next = std::ranges::find_if(
            filters, [&](const auto& filter) { return IsReady(filter.Get(), placed); });
        // Graphs have no cycles; with one, this must still end.
        if (next == filters.end()) next = filters.begin();
        placed.push_back(*next);
        filters.erase(next);
    }
    return placed;
}

std::wstring PinName(IPin* pin) {
    PIN_INFO info = {};
    if (FAILED(pin->QueryPinInfo(&info))) return L"?";
    QueryPinInfoReleaseFilter(info);
    return info.achName;
}

std::wstring PinText(IPin* pin, PIN_DIRECTION direction) {
    const bool input = direction == PINDIR_INPUT;
    std::wstring text = std::wstring(input ? L"  in   " : L"  out  ") + PinName(pin);
    const ComPtr<IPin> peer = PeerOf(pin);
    if (!peer) return text + L": not connected\n";
    const ComPtr<IBaseFilter> other = FilterOf(peer.Get());
    text += input ? L" <- " : L" -> ";
    text += (other ? NameOf(other.Get()) : L"?") + L" / " + PinName(peer.Get());
    CMediaType type;
    if (ConnectionTypeOf(pin, type)) text += L": " + DescribeType(type);
    return text + L"\n";
}

}  // namespace

std::wstring GraphText(IFilterGraph* graph) {
    std::wstring text;
    for (const ComPtr<IBaseFilter>& filter : UpstreamFirst(FiltersOf(graph))) {
        text += NameOf(filter.Get()) + L"\n";
        for (const PIN_DIRECTION direction : {PINDIR_INPUT, PINDIR_OUTPUT}) {
            for (const ComPtr<IPin>& pin : PinsOf(filter.Get(), direction)) {
                text += PinText(pin.Get(), direction);
            }
        }
    }
    return text;
}

}  // namespace tavo
