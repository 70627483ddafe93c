// The platform's millisecond time in the hands of a test, and what a module asks of the platform
// to keep time: periods of the timer, and threads.
//
//   MultimediaTime time;                       // stands at 0
//   time.Next({100, 107});                     // what the next two readings give
//   EXPECT_EQ(time.Readings(), 2);
//   EXPECT_EQ(time.Periods(), "begin 1, end 1, ");
#pragma once

#include <windows.h>

#include <deque>
#include <initializer_list>
#include <mutex>
#include <string>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/module_imports.h"

namespace tavo_test {

// One at a time.
class MultimediaTime {
  public:
    explicit MultimediaTime(HMODULE module = TheModule().handle());
    ~MultimediaTime();
    MultimediaTime(const MultimediaTime&) = delete;
    MultimediaTime& operator=(const MultimediaTime&) = delete;

    // Readings after these repeat the last one.
    void Next(std::initializer_list<DWORD> readings);
    // What is left of those.
    size_t Left() const;
    // Since the start.
    int Readings() const;
    int Threads() const;
    // Calls of timeBeginPeriod and timeEndPeriod in order.
    std::string Periods() const;

  private:
    static DWORD WINAPI Read();
    static MMRESULT WINAPI BeginPeriod(UINT period);
    static MMRESULT WINAPI EndPeriod(UINT period);
    static HANDLE WINAPI MakeThread(SECURITY_ATTRIBUTES* security, SIZE_T stack,
                                    LPTHREAD_START_ROUTINE start, void* parameter, DWORD flags,
                                    DWORD* id);

    static MultimediaTime* current;

    mutable std::mutex mutex_;
    std::deque<DWORD> next_;
    DWORD now_ = 0;
    int readings_ = 0;
    int threads_ = 0;
    std::string periods_;
    const ImportPatch patches_[4];
};

}  // namespace tavo_test
