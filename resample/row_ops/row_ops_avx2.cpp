// Row operations for AVX2. A register is two parts of sixteen bytes.

#include <immintrin.h>

#include "resample/row_ops/shuffle_ops.h"
#include "resample/row_ops/string_moves.h"

namespace tavo {
namespace {

struct Avx2 {
    using Reg = __m256i;
    static constexpr int32_t kParts = 2;
    static constexpr bool kSharesWindow = false;
    static constexpr bool kFetchesPlanes = false;

    static Reg Load(const uint8_t* p) {
        return _mm256_loadu_si256(reinterpret_cast<const Reg*>(p));
    }
    static void Store(uint8_t* p, Reg a) { _mm256_storeu_si256(reinterpret_cast<Reg*>(p), a); }
    static __m128i LoadPart(const uint8_t* p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    }
    static __m128i LoadHalves(const uint8_t* low, const uint8_t* high) {
        return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(low)),
                                  _mm_loadl_epi64(reinterpret_cast<const __m128i*>(high)));
    }
    static Reg LoadWindows(const uint8_t* row, const int32_t* offset) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadPart(row + offset[0])),
                                       LoadPart(row + offset[1]), 1);
    }
    static Reg Shuffle(Reg a, Reg control) { return _mm256_shuffle_epi8(a, control); }
    static Reg ShuffleParts(Reg a, Reg control) { return Shuffle(a, control); }
    static Reg ShuffleTwoWindows(const uint8_t* row, const int32_t* low, const int32_t* high,
                                 Reg control) {
        const Reg parts =
            _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalves(row + low[0], row + high[0])),
                                    LoadHalves(row + low[1], row + high[1]), 1);
        return _mm256_shuffle_epi8(parts, control);
    }

    // A shuffle gives 0 where the upper bit of the control is set.
    static Reg ShuffleTwo(Reg low, Reg high, Reg control) {
        return Or(Shuffle(low, _mm256_adds_epu8(control, Set8(0x70))),
                  Shuffle(high, _mm256_sub_epi8(control, Set8(16))));
    }

    static Reg Set8(uint8_t value) { return _mm256_set1_epi8(static_cast<char>(value)); }
    static Reg Set16(int16_t value) { return _mm256_set1_epi16(value); }
    static Reg And(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm256_or_si256(a, b); }
    static Reg Xor(Reg a, Reg b) { return _mm256_xor_si256(a, b); }
    static Reg Add16(Reg a, Reg b) { return _mm256_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm256_sub_epi16(a, b); }
    static Reg SubSaturated8(Reg a, Reg b) { return _mm256_subs_epu8(a, b); }
    static Reg SubSaturated16(Reg a, Reg b) { return _mm256_subs_epi16(a, b); }
    static Reg AverageUp8(Reg a, Reg b) { return _mm256_avg_epu8(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm256_mulhi_epi16(a, b); }
    static Reg MulAddBytes(Reg weights, Reg bytes) { return _mm256_maddubs_epi16(weights, bytes); }
    static Reg ShiftRight8(Reg a) { return _mm256_srai_epi16(a, 8); }
    template <int kCount>
    static Reg ShiftRight16(Reg a) {
        return _mm256_srli_epi16(a, kCount);
    }
    template <int kCount>
    static Reg ShiftLeft16(Reg a) {
        return _mm256_slli_epi16(a, kCount);
    }
    static Reg InterleaveLow8(Reg a, Reg b) { return _mm256_unpacklo_epi8(a, b); }
    static Reg InterleaveHigh8(Reg a, Reg b) { return _mm256_unpackhi_epi8(a, b); }
    static Reg InterleaveLow64(Reg a, Reg b) { return _mm256_unpacklo_epi64(a, b); }
    static Reg InterleaveHigh64(Reg a, Reg b) { return _mm256_unpackhi_epi64(a, b); }
    static Reg LowHalves(Reg a, Reg b) { return _mm256_unpacklo_epi64(a, b); }
    static Reg HighHalves(Reg a, Reg b) { return _mm256_unpackhi_epi64(a, b); }

    // PackSigned goes part by part. To unsigned bytes the packing does too: the quarters a0 b0 a1
    // b1 are put in order.
    static Reg PackSigned(Reg a, Reg b) { return _mm256_packs_epi16(a, b); }
    static Reg HighBytes(Reg a, Reg b) { return PackSigned(ShiftRight8(a), ShiftRight8(b)); }
    static Reg PackUnsignedInOrder(Reg a, Reg b) {
        return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xd8);
    }

    static void StoreInterleaved8(uint8_t* p, Reg even, Reg odd) {
        const Reg low = InterleaveLow8(even, odd);
        const Reg high = InterleaveHigh8(even, odd);
        Store(p, _mm256_permute2x128_si256(low, high, 0x20));
        Store(p + 32, _mm256_permute2x128_si256(low, high, 0x31));
    }
};

}  // namespace

const RowOps kAvx2RowOps = kShuffleRowOps<Avx2>;
const RowOps kAvx2RowOpsWithStringMoves = kRowOpsWithStringMoves<kShuffleRowOps<Avx2>>;

}  // namespace tavo
