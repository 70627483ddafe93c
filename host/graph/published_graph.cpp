// Registers an item moniker.

#include "host/graph/published_graph.h"

#include <array>
#include <cwchar>

#include "dshow/com_ptr.h"

namespace tavo {

std::wstring PublishedName(const void* graph, uint32_t process) {
    std::array<wchar_t, 64> text{};
    // Editors read the address as 32 bits, also of 64-bit programs, and only show it.
    const auto address = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(graph));
    swprintf(text.data(), text.size(), L"FilterGraph %08x pid %08x", address, process);
    return text.data();
}

PublishedGraph::~PublishedGraph() {
    if (entry_ == 0) return;
    ComPtr<IRunningObjectTable> table;
    if (SUCCEEDED(GetRunningObjectTable(0, table.Put()))) table->Revoke(entry_);
}

HRESULT PublishedGraph::Register(IUnknown* graph) {
    ComPtr<IRunningObjectTable> table;
    HRESULT hr = GetRunningObjectTable(0, table.Put());
    if (FAILED(hr)) return hr;
    ComPtr<IMoniker> moniker;
    const std::wstring name = PublishedName(graph, GetCurrentProcessId());
    hr = CreateItemMoniker(L"!", name.c_str(), moniker.Put());
    if (FAILED(hr)) return hr;
    // The table holds a reference of its own, until the entry is revoked.
    return table->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, graph, moniker.Get(), &entry_);
}

}  // namespace tavo
