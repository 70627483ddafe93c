// The queue of the AVI sink.

#include "host/avi/work_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

#include "tests/support/rounds.h"

namespace tavo {
namespace {

using Item = std::shared_ptr<int>;

// The library's own semaphore was seen to hang under Wine.
class Semaphore {
  public:
    void release(int count = 1) {
        const std::lock_guard lock(mutex_);
        count_ += count;
        changed_.notify_all();
    }
    void acquire() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return count_ > 0; });
        --count_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

// Works on as many items as it is given leave for.
class Worker final : public WorkQueue<Item>::Worker {
  public:
    bool Work(Item& item) override {
        started.release();
        leave.acquire();
        done.push_back(*item);
        return *item != failing;
    }

    Semaphore started;
    Semaphore leave;
    std::vector<int> done;  // read after Drain or End
    int failing = -1;
};

std::vector<int> UpTo(int count) {
    std::vector<int> numbers(static_cast<size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST(WorkQueue, KeepsTheOrder) {
    const int count = tavo_test::Rounds(1000);
    Worker worker;
    worker.leave.release(count);
    WorkQueue<Item> queue(worker);
    ASSERT_TRUE(queue.Start(3));
    for (int i = 0; i < count; ++i) ASSERT_TRUE(queue.Put(std::make_shared<int>(i)));
    queue.Drain();
    EXPECT_EQ(worker.done, UpTo(count));
}

TEST(WorkQueue, HoldsNoMoreThanItsCapacity) {
    Worker worker;
    WorkQueue<Item> queue(worker);
    ASSERT_TRUE(queue.Start(2));
    const Item first = std::make_shared<int>(0);
    ASSERT_TRUE(queue.Put(first));
    worker.started.acquire();
    ASSERT_TRUE(queue.Put(std::make_shared<int>(1)));
    std::atomic<bool> taken = false;
    std::thread third([&] { taken = queue.Put(std::make_shared<int>(2)); });
    // The item at work counts as well.
    std::this_thread::yield();
    EXPECT_FALSE(taken);
    EXPECT_EQ(first.use_count(), 2);
    worker.leave.release();
    third.join();
    EXPECT_TRUE(taken);
    EXPECT_EQ(first.use_count(), 1);
    worker.leave.release(2);
    queue.End();
    EXPECT_EQ(worker.done, UpTo(3));
}

TEST(WorkQueue, DropsWhatWaitsBehindAFailure) {
    Worker worker;
    worker.failing = 0;
    WorkQueue<Item> queue(worker);
    ASSERT_TRUE(queue.Start(3));
    const Item waiting = std::make_shared<int>(1);
    ASSERT_TRUE(queue.Put(std::make_shared<int>(0)));
    ASSERT_TRUE(queue.Put(waiting));
    ASSERT_TRUE(queue.Put(waiting));
    worker.started.acquire();
    bool taken = true;
    std::thread blocked([&] { taken = queue.Put(waiting); });
    worker.leave.release();
    blocked.join();
    EXPECT_FALSE(taken);
    queue.Drain();
    EXPECT_EQ(worker.done, UpTo(1));
    EXPECT_EQ(waiting.use_count(), 1);
    EXPECT_FALSE(queue.Put(waiting));
}

TEST(WorkQueue, EndsWithTheLastItem) {
    Worker worker;
    WorkQueue<Item> queue(worker);
    EXPECT_FALSE(queue.Put(std::make_shared<int>(0))) << "it has no thread";
    queue.Drain();
    ASSERT_TRUE(queue.Start(2));
    ASSERT_TRUE(queue.Put(std::make_shared<int>(0)));
    ASSERT_TRUE(queue.Put(std::make_shared<int>(1)));
    bool taken = true;
    std::thread blocked([&] { taken = queue.Put(std::make_shared<int>(2)); });
    std::thread ending([&] { queue.End(); });
    blocked.join();
    worker.leave.release(2);
    ending.join();
    EXPECT_FALSE(taken);
    EXPECT_EQ(worker.done, UpTo(2));
    EXPECT_FALSE(queue.Put(std::make_shared<int>(3)));
    ASSERT_TRUE(queue.Start(1)) << "it can be used again";
    worker.leave.release();
    ASSERT_TRUE(queue.Put(std::make_shared<int>(4)));
    queue.Drain();
    EXPECT_EQ(worker.done.back(), 4);
}

}  // namespace
}  // namespace tavo
