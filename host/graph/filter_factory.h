// Makes the scaling filter: from a module file that need not be registered, or from the registry.

#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "dshow/com_ptr.h"
#include "streams.h"

namespace tavo {

// COM is initialised on the calling thread. All objects made here must be released before the
// factory goes: it unloads the module.
class FilterFactory {
  public:
    FilterFactory() = default;
    ~FilterFactory();
    FilterFactory(const FilterFactory&) = delete;
    FilterFactory& operator=(const FilterFactory&) = delete;

    // Nothing when all is well, else one line for the user.
    std::wstring UseModule(const std::filesystem::path& path);
    std::wstring UseRegistered();

    HRESULT Create(ComPtr<IBaseFilter>& filter) const;

    // Makes the classes of the module's property pages known to this process, for whoever creates
    // them by their class. Those of the registered filter are known already.
    HRESULT AnnouncePages();

  private:
    HMODULE module_ = nullptr;
    ComPtr<IClassFactory> factory_;
    std::vector<DWORD> announced_;
};

// Folder of the running program.
std::filesystem::path ProgramFolder();

}  // namespace tavo
