// Row operations for MMX.
//
// A blend works in 16-bit lanes: ((b - a) * 16 * (weight * 16)) >> 16 is ((b - a) * weight) >> 8,
// rounded the same way, and neither factor exceeds 255 * 16 in magnitude.

#include <mmintrin.h>

#include "resample/portable_columns.h"
#include "resample/portable_packed422.h"

namespace tavo {
namespace {

__m64 Load8(const uint8_t* p) {
    __m64 value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}

void Store8(uint8_t* p, __m64 value) { std::memcpy(p, &value, sizeof(value)); }

uint32_t Load4(const uint8_t* p) {
    uint32_t value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}

void Store4(uint8_t* p, __m64 value) {
    const int low = _mm_cvtsi64_si32(value);
    std::memcpy(p, &low, sizeof(low));
}

uint32_t Load2(const uint8_t* p) {
    uint16_t value;
    std::memcpy(&value, p, sizeof(value));
    return value;
}

__m64 FromLow(uint32_t low) { return _mm_cvtsi32_si64(static_cast<int>(low)); }

__m64 FromHalves(uint32_t low, uint32_t high) {
    return _mm_unpacklo_pi32(FromLow(low), FromLow(high));
}

// Four bytes as four lanes.
__m64 Widen(__m64 bytes) { return _mm_unpacklo_pi8(bytes, _mm_setzero_si64()); }
__m64 WidenHigh(__m64 bytes) { return _mm_unpackhi_pi8(bytes, _mm_setzero_si64()); }

// A weight times 16 in every lane; four weights times 16.
__m64 Weight16(int32_t weight) { return _mm_set1_pi16(static_cast<int16_t>(weight * 16)); }
__m64 Weights16(const uint8_t* weights) { return _mm_slli_pi16(Widen(FromLow(Load4(weights))), 4); }

// Four lanes. Rounding is that of pixel_blend.h.
template <typename Rounding>
__m64 BlendLanes(__m64 a, __m64 b, __m64 weight16);

template <>
__m64 BlendLanes<RoundDown>(__m64 a, __m64 b, __m64 weight16) {
    const __m64 difference16 = _mm_slli_pi16(_mm_sub_pi16(b, a), 4);
    return _mm_add_pi16(a, _mm_mulhi_pi16(difference16, weight16));
}

template <>
__m64 BlendLanes<RoundUp>(__m64 a, __m64 b, __m64 weight16) {
    const __m64 difference16 = _mm_slli_pi16(_mm_sub_pi16(a, b), 4);
    return _mm_sub_pi16(a, _mm_mulhi_pi16(difference16, weight16));
}

// Planes and RGB24: bytes, eight a step.

void BlendByteRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                   int32_t bytes) {
    const __m64 weight16 = Weight16(weight);
    int32_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
        const __m64 a8 = Load8(a + i);
        const __m64 b8 = Load8(b + i);
        const __m64 low = BlendLanes<RoundDown>(Widen(a8), Widen(b8), weight16);
        const __m64 high = BlendLanes<RoundDown>(WidenHigh(a8), WidenHigh(b8), weight16);
        Store8(dst + i, _mm_packs_pu16(low, high));
    }
    BlendRowsPlain<PlanePixel>(dst + i, a + i, b + i, weight, bytes - i);
}

// Four columns as lanes that each hold a sample (low byte) and its right neighbour.
__m64 LoadPairs(const uint8_t* row, const ColumnRun& columns, int32_t i) {
    return FromHalves(Load2(row + columns.Pixel(i)) | Load2(row + columns.Pixel(i + 1)) << 16,
                      Load2(row + columns.Pixel(i + 2)) | Load2(row + columns.Pixel(i + 3)) << 16);
}

template <typename Rounding>
__m64 BlendFour(const uint8_t* row, const ColumnRun& columns, int32_t i) {
    const __m64 pairs = LoadPairs(row, columns, i);
    const __m64 left = _mm_and_si64(pairs, _mm_set1_pi16(0x00ff));
    return BlendLanes<Rounding>(left, _mm_srli_pi16(pairs, 8), Weights16(columns.weights + i));
}

template <typename Rounding>
void BlendPlaneColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    const ColumnRun& columns = plan.columns;
    int32_t i = 0;
    for (; i + 8 <= columns.count; i += 8) {
        Store8(dst + i, _mm_packs_pu16(BlendFour<Rounding>(row, columns, i),
                                       BlendFour<Rounding>(row, columns, i + 4)));
    }
    BlendColumnsPlain<PlanePixel, Rounding>(dst, row, columns, i);
}

uint32_t GatherFour(const uint8_t* row, const ColumnRun& columns, int32_t i) {
    uint32_t bytes = 0;
    for (int32_t k = 3; k >= 0; --k) bytes = bytes << 8 | row[columns.Pixel(i + k)];
    return bytes;
}

void TakePlaneColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    const ColumnRun& columns = plan.columns;
    int32_t i = 0;
    for (; i + 8 <= columns.count; i += 8) {
        Store8(dst + i, FromHalves(GatherFour(row, columns, i), GatherFour(row, columns, i + 4)));
    }
    TakeColumnsPlain<PlanePixel>(dst, row, columns, i);
}

// RGB24: a pixel and its neighbour are six bytes, and no byte around them is read. Four bytes are
// stored for three: the next pixel overwrites the fourth, and the last pixel is written plainly.

template <typename Rounding>
void BlendRgb24Columns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    const ColumnRun& columns = plan.columns;
    int32_t i = 0;
    for (; i + 1 < columns.count; ++i) {
        const uint8_t* pixel = row + columns.Pixel(i) * 3;
        const __m64 left = Widen(FromLow(Load4(pixel)));
        const __m64 right = Widen(FromLow(Load4(pixel + 2) >> 8));
        const __m64 blended = BlendLanes<Rounding>(left, right, Weight16(columns.weights[i]));
        Store4(dst + i * 3, _mm_packs_pu16(blended, blended));
    }
    BlendColumnsPlain<Rgb24Pixel, Rounding>(dst, row, columns, i);
}

void TakeRgb24Columns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    TakeColumnsPlain<Rgb24Pixel>(dst, row, plan.columns, 0);
}

// RGB555 and RGB565: four pixels in lanes, field by field.

template <typename Pixel, typename Rounding>
__m64 BlendFields(__m64 a, __m64 b, __m64 weight16) {
    const auto field = [=](int shift, int mask) {
        const __m64 bits = _mm_set1_pi16(static_cast<int16_t>(mask));
        const __m64 from = _mm_and_si64(_mm_srli_pi16(a, shift), bits);
        const __m64 to = _mm_and_si64(_mm_srli_pi16(b, shift), bits);
        return _mm_slli_pi16(BlendLanes<Rounding>(from, to, weight16), shift);
    };
    return _mm_or_si64(field(0, Pixel::kBlueMask),
                       _mm_or_si64(field(Pixel::kGreenShift, Pixel::kGreenMask),
                                   field(Pixel::kRedShift, Pixel::kRedMask)));
}

template <typename Pixel>
void BlendFieldRows(uint8_t* dst, const uint8_t* a, const uint8_t* b, int32_t weight,
                    int32_t bytes) {
    const __m64 weight16 = Weight16(weight);
    int32_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
        Store8(dst + i, BlendFields<Pixel, RoundDown>(Load8(a + i), Load8(b + i), weight16));
    }
    BlendRowsPlain<Pixel>(dst + i, a + i, b + i, weight, bytes - i);
}

template <typename Pixel, typename Rounding>
void BlendFieldColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    const ColumnRun& columns = plan.columns;
    int32_t i = 0;
    for (; i + 4 <= columns.count; i += 4) {
        // Each holds a pixel (low word) and its right neighbour.
        const uint32_t p0 = Load4(row + columns.Pixel(i) * 2);
        const uint32_t p1 = Load4(row + columns.Pixel(i + 1) * 2);
        const uint32_t p2 = Load4(row + columns.Pixel(i + 2) * 2);
        const uint32_t p3 = Load4(row + columns.Pixel(i + 3) * 2);
        const __m64 left = FromHalves((p0 & 0xffff) | p1 << 16, (p2 & 0xffff) | p3 << 16);
        const __m64 right = FromHalves(p0 >> 16 | (p1 & 0xffff0000), p2 >> 16 | (p3 & 0xffff0000));
        Store8(dst + i * 2,
               BlendFields<Pixel, Rounding>(left, right, Weights16(columns.weights + i)));
    }
    BlendColumnsPlain<Pixel, Rounding>(dst, row, columns, i);
}

void TakeWordColumns(uint8_t* dst, const uint8_t* row, const ColumnPlan& plan) {
    const ColumnRun& columns = plan.columns;
    int32_t i = 0;
    for (; i + 4 <= columns.count; i += 4) {
        const uint8_t* const words = row;
        Store8(dst + i * 2, FromHalves(Load2(words + columns.Pixel(i) * 2) |
                                           Load2(words + columns.Pixel(i + 1) * 2) << 16,
                                       Load2(words + columns.Pixel(i + 2) * 2) |
                                           Load2(words + columns.Pixel(i + 3) * 2) << 16));
    }
    TakeColumnsPlain<Rgb555Pixel>(dst, row, columns, i);
}

template <typename Pixel>
constexpr PixelOps kFieldOps = {BlendFieldRows<Pixel>,
                                PlanPlain,
                                PlanPlain,
                                BlendFieldColumns<Pixel, RoundDown>,
                                BlendFieldColumns<Pixel, RoundUp>,
                                TakeWordColumns};

// Packed 4:2:2, eight groups or pixels a step.

__m64 EvenBytes(__m64 a, __m64 b) {
    const __m64 low = _mm_set1_pi16(0x00ff);
    return _mm_packs_pu16(_mm_and_si64(a, low), _mm_and_si64(b, low));
}

__m64 OddBytes(__m64 a, __m64 b) {
    return _mm_packs_pu16(_mm_srli_pi16(a, 8), _mm_srli_pi16(b, 8));
}

void Unpack(const PackedSamples& dst, const uint8_t* src, int32_t groups,
            const PackedLayout& layout) {
    const bool lumaFirst = layout.luma == 0;
    int32_t i = 0;
    for (; i + 8 <= groups; i += 8) {
        __m64 chroma[2];
        for (int32_t half = 0; half < 2; ++half) {
            const uint8_t* from = src + i * 4 + half * 16;
            const __m64 even = EvenBytes(Load8(from), Load8(from + 8));
            const __m64 odd = OddBytes(Load8(from), Load8(from + 8));
            Store8(dst.luma + i * 2 + half * 8, lumaFirst ? even : odd);
            chroma[half] = lumaFirst ? odd : even;
        }
        Store8(dst.firstChroma + i, EvenBytes(chroma[0], chroma[1]));
        Store8(dst.secondChroma + i, OddBytes(chroma[0], chroma[1]));
    }
    UnpackPlain(dst, src, groups, layout, i);
}

// Chroma of eight pixels to four averages, in the low bytes of lanes.
template <typename Average>
__m64 AveragePairs(const uint8_t* chroma) {
    const __m64 pixels = Load8(chroma);
    const __m64 even = _mm_and_si64(pixels, _mm_set1_pi16(0x00ff));
    const __m64 sum = _mm_add_pi16(even, _mm_srli_pi16(pixels, 8));
    return _mm_srli_pi16(_mm_add_pi16(sum, _mm_set1_pi16(Average::kBias)), 1);
}

template <typename Average>
void Pack(uint8_t* dst, const PackedSamples& src, int32_t pixels, const PackedLayout& layout) {
    int32_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const __m64 luma = Load8(src.luma + i);
        const __m64 first = AveragePairs<Average>(src.firstChroma + i);
        const __m64 second = AveragePairs<Average>(src.secondChroma + i);
        const __m64 chroma = _mm_or_si64(first, _mm_slli_pi16(second, 8));
        const bool lumaFirst = layout.luma == 0;
        const __m64 even = lumaFirst ? luma : chroma;
        const __m64 odd = lumaFirst ? chroma : luma;
        Store8(dst + i * 2, _mm_unpacklo_pi8(even, odd));
        Store8(dst + i * 2 + 8, _mm_unpackhi_pi8(even, odd));
    }
    PackPlain<Average>(dst, src, pixels, layout, i);
}

void DimThirds(uint8_t* samples, int32_t count) { DimThirdsPlain(samples, count, 0); }

void CopyBlocks(uint8_t* dst, const uint8_t* src, int32_t blocks) {
    for (; blocks >= 4; blocks -= 4, dst += 32, src += 32) {
        const __m64 a = Load8(src);
        const __m64 b = Load8(src + 8);
        const __m64 c = Load8(src + 16);
        const __m64 d = Load8(src + 24);
        Store8(dst, a);
        Store8(dst + 8, b);
        Store8(dst + 16, c);
        Store8(dst + 24, d);
    }
    for (; blocks > 0; --blocks, dst += 8, src += 8) Store8(dst, Load8(src));
}

void Finish() { _mm_empty(); }

}  // namespace

const RowOps kMmxRowOps = {
    {BlendByteRows, PlanPlain, PlanPlain, BlendPlaneColumns<RoundDown>, BlendPlaneColumns<RoundUp>,
     TakePlaneColumns},
    {BlendByteRows, PlanPlain, PlanPlain, BlendRgb24Columns<RoundDown>, BlendRgb24Columns<RoundUp>,
     TakeRgb24Columns},
    kFieldOps<Rgb555Pixel>,
    kFieldOps<Rgb565Pixel>,
    {Unpack, Pack<AverageDown>, Pack<AverageUp>, BlendThenPack<BlendByteRows, Pack<AverageDown>>,
     BlendThenPack<BlendByteRows, Pack<AverageUp>>, DimThirds, PlanPackedPlain,
     TakePackedColumnsPlain},
    CopyBlocks,
    Finish,
};

}  // namespace tavo
