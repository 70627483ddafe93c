// A disk that frames wait for.

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <span>

#include "tests/host/avi/memory_store.h"
#include "tests/host/filters/small_frames.h"

namespace tavo {

// A disk on which frames wait until it is opened.
class SlowStore final : public tavo_test::MemoryStore {
  public:
    IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) override {
        if (source.size() == kFrameBytes) {
            std::unique_lock lock(mutex_);
            ++waiting;
            opened_.wait(lock, [&] { return open_; });
            if (outOfMemory) throw std::bad_alloc();
        }
        return MemoryStore::WriteAt(offset, source);
    }

    void Open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        opened_.notify_all();
    }

    std::atomic<int> waiting = 0;  // frames that have come so far
    bool outOfMemory = false;

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

}  // namespace tavo
