#pragma once

#include <cstddef>

/// Memory that processes share, of zeros at first. It takes no room until it is written to. Throws
/// std::bad_alloc where there is none.
class SharedPages {
public:
    explicit SharedPages(size_t bytes);
    /// What another process has made: takes over its file.
    SharedPages(int file, size_t bytes);
    ~SharedPages();
    SharedPages(const SharedPages&) = delete;
    SharedPages& operator=(const SharedPages&) = delete;

    void* data() const { return pages; }
    int file() const { return descriptor; } ///< for the other process; stays owned here

private:
    const size_t size;
    const int descriptor;
    void* pages = nullptr;
};

/// A `T` in shared memory, which is fit to be used with all of its bytes 0, with room behind it.
template <class T>
class SharedRoom {
public:
    explicit SharedRoom(size_t behind = 0) : pages(sizeof(T) + behind) {}
    SharedRoom(int file, size_t behind) : pages(file, sizeof(T) + behind) {}

    T* operator->() const { return static_cast<T*>(pages.data()); }
    T& operator*() const { return *static_cast<T*>(pages.data()); }
    void* behind() const { return static_cast<T*>(pages.data()) + 1; }
    int file() const { return pages.file(); }

private:
    SharedPages pages;
};
