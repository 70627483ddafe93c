// Ends the process with a message if a scope takes too long, so that a deadlock is a failure
// with a name and not a hung run. How fast something is, is not its business: the time is one that
// no test needs, on whatever machine.
//
//   Watchdog dog("Stop while Receive is held");
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tavo_test {

class Watchdog {
  public:
    // `describe` is asked for more to say when the time is over, on a thread of the watchdog's.
    explicit Watchdog(std::string what, unsigned seconds = 300,
                      std::function<std::string()> describe = {});
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    void Watch(unsigned seconds);

    std::string what_;
    std::function<std::string()> describe_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace tavo_test
