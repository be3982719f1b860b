#pragma once

#include "driver/RealtimeKit.h"

#include <cstdint>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

/// Makes the calling thread treat denormal numbers as 0, which they cost far more time than.
inline void flushDenormals() {
#if defined(__SSE__)
    constexpr unsigned flushToZero = 0x8000, denormalsAreZero = 0x0040;
    _mm_setcsr(_mm_getcsr() | flushToZero | denormalsAreZero);
#elif defined(__aarch64__)
    constexpr uint64_t flushToZero = 1u << 24;
    uint64_t fpcr = 0;
    asm volatile("mrs %0, fpcr" : "=r"(fpcr));
    asm volatile("msr fpcr, %0" ::"r"(fpcr | flushToZero));
#endif
}

/// Asks for real-time scheduling of the calling thread, before its first block. Most systems refuse
/// it to plain users; then the desktop's service is asked, and where there is none all stays as it
/// is.
inline void askRealtime() {
    constexpr int priority = 60; // below the sound server's own threads
    sched_param param{};
    param.sched_priority = priority;
    if (pthread_setschedparam(pthread_self(), SCHED_FIFO, &param) != 0)
        askRealtimeKit(gettid(), priority);
}
