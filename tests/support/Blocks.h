#pragma once

#include <string>
#include <type_traits>

/// The blocks of a file, put together by hand from the tables of its format.
class Blocks {
public:
    std::string bytes;

    template <class... T>
    Blocks& i(T... v) {
        return (add(int(v)), ..., *this);
    }
    template <class... T>
    Blocks& f(T... v) {
        return (add(float(v)), ..., *this);
    }
    template <class... T>
    Blocks& b(T... v) {
        return (add(char(v)), ..., *this);
    }
    /// Each as what it is.
    template <class... T>
    Blocks& v(T... v) {
        return (add(v), ..., *this);
    }
    Blocks& zeros(int ints) { return add(std::string(size_t(ints) * 4, '\0')); }
    Blocks& s(const std::string& text) { return i(text.size()).add(text); }
    Blocks& add(const std::string& raw) {
        bytes += raw;
        return *this;
    }
    Blocks& add(const Blocks& other) { return add(other.bytes); }
    /// A block, whose told size is that of its content unless it is given.
    Blocks& block(const char* name, const Blocks& content = {}, int told = -1) {
        return s(name).i(told == -1 ? int(content.bytes.size()) : told).add(content);
    }

private:
    template <class T>
    void add(T value) requires std::is_arithmetic_v<T> {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
};

inline Blocks block(const char* name, const Blocks& content = {}, int told = -1) {
    return Blocks().block(name, content, told);
}

inline Blocks operator+(Blocks first, const Blocks& second) {
    return first.add(second);
}
