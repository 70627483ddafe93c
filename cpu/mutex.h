// A lock that needs no runtime: it is constant at the start and has nothing to release. The C++
// library's own leaves thread-local storage behind in a process that unloads the module.

#pragma once

#if !defined(_WIN32)
#include <mutex>
#endif

namespace tavo {

#if defined(_WIN32)
// Not recursive. Any thread.
class Mutex {
  public:
    constexpr Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock();
    void Unlock();

  private:
    void* state_ = nullptr;  // an SRWLOCK
};
#else
class Mutex {
  public:
    void Lock() { mutex_.lock(); }
    void Unlock() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};
#endif

// Holds a mutex while it lives.
class MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~MutexLock() { mutex_.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace tavo
