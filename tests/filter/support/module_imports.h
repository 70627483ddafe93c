// Stands in for a function that a module imports: nobody else's calls are seen.
//
//   const ImportPatch patch(TheModule().handle(), "winmm.dll", "timeGetTime",
//                           AddressOf(MyTime));
#pragma once

#include <windows.h>

namespace tavo_test {

// Where the module keeps the address of a function that it imports by name; null if it does not.
ULONG_PTR* FindImport(HMODULE module, const char* library, const char* function);

template <typename Function>
ULONG_PTR AddressOf(Function* function) {
    return reinterpret_cast<ULONG_PTR>(function);
}

class ImportPatch {
  public:
    // A test fails where the module does not import the function by its name.
    ImportPatch(HMODULE module, const char* library, const char* function, ULONG_PTR target);
    // Puts back what was there.
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

  private:
    void Exchange(ULONG_PTR target);

    ULONG_PTR* const place_;
    ULONG_PTR former_ = 0;
};

}  // namespace tavo_test
