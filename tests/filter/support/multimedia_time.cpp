// The stand-ins for the platform's functions.
#include "tests/filter/support/multimedia_time.h"

namespace tavo_test {

namespace {

// The platform's own, also where this program is the module whose imports are exchanged.
template <typename Function>
Function* Original(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}

}  // namespace

MultimediaTime* MultimediaTime::current = nullptr;

MultimediaTime::MultimediaTime(HMODULE module)
    : patches_{{module, "winmm.dll", "timeGetTime", AddressOf(Read)},
               {module, "winmm.dll", "timeBeginPeriod", AddressOf(BeginPeriod)},
               {module, "winmm.dll", "timeEndPeriod", AddressOf(EndPeriod)},
               {module, "kernel32.dll", "CreateThread", AddressOf(MakeThread)}} {
    current = this;
}

MultimediaTime::~MultimediaTime() { current = nullptr; }

void MultimediaTime::Next(std::initializer_list<DWORD> readings) {
    const std::lock_guard lock(mutex_);
    next_.insert(next_.end(), readings);
}

size_t MultimediaTime::Left() const {
    const std::lock_guard lock(mutex_);
    return next_.size();
}

int MultimediaTime::Readings() const {
    const std::lock_guard lock(mutex_);
    return readings_;
}

int MultimediaTime::Threads() const {
    const std::lock_guard lock(mutex_);
    return threads_;
}

std::string MultimediaTime::Periods() const {
    const std::lock_guard lock(mutex_);
    return periods_;
}

DWORD WINAPI MultimediaTime::Read() {
    const std::lock_guard lock(current->mutex_);
    ++current->readings_;
    if (!current->next_.empty()) {
        current->now_ = current->next_.front();
        current->next_.pop_front();
    }
    return current->now_;
}

MMRESULT WINAPI MultimediaTime::BeginPeriod(UINT period) {
    const std::lock_guard lock(current->mutex_);
    current->periods_ += "begin " + std::to_string(period) + ", ";
    return Original<decltype(timeBeginPeriod)>(L"winmm.dll", "timeBeginPeriod")(period);
}

MMRESULT WINAPI MultimediaTime::EndPeriod(UINT period) {
    const std::lock_guard lock(current->mutex_);
    current->periods_ += "end " + std::to_string(period) + ", ";
    return Original<decltype(timeEndPeriod)>(L"winmm.dll", "timeEndPeriod")(period);
}

HANDLE WINAPI MultimediaTime::MakeThread(SECURITY_ATTRIBUTES* security, SIZE_T stack,
                                         LPTHREAD_START_ROUTINE start, void* parameter, DWORD flags,
                                         DWORD* id) {
    {
        const std::lock_guard lock(current->mutex_);
        ++current->threads_;
    }
    const auto create = Original<decltype(CreateThread)>(L"kernel32.dll", "CreateThread");
    return create(security, stack, start, parameter, flags, id);
}

}  // namespace tavo_test
