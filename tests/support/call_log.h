// What was called on a test object, in which order, and which of these calls shall fail.
//
//   CallLog log;
//   log.Inject("NotifyAllocator", E_FAIL);        // every call fails from now on
//   log.Inject("Receive", E_FAIL, 1, 3);          // the fourth call fails, once
//   log.Forward(&common, "sink.");                // also written to `common`, with a prefix
//   EXPECT_EQ(log.Count("BeginFlush"), 1);
//
// Every entry is the bare name of an interface method. Safe to use from several threads.
#pragma once

#include <windows.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tavo_test {

class CallLog {
  public:
    void Add(const std::string& name);
    // Notes the call; a value is the result that the method must give without doing anything.
    std::optional<HRESULT> Enter(const std::string& name);

    int Count(const std::string& name) const;
    std::vector<std::string> Names() const;
    // All names in order, separated by spaces.
    std::string Text() const;
    void Clear();

    // The calls after the first `after` get `result`, `times` of them (negative: all).
    void Inject(const std::string& name, HRESULT result, int times = -1, int after = 0);
    void ClearInjections();
    // `target` must outlive this log, or Forward(nullptr, "") must be called before it goes.
    void Forward(CallLog* target, std::string prefix);

  private:
    struct Injection {
        HRESULT result;
        int times;
        int after;
    };

    mutable std::mutex mutex_;
    std::vector<std::string> names_;
    std::map<std::string, Injection> injections_;
    CallLog* target_ = nullptr;
    std::string prefix_;
};

}  // namespace tavo_test
