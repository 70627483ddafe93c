// Ends the process with a message if a scope takes too long, so that a deadlock is a failure
// with a name and not a hung run.
//
//   Watchdog dog("Stop while Receive is held", 30);
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tavo_test {

class Watchdog {
  public:
    explicit Watchdog(std::string what, unsigned seconds = 60);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    void Watch(unsigned seconds);

    std::string what_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace tavo_test
