#pragma once

#include "base/Atomic.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <type_traits>

/// An item of a CList.
struct CListItem {
    Shared<void*> data{nullptr};
    Shared<CListItem*> next{nullptr};
};

/// A singly linked list of pointers that it does not own: the owner takes `first`, `del(0)` and
/// deletes the object, until the list is empty (`deleteAll`).
///
/// One thread at a time changes a list. Others may walk it by `next2`, `each`, `items` and the
/// questions meanwhile, as long as it only grows at its end: an item is complete before it is
/// linked. Every walk ends at a null link.
///
/// A pointer is read back as the class that it was stored as.
class CList {
public:
    CList() = default;
    virtual ~CList();
    CList(const CList&) = delete;
    CList& operator=(const CList&) = delete;

    Shared<CListItem*> head{nullptr};
    Shared<CListItem*> cursor{nullptr}; ///< of `first` and `next_old`; null is in front of the head
    Shared<int> count{0};

    void* items(int i) const; ///< null outside the list
    void* getItem(int i) const { return items(i); }
    void* getFirst() const { return items(0); }
    int getCount() const { return count.loadAcquire(); }
    bool empty() const { return head.loadAcquire() == nullptr; }

    void* first(); ///< sets the cursor to the head; null when the list is empty
    void*
    next_old(); ///< moves the cursor on; 0 at the end, where the cursor stays on the last item
    /// The normal walk, from a null `*it` on. At the end, or at a stored null pointer, it gives 0
    /// and leaves `*it` null, so that the next call starts anew.
    void* next2(CListItem** it) const;
    void* next(const void* p) const; ///< what follows the first `p`; 0 if `p` is absent or last
    void* last() const;
    int indexed(const void* p) const; ///< -1 when absent
    bool contains(const void* p) const { return indexed(p) >= 0; }

    void add(void* p); ///< at the end, in constant time
    void addUnique(void* p);
    /// Behind the item at the cursor, which moves to the new item; at the end without a cursor. A
    /// list filled by this alone grows at its end.
    void addLast(void* p);
    /// In front of index `i`; below 1 at the head, past the end at the tail.
    void insert(int i, void* p);
    void del(int i);                      ///< nothing happens outside the list
    void remove(const void* p);           ///< the first `p`; nothing happens when it is absent
    void replace(const void* a, void* b); ///< in the first item that holds `a`
    void exchange(int i, int j);          ///< swaps two data; both indices have to be inside
    void* pop();                          ///< removes and returns the last data; null when empty
    /// Takes the item that holds `p` out of `src` and puts it at `index` here, below 0 or past the
    /// end at the tail. Nothing is allocated or freed. 0 when `p` is not in `src`, or `src` is this
    /// list, or both are empty.
    int move(CList* src, const void* p, int index);
    /// Exchanges the contents of two lists, in constant time. Who is walking one of them goes on
    /// over what it held before.
    void swap(CList& other);
    void clear();
    /// Another number after each change.
    unsigned version() const { return changes; }

private:
    CListItem* find(const void* p, CListItem** before) const;
    CListItem* itemAt(int i, CListItem** before) const;
    void link(CListItem* item, CListItem* before);
    void unlink(CListItem* item, CListItem* before);

    Shared<unsigned> changes{0};
    CListItem* tail = nullptr;
};

/// `next2` with the type of the contents.
template <class T>
T* nextOf(const CList& list, CListItem*& it) {
    return static_cast<T*>(list.next2(&it));
}

/// The contents of a list for a range-based `for`. The walk ends at the first null; it survives
/// additions at the tail, but not the removal of the object it stands on.
template <class T>
class CListRange {
public:
    class Iterator {
    public:
        using value_type = T*;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        explicit Iterator(CListItem* item) { set(item); }
        T* operator*() const { return object; }
        Iterator& operator++() {
            set(at->next.loadAcquire());
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t) const { return !object; }

    private:
        void set(CListItem* item) {
            at = item;
            object = item ? static_cast<T*>(item->data.loadAcquire()) : nullptr;
        }

        CListItem* at = nullptr;
        T* object = nullptr;
    };

    explicit CListRange(const CList& l) : list(l) {}
    Iterator begin() const { return Iterator(list.head.loadAcquire()); }
    std::default_sentinel_t end() const { return {}; }

private:
    const CList& list;
};

template <class T>
CListRange<T> each(const CList& list) {
    return CListRange<T>(list);
}

/// A list of one class, which is read back as what was stored; for the rest a CList, and whoever
/// knows it as that only has to keep to the class.
template <class T>
class ListOf : public CList {
public:
    T* items(int i) const { return typed(CList::items(i)); }
    T* getItem(int i) const { return items(i); }
    T* getFirst() const { return items(0); }
    T* first() { return typed(CList::first()); }
    T* next_old() { return typed(CList::next_old()); }
    T* next(const T* p) const { return typed(CList::next(p)); }
    T* last() const { return typed(CList::last()); }
    T* pop() { return typed(CList::pop()); }
    void add(T* p) { CList::add(p); }
    void addUnique(T* p) { CList::addUnique(p); }
    void addLast(T* p) { CList::addLast(p); }
    void insert(int i, T* p) { CList::insert(i, p); }
    void replace(const T* a, T* b) { CList::replace(a, b); }

    auto begin() const { return CListRange<T>(*this).begin(); } ///< the walk of `each`
    auto end() const { return CListRange<T>(*this).end(); }

private:
    static T* typed(void* p) { return static_cast<T*>(p); }
};

/// A list of `T`, or of a class derived from it, to be read as one of `T`. It refers to the list.
template <class T>
class ListView {
public:
    class Iterator {
    public:
        using value_type = T*;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        Iterator(CListItem* item, T* (*as)(void*)) : at(item), typed(as) {}
        T* operator*() const { return typed(at->data.loadAcquire()); }
        Iterator& operator++() {
            at = at->next.loadAcquire();
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t) const { return !at; }

    private:
        CListItem* at = nullptr;
        T* (*typed)(void*) = nullptr;
    };

    template <class D>
    requires std::is_convertible_v<D*, T*> ListView(const ListOf<D>& l)
        : list(&l), typed([](void* p) -> T* { return static_cast<D*>(p); }) {}

    Iterator begin() const { return Iterator(list->head.loadAcquire(), typed); }
    std::default_sentinel_t end() const { return {}; }
    T* items(int i) const { ///< null outside the list
        void* const object = list->items(i);
        return object ? typed(object) : nullptr;
    }
    T* getFirst() const { return items(0); }
    T* last() const { return items(getCount() - 1); }
    int getCount() const { return list->getCount(); }
    bool empty() const { return list->empty(); }
    int indexed(const T* p) const {
        for (int i = 0; T* const object : *this) {
            if (object == p) return i;
            i++;
        }
        return -1;
    }
    bool contains(const T* p) const { return indexed(p) >= 0; }

private:
    template <class To, class From>
    friend ListView<To> listAs(const ListOf<From>& list);
    ListView(const CList& l, T* (*as)(void*)) : list(&l), typed(as) {}

    const CList* list;
    T* (*typed)(void*);
};

/// A list all of whose contents are known to be of a class derived from its own.
template <class To, class From>
ListView<To> listAs(const ListOf<From>& list) {
    return {list, [](void* p) { return static_cast<To*>(static_cast<From*>(p)); }};
}

/// Several lists, for a loop over them: of one class, or as what they are without one.
template <class L, class... More>
auto listsOf(L& first, More&... more) {
    if constexpr ((std::is_same_v<L, More> && ...)) {
        return std::array<L*, 1 + sizeof...(More)>{&first, &more...};
    } else {
        constexpr bool fixed = std::is_const_v<L> || (std::is_const_v<More> || ...);
        using Any = std::conditional_t<fixed, const CList, CList>;
        return std::array<Any*, 1 + sizeof...(More)>{&first, &more...};
    }
}
/// The same for a loop that reads them as lists of what they have in common.
template <class T, class... L>
auto viewsOf(const L&... lists) {
    return std::array<ListView<T>, sizeof...(L)>{ListView<T>(lists)...};
}

/// Empties a list whose contents the caller owns, and deletes them.
template <class T>
void deleteAll(CList& list) {
    while (!list.empty()) {
        T* object = static_cast<T*>(list.first());
        list.del(0);
        delete object;
    }
}

template <class T>
void deleteAll(ListOf<T>& list) {
    deleteAll<T>(static_cast<CList&>(list));
}
