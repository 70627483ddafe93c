// Byte stores for tests: memory with a limited "disk", and one that remembers only small writes.

#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "host/avi/byte_store.h"

namespace tavo_test {

class MemoryStore : public tavo::ByteStore {
  public:
    MemoryStore() = default;
    explicit MemoryStore(std::vector<std::byte> content) : bytes(std::move(content)) {}

    uint64_t Size() const override { return bytes.size(); }

    tavo::IoResult ReadAt(uint64_t offset, std::span<std::byte> target) override {
        if (offset > bytes.size() || bytes.size() - offset < target.size()) {
            return tavo::IoResult::ShortRead;
        }
        std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(offset), target.size(), target.begin());
        return tavo::IoResult::Ok;
    }

    // Like a full disk: writes what fits, then fails.
    tavo::IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) override {
        ++writes;
        bytesOffered += source.size();
        if (failure != tavo::IoResult::Ok && --writesUntilFailure < 0) return failure;
        const uint64_t end = std::min(offset + source.size(), capacity);
        if (end > bytes.size()) bytes.resize(static_cast<size_t>(end));
        const size_t fits = end > offset ? static_cast<size_t>(end - offset) : 0;
        std::copy_n(source.begin(), fits, bytes.begin() + static_cast<ptrdiff_t>(offset));
        return fits == source.size() ? tavo::IoResult::Ok : tavo::IoResult::DiskFull;
    }

    tavo::IoResult Truncate(uint64_t size) override {
        bytes.resize(static_cast<size_t>(size));
        return tavo::IoResult::Ok;
    }

    std::vector<std::byte> bytes;
    uint64_t capacity = UINT64_MAX;
    tavo::IoResult failure = tavo::IoResult::Ok;
    int writesUntilFailure = 0;
    int writes = 0;
    uint64_t bytesOffered = 0;  // to WriteAt, in all
};

// Files larger than memory: writes of a mebibyte and more count as zeros.
class SparseStore : public tavo::ByteStore {
  public:
    uint64_t Size() const override { return size_; }

    tavo::IoResult ReadAt(uint64_t offset, std::span<std::byte> target) override {
        if (offset > size_ || size_ - offset < target.size()) return tavo::IoResult::ShortRead;
        for (size_t i = 0; i < target.size(); ++i) {
            const auto page = pages_.find((offset + i) / kPage);
            target[i] = page == pages_.end() ? std::byte{0} : page->second[(offset + i) % kPage];
        }
        return tavo::IoResult::Ok;
    }

    tavo::IoResult WriteAt(uint64_t offset, std::span<const std::byte> source) override {
        size_ = std::max(size_, offset + source.size());
        if (source.size() >= size_t{1} << 20) return tavo::IoResult::Ok;
        for (size_t i = 0; i < source.size(); ++i) {
            auto& page = pages_[(offset + i) / kPage];
            page.resize(kPage);
            page[(offset + i) % kPage] = source[i];
        }
        return tavo::IoResult::Ok;
    }

    tavo::IoResult Truncate(uint64_t size) override {
        size_ = size;
        return tavo::IoResult::Ok;
    }

  private:
    static constexpr uint64_t kPage = 4096;
    std::map<uint64_t, std::vector<std::byte>> pages_;
    uint64_t size_ = 0;
};

}  // namespace tavo_test
