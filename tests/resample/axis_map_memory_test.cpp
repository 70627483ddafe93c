// Building maps when memory runs out at each allocation in turn: no map, nothing thrown, nothing
// left behind. This program replaces the allocation functions, so it stands alone.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "resample/axis_map.h"

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void __real_free(void* memory);
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void __wrap_free(void* memory);
}

namespace {

// While watching is set, allocations are counted and the one numbered failAt (from 1) fails, as do
// all after it.
bool watching = false;
int failAt = 0;
int requested = 0;
int live = 0;

bool Granted() {
    if (!watching) return true;
    ++requested;
    return failAt == 0 || requested < failAt;
}

void* Count(void* memory) {
    if (watching && memory) ++live;
    return memory;
}

void* Allocate(size_t size) { return Granted() ? Count(__real_malloc(size ? size : 1)) : nullptr; }

void* AllocateOrThrow(size_t size) {
    if (void* memory = Allocate(size)) return memory;
    throw std::bad_alloc();
}

void Free(void* memory) {
    if (watching && memory) --live;
    __real_free(memory);
}

}  // namespace

// The linker sends every call of the C functions here.
void* __wrap_malloc(size_t size) { return Allocate(size); }
void* __wrap_calloc(size_t count, size_t size) {
    return Granted() ? Count(__real_calloc(count, size)) : nullptr;
}
void __wrap_free(void* memory) { Free(memory); }

void* operator new(size_t size) { return AllocateOrThrow(size); }
void* operator new[](size_t size) { return AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, size_t) noexcept { Free(memory); }
void operator delete[](void* memory, size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }

namespace tavo::test {
namespace {

struct Outcome {
    bool built;
    bool threw;
    int requested;
    int leaked;
};

// Runs build with the given allocation failing (none, if 0), and frees what it returns.
template <typename Build>
Outcome Attempt(int failing, Build build) {
    Outcome outcome{};
    failAt = failing;
    requested = 0;
    live = 0;
    watching = true;
    try {
        AxisMap* map = build();
        outcome.built = map != nullptr;
        outcome.requested = requested;
        FreeAxisMap(map);
    } catch (...) {
        outcome.threw = true;
    }
    outcome.leaked = live;
    watching = false;
    return outcome;
}

template <typename Build>
void ExpectNoneWheneverMemoryRunsOut(Build build) {
    const Outcome whole = Attempt(0, build);
    EXPECT_TRUE(whole.built);
    EXPECT_EQ(whole.requested, 3) << "the record and its two arrays";
    EXPECT_EQ(whole.leaked, 0);
    for (int failing = 1; failing <= whole.requested; ++failing) {
        SCOPED_TRACE(testing::Message() << "allocation " << failing << " fails");
        const Outcome outcome = Attempt(failing, build);
        EXPECT_FALSE(outcome.threw);
        EXPECT_FALSE(outcome.built);
        EXPECT_GE(outcome.requested, failing);
        EXPECT_EQ(outcome.leaked, 0);
    }
}

TEST(AxisMapMemory, NoMapWheneverAnAllocationFails) {
    ExpectNoneWheneverMemoryRunsOut([] { return BuildAxisMap(640, 480, 0); });
}

TEST(AxisMapMemory, NoBoundedMapWheneverAnAllocationFails) {
    AxisMap* whole = BuildAxisMap(640, 480, 0);
    ASSERT_NE(whole, nullptr);
    ExpectNoneWheneverMemoryRunsOut([&] { return BuildBoundedAxisMap(*whole, 320, 240); });
    FreeAxisMap(whole);
}

// Five bytes for each of two thousand million entries are more than 32 bits can address.
TEST(AxisMapMemory, NoMapForALengthBeyondTheAddressSpace) {
    if constexpr (sizeof(void*) == 4) {
        const Outcome outcome = Attempt(0, [] { return BuildAxisMap(640, INT32_MAX, 0); });
        EXPECT_FALSE(outcome.threw);
        EXPECT_FALSE(outcome.built);
        EXPECT_EQ(outcome.leaked, 0);
    } else {
        GTEST_SKIP() << "64-bit memory may hold it";
    }
}

}  // namespace
}  // namespace tavo::test
