// Ends the process with seed and step when a call does not come back. Crashes tell the same.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavo_test {

// One at a time.
class StepWatch {
  public:
    StepWatch();
    ~StepWatch();
    StepWatch(const StepWatch&) = delete;
    StepWatch& operator=(const StepWatch&) = delete;

    // About to make this step.
    static void Step(unsigned seed, int step, const char* name);

  private:
    void Watch();

    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace tavo_test
