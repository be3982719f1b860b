#pragma once

#include <csignal>
#include <sys/resource.h>

/// As long as it stands no file of the process grows beyond some bytes, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before);
        limit(bytes);
    }
    ~FullDisk() {
        limit(before.rlim_cur);
        std::signal(SIGXFSZ, handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*handler)(int);
    rlimit before{};

    void limit(rlim_t bytes) const {
        const rlimit wanted{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &wanted);
    }
};
