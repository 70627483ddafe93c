// The watching thread: waits for the end of the scope, or ends the process.
#include "tests/support/watchdog.h"

#include <windows.h>

#include <chrono>
#include <cstdio>

namespace tavo_test {

Watchdog::Watchdog(std::string what, unsigned seconds, std::function<std::string()> describe)
    : what_(std::move(what)),
      describe_(std::move(describe)),
      thread_([this, seconds] { Watch(seconds); }) {}

Watchdog::~Watchdog() {
    {
        std::lock_guard lock(mutex_);
        done_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void Watchdog::Watch(unsigned seconds) {
    std::unique_lock lock(mutex_);
    if (wake_.wait_for(lock, std::chrono::seconds(seconds), [this] { return done_; })) return;
    std::printf("\nWATCHDOG: \"%s\" took longer than %u s\n", what_.c_str(), seconds);
    if (describe_) std::printf("%s\n", describe_().c_str());
    std::fflush(stdout);
    // Other threads hang: neither exit handlers nor destructors may run.
    TerminateProcess(GetCurrentProcess(), 97);
}

}  // namespace tavo_test
