// Row operations for SSE, whose integer instructions work in MMX registers.

#include <xmmintrin.h>

#include "resample/row_ops/mmx_ops.h"

namespace tavo {
namespace {

struct Sse {
    static __m64 Words(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        const __m64 first = _mm_insert_pi16(FromLow(a), static_cast<int>(b), 1);
        const __m64 second = _mm_insert_pi16(first, static_cast<int>(c), 2);
        return _mm_insert_pi16(second, static_cast<int>(d), 3);
    }

    static __m64 AverageDown8(__m64 a, __m64 b) {
        const __m64 halves = _mm_and_si64(_mm_xor_si64(a, b), _mm_set1_pi8(1));
        return _mm_sub_pi8(_mm_avg_pu8(a, b), halves);
    }
    static __m64 AverageUp8(__m64 a, __m64 b) { return _mm_avg_pu8(a, b); }
};

}  // namespace

const RowOps kSseRowOps = kMmxSetRowOps<Sse>;

}  // namespace tavo
