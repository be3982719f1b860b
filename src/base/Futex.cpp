#include "base/Futex.h"

#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

void futexWait(Shared<int>& word, int value, int ms) {
    constexpr int msInSecond = 1000;
    constexpr long nsInMs = 1000000;
    const timespec most{ms / msInSecond, ms % msInSecond * nsInMs};
    syscall(SYS_futex, word.address(), FUTEX_WAIT_PRIVATE, value, ms < 0 ? nullptr : &most);
}

void futexWake(Shared<int>& word, int count) {
    syscall(SYS_futex, word.address(), FUTEX_WAKE_PRIVATE, count);
}

void sharedFutexWait(Shared<int>& word, int value, int64_t ns) {
    constexpr int64_t nsInSecond = 1000000000;
    if (ns <= 0) return;
    const timespec most{ns / nsInSecond, ns % nsInSecond};
    syscall(SYS_futex, word.address(), FUTEX_WAIT, value, &most);
}

void sharedFutexWake(Shared<int>& word, int count) {
    syscall(SYS_futex, word.address(), FUTEX_WAKE, count);
}

void spinPause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}
