#include "base/Denormals.h"

#ifdef __SSE__
#include <xmmintrin.h>
#endif

void flushDenormals() {
#ifdef __SSE__
    constexpr unsigned denormalsAreZero = 0x40, flushToZero = 0x8000;
    _mm_setcsr(_mm_getcsr() | denormalsAreZero | flushToZero);
#endif
}
