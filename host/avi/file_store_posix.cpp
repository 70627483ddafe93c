// Files by descriptor.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "host/avi/file_store.h"

namespace tavo {
namespace {

// The system moves no more than about 2 GiB per call.
constexpr size_t kMaxTransfer = size_t{1} << 30;

IoResult ResultOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR: return IoResult::NotFound;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR: return IoResult::AccessDenied;
        case EBUSY:
        case ETXTBSY: return IoResult::InUse;
        case ENOSPC:
        case EDQUOT: return IoResult::DiskFull;
        case EFBIG: return IoResult::TooLarge;
        default: return IoResult::Failed;
    }
}

int Descriptor(intptr_t handle) { return static_cast<int>(handle); }

// Reads or writes all of `bytes`; `atEnd` is the result when the system moves none.
template <typename Call, typename Byte>
IoResult Transfer(Call call, int file, uint64_t offset, std::span<Byte> bytes, IoResult atEnd) {
    while (!bytes.empty()) {
        const ssize_t moved = call(file, bytes.data(), std::min(bytes.size(), kMaxTransfer),
                                   static_cast<off64_t>(offset));
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return ResultOf(errno);
        if (moved == 0) return atEnd;
        bytes = bytes.subspan(static_cast<size_t>(moved));
        offset += static_cast<uint64_t>(moved);
    }
    return IoResult::Ok;
}

}  // namespace

FileStore::~FileStore() { Close(); }

IoResult FileStore::OpenForReading(const std::filesystem::path& path) {
    Close();
    handle_ = open64(path.c_str(), O_RDONLY | O_CLOEXEC);
    return IsOpen() ? IoResult::Ok : ResultOf(errno);
}

IoResult FileStore::Create(const std::filesystem::path& path) {
    Close();
    handle_ = open64(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return IsOpen() ? IoResult::Ok : ResultOf(errno);
}

IoResult FileStore::Close() {
    if (!IsOpen()) return IoResult::Ok;
    const int result = close(Descriptor(handle_));
    handle_ = kNoFile;
    return result == 0 ? IoResult::Ok : ResultOf(errno);
}

uint64_t FileStore::Size() const {
    const off64_t length = lseek64(Descriptor(handle_), 0, SEEK_END);
    return length > 0 ? static_cast<uint64_t>(length) : 0;
}

IoResult FileStore::ReadAt(uint64_t offset, std::span<std::byte> target) {
    return Transfer(pread64, Descriptor(handle_), offset, target, IoResult::ShortRead);
}

IoResult FileStore::WriteAt(uint64_t offset, std::span<const std::byte> source) {
    return Transfer(pwrite64, Descriptor(handle_), offset, source, IoResult::DiskFull);
}

IoResult FileStore::Truncate(uint64_t size) {
    const int result = ftruncate64(Descriptor(handle_), static_cast<off64_t>(size));
    return result == 0 ? IoResult::Ok : ResultOf(errno);
}

}  // namespace tavo
