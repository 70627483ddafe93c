// The seam between the AVI code and what holds the bytes: a file, or memory in a test.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavo {

enum class IoResult {
    Ok,
    NotFound,
    AccessDenied,
    InUse,
    DiskFull,
    TooLarge,  // more than the file system lets one file hold
    ShortRead,
    Failed,
};

// Not for several threads at once.
class ByteStore {
  public:
    virtual ~ByteStore() = default;

    virtual uint64_t Size() const = 0;

    // Reads all of `target` or fails; ShortRead when the store ends before.
    virtual IoResult ReadAt(uint64_t offset, std::span<std::byte> target) = 0;

    // Writes all of `source` or fails; part of it may be in the store then.
    virtual IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) = 0;

    virtual IoResult Truncate(uint64_t size) = 0;
};

}  // namespace tavo
