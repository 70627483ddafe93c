// Plans for instruction sets with a byte shuffle. Destination bytes are planned in tiles of eight.
// A tile loads one window of sixteen source bytes, two windows of eight, or two of sixteen, and a
// shuffle puts them in place for the blend. If a shuffle reaches across the whole register, all
// tiles of a register load one common window, as long as the register or twice that.
//
// A blend is the sum a * (256 - w) + b * w. Bytes are biased to value - 128, so that the 16-bit sum
// cannot overflow. A weight of 256 does not fit a byte: where w is 0, the same byte is taken twice
// with 128 each.

#pragma once

#include "resample/row_ops/portable_columns.h"

namespace tavo {
namespace {

// No library functions: compiled here, they could be linked into code for older processors.
inline int32_t Min(int32_t a, int32_t b) { return a < b ? a : b; }
inline int32_t Max(int32_t a, int32_t b) { return a > b ? a : b; }

constexpr int32_t kTileBytes = 8;

// Two registers of sums give one of bytes, so a step is two tiles for each part of sixteen bytes.
// The last step is filled up with the last byte of the row.
template <typename V>
constexpr int32_t kTilesAStep = V::kParts * 2;
template <typename V>
constexpr int32_t kStepBytes = kTilesAStep<V>* kTileBytes;

// A tile's place in the tables of a step (with two parts: tiles 0 1 2 3 at 0 2 1 3). With two
// parts, registers are joined part by part: the first register of a step gets the even tiles, the
// second one the odd ones.
template <typename V>
constexpr int32_t PositionOf(int32_t tile) {
    return V::kParts == 2 ? (tile & ~3) | (tile & 1) << 1 | (tile >> 1 & 1) : tile;
}

// The tables of one step, by position.
template <typename V>
struct ShuffleStep {
    int32_t low[kTilesAStep<V>];   // offset of the window, or of its first half
    int32_t high[kTilesAStep<V>];  // offset of its second half, when there are two
    uint8_t shuffle[kTilesAStep<V>][16];
    uint8_t weights[kTilesAStep<V>][16];
    static_assert(64 % kStepBytes<V> == 0);
};

enum Window : int32_t { NoWindow, OneWindow, TwoWindows, WideWindows };

template <typename V>
ShuffleStep<V>* StepsOf(const ColumnPlan& plan) {
    static_assert(sizeof(ShuffleStep<V>) * (64 / kStepBytes<V>) == PlanTableBytes(64));
    return reinterpret_cast<ShuffleStep<V>*>(plan.tables);
}

// Destination bytes that are planned at once: whole steps and whole pixels of all sizes.
constexpr int32_t kBatchBytes = 192;

// For each destination byte: the source byte, the one that it is mixed with, and the weight of that
// one. Bytes behind the last column repeat it.
struct ByteSources {
    int32_t at[kBatchBytes];
    int32_t next[kBatchBytes];
    uint8_t weights[kBatchBytes];
    int32_t count = 0;

    void Add(int32_t from, int32_t mixedWith, uint8_t weight) {
        at[count] = from;
        next[count] = mixedWith;
        weights[count] = weight;
        ++count;
    }
    void FillUp(int32_t end) {
        while (count < end) Add(at[count - 1], next[count - 1], weights[count - 1]);
    }
};

// Pixels and their right neighbours. A neighbour with weight 0 is not read.
template <typename Pixel>
struct PixelBytes {
    static constexpr int32_t kColumnBytes = Pixel::kSize;

    void AddTo(ByteSources& sources, const ColumnRun& columns) const {
        for (int32_t column = 0; column < columns.count; ++column) {
            const auto pixel = static_cast<int32_t>(columns.Pixel(column)) * Pixel::kSize;
            const uint8_t weight = columns.weights ? columns.weights[column] : 0;
            const int32_t reach = weight == 0 ? 0 : Pixel::kSize;
            for (int32_t i = 0; i < Pixel::kSize; ++i) {
                sources.Add(pixel + i, pixel + i + reach, weight);
            }
        }
    }
};

// Groups of two packed pixels, whose chroma is mixed.
struct PackedBytes {
    static constexpr int32_t kColumnBytes = 2;
    const PackedLayout& layout;

    void AddTo(ByteSources& sources, const ColumnRun& columns) const {
        for (int32_t column = 0; column < columns.count; column += 2) {
            const auto even = static_cast<int32_t>(columns.Pixel(column));
            const auto odd =
                static_cast<int32_t>(columns.Pixel(Min(column + 1, columns.count - 1)));
            for (int32_t i = 0; i < 4; ++i) {
                if (i % 2 == layout.luma) {
                    const int32_t luma = (i < 2 ? even : odd) * 2 + layout.luma;
                    sources.Add(luma, luma, 0);
                } else {
                    sources.Add(even / 2 * 4 + i, odd / 2 * 4 + i, 0);
                }
            }
        }
    }
};

// The lowest and the highest source byte of some destination bytes.
struct SourceSpan {
    int32_t first;
    int32_t last;
};
inline SourceSpan SpanOf(const ByteSources& sources, int32_t byte, int32_t count) {
    SourceSpan span = {sources.at[byte], 0};
    for (int32_t i = byte; i < byte + count; ++i) {
        span.first = Min(span.first, sources.at[i]);
        span.last = Max(span.last, Max(sources.at[i], sources.next[i]));
    }
    return span;
}

// Places a window of `size` bytes over a span, inside the row. False if the span is wider than the
// window.
inline bool PlaceWindow(SourceSpan span, int32_t size, int32_t rowBytes, int32_t* offset) {
    *offset = Max(0, Min(span.first, rowBytes - size));
    return *offset + size <= rowBytes && span.last < *offset + size;
}

// Places the window or windows of a tile that begins with destination byte `byte`. A shared window
// is placed by the first tile of a register.
template <typename V>
bool PlaceTile(ShuffleStep<V>& step, int32_t tile, const ByteSources& sources, int32_t byte,
               int32_t window, int32_t rowBytes) {
    const int32_t position = PositionOf<V>(tile);
    step.high[position] = 0;
    if (V::kSharesWindow) {
        if (tile % V::kParts != 0) {
            step.low[position] = step.low[position - 1];
            return true;
        }
        const int32_t size = window == OneWindow ? V::kParts * 16 : V::kParts * 32;
        return PlaceWindow(SpanOf(sources, byte, V::kParts * kTileBytes), size, rowBytes,
                           &step.low[position]);
    }
    if (window == OneWindow) {
        return PlaceWindow(SpanOf(sources, byte, 8), 16, rowBytes, &step.low[position]);
    }
    const int32_t size = window == TwoWindows ? 8 : 16;
    return PlaceWindow(SpanOf(sources, byte, 4), size, rowBytes, &step.low[position]) &&
           PlaceWindow(SpanOf(sources, byte + 4, 4), size, rowBytes, &step.high[position]);
}

// Where a source byte is in what a tile loads.
template <typename V>
uint8_t PlaceInTile(const ShuffleStep<V>& step, int32_t position, int32_t window, int32_t i,
                    int32_t at) {
    const bool isHigh = !V::kSharesWindow && window != OneWindow && i >= 4;
    const int32_t highPlace = window == TwoWindows ? 8 : 16;
    return static_cast<uint8_t>(isHigh ? at - step.high[position] + highPlace
                                       : at - step.low[position]);
}

// Fills the tables of a step. False if columns lie too far apart for these windows.
template <typename V, typename Fill>
bool PlanStep(ShuffleStep<V>& step, const ByteSources& sources, int32_t first, int32_t window,
              int32_t rowBytes, Fill fill) {
    for (int32_t tile = 0; tile < kTilesAStep<V>; ++tile) {
        const int32_t byte = first + tile * kTileBytes;
        if (!PlaceTile<V>(step, tile, sources, byte, window, rowBytes)) return false;
        const int32_t position = PositionOf<V>(tile);
        for (int32_t i = 0; i < kTileBytes; ++i) {
            fill(step.shuffle[position], step.weights[position], i,
                 PlaceInTile<V>(step, position, window, i, sources.at[byte + i]),
                 PlaceInTile<V>(step, position, window, i, sources.next[byte + i]),
                 sources.weights[byte + i]);
        }
    }
    return true;
}

// Fills the tables of all steps.
template <typename V, typename Bytes, typename Fill>
bool PlanWindows(ColumnPlan& plan, const Bytes& bytes, int32_t window, int32_t rowBytes,
                 Fill fill) {
    static_assert(kBatchBytes % kStepBytes<V> == 0);
    constexpr int32_t kBatchColumns = kBatchBytes / Bytes::kColumnBytes;
    const ColumnRun columns = plan.columns;
    ShuffleStep<V>* step = StepsOf<V>(plan);
    for (int32_t first = 0; first < columns.count; first += kBatchColumns) {
        ByteSources sources;
        bytes.AddTo(sources,
                    {columns.indices + first, columns.weights ? columns.weights + first : nullptr,
                     columns.firstIndex, Min(kBatchColumns, columns.count - first)});
        sources.FillUp((sources.count + kStepBytes<V> - 1) / kStepBytes<V> * kStepBytes<V>);
        for (int32_t i = 0; i < sources.count; i += kStepBytes<V>, ++step) {
            if (!PlanStep<V>(*step, sources, i, window, rowBytes, fill)) return false;
        }
    }
    return true;
}

// Makes a plan with the least windows that will do, or without tables where columns lie too far
// apart.
// fill(shuffle, weights, i, place, next, weight) sets byte i of a tile: `place` and `next` are
// where the byte and the one that it is mixed with are in what the tile loads.
template <typename V, typename Bytes, typename Fill>
void PlanTiles(ColumnPlan& plan, const ColumnRun& columns, const Bytes& bytes, int32_t rowBytes,
               Fill fill) {
    plan.columns = columns;
    plan.window = NoWindow;
    constexpr int32_t kWidest = V::kSharesWindow ? TwoWindows : WideWindows;
    for (int32_t window = OneWindow; window <= kWidest; ++window) {
        if (!PlanWindows<V>(plan, bytes, window, rowBytes, fill)) continue;
        plan.window = window;
        return;
    }
}

// For bytes: pairs of a byte and its right neighbour, and a pair of weights for each.
template <typename V, typename Pixel>
void PlanByteBlend(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) {
    PlanTiles<V>(plan, columns, PixelBytes<Pixel>{}, rowBytes,
                 [](uint8_t* shuffle, uint8_t* weights, int32_t i, uint8_t place, uint8_t next,
                    int32_t weight) {
                     shuffle[2 * i] = place;
                     shuffle[2 * i + 1] = next;
                     weights[2 * i] = static_cast<uint8_t>(weight == 0 ? 128 : 256 - weight);
                     weights[2 * i + 1] = static_cast<uint8_t>(weight == 0 ? 128 : weight);
                 });
}

// Eight bytes, then the eight that they are mixed with.
inline void FillHalves(uint8_t* shuffle, uint8_t* /*weights*/, int32_t i, uint8_t place,
                       uint8_t next, int32_t /*weight*/) {
    shuffle[i] = place;
    shuffle[kTileBytes + i] = next;
}

// For words: four pixels, then their neighbours; and four weights times 16.
template <typename V, typename Pixel>
void PlanFieldBlend(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) {
    PlanTiles<V>(plan, columns, PixelBytes<Pixel>{}, rowBytes,
                 [](uint8_t* shuffle, uint8_t* weights, int32_t i, uint8_t place, uint8_t next,
                    int32_t weight) {
                     FillHalves(shuffle, weights, i, place, next, weight);
                     weights[i] = static_cast<uint8_t>(weight * 16 >> (i % 2 * 8));
                     weights[kTileBytes + i] = 0;
                 });
}

// For copies: only the first eight bytes count.
template <typename V, typename Pixel>
void PlanNearest(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) {
    const ColumnRun unweighted = {columns.indices, nullptr, columns.firstIndex, columns.count};
    PlanTiles<V>(plan, unweighted, PixelBytes<Pixel>{}, rowBytes, FillHalves);
}

// For packed 4:2:2: the two halves are averaged.
template <typename V>
void PlanPackedNearest(ColumnPlan& plan, const ColumnRun& columns, const PackedLayout& layout,
                       int32_t rowBytes) {
    PlanTiles<V>(plan, columns, PackedBytes{layout}, rowBytes, FillHalves);
}

}  // namespace
}  // namespace tavo
