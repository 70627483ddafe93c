// Row operations for SSSE3. A register is one part of sixteen bytes.

#include <tmmintrin.h>

#include "resample/row_ops/shuffle_ops.h"
#include "resample/row_ops/string_moves.h"

namespace tavo {
namespace {

struct Ssse3 {
    using Reg = __m128i;
    static constexpr int32_t kParts = 1;
    static constexpr bool kSharesWindow = false;
    static constexpr bool kFetchesPlanes = false;

    static Reg Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const Reg*>(p)); }
    static void Store(uint8_t* p, Reg a) { _mm_storeu_si128(reinterpret_cast<Reg*>(p), a); }
    static Reg LoadWindows(const uint8_t* row, const int32_t* offset) {
        return Load(row + *offset);
    }
    static Reg Shuffle(Reg a, Reg control) { return _mm_shuffle_epi8(a, control); }
    static Reg ShuffleParts(Reg a, Reg control) { return Shuffle(a, control); }
    static Reg ShuffleTwoWindows(const uint8_t* row, const int32_t* low, const int32_t* high,
                                 Reg control) {
        const Reg halves =
            _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const Reg*>(row + *low)),
                               _mm_loadl_epi64(reinterpret_cast<const Reg*>(row + *high)));
        return _mm_shuffle_epi8(halves, control);
    }

    // A shuffle gives 0 where the upper bit of the control is set.
    static Reg ShuffleTwo(Reg low, Reg high, Reg control) {
        return Or(Shuffle(low, _mm_adds_epu8(control, Set8(0x70))),
                  Shuffle(high, _mm_sub_epi8(control, Set8(16))));
    }

    static Reg Set8(uint8_t value) { return _mm_set1_epi8(static_cast<char>(value)); }
    static Reg Set16(int16_t value) { return _mm_set1_epi16(value); }
    static Reg And(Reg a, Reg b) { return _mm_and_si128(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm_or_si128(a, b); }
    static Reg Xor(Reg a, Reg b) { return _mm_xor_si128(a, b); }
    static Reg Add16(Reg a, Reg b) { return _mm_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm_sub_epi16(a, b); }
    static Reg SubSaturated8(Reg a, Reg b) { return _mm_subs_epu8(a, b); }
    static Reg SubSaturated16(Reg a, Reg b) { return _mm_subs_epi16(a, b); }
    static Reg AverageUp8(Reg a, Reg b) { return _mm_avg_epu8(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm_mulhi_epi16(a, b); }
    static Reg MulAddBytes(Reg weights, Reg bytes) { return _mm_maddubs_epi16(weights, bytes); }
    static Reg ShiftRight8(Reg a) { return _mm_srai_epi16(a, 8); }
    template <int kCount>
    static Reg ShiftRight16(Reg a) {
        return _mm_srli_epi16(a, kCount);
    }
    template <int kCount>
    static Reg ShiftLeft16(Reg a) {
        return _mm_slli_epi16(a, kCount);
    }
    static Reg InterleaveLow8(Reg a, Reg b) { return _mm_unpacklo_epi8(a, b); }
    static Reg InterleaveHigh8(Reg a, Reg b) { return _mm_unpackhi_epi8(a, b); }
    static Reg InterleaveLow64(Reg a, Reg b) { return _mm_unpacklo_epi64(a, b); }
    static Reg InterleaveHigh64(Reg a, Reg b) { return _mm_unpackhi_epi64(a, b); }
    static Reg LowHalves(Reg a, Reg b) { return _mm_unpacklo_epi64(a, b); }
    static Reg HighHalves(Reg a, Reg b) { return _mm_unpackhi_epi64(a, b); }

    // With a single part, all results are in order.
    static Reg PackSigned(Reg a, Reg b) { return _mm_packs_epi16(a, b); }
    static Reg HighBytes(Reg a, Reg b) { return PackSigned(ShiftRight8(a), ShiftRight8(b)); }
    static Reg PackUnsignedInOrder(Reg a, Reg b) { return _mm_packus_epi16(a, b); }

    static void StoreInterleaved8(uint8_t* p, Reg even, Reg odd) {
        Store(p, InterleaveLow8(even, odd));
        Store(p + 16, InterleaveHigh8(even, odd));
    }
};

}  // namespace

const RowOps kSsse3RowOps = kShuffleRowOps<Ssse3>;
const RowOps kSsse3RowOpsWithStringMoves = kRowOpsWithStringMoves<kShuffleRowOps<Ssse3>>;

}  // namespace tavo
