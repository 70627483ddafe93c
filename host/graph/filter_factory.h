// Creates the scaling filter, from a module file or as it is registered.

#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

// COM is initialised on the calling thread. Objects that are made here are released before the
// factory is destroyed: it unloads the module.
class FilterFactory {
  public:
    FilterFactory() = default;
    ~FilterFactory();
    FilterFactory(const FilterFactory&) = delete;
    FilterFactory& operator=(const FilterFactory&) = delete;

    // Empty on success, else one line for the user.
    std::wstring UseModule(const std::filesystem::path& path);
    std::wstring UseRegistered();

    HRESULT Create(ComPtr<IBaseFilter>& filter) const;

    // Registers the classes of the module's property pages in this process, so that a property
    // frame can create them. Nothing to do for the registered filter.
    HRESULT RegisterPages();

  private:
    HMODULE module_ = nullptr;
    ComPtr<IClassFactory> factory_;
    std::vector<DWORD> pageCookies_;
};

// Folder of the running program.
std::filesystem::path ProgramFolder();

}  // namespace tavo
