// Plans for the instruction sets that have a byte shuffle, over a register type V. Columns are
// taken in tiles of eight destination bytes. A tile reads its source bytes from one window of
// sixteen bytes, or from two of eight, and a shuffle puts them where the blend wants them. Where a
// shuffle reaches across the whole register, all tiles of a register share a window as wide as it
// is, or twice as wide.
//
// Blends are sums of products a * (256 - w) + b * w of bytes that are kept as value - 128, so that
// the 16-bit sum cannot overflow. A weight of 256 fits no byte: where w is 0 the same byte is taken
// twice, with 128 each.

#pragma once

#include "resample/row_ops/portable_columns.h"

namespace tavo {
namespace {

// Of our own: library functions compiled here could be linked into code for older processors.
inline int32_t Min(int32_t a, int32_t b) { return a < b ? a : b; }
inline int32_t Max(int32_t a, int32_t b) { return a > b ? a : b; }

constexpr int32_t kTileBytes = 8;

// Two registers of sums give one of bytes, so tiles are done two at a time for every part of
// sixteen bytes that a register has. The last ones are filled up with the row's last byte.
template <typename V>
constexpr int32_t kTilesAStep = V::kParts * 2;
constexpr int32_t kMostTilesAStep = 8;
constexpr int32_t kMaxTiles =
    (kMaxPlanColumns * 3 / kTileBytes + kMostTilesAStep - 1) / kMostTilesAStep * kMostTilesAStep;

// The place of a tile in the tables. Two parts are joined part by part, so the first register of a
// step takes the even tiles and the second one the odd ones.
template <typename V>
constexpr int32_t SlotOf(int32_t tile) {
    return V::kParts == 2 ? (tile & ~3) | (tile & 1) << 1 | (tile >> 1 & 1) : tile;
}

// Indexed by slot.
struct ShuffleTables {
    int32_t low[kMaxTiles];   // offset of the window, or of its first half
    int32_t high[kMaxTiles];  // offset of its second half, when there are two
    uint8_t shuffle[kMaxTiles][16];
    uint8_t weights[kMaxTiles][16];
};
static_assert(sizeof(ShuffleTables) <= sizeof(ColumnPlan::tables));

enum Window : int32_t { OneWindow, TwoWindows, NoWindow };

ShuffleTables& TablesOf(ColumnPlan& plan) { return reinterpret_cast<ShuffleTables&>(plan.tables); }
const ShuffleTables& TablesOf(const ColumnPlan& plan) {
    return reinterpret_cast<const ShuffleTables&>(plan.tables);
}

// Where in the row each destination byte and what it is mixed with come from, and the weight of the
// latter. Bytes behind the last column repeat the last one.
struct ByteSources {
    int32_t at[kMaxTiles * kTileBytes];
    int32_t next[kMaxTiles * kTileBytes];
    uint8_t weights[kMaxTiles * kTileBytes];
    int32_t count = 0;

    void Add(int32_t from, int32_t mixedWith, uint8_t weight) {
        at[count] = from;
        next[count] = mixedWith;
        weights[count] = weight;
        ++count;
    }

    // The bytes of pixels and of their right neighbours. A neighbour of weight 0 is not read.
    template <typename Pixel>
    void AddPixels(const ColumnRun& columns) {
        for (int32_t column = 0; column < columns.count; ++column) {
            const auto pixel = static_cast<int32_t>(columns.Pixel(column)) * Pixel::kSize;
            const uint8_t weight = columns.weights ? columns.weights[column] : 0;
            const int32_t reach = weight == 0 ? 0 : Pixel::kSize;
            for (int32_t i = 0; i < Pixel::kSize; ++i) Add(pixel + i, pixel + i + reach, weight);
        }
    }

    // Groups of two packed pixels: a chroma byte is made of those of both.
    void AddPacked(const ColumnRun& columns, const PackedLayout& layout) {
        for (int32_t column = 0; column < columns.count; column += 2) {
            const auto even = static_cast<int32_t>(columns.Pixel(column));
            const auto odd =
                static_cast<int32_t>(columns.Pixel(Min(column + 1, columns.count - 1)));
            for (int32_t i = 0; i < 4; ++i) {
                if (i % 2 == layout.luma) {
                    const int32_t luma = (i < 2 ? even : odd) * 2 + layout.luma;
                    Add(luma, luma, 0);
                } else {
                    Add(even / 2 * 4 + i, odd / 2 * 4 + i, 0);
                }
            }
        }
    }

    void FillUp(int32_t end) {
        while (count < end) Add(at[count - 1], next[count - 1], weights[count - 1]);
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

// Places a window of `size` bytes over a span, inside the row. False if the span is wider.
inline bool PlaceWindow(SourceSpan span, int32_t size, int32_t rowBytes, int32_t* offset) {
    *offset = Max(0, Min(span.first, rowBytes - size));
    return *offset + size <= rowBytes && span.last < *offset + size;
}

// Places the window or the windows of a tile. The first tile of a register places a shared one.
template <typename V>
bool PlaceTile(ShuffleTables& tables, int32_t tile, const ByteSources& sources, int32_t window,
               int32_t rowBytes) {
    const int32_t slot = SlotOf<V>(tile);
    const int32_t byte = tile * kTileBytes;
    tables.high[slot] = 0;
    if (V::kSharesWindow) {
        if (tile % V::kParts != 0) {
            tables.low[slot] = tables.low[slot - 1];
            return true;
        }
        const int32_t size = window == OneWindow ? V::kParts * 16 : V::kParts * 32;
        return PlaceWindow(SpanOf(sources, byte, V::kParts * kTileBytes), size, rowBytes,
                           &tables.low[slot]);
    }
    if (window == OneWindow) {
        return PlaceWindow(SpanOf(sources, byte, 8), 16, rowBytes, &tables.low[slot]);
    }
    return PlaceWindow(SpanOf(sources, byte, 4), 8, rowBytes, &tables.low[slot]) &&
           PlaceWindow(SpanOf(sources, byte + 4, 4), 8, rowBytes, &tables.high[slot]);
}

// The place of a row's byte in what a tile loads.
template <typename V>
uint8_t PlaceInTile(const ShuffleTables& tables, int32_t slot, int32_t window, int32_t i,
                    int32_t at) {
    const bool isHigh = !V::kSharesWindow && window == TwoWindows && i >= 4;
    return static_cast<uint8_t>(isHigh ? at - tables.high[slot] + 8 : at - tables.low[slot]);
}

// Finds the windows of all tiles: one each, or two each, or none where the columns are too far
// apart for a shuffle. Then fills each tile's tables by fill(shuffle, weights, i, place, next,
// weight), where `place` and `next` are the places of the tile's i-th byte and of its neighbour in
// what it loads.
template <typename V, typename Fill>
void PlanTiles(ColumnPlan& plan, const ColumnRun& columns, ByteSources& sources, int32_t rowBytes,
               Fill fill) {
    constexpr int32_t kStepBytes = kTilesAStep<V> * kTileBytes;
    ShuffleTables& tables = TablesOf(plan);
    const int32_t tiles = (sources.count + kStepBytes - 1) / kStepBytes * kTilesAStep<V>;
    sources.FillUp(tiles * kTileBytes);
    const auto place = [&](int32_t window) {
        for (int32_t tile = 0; tile < tiles; ++tile) {
            if (!PlaceTile<V>(tables, tile, sources, window, rowBytes)) return false;
        }
        return true;
    };
    plan.columns = columns;
    plan.window = place(OneWindow) ? OneWindow : place(TwoWindows) ? TwoWindows : NoWindow;
    plan.tiles = plan.window == NoWindow ? 0 : tiles;
    for (int32_t tile = 0; tile < plan.tiles; ++tile) {
        const int32_t slot = SlotOf<V>(tile);
        for (int32_t i = 0; i < kTileBytes; ++i) {
            const int32_t byte = tile * kTileBytes + i;
            fill(tables.shuffle[slot], tables.weights[slot], i,
                 PlaceInTile<V>(tables, slot, plan.window, i, sources.at[byte]),
                 PlaceInTile<V>(tables, slot, plan.window, i, sources.next[byte]),
                 sources.weights[byte]);
        }
    }
}

// For bytes: a shuffle to pairs of a byte and its right neighbour, and a pair of weights for each.
template <typename V, typename Pixel>
void PlanByteBlend(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) {
    ByteSources sources;
    sources.AddPixels<Pixel>(columns);
    PlanTiles<V>(plan, columns, sources, rowBytes,
                 [](uint8_t* shuffle, uint8_t* weights, int32_t i, uint8_t place, uint8_t next,
                    int32_t weight) {
                     shuffle[2 * i] = place;
                     shuffle[2 * i + 1] = next;
                     weights[2 * i] = static_cast<uint8_t>(weight == 0 ? 128 : 256 - weight);
                     weights[2 * i + 1] = static_cast<uint8_t>(weight == 0 ? 128 : weight);
                 });
}

// A shuffle to eight bytes and then to those that they are mixed with.
inline void FillHalves(uint8_t* shuffle, uint8_t* /*weights*/, int32_t i, uint8_t place,
                       uint8_t next, int32_t /*weight*/) {
    shuffle[i] = place;
    shuffle[kTileBytes + i] = next;
}

// For words: halves of four pixels each, and four weights times 16.
template <typename V, typename Pixel>
void PlanFieldBlend(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) {
    ByteSources sources;
    sources.AddPixels<Pixel>(columns);
    PlanTiles<V>(plan, columns, sources, rowBytes,
                 [](uint8_t* shuffle, uint8_t* weights, int32_t i, uint8_t place, uint8_t next,
                    int32_t weight) {
                     FillHalves(shuffle, weights, i, place, next, weight);
                     weights[i] = static_cast<uint8_t>(weight * 16 >> (i % 2 * 8));
                     weights[kTileBytes + i] = 0;
                 });
}

// For copies: the first half is all that counts.
template <typename V, typename Pixel>
void PlanTake(ColumnPlan& plan, const ColumnRun& columns, int32_t rowBytes) {
    ByteSources sources;
    sources.AddPixels<Pixel>({columns.indices, nullptr, columns.firstIndex, columns.count});
    PlanTiles<V>(plan, columns, sources, rowBytes, FillHalves);
}

// For packed 4:2:2: halves that are averaged.
template <typename V>
void PlanPackedTake(ColumnPlan& plan, const ColumnRun& columns, const PackedLayout& layout,
                    int32_t rowBytes) {
    ByteSources sources;
    sources.AddPacked(columns, layout);
    PlanTiles<V>(plan, columns, sources, rowBytes, FillHalves);
}

}  // namespace
}  // namespace tavo
