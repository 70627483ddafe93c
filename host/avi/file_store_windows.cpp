// Files by handle.

#include <windows.h>

#include <algorithm>

#include "host/avi/file_store.h"

namespace tavo {
namespace {

// A call takes a length of 32 bits.
constexpr size_t kMaxTransfer = size_t{1} << 30;

// Not in every platform header.
constexpr DWORD kErrorDiskQuotaExceeded = 1295;

IoResult ResultOf(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME: return IoResult::NotFound;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_DIRECTORY: return IoResult::AccessDenied;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_USER_MAPPED_FILE: return IoResult::InUse;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kErrorDiskQuotaExceeded: return IoResult::DiskFull;
        case ERROR_FILE_TOO_LARGE: return IoResult::TooLarge;
        default: return IoResult::Failed;
    }
}

HANDLE Handle(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

// The offset of a transfer. The handle is not overlapped, so calls still wait.
OVERLAPPED At(uint64_t offset) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

DWORD Part(size_t size) { return static_cast<DWORD>(std::min(size, kMaxTransfer)); }

}  // namespace

FileStore::~FileStore() { Close(); }

IoResult FileStore::OpenForReading(const std::filesystem::path& path) {
    Close();
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    handle_ =
        reinterpret_cast<intptr_t>(CreateFileW(path.c_str(), GENERIC_READ, kShare, nullptr,
                                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return IsOpen() ? IoResult::Ok : ResultOf(GetLastError());
}

IoResult FileStore::Create(const std::filesystem::path& path) {
    Close();
    handle_ = reinterpret_cast<intptr_t>(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                                     FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    return IsOpen() ? IoResult::Ok : ResultOf(GetLastError());
}

IoResult FileStore::Close() {
    if (!IsOpen()) return IoResult::Ok;
    const BOOL closed = CloseHandle(Handle(handle_));
    handle_ = kNoFile;
    return closed ? IoResult::Ok : ResultOf(GetLastError());
}

uint64_t FileStore::Size() const {
    LARGE_INTEGER size = {};
    return GetFileSizeEx(Handle(handle_), &size) ? static_cast<uint64_t>(size.QuadPart) : 0;
}

IoResult FileStore::ReadAt(uint64_t offset, std::span<std::byte> target) {
    while (!target.empty()) {
        OVERLAPPED place = At(offset);
        DWORD moved = 0;
        if (!ReadFile(Handle(handle_), target.data(), Part(target.size()), &moved, &place)) {
            const DWORD error = GetLastError();
            return error == ERROR_HANDLE_EOF ? IoResult::ShortRead : ResultOf(error);
        }
        if (moved == 0) return IoResult::ShortRead;
        target = target.subspan(moved);
        offset += moved;
    }
    return IoResult::Ok;
}

IoResult FileStore::WriteAt(uint64_t offset, std::span<const std::byte> source) {
    while (!source.empty()) {
        OVERLAPPED place = At(offset);
        DWORD moved = 0;
        if (!WriteFile(Handle(handle_), source.data(), Part(source.size()), &moved, &place)) {
            return ResultOf(GetLastError());
        }
        // A disk that is nearly full takes a part, and reports it on the next call.
        if (moved == 0) return IoResult::DiskFull;
        source = source.subspan(moved);
        offset += moved;
    }
    return IoResult::Ok;
}

IoResult FileStore::Truncate(uint64_t size) {
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(size);
    if (SetFilePointerEx(Handle(handle_), end, nullptr, FILE_BEGIN) &&
        SetEndOfFile(Handle(handle_))) {
        return IoResult::Ok;
    }
    return ResultOf(GetLastError());
}

}  // namespace tavo
