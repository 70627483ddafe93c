// Row operations for NEON on 64-bit ARM. A register is one part of sixteen bytes.

#include <arm_neon.h>

#include "resample/row_ops/shuffle_ops.h"

namespace tavo {
namespace {

// Registers hold bytes; other lanes are views of them.
struct Neon {
    using Reg = uint8x16_t;
    static constexpr int32_t kParts = 1;
    static constexpr bool kSharesWindow = false;
    static constexpr bool kFetchesPlanes = false;

    static Reg Load(const uint8_t* p) { return vld1q_u8(p); }
    static void Store(uint8_t* p, Reg a) { vst1q_u8(p, a); }
    static Reg LoadWindows(const uint8_t* row, const int32_t* offset) {
        return Load(row + *offset);
    }
    static Reg Shuffle(Reg a, Reg control) { return vqtbl1q_u8(a, control); }
    static Reg ShuffleParts(Reg a, Reg control) { return Shuffle(a, control); }
    static Reg ShuffleTwoWindows(const uint8_t* row, const int32_t* low, const int32_t* high,
                                 Reg control) {
        return vqtbl1q_u8(vcombine_u8(vld1_u8(row + *low), vld1_u8(row + *high)), control);
    }

    static Reg ShuffleTwo(Reg low, Reg high, Reg control) {
        const uint8x16x2_t both = {{low, high}};
        return vqtbl2q_u8(both, control);
    }

    static Reg Set8(uint8_t value) { return vdupq_n_u8(value); }
    static Reg Set16(int16_t value) { return FromSigned(vdupq_n_s16(value)); }
    static Reg And(Reg a, Reg b) { return vandq_u8(a, b); }
    static Reg Or(Reg a, Reg b) { return vorrq_u8(a, b); }
    static Reg Xor(Reg a, Reg b) { return veorq_u8(a, b); }
    static Reg Add16(Reg a, Reg b) { return FromSigned(vaddq_s16(Signed(a), Signed(b))); }
    static Reg Sub16(Reg a, Reg b) { return FromSigned(vsubq_s16(Signed(a), Signed(b))); }
    static Reg SubSaturated8(Reg a, Reg b) { return vqsubq_u8(a, b); }
    static Reg SubSaturated16(Reg a, Reg b) { return FromSigned(vqsubq_s16(Signed(a), Signed(b))); }
    static Reg AverageUp8(Reg a, Reg b) { return vrhaddq_u8(a, b); }
    static Reg MulHigh16(Reg a, Reg b) {
        const int32x4_t low = vmull_s16(vget_low_s16(Signed(a)), vget_low_s16(Signed(b)));
        const int32x4_t high = vmull_high_s16(Signed(a), Signed(b));
        return FromSigned(vuzp2q_s16(vreinterpretq_s16_s32(low), vreinterpretq_s16_s32(high)));
    }
    static Reg MulAddBytes(Reg weights, Reg bytes) {
        const int8x16_t signedBytes = vreinterpretq_s8_u8(bytes);
        const int16x8_t low = vmulq_s16(vreinterpretq_s16_u16(vmovl_u8(vget_low_u8(weights))),
                                        vmovl_s8(vget_low_s8(signedBytes)));
        const int16x8_t high =
            vmulq_s16(vreinterpretq_s16_u16(vmovl_high_u8(weights)), vmovl_high_s8(signedBytes));
        return FromSigned(vpaddq_s16(low, high));
    }
    static Reg ShiftRight8(Reg a) { return FromSigned(vshrq_n_s16(Signed(a), 8)); }
    // There is no instruction for a shift by 0 to the right.
    template <int kCount>
    static Reg ShiftRight16(Reg a) {
        if constexpr (kCount == 0) {
            return a;
        } else {
            return FromUnsigned(vshrq_n_u16(Unsigned(a), kCount));
        }
    }
    template <int kCount>
    static Reg ShiftLeft16(Reg a) {
        return FromUnsigned(vshlq_n_u16(Unsigned(a), kCount));
    }
    static Reg InterleaveLow8(Reg a, Reg b) { return vzip1q_u8(a, b); }
    static Reg InterleaveHigh8(Reg a, Reg b) { return vzip2q_u8(a, b); }
    static Reg InterleaveLow64(Reg a, Reg b) { return LowHalves(a, b); }
    static Reg InterleaveHigh64(Reg a, Reg b) { return HighHalves(a, b); }
    static Reg LowHalves(Reg a, Reg b) { return vcombine_u8(vget_low_u8(a), vget_low_u8(b)); }
    static Reg HighHalves(Reg a, Reg b) { return vcombine_u8(vget_high_u8(a), vget_high_u8(b)); }

    // With a single part, all results are in order.
    static Reg PackSigned(Reg a, Reg b) {
        return vreinterpretq_u8_s8(vqmovn_high_s16(vqmovn_s16(Signed(a)), Signed(b)));
    }
    static Reg HighBytes(Reg a, Reg b) { return vuzp2q_u8(a, b); }
    static Reg PackUnsignedInOrder(Reg a, Reg b) {
        return vqmovun_high_s16(vqmovun_s16(Signed(a)), Signed(b));
    }

    static void StoreInterleaved8(uint8_t* p, Reg even, Reg odd) {
        const uint8x16x2_t both = {{even, odd}};
        vst2q_u8(p, both);
    }

  private:
    static int16x8_t Signed(Reg a) { return vreinterpretq_s16_u8(a); }
    static uint16x8_t Unsigned(Reg a) { return vreinterpretq_u16_u8(a); }
    static Reg FromSigned(int16x8_t a) { return vreinterpretq_u8_s16(a); }
    static Reg FromUnsigned(uint16x8_t a) { return vreinterpretq_u8_u16(a); }
};

}  // namespace

const RowOps kNeonRowOps = kShuffleRowOps<Neon>;

}  // namespace tavo
