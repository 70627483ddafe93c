// Row operations for AVX-512 with VBMI. A register is four parts of sixteen bytes, and shuffles
// reach across all of it.

#include <immintrin.h>

#include "resample/row_ops/shuffle_ops.h"
#include "resample/row_ops/string_moves.h"

namespace tavo {
namespace {

struct OddNumbers {
    constexpr OddNumbers() {
        for (int32_t i = 0; i < 64; ++i) bytes[i] = static_cast<uint8_t>(2 * i + 1);
    }
    uint8_t bytes[64] = {};
};
alignas(64) constexpr OddNumbers kOddNumbers;

struct Avx512 {
    using Reg = __m512i;
    static constexpr int32_t kParts = 4;
    static constexpr bool kSharesWindow = true;
    static constexpr bool kFetchesPlanes = true;

    static Reg Load(const uint8_t* p) { return _mm512_loadu_si512(p); }
    static void Store(uint8_t* p, Reg a) { _mm512_storeu_si512(p, a); }
    static Reg LoadWindows(const uint8_t* row, const int32_t* offset) {
        return Load(row + *offset);
    }
    static Reg Shuffle(Reg a, Reg control) { return _mm512_permutexvar_epi8(control, a); }
    static Reg ShuffleParts(Reg a, Reg control) { return _mm512_shuffle_epi8(a, control); }
    static Reg ShuffleTwoWindows(const uint8_t* row, const int32_t* offset, const int32_t*,
                                 Reg control) {
        return _mm512_permutex2var_epi8(Load(row + *offset), control, Load(row + *offset + 64));
    }

    static Reg Set8(uint8_t value) { return _mm512_set1_epi8(static_cast<char>(value)); }
    static Reg Set16(int16_t value) { return _mm512_set1_epi16(value); }
    static Reg And(Reg a, Reg b) { return _mm512_and_si512(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm512_or_si512(a, b); }
    static Reg Xor(Reg a, Reg b) { return _mm512_xor_si512(a, b); }
    static Reg Add16(Reg a, Reg b) { return _mm512_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm512_sub_epi16(a, b); }
    static Reg SubSaturated8(Reg a, Reg b) { return _mm512_subs_epu8(a, b); }
    static Reg SubSaturated16(Reg a, Reg b) { return _mm512_subs_epi16(a, b); }
    static Reg AverageUp8(Reg a, Reg b) { return _mm512_avg_epu8(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm512_mulhi_epi16(a, b); }
    static Reg MulAddBytes(Reg weights, Reg bytes) { return _mm512_maddubs_epi16(weights, bytes); }
    static Reg ShiftRight8(Reg a) { return _mm512_srai_epi16(a, 8); }
    template <unsigned kCount>
    static Reg ShiftRight16(Reg a) {
        return _mm512_srli_epi16(a, kCount);
    }
    template <unsigned kCount>
    static Reg ShiftLeft16(Reg a) {
        return _mm512_slli_epi16(a, kCount);
    }
    static Reg InterleaveLow8(Reg a, Reg b) { return _mm512_unpacklo_epi8(a, b); }
    static Reg InterleaveHigh8(Reg a, Reg b) { return _mm512_unpackhi_epi8(a, b); }

    static Reg InterleaveLow64(Reg a, Reg b) { return _mm512_unpacklo_epi64(a, b); }
    static Reg InterleaveHigh64(Reg a, Reg b) { return _mm512_unpackhi_epi64(a, b); }

    // Every other eight bytes of two registers, from the first or from the second on.
    static Reg LowHalves(Reg a, Reg b) {
        return _mm512_permutex2var_epi64(a, _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14), b);
    }
    static Reg HighHalves(Reg a, Reg b) {
        return _mm512_permutex2var_epi64(a, _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15), b);
    }

    static Reg PackSigned(Reg a, Reg b) { return _mm512_packs_epi16(a, b); }
    static Reg PackUnsignedInOrder(Reg a, Reg b) {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                        _mm512_packus_epi16(a, b));
    }
    static Reg HighBytes(Reg a, Reg b) {
        return _mm512_permutex2var_epi8(a, Load(kOddNumbers.bytes), b);
    }

    static void StoreInterleaved8(uint8_t* p, Reg even, Reg odd) {
        const Reg low = InterleaveLow8(even, odd);
        const Reg high = InterleaveHigh8(even, odd);
        Store(p, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), high));
        Store(p + 64,
              _mm512_permutex2var_epi64(low, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), high));
    }
};

}  // namespace

const RowOps kAvx512RowOps = kShuffleRowOps<Avx512>;
const RowOps kAvx512RowOpsWithStringMoves = kRowOpsWithStringMoves<kShuffleRowOps<Avx512>>;

}  // namespace tavo
