// Random choices that a seed repeats.
#pragma once

#include <initializer_list>
#include <random>
#include <span>

namespace tavo_test {

class Dice {
  public:
    explicit Dice(unsigned seed) : random(seed) {}

    // From 0 to count - 1.
    int Below(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
    // Once in so many times.
    bool OneIn(int count) { return Below(count) == 0; }
    template <typename T>
    T Of(std::initializer_list<T> values) {
        return values.begin()[Below(static_cast<int>(values.size()))];
    }
    template <typename Container>
    const auto& OneOf(const Container& values) {
        return values[static_cast<size_t>(Below(static_cast<int>(std::size(values))))];
    }

    std::mt19937 random;
};

}  // namespace tavo_test
