// What this process holds of things that can run out, to find what is left behind.
//
//   Round();                                        // what is made once must not count
//   const ProcessUsage before = ProcessUsage::Now();
//   ... many rounds ...
//   EXPECT_EQ(ProcessUsage::Now() - before, ProcessUsage{});
#pragma once

#include <ostream>

namespace tavo_test {

struct ProcessUsage {
    long long heapBlocks = 0;  // of all heaps of the process
    long long heapBytes = 0;
    int handles = 0;  // up to a constant
    int threads = 0;
    int tlsIndexes = 0;  // a process has 1,088
    int gdiObjects = 0;  // up to a constant
    int windows = 0;     // those without a parent; children go with them

    static ProcessUsage Now();

    ProcessUsage operator-(const ProcessUsage& other) const;
    bool operator==(const ProcessUsage&) const = default;
};

std::ostream& operator<<(std::ostream& out, const ProcessUsage& usage);

}  // namespace tavo_test
