// Copies of long rows by the processor's own string move. It writes whole cache lines without
// reading them from memory first, but takes a while to begin.

#pragma once

#include <cstddef>
#include <cstdint>

#include "resample/row_ops/row_ops.h"

namespace tavo {
namespace {

// Shorter rows are copied faster by registers.
constexpr int32_t kLongRowBytes = 2560;

inline void MoveString(uint8_t* dst, const uint8_t* src, size_t bytes) {
    asm volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(bytes) : : "memory");
}

// A set, but with string moves.
template <const RowOps& kOps>
constexpr RowOps kRowOpsWithStringMoves = [] {
    RowOps ops = kOps;
    ops.CopyRow = [](uint8_t* dst, const uint8_t* src, int32_t bytes) {
        if (bytes < kLongRowBytes) return kOps.CopyRow(dst, src, bytes);
        MoveString(dst, src, static_cast<size_t>(bytes));
    };
    ops.CopyBlocks = [](uint8_t* dst, const uint8_t* src, int32_t blocks) {
        if (blocks < kLongRowBytes / 8) return kOps.CopyBlocks(dst, src, blocks);
        MoveString(dst, src, static_cast<size_t>(blocks) * 8);
    };
    return ops;
}();

}  // namespace
}  // namespace tavo
