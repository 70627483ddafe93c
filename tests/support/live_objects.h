// Counts of the test library's own objects that are alive, to find references that were lost.
//
//   const LiveCounts before = CurrentLiveCounts();
//   ... connect, stream, disconnect, drop every pointer ...
//   EXPECT_EQ(CurrentLiveCounts(), before);
//
// A filter that keeps a peer pin, an allocator or a sample too long shows up here. Samples in the
// pool of an allocator do not count until they are handed out.
#pragma once

#include <ostream>

namespace tavo_test {

struct LiveCounts {
    long filters = 0;
    long allocators = 0;
    long samples = 0;
    long enumerators = 0;
    bool operator==(const LiveCounts&) const = default;
};

std::ostream& operator<<(std::ostream& out, const LiveCounts& counts);

LiveCounts CurrentLiveCounts();

enum class LiveKind { kFilter, kAllocator, kSample, kEnumerator };

void CountLive(LiveKind kind, int change);

// Base of everything that is counted for its whole life.
template <LiveKind kKind>
class LiveObject {
  public:
    LiveObject() { CountLive(kKind, 1); }
    ~LiveObject() { CountLive(kKind, -1); }
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;
};

}  // namespace tavo_test
