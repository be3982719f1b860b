#pragma once

#include "base/Atomic.h"
#include "rights/StoreRight.h"

/// A value that the user sets and a project stores, as a shared word. Everybody reads it. What
/// writes it compiles only where `StoreRight` is complete, below the windows: these set values
/// through the host's `values`, which also marks the project, is undone and is recorded.
template <class T>
class Stored {
public:
    constexpr Stored() noexcept = default;
    constexpr explicit Stored(T initial) noexcept : word(initial) {}
    Stored(const Stored&) noexcept = default;
    ~Stored() = default;
    Stored& operator=(const Stored& other) noexcept {
        written() = other.load();
        return *this;
    }

    operator T() const noexcept { return word; }
    T load() const noexcept { return word; }

    template <class Right = StoreRight>
    T operator=(T v) noexcept { // NOLINT(misc-unconventional-assign-operator): as std::atomic
        return written<Right>() = v;
    }
    template <class Right = StoreRight>
    operator Shared<T>&() noexcept {
        return written<Right>();
    }
    template <class Right = StoreRight>
    T* address() noexcept {
        return written<Right>().address();
    }
    template <class Right = StoreRight>
    Shared<T>& written() noexcept {
        static_assert(sizeof(Right) > 0, "windows set stored values through CQV::values");
        return word;
    }

private:
    Shared<T> word;
};

/// A number on its way into a stored value: the argument of a setter that windows cannot call.
template <class T>
class ToStore {
public:
    template <class Right = StoreRight>
    ToStore(T v) noexcept : value(v) {
        static_assert(sizeof(Right) > 0, "windows set stored values through CQV::values");
    }
    template <class Right = StoreRight>
    ToStore(const Stored<T>& v) noexcept : ToStore<T>(v.load()) {}
    operator T() const noexcept { return value; }

private:
    T value;
};
