#include "base/CStr.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

char CStr::emptyText[1] = {0};

namespace {

char upper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}
bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\r';
}

} // namespace

CStr::CStr(const char* s) : CStr(s, s ? std::strlen(s) : 0) {
}

CStr::CStr(const char* s, size_t n) : text(allocate(n)) {
    if (text != emptyText) std::memcpy(text, s, n);
}

CStr::CStr(const CStr& s) : CStr(s.text) {
}

CStr::~CStr() {
    if (text != emptyText) std::free(text);
}

CStr& CStr::operator=(const CStr& s) {
    if (this != &s) assign(s.text);
    return *this;
}

CStr& CStr::operator=(CStr&& s) noexcept {
    std::swap(text, s.text);
    return *this;
}

CStr& CStr::operator=(const char* s) {
    assign(s ? s : "");
    return *this;
}

void CStr::assign(const char* s) {
    if (s == text) return;
    const size_t n = std::strlen(s);
    if (n <= std::strlen(text)) {
        if (text != emptyText) std::memmove(text, s, n + 1);
        return;
    }
    CStr copied(s, n);
    std::swap(text, copied.text);
}

/// A buffer for `n` bytes and a final 0, which is set; the shared empty text if `n` is 0 or the
/// memory is not to be had.
char* CStr::allocate(size_t n) {
    char* buffer = n > 0 && n < SIZE_MAX ? static_cast<char*>(std::malloc(n + 1)) : nullptr;
    if (!buffer) return emptyText;
    buffer[n] = 0;
    return buffer;
}

bool CStr::reallocate(size_t n) {
    char* own = text == emptyText ? nullptr : text;
    char* buffer = static_cast<char*>(std::realloc(own, n + 1));
    if (!buffer) return false;
    text = buffer;
    return true;
}

int CStr::length() const {
    return int(std::min(std::strlen(text), size_t(INT_MAX)));
}

signed char CStr::operator[](int i) const {
    if (i < 0 || std::memchr(text, 0, size_t(i) + 1)) return 0;
    return static_cast<signed char>(text[i]);
}

bool CStr::resize(int n) {
    if (text != emptyText) std::free(text);
    text = allocate(size_t(std::max(n, 0)));
    return text != emptyText;
}

CStr CStr::upperCase() const {
    CStr result(*this);
    for (char* c = result.text; *c; ++c) *c = upper(*c);
    return result;
}

CStr CStr::lowerCase() const {
    CStr result(*this);
    for (char* c = result.text; *c; ++c) *c = lower(*c);
    return result;
}

CStr CStr::sub(int start, int len) const {
    const size_t n = std::strlen(text);
    if (start < 0 || size_t(start) >= n) return {};
    const size_t rest = n - size_t(start);
    return CStr(text + start, len < 0 ? rest : std::min(size_t(len), rest));
}

CStr& CStr::append(const CStr& s) {
    insertBytes(std::strlen(text), s.text, std::strlen(s.text));
    return *this;
}

CStr& CStr::append(const char* s) {
    if (s) insertBytes(std::strlen(text), s, std::strlen(s));
    return *this;
}

void CStr::del(int start, int n) {
    const size_t length = std::strlen(text);
    if (start < 0 || n < 1 || size_t(start) + size_t(n) > length) return;
    char* to = text + start;
    std::memmove(to, to + n, length - size_t(start) - size_t(n) + 1);
}

void CStr::ins(const CStr& s, int pos) {
    const size_t at = std::min(size_t(std::max(pos, 0)), std::strlen(text));
    insertBytes(at, s.text, std::strlen(s.text));
}

/// `at` is inside the text or at its end. `s` may point into this string.
void CStr::insertBytes(size_t at, const char* s, size_t n) {
    if (n == 0) return;
    const size_t length = std::strlen(text);
    const CStr own = s >= text && s <= text + length ? CStr(s, n) : CStr();
    if (!own.empty()) s = own.text;
    if (!reallocate(length + n)) return;
    std::memmove(text + at + n, text + at, length - at);
    std::memcpy(text + at, s, n);
    text[length + n] = 0;
}

int CStr::pos(const char* needle) const {
    if (!needle || !*needle) return -1;
    const char* found = std::strstr(text, needle);
    return found ? int(found - text) : -1;
}

CStr CStr::trim() const {
    const char* from = text;
    while (isSpace(*from)) ++from;
    const char* end = from + std::strlen(from);
    while (end > from && isSpace(end[-1])) --end;
    return CStr(from, size_t(end - from));
}

CStr CStr::join(const char* a, const char* b) {
    const size_t n = std::strlen(a), m = std::strlen(b);
    CStr result;
    result.text = allocate(n + m);
    if (result.text == emptyText) return result;
    std::memcpy(result.text, a, n);
    std::memcpy(result.text + n, b, m);
    return result;
}

CStr operator+(const CStr& a, const CStr& b) {
    return CStr::join(a.text, b.text);
}
CStr operator+(const CStr& a, const char* b) {
    return CStr::join(a.text, b ? b : "");
}
CStr operator+(const char* a, const CStr& b) {
    return CStr::join(a ? a : "", b.text);
}

bool operator==(const CStr& a, const CStr& b) {
    return std::strcmp(a.asChar(), b.asChar()) == 0;
}
bool operator==(const CStr& a, const char* b) {
    return std::strcmp(a.asChar(), b ? b : "") == 0;
}

int compareText(const CStr& a, const CStr& b) {
    const char* s = a.asChar();
    const char* t = b.asChar();
    while (*s && upper(*s) == upper(*t)) ++s, ++t;
    return int(static_cast<unsigned char>(upper(*s))) - int(static_cast<unsigned char>(upper(*t)));
}
