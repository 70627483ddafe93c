// How often tests repeat what can only be found by repeating. By default they are quick; the
// variable TAVO_ROUNDS of the environment, a whole number, makes them so many times longer.
//
//   for (int i = 0; i < Rounds(300); ++i) LoadUseAndUnload();
#pragma once

#include <climits>
#include <cstdio>
#include <cstdlib>

namespace tavo_test {

inline int Rounds(int quick) {
    const char* const text = std::getenv("TAVO_ROUNDS");
    if (!text || !*text) return quick;
    char* end = nullptr;
    const long long times = std::strtoll(text, &end, 10);
    if (*end || times < 1 || times > INT_MAX / quick) {
        std::fprintf(stderr, "TAVO_ROUNDS must be a whole number from 1: it is %s\n", text);
        std::abort();
    }
    return static_cast<int>(quick * times);
}

}  // namespace tavo_test
