#pragma once

#include "base/Atomic.h"

#include <cstdint>

// Waiting for a word without a lock. Who changes the word wakes afterwards; a wake-up may also come
// for nothing.

/// Sleeps while the word holds `value`, for `ms` milliseconds at most, below 0 without an end.
void futexWait(Shared<int>& word, int value, int ms);
/// Wakes up to `count` threads that sleep on the word. Neither waits nor allocates.
void futexWake(Shared<int>& word, int count);
/// The same for a word in memory that processes share; for `ns` nanoseconds at most.
void sharedFutexWait(Shared<int>& word, int value, int64_t ns);
void sharedFutexWake(Shared<int>& word, int count);
/// Lets the other half of the processor go first, in a loop that looks at a word.
void spinPause();
