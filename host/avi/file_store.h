// A file as a byte store. Nothing is buffered: each call reports its own error.

#pragma once

#include <filesystem>

#include "host/avi/byte_store.h"

namespace tavo {

class FileStore : public ByteStore {
  public:
    FileStore() = default;
    ~FileStore() override;
    FileStore(const FileStore&) = delete;
    FileStore& operator=(const FileStore&) = delete;

    IoResult OpenForReading(const std::filesystem::path& path);

    // Creates the file, or empties an existing one. Other programs may read it meanwhile.
    IoResult Create(const std::filesystem::path& path);

    // Reports errors of writes that the system has delayed.
    IoResult Close();

    bool IsOpen() const { return handle_ != kNoFile; }

    uint64_t Size() const override;
    IoResult ReadAt(uint64_t offset, std::span<std::byte> target) override;
    IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) override;
    IoResult Truncate(uint64_t size) override;

  private:
    static constexpr intptr_t kNoFile = -1;

    intptr_t handle_ = kNoFile;  // of the operating system
};

}  // namespace tavo
