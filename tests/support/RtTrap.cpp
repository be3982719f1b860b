#include "support/RtTrap.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

int rtViolations() {
    return 0;
}
void rtReset() {
}
bool rtTrapActive() {
    return false;
}

#else

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

/// The engine's; a program without it never is inside.
[[gnu::weak]] bool insideCallback();

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);
}

namespace {

std::atomic<int> violations{0}, reportsLeft{0};
thread_local bool reporting = false;

constexpr int maxReports = 5, maxDepth = 24;

void report(const char* name) {
    reporting = true;
    void* frames[maxDepth];
    const int depth = backtrace(frames, maxDepth);
    std::fprintf(stderr, "%s inside the block callback:\n", name);
    backtrace_symbols_fd(frames, depth, STDERR_FILENO);
    reporting = false;
}

void check(const char* name) {
    if (reporting || !insideCallback || !insideCallback()) return;
    violations.fetch_add(1);
    if (reportsLeft > 0 && reportsLeft.fetch_sub(1) > 0) report(name);
}

/// The first `backtrace` of a program loads a library.
[[maybe_unused]] const int warmUp = [] {
    void* frame = nullptr;
    return backtrace(&frame, 1);
}();

template <size_t n>
struct Name {
    constexpr Name(const char (&literal)[n]) { std::copy_n(literal, n, text); }
    char text[n];
};

/// The function of that name that this program would call without the trap.
template <Name name, class F>
F* next(F*) {
    static F* const found = reinterpret_cast<F*>(dlsym(RTLD_NEXT, name.text));
    return found;
}

template <Name name, class F, class... Args>
auto pass(F* own, Args... args) {
    check(name.text);
    return next<name>(own)(args...);
}

} // namespace

int rtViolations() {
    reportsLeft = 0;
    return violations;
}

void rtReset() {
    violations = 0;
    reportsLeft = maxReports;
}

bool rtTrapActive() {
    return true;
}

extern "C" {

void* malloc(size_t n) {
    check("malloc");
    return __libc_malloc(n);
}
void* calloc(size_t n, size_t size) {
    check("calloc");
    return __libc_calloc(n, size);
}
void* realloc(void* p, size_t n) {
    check("realloc");
    return __libc_realloc(p, n);
}
void free(void* p) {
    if (p) check("free");
    __libc_free(p);
}
void* memalign(size_t align, size_t n) {
    check("memalign");
    return __libc_memalign(align, n);
}
void* aligned_alloc(size_t align, size_t n) {
    check("aligned_alloc");
    return __libc_memalign(align, n);
}
int posix_memalign(void** p, size_t align, size_t n) {
    check("posix_memalign");
    *p = __libc_memalign(align, n);
    return *p ? 0 : 12;
}

int pthread_mutex_lock(pthread_mutex_t* m) noexcept {
    return pass<"pthread_mutex_lock">(&pthread_mutex_lock, m);
}
int pthread_cond_wait(pthread_cond_t* c, pthread_mutex_t* m) {
    return pass<"pthread_cond_wait">(&pthread_cond_wait, c, m);
}
int pthread_cond_timedwait(pthread_cond_t* c, pthread_mutex_t* m, const timespec* t) {
    return pass<"pthread_cond_timedwait">(&pthread_cond_timedwait, c, m, t);
}
int pthread_cond_signal(pthread_cond_t* c) noexcept {
    return pass<"pthread_cond_signal">(&pthread_cond_signal, c);
}
int pthread_cond_broadcast(pthread_cond_t* c) noexcept {
    return pass<"pthread_cond_broadcast">(&pthread_cond_broadcast, c);
}
int pthread_rwlock_rdlock(pthread_rwlock_t* l) noexcept {
    return pass<"pthread_rwlock_rdlock">(&pthread_rwlock_rdlock, l);
}
int pthread_rwlock_wrlock(pthread_rwlock_t* l) noexcept {
    return pass<"pthread_rwlock_wrlock">(&pthread_rwlock_wrlock, l);
}
int sem_wait(sem_t* s) {
    return pass<"sem_wait">(&sem_wait, s);
}
int sem_post(sem_t* s) noexcept {
    return pass<"sem_post">(&sem_post, s);
}

int open(const char* path, int flags, ...) {
    check("open");
    return openat(AT_FDCWD, path, flags, 0666);
}
int openat(int dir, const char* path, int flags, ...) {
    check("openat");
    using Fixed = int(int, const char*, int, mode_t);
    return next<"openat">(static_cast<Fixed*>(nullptr))(dir, path, flags, 0666);
}
FILE* fopen(const char* path, const char* mode) {
    return pass<"fopen">(&fopen, path, mode);
}
int fclose(FILE* f) {
    return pass<"fclose">(&fclose, f);
}
size_t fread(void* p, size_t size, size_t n, FILE* f) {
    return pass<"fread">(&fread, p, size, n, f);
}
size_t fwrite(const void* p, size_t size, size_t n, FILE* f) {
    return pass<"fwrite">(&fwrite, p, size, n, f);
}
int fputs(const char* s, FILE* f) {
    return pass<"fputs">(&fputs, s, f);
}
int puts(const char* s) {
    return pass<"puts">(&puts, s);
}
int fflush(FILE* f) {
    return pass<"fflush">(&fflush, f);
}
int close(int fd) {
    return pass<"close">(&close, fd);
}
ssize_t read(int fd, void* p, size_t n) {
    return pass<"read">(&read, fd, p, n);
}
ssize_t write(int fd, const void* p, size_t n) {
    return pass<"write">(&write, fd, p, n);
}
ssize_t pread(int fd, void* p, size_t n, off_t at) {
    return pass<"pread">(&pread, fd, p, n, at);
}
ssize_t pwrite(int fd, const void* p, size_t n, off_t at) {
    return pass<"pwrite">(&pwrite, fd, p, n, at);
}
ssize_t sendto(int s, const void* p, size_t n, int flags, const sockaddr* to, socklen_t size) {
    return pass<"sendto">(&sendto, s, p, n, flags, to, size);
}
ssize_t recvfrom(int s, void* p, size_t n, int flags, sockaddr* from, socklen_t* size) {
    return pass<"recvfrom">(&recvfrom, s, p, n, flags, from, size);
}
int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list args;
    va_start(args, request);
    void* arg = va_arg(args, void*);
    va_end(args);
    check("ioctl");
    using Fixed = int(int, unsigned long, void*);
    return next<"ioctl">(static_cast<Fixed*>(nullptr))(fd, request, arg);
}
int poll(pollfd* fds, nfds_t n, int ms) {
    return pass<"poll">(&poll, fds, n, ms);
}
void* mmap(void* at, size_t n, int prot, int flags, int fd, off_t offset) noexcept {
    return pass<"mmap">(&mmap, at, n, prot, flags, fd, offset);
}
int munmap(void* at, size_t n) noexcept {
    return pass<"munmap">(&munmap, at, n);
}
int nanosleep(const timespec* wanted, timespec* left) {
    return pass<"nanosleep">(&nanosleep, wanted, left);
}
int clock_nanosleep(clockid_t clock, int flags, const timespec* wanted, timespec* left) {
    return pass<"clock_nanosleep">(&clock_nanosleep, clock, flags, wanted, left);
}
int usleep(useconds_t us) {
    return pass<"usleep">(&usleep, us);
}
int sched_yield() noexcept {
    return pass<"sched_yield">(&sched_yield);
}
}

#endif
