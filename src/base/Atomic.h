#pragma once

#include <atomic>
#include <concepts>
#include <type_traits>

template <class T>
concept SharedInteger = std::integral<T> && !std::same_as<T, bool>;

/// A word that one thread writes while another reads: a number or a pointer that reads and is
/// assigned like a plain field, each access relaxed. Copying loads and stores, so a struct of such
/// words stays copyable, but its copy is no snapshot.
///
/// `+=` and its kin of numbers are a load and a store, so that an update of another thread may get
/// lost between; `fetchOr`, `fetchAnd`, `fetchAdd`, `|=` and `&=` lose none.
template <class T>
class Shared {
public:
    using Value = T;
    static_assert(std::is_trivially_copyable_v<T>);
    static_assert(std::atomic_ref<T>::is_always_lock_free, "a lock would stop the audio thread");

    constexpr Shared() noexcept = default;
    constexpr explicit Shared(T initial) noexcept : value(initial) {}
    Shared(const Shared& other) noexcept : value(other.load()) {}
    ~Shared() = default;
    Shared& operator=(const Shared& other) noexcept {
        store(other.load());
        return *this;
    }
    T operator=(T v) noexcept { // NOLINT(misc-unconventional-assign-operator): as std::atomic
        store(v);
        return v;
    }

    operator T() const noexcept { return load(); }
    T operator->() const noexcept requires std::is_pointer_v<T> { return load(); }
    T load() const noexcept { return ref().load(std::memory_order_relaxed); }
    void store(T v) noexcept { ref().store(v, std::memory_order_relaxed); }

    /// Publishing: who sees the value by `loadAcquire` also sees all that was written before.
    void storeRelease(T v) noexcept { ref().store(v, std::memory_order_release); }
    T loadAcquire() const noexcept { return ref().load(std::memory_order_acquire); }

    /// Returns the value before; acquires and releases, as do all fetch operations.
    T exchange(T v) noexcept { return ref().exchange(v, std::memory_order_acq_rel); }
    /// Stores `desired` if the value is `expected`; else false, with the value in `expected`.
    bool compareExchange(T& expected, T desired) noexcept {
        return ref().compare_exchange_strong(expected, desired, std::memory_order_acq_rel,
                                             std::memory_order_acquire);
    }

    T fetchOr(T bits) noexcept requires std::integral<T> {
        return ref().fetch_or(bits, std::memory_order_acq_rel);
    }
    T fetchAnd(T bits) noexcept requires std::integral<T> {
        return ref().fetch_and(bits, std::memory_order_acq_rel);
    }
    T fetchAdd(T n) noexcept requires std::integral<T> {
        return ref().fetch_add(n, std::memory_order_acq_rel);
    }
    T operator|=(T bits) noexcept requires std::integral<T> { return T(fetchOr(bits) | bits); }
    T operator&=(T bits) noexcept requires std::integral<T> { return T(fetchAnd(bits) & bits); }

    T operator+=(T v) noexcept { return *this = T(load() + v); }
    T operator-=(T v) noexcept { return *this = T(load() - v); }
    T operator*=(T v) noexcept { return *this = T(load() * v); }
    T operator++() noexcept { return *this += T(1); }
    T operator--() noexcept { return *this -= T(1); }
    T operator++(int) noexcept {
        const T before = load();
        store(T(before + T(1)));
        return before;
    }
    T operator--(int) noexcept {
        const T before = load();
        store(T(before - T(1)));
        return before;
    }

    /// The bare word, for access through `std::atomic_ref` alone.
    T* address() noexcept { return &value; }

private:
    std::atomic_ref<T> ref() const noexcept { return std::atomic_ref<T>(value); }

    alignas(std::atomic_ref<T>::required_alignment) mutable T value{};
};
