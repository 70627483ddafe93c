// Walks over the heaps, and takes all that there is of a thing to see how much was left.
#include "tests/support/process_usage.h"

#include <windows.h>

#include <tlhelp32.h>

#include <iterator>
#include <vector>

#include "tests/support/handles.h"

namespace tavo_test {

namespace {

void CountHeap(HANDLE heap, ProcessUsage& usage) {
    HeapLock(heap);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry)) {
        if (!(entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)) continue;
        ++usage.heapBlocks;
        usage.heapBytes += entry.cbData;
    }
    HeapUnlock(heap);
}

int Threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL found = Thread32First(snapshot, &entry); found;
         found = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}

int TlsIndexes() {
    constexpr int kAll = 1088;
    std::vector<DWORD> left;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc())
        left.push_back(index);
    for (const DWORD index : left) TlsFree(index);
    return kAll - static_cast<int>(left.size());
}

int GdiObjects() {
    constexpr int kMany = 70000;
    static std::vector<HGDIOBJ> left;
    left.clear();
    left.reserve(kMany);
    while (left.size() < kMany) {
        const HGDIOBJ brush = CreateSolidBrush(RGB(1, 2, 3));
        if (!brush) break;
        left.push_back(brush);
    }
    for (const HGDIOBJ brush : left) DeleteObject(brush);
    return kMany - static_cast<int>(left.size());
}

BOOL CALLBACK CountOwn(HWND window, LPARAM count) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    *reinterpret_cast<int*>(count) += process == GetCurrentProcessId();
    return TRUE;
}

int Windows() {
    int count = 0;
    EnumWindows(CountOwn, reinterpret_cast<LPARAM>(&count));
    for (HWND at = nullptr; (at = FindWindowExW(HWND_MESSAGE, at, nullptr, nullptr)) != nullptr;)
        CountOwn(at, reinterpret_cast<LPARAM>(&count));
    return count;
}

}  // namespace

ProcessUsage ProcessUsage::Now() {
    ProcessUsage usage;
    // First what fills memory of the platform's own with its counting.
    usage.gdiObjects = GdiObjects();
    usage.tlsIndexes = TlsIndexes();
    usage.handles = HandlesInUse();
    usage.threads = Threads();
    usage.windows = Windows();
    HANDLE heaps[256];
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(std::size(heaps)), heaps);
    for (DWORD i = 0; i < count && i < std::size(heaps); ++i) CountHeap(heaps[i], usage);
    return usage;
}

ProcessUsage ProcessUsage::operator-(const ProcessUsage& other) const {
    return {heapBlocks - other.heapBlocks, heapBytes - other.heapBytes,
            handles - other.handles,       threads - other.threads,
            tlsIndexes - other.tlsIndexes, gdiObjects - other.gdiObjects,
            windows - other.windows};
}

std::ostream& operator<<(std::ostream& out, const ProcessUsage& usage) {
    return out << usage.heapBlocks << " heap blocks (" << usage.heapBytes << " bytes), "
               << usage.handles << " handles, " << usage.threads << " threads, " << usage.tlsIndexes
               << " TLS indexes, " << usage.gdiObjects << " GDI objects, " << usage.windows
               << " windows";
}

}  // namespace tavo_test
