// Asks the filter mapper, as intelligent connect does.

#include "host/graph/decoder_list.h"

#include <algorithm>

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {
namespace {

// An id of the filter's moniker in the registry ends with its class identifier.
std::wstring NameFromMoniker(IMoniker& moniker) {
    LPOLESTR text = nullptr;
    std::wstring name;
    if (SUCCEEDED(moniker.GetDisplayName(nullptr, nullptr, &text)) && text != nullptr) {
        name = text;
        const size_t brace = name.find_last_of(L'{');
        if (brace != std::wstring::npos) name.erase(0, brace);
    }
    CoTaskMemFree(text);
    return name;
}

std::wstring NameOf(IMoniker& moniker) {
    ComPtr<IPropertyBag> bag;
    std::wstring name;
    if (SUCCEEDED(moniker.BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid()))) {
        VARIANT value = {};
        VariantInit(&value);
        if (SUCCEEDED(bag->Read(L"FriendlyName", &value, nullptr)) && value.vt == VT_BSTR &&
            value.bstrVal != nullptr) {
            name = value.bstrVal;
        }
        VariantClear(&value);
    }
    return name.empty() ? NameFromMoniker(moniker) : name;
}

// Filters that may be used without being asked for, from `input` to `output`.
HRESULT Collect(IFilterMapper2& mapper, const GUID& input, const GUID& output,
                std::vector<std::wstring>& names) {
    const GUID inputs[] = {input, GUID_NULL};  // pairs of major type and subtype
    const GUID outputs[] = {output, GUID_NULL};
    const bool any = output == GUID_NULL;
    ComPtr<IEnumMoniker> found;
    const HRESULT hr = mapper.EnumMatchingFilters(
        found.Put(), 0, TRUE, MERIT_DO_NOT_USE + 1, TRUE, 1, inputs, nullptr, nullptr, FALSE, !any,
        any ? 0 : 1, any ? nullptr : outputs, nullptr, nullptr);
    // S_FALSE, or nothing to enumerate: there is none.
    if (FAILED(hr) || !found) return hr;
    ComPtr<IMoniker> moniker;
    while (found->Next(1, moniker.Put(), nullptr) == S_OK) {
        std::wstring name = NameOf(*moniker.Get());
        if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
    }
    return S_OK;
}

}  // namespace

DecoderList FindDecoders() {
    DecoderList list;
    ComPtr<IFilterMapper2> mapper;
    list.result = CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IFilterMapper2, mapper.PutVoid());
    if (FAILED(list.result)) return list;
    const HRESULT splitters = Collect(*mapper.Get(), MEDIATYPE_Stream, GUID_NULL, list.splitters);
    const HRESULT decoders =
        Collect(*mapper.Get(), MEDIATYPE_Video, MEDIATYPE_Video, list.decoders);
    list.result = FAILED(splitters) ? splitters : decoders;
    return list;
}

}  // namespace tavo
