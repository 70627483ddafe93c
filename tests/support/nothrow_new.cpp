// Replacement of the two nothrow forms of operator new.
#include "tests/support/nothrow_new.h"

#include <cstdlib>
#include <new>

#include "tests/support/refusals.h"

namespace {

thread_local tavo_test::Refusals t_refusals;

void* Allocate(std::size_t size) noexcept {
    return t_refusals.RefuseNext() ? nullptr : std::malloc(size ? size : 1);
}

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }

namespace tavo_test {

FailNothrowNew::FailNothrowNew(int after) { t_refusals.Start(after); }

FailNothrowNew::~FailNothrowNew() { t_refusals.End(); }

int FailNothrowNew::refused() const { return t_refusals.Refused(); }

}  // namespace tavo_test
