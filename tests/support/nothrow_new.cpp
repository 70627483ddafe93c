// Replacement of the two nothrow forms of operator new.
#include "tests/support/nothrow_new.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool t_failing = false;
thread_local int t_allowed = 0;
thread_local int t_refused = 0;

void* Allocate(std::size_t size) noexcept {
    if (t_failing) {
        if (t_allowed <= 0) {
            ++t_refused;
            return nullptr;
        }
        --t_allowed;
    }
    return std::malloc(size ? size : 1);
}

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }

namespace tavo_test {

FailNothrowNew::FailNothrowNew(int after) {
    t_allowed = after;
    t_refused = 0;
    t_failing = true;
}

FailNothrowNew::~FailNothrowNew() { t_failing = false; }

int FailNothrowNew::refused() const { return t_refused; }

}  // namespace tavo_test
