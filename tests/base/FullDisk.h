#pragma once

#include <csignal>
#include <sys/resource.h>

/// A limit of the system that is lower for a while.
class Limit {
public:
    Limit(__rlimit_resource kind, rlim_t value) : resource(kind) {
        getrlimit(kind, &before);
        const rlimit lower{value, before.rlim_max};
        setrlimit(kind, &lower);
    }
    ~Limit() { setrlimit(resource, &before); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    __rlimit_resource resource;
    rlimit before{};
};

/// As long as it stands no file of the process grows beyond some bytes, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes)
        : handler(std::signal(SIGXFSZ, SIG_IGN)), limit(RLIMIT_FSIZE, bytes) {}
    ~FullDisk() { std::signal(SIGXFSZ, handler); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*handler)(int);
    Limit limit;
};
