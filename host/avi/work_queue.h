// A bounded queue with a thread of its own that works on the items in their order.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tavo {

// `Item` can be moved without throwing. An item counts until the work on it is done and what it
// holds is released. Any thread may call any member, but for Start and End, which exclude each
// other.
template <typename Item>
class WorkQueue {
  public:
    class Worker {
      public:
        // On the thread of the queue. After false, the items that wait are dropped.
        virtual bool Work(Item& item) = 0;

      protected:
        ~Worker() = default;
    };

    // `worker` outlives the queue.
    explicit WorkQueue(Worker& worker) : worker_(worker) {}
    ~WorkQueue() { End(); }
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    // For at most `capacity` items, at least 1. False without memory or a thread.
    bool Start(size_t capacity) {
        End();
        try {
            ring_.resize(capacity);
            ending_ = false;
            failed_ = false;
            thread_ = std::thread([this] { Run(); });
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const std::system_error&) {
            return false;
        }
        return true;
    }

    // Waits for room. False, and nothing is queued, after a failure and without a thread.
    bool Put(Item item) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return count_ < ring_.size() || failed_ || ending_; });
        if (failed_ || ending_) return false;
        ring_[(first_ + count_) % ring_.size()] = std::move(item);
        ++count_;
        changed_.notify_all();
        return true;
    }

    // Waits until no item is left.
    void Drain() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return count_ == 0; });
    }

    // Ends the thread when no item is left. A Put that waits returns false.
    void End() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
            changed_.notify_all();
        }
        if (thread_.joinable()) thread_.join();
    }

  private:
    void Run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [&] { return count_ > 0 || ending_; });
            if (count_ == 0) return;
            Item& item = ring_[first_];
            const bool dropped = failed_;
            lock.unlock();
            const bool done = !dropped && worker_.Work(item);
            item = Item();
            lock.lock();
            if (!done) failed_ = true;
            first_ = (first_ + 1) % ring_.size();
            --count_;
            changed_.notify_all();
        }
    }

    Worker& worker_;
    std::mutex mutex_;  // guards all below but the item at work and the thread
    std::condition_variable changed_;
    std::vector<Item> ring_;
    size_t first_ = 0;
    size_t count_ = 0;
    bool failed_ = false;
    bool ending_ = true;
    std::thread thread_;
};

}  // namespace tavo
