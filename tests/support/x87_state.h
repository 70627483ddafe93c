// The state of the x87 unit, which the MMX registers share and a host application may have set to
// anything.

#pragma once

#include <cstdint>

#if defined(__i386__) || defined(__x86_64__)
#define TAVO_TEST_HAS_X87 1
#else
#define TAVO_TEST_HAS_X87 0
#endif

namespace tavo::test {

constexpr uint16_t kEmptyTagWord = 0xffff;

#if TAVO_TEST_HAS_X87

// 0xffff when all eight registers are empty, as floating-point code expects to find them.
inline uint16_t X87TagWord() {
    struct {
        uint16_t control, gap0, status, gap1, tag, gap2;
        uint32_t pointers[4];
    } environment;
    asm volatile("fnstenv %0\n\tfldenv %0" : "=m"(environment) : : "memory");
    return environment.tag;
}

inline uint16_t X87ControlWord() {
    uint16_t word;
    asm volatile("fnstcw %0" : "=m"(word) : : "memory");
    return word;
}

inline void SetX87ControlWord(uint16_t word) {
    asm volatile("fnclex\n\tfldcw %0" : : "m"(word) : "memory");
}

#else

inline uint16_t X87TagWord() { return kEmptyTagWord; }
inline uint16_t X87ControlWord() { return 0; }
inline void SetX87ControlWord(uint16_t) {}

#endif

// Sets the control word for as long as the object lives.
class X87ControlWordScope {
  public:
    explicit X87ControlWordScope(uint16_t word) : saved_(X87ControlWord()) {
        SetX87ControlWord(word);
    }
    ~X87ControlWordScope() { SetX87ControlWord(saved_); }
    X87ControlWordScope(const X87ControlWordScope&) = delete;
    X87ControlWordScope& operator=(const X87ControlWordScope&) = delete;

  private:
    uint16_t saved_;
};

// Control words that hosts have been seen to leave behind.
struct X87Setting {
    const char* name;
    uint16_t word;
};
constexpr X87Setting kX87Settings[] = {
    {"24 bit mantissa", 0x007f},
    {"53 bit mantissa", 0x027f},
    {"64 bit mantissa", 0x037f},
    {"64 bit mantissa, rounding down", 0x077f},
    {"64 bit mantissa, rounding up", 0x0b7f},
    {"53 bit mantissa, rounding toward zero", 0x0e7f},
    {"64 bit mantissa, invalid, division and overflow trap", 0x0372},
    {"64 bit mantissa, everything traps", 0x0340},
};

}  // namespace tavo::test
