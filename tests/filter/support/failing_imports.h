// Every request of a module that the platform can refuse for want of memory or objects, refused one
// by one; and what the module holds of each kind, to find what it forgets on such a way.
//
//   FailingImports imports;                      // before anything of the module is made
//   {
//       const FailingImports::Window window(imports, 3, Refuse::OnlyNext);   // the fourth fails
//       result = ...;
//       refused = window.refused() > 0;
//   }
//   ... release everything ...
//   EXPECT_EQ(imports.Held(), "");
#pragma once

#include <windows.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/module_imports.h"

namespace tavo_test {

// Once the allowed requests are used up.
enum class Refuse { OnlyNext, AllLater };

// Stands in for the module's imports while it lives. One at a time. Requests are refused to the
// thread that opens a window; what is held counts for all threads.
class FailingImports {
  public:
    explicit FailingImports(HMODULE module = TheModule().handle());
    ~FailingImports();
    FailingImports(const FailingImports&) = delete;
    FailingImports& operator=(const FailingImports&) = delete;

    class Window {
      public:
        Window(FailingImports& imports, int allowed, Refuse refuse);
        ~Window();
        Window(const Window&) = delete;
        Window& operator=(const Window&) = delete;

        int refused() const;
        // The names of the functions that failed, for messages.
        std::string names() const;
    };

    // What was made and not given back, since this object was made: "malloc 1, CreateEventW -1, ".
    std::string Held() const;
    // Of one kind, by the name of the function that makes it.
    long Held(const std::string& maker) const;
    // From here on: what the module keeps from its first use until it goes does not count.
    void StartCounting();
    // Refused in all windows, by function.
    static const std::map<std::string, long>& AllRefused();
    // "malloc 12, CreateEventW 3"
    static std::string AllRefusedText();

  private:
    friend struct StandIns;

    void Patch(HMODULE module, const char* library, const char* function, ULONG_PTR target);
    void Count(const char* maker, long change);
    bool RefuseNext(const char* function);

    static FailingImports* current;

    mutable std::mutex mutex_;
    std::map<std::string, long> held_;
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};

}  // namespace tavo_test
