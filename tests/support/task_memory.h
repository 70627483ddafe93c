// Watches and refuses task memory (CoTaskMemAlloc and everything above it).
//
//   const long before = LiveTaskBlocks();
//   { FailTaskMemory fail; EXPECT_EQ(pin->QueryId(&id), E_OUTOFMEMORY); }   // every allocation
//   { FailTaskMemory fail(2); ... }                                        // after two more
//   EXPECT_EQ(LiveTaskBlocks(), before);                                   // nothing leaked
//
// Both concern the calling thread only: a block that one thread allocates and another frees counts
// for neither rightly. The spy is there from the start of a program that uses this header.
#pragma once

namespace tavo_test {

long LiveTaskBlocks();

class FailTaskMemory {
  public:
    explicit FailTaskMemory(int after = 0);
    ~FailTaskMemory();
    FailTaskMemory(const FailTaskMemory&) = delete;
    FailTaskMemory& operator=(const FailTaskMemory&) = delete;
    // How many allocations were refused so far.
    int refused() const;
};

}  // namespace tavo_test
