// A graph in the running object table, where graph editors look for graphs of other programs.

#pragma once

#include <windows.h>

#include <string>

namespace tavo {

// The name that graph editors know: address of the graph and number of the process, in hexadecimal.
std::wstring PublishedName(const void* graph, uint32_t process);

// Registered during its life.
class PublishedGraph {
  public:
    PublishedGraph() = default;
    ~PublishedGraph();
    PublishedGraph(const PublishedGraph&) = delete;
    PublishedGraph& operator=(const PublishedGraph&) = delete;

    // Once. The graph outlives this object.
    HRESULT Register(IUnknown* graph);

  private:
    DWORD entry_ = 0;  // 0: none
};

}  // namespace tavo
