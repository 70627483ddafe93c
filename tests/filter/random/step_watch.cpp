#include "tests/filter/random/step_watch.h"

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>

#include "tests/support/guarded_buffer.h"
#include "tests/support/patience.h"

namespace tavo_test {

namespace {

std::atomic<long> g_steps = 0;
std::mutex g_textMutex;
std::string g_text = "(no step)";

LONG WINAPI TellOfCrash(EXCEPTION_POINTERS* exception) {
    std::printf("\nCRASH %08lx in %s\n", exception->ExceptionRecord->ExceptionCode, g_text.c_str());
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 96);
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

StepWatch::StepWatch() : thread_([this] { Watch(); }) { SetUnhandledExceptionFilter(TellOfCrash); }

StepWatch::~StepWatch() {
    {
        const std::lock_guard lock(mutex_);
        done_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void StepWatch::Step(unsigned seed, int step, const char* name) {
    const std::lock_guard lock(g_textMutex);
    g_text = "TAVO_SEED=" + std::to_string(seed) + ", act " + std::to_string(step) + " " + name;
    tavo::test::SetCurrentTrial(g_text.c_str());
    ++g_steps;
}

void StepWatch::Watch() {
    std::unique_lock lock(mutex_);
    long seen = g_steps;
    const std::chrono::milliseconds patience(kPatience);
    while (!wake_.wait_for(lock, patience, [this] { return done_; })) {
        if (const long now = g_steps; now != seen) {
            seen = now;
            continue;
        }
        const std::lock_guard text(g_textMutex);
        std::printf("\nWATCHDOG: no end of %s\n", g_text.c_str());
        std::fflush(stdout);
        // Other threads hang: neither exit handlers nor destructors may run.
        TerminateProcess(GetCurrentProcess(), 97);
    }
}

}  // namespace tavo_test
