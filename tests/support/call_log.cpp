// Call log with injected results.
#include "tests/support/call_log.h"

#include <algorithm>

namespace tavo_test {

void CallLog::Add(const std::string& name) {
    CallLog* target;
    std::string forwarded;
    {
        std::lock_guard lock(mutex_);
        names_.push_back(name);
        target = target_;
        forwarded = prefix_ + name;
    }
    if (target) target->Add(forwarded);
}

std::optional<HRESULT> CallLog::Enter(const std::string& name) {
    Add(name);
    std::lock_guard lock(mutex_);
    const auto found = injections_.find(name);
    if (found == injections_.end()) return std::nullopt;
    Injection& injection = found->second;
    if (injection.after > 0) {
        --injection.after;
        return std::nullopt;
    }
    if (injection.times == 0) return std::nullopt;
    if (injection.times > 0) --injection.times;
    return injection.result;
}

int CallLog::Count(const std::string& name) const {
    std::lock_guard lock(mutex_);
    return static_cast<int>(std::count(names_.begin(), names_.end(), name));
}

std::vector<std::string> CallLog::Names() const {
    std::lock_guard lock(mutex_);
    return names_;
}

std::string CallLog::Text() const {
    std::lock_guard lock(mutex_);
    std::string text;
    for (const std::string& name : names_) {
        if (!text.empty()) text += ' ';
        text += name;
    }
    return text;
}

void CallLog::Clear() {
    std::lock_guard lock(mutex_);
    names_.clear();
}

void CallLog::Inject(const std::string& name, HRESULT result, int times, int after) {
    std::lock_guard lock(mutex_);
    injections_[name] = {result, times, after};
}

void CallLog::ClearInjections() {
    std::lock_guard lock(mutex_);
    injections_.clear();
}

void CallLog::Forward(CallLog* target, std::string prefix) {
    std::lock_guard lock(mutex_);
    target_ = target;
    prefix_ = std::move(prefix);
}

}  // namespace tavo_test
