// A value of eight bytes that threads share without a lock.

#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__i386__)

// With the members of std::atomic that are needed here. That one moves eight bytes through the
// registers of the floating point unit, which hold something else where a filter upstream has left
// MMX values in them: then what is read is nonsense.
template <typename T>
class Atomic64 {
    static_assert(sizeof(T) == 8 && std::is_trivially_copyable_v<T>);

  public:
    explicit Atomic64(T value) { store(value); }
    Atomic64(const Atomic64&) = delete;
    Atomic64& operator=(const Atomic64&) = delete;

    // Into memory and not into a register, where a double would pass through the unit after all.
    void LoadTo(T* target) const {
        const uint64_t bits = Exchange(0, 0);
        std::memcpy(target, &bits, sizeof bits);
    }
    T load() const {
        T value;
        LoadTo(&value);
        return value;
    }
    void store(const T& value) {
        uint64_t wanted;
        std::memcpy(&wanted, &value, sizeof wanted);
        uint64_t present = Exchange(0, 0);
        for (uint64_t seen; (seen = Exchange(present, wanted)) != present;) present = seen;
    }
    bool compare_exchange_strong(const T& expected, const T& wanted) {
        uint64_t from;
        uint64_t to;
        std::memcpy(&from, &expected, sizeof from);
        std::memcpy(&to, &wanted, sizeof to);
        return Exchange(from, to) == from;
    }
    void Increment() {
        uint64_t present = Exchange(0, 0);
        for (uint64_t seen; (seen = Exchange(present, present + 1)) != present;) present = seen;
    }

  private:
    // Replaces `expected` by `wanted`, and returns what was there: a cmpxchg8b.
    uint64_t Exchange(uint64_t expected, uint64_t wanted) const {
        return __sync_val_compare_and_swap(&bits_, expected, wanted);
    }

    alignas(8) mutable uint64_t bits_ = 0;
};

#else

template <typename T>
class Atomic64 {
    static_assert(std::atomic<T>::is_always_lock_free);

  public:
    explicit Atomic64(T value) : value_(value) {}

    void LoadTo(T* target) const { *target = value_; }
    T load() const { return value_; }
    void store(const T& value) { value_ = value; }
    bool compare_exchange_strong(T expected, const T& wanted) {
        return value_.compare_exchange_strong(expected, wanted);
    }
    void Increment() { ++value_; }

  private:
    std::atomic<T> value_;
};

#endif
