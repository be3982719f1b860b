#pragma once

#include <concepts>
#include <cstddef>

/// A zero-terminated string of 8-bit text on the heap. Always valid: a null pointer counts as the
/// empty text everywhere. No thread shares one that is changing.
class CStr {
public:
    CStr() noexcept = default;
    CStr(const char* s); // NOLINT(google-explicit-constructor): literals pass as CStr
    /// One character. Of exactly this type, so that no number becomes text.
    CStr(std::same_as<char> auto c) : CStr(&c, 1) {}
    CStr(const char* s, size_t n); ///< the first `n` bytes of `s`, which has that many
    CStr(const CStr& s);
    CStr(CStr&& s) noexcept : text(s.text) { s.text = emptyText; }
    ~CStr();
    /// The buffer grows when the source is longer than the present text, and never shrinks.
    CStr& operator=(const CStr& s);
    CStr& operator=(CStr&& s) noexcept;
    CStr& operator=(const char* s);

    const char* asChar() const { return text; }
    /// For filling what `resize` made; never behind its end.
    char* buffer() { return text; }
    int length() const; ///< bytes, by scanning
    int getSize() const { return length(); }
    bool empty() const { return *text == 0; }
    /// The byte at `i`; 0 outside the text. Scans up to `i`.
    signed char operator[](int i) const;

    /// Drops the text for `n` + 1 bytes, of which only the last is set, to 0; the caller fills
    /// them. False, and empty, when the memory is not to be had or `n` is below 1.
    bool resize(int n);
    CStr upperCase() const; ///< byte by byte, A to Z only
    CStr lowerCase() const;
    /// `len` bytes from `start` on, below 0 to the end; clipped to what there is. A start outside
    /// the text gives an empty string.
    CStr sub(int start, int len) const;
    CStr& append(const CStr& s);
    CStr& append(const char* s);
    CStr& operator+=(const CStr& s) { return append(s); }
    CStr& operator+=(const char* s) { return append(s); }
    /// Takes out `n` bytes; nothing happens unless all of them are there.
    void del(int start, int n);
    void ins(const CStr& s, int pos); ///< in front of `pos`, which is clamped to the text
    /// Where `needle` is found first; -1 when it is absent or empty.
    int pos(const char* needle) const;
    int pos(const CStr& needle) const { return pos(needle.text); }
    /// Without blanks, line feeds and carriage returns at both ends; a tab stays.
    CStr trim() const;

private:
    static char emptyText[1]; ///< shared by all strings without a buffer; never written

    friend CStr operator+(const CStr& a, const CStr& b);
    friend CStr operator+(const CStr& a, const char* b);
    friend CStr operator+(const char* a, const CStr& b);
    static CStr join(const char* a, const char* b);
    static char* allocate(size_t n);
    bool reallocate(size_t n);
    void insertBytes(size_t at, const char* s, size_t n);
    void assign(const char* s);

    char* text = emptyText;
};

CStr operator+(const CStr& a, const CStr& b);
CStr operator+(const CStr& a, const char* b);
CStr operator+(const char* a, const CStr& b);
inline CStr operator+(CStr&& a, const CStr& b) {
    return static_cast<CStr&&>(a.append(b));
}
inline CStr operator+(CStr&& a, const char* b) {
    return static_cast<CStr&&>(a.append(b));
}

bool operator==(const CStr& a, const CStr& b); ///< byte by byte
bool operator==(const CStr& a, const char* b);

/// Below 0, 0 or above as the upper-cased `a` comes before, with or behind that of `b`.
int compareText(const CStr& a, const CStr& b);
inline bool sameText(const CStr& a, const CStr& b) {
    return compareText(a, b) == 0;
}
