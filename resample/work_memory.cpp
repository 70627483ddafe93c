#include "resample/work_memory.h"

#include <atomic>

namespace tavo {
namespace {

std::atomic<bool> isHeld[WorkMemory::kSharedPieces];
// Zero from the start: pages take up memory only once they are used.
alignas(64) uint8_t pieces[WorkMemory::kSharedPieces][WorkMemory::kSharedBytes];

}  // namespace

WorkMemory::WorkMemory() {
    for (int32_t i = 0; i < kSharedPieces; ++i) {
        if (isHeld[i].exchange(true, std::memory_order_acquire)) continue;
        piece_ = i;
        bytes_ = pieces[i];
        return;
    }
}

WorkMemory::~WorkMemory() {
    if (IsShared()) isHeld[piece_].store(false, std::memory_order_release);
}

}  // namespace tavo
