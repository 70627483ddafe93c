// Row operations for MMX.

#include "resample/row_ops/mmx_ops.h"

namespace tavo {
namespace {

struct Mmx {
    static __m64 Words(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        return FromHalves(a | b << 16, c | d << 16);
    }

    // Half of the bits that differ, to be added to the common bits or taken from all bits.
    static __m64 HalfDifference(__m64 a, __m64 b) {
        const __m64 different = _mm_and_si64(_mm_xor_si64(a, b), _mm_set1_pi8(-2));
        return _mm_srli_pi16(different, 1);
    }
    static __m64 AverageDown8(__m64 a, __m64 b) {
        return _mm_add_pi8(_mm_and_si64(a, b), HalfDifference(a, b));
    }
    static __m64 AverageUp8(__m64 a, __m64 b) {
        return _mm_sub_pi8(_mm_or_si64(a, b), HalfDifference(a, b));
    }
};

}  // namespace

const RowOps kMmxRowOps = kMmxSetRowOps<Mmx>;

}  // namespace tavo
