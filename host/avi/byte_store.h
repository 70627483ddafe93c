// Where the AVI code reads and writes bytes: a file, or memory in a test.

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
    TooLarge,  // for the file system
    ShortRead,
    Failed,
};

// Not thread-safe.
class ByteStore {
  public:
    virtual ~ByteStore() = default;

    virtual uint64_t Size() const = 0;

    // Reads all of `target` or fails. ShortRead at the end of the store.
    virtual IoResult ReadAt(uint64_t offset, std::span<std::byte> target) = 0;

    // Writes all of `source` or fails. A part of it may be written then.
    virtual IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) = 0;

    virtual IoResult Truncate(uint64_t size) = 0;
};

}  // namespace tavo
