#include "base/Numbers.h"

#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Enough for %f of the largest double with the widest format that `takesFormat` lets through.
constexpr size_t maxText = 2048;

template <class T>
CStr print(const char* format, T value) {
    char text[maxText];
    std::snprintf(text, maxText, format, value);
    return text;
}

/// Skips up to three digits, the most that a width or a precision may have.
const char* skipDigits(const char* at) {
    for (int n = 0; n < 3 && isDigit(*at); ++n) ++at;
    return at;
}

/// Whether a format has exactly one conversion, to one of `kinds`, which is stored in `kind`.
bool takesFormat(const char* at, const char* kinds, char& kind) {
    int conversions = 0;
    while ((at = std::strchr(at, '%'))) {
        ++at;
        if (*at == '%') {
            ++at;
            continue;
        }
        at += std::strspn(at, "-+ #0");
        at = skipDigits(at);
        if (*at == '.') at = skipDigits(at + 1);
        if (!*at || !std::strchr(kinds, *at)) return false;
        kind = *at++;
        ++conversions;
    }
    return conversions == 1;
}

} // namespace

void sort(int& a, int& b) {
    if (a > b) std::swap(a, b);
}

void order(int& a, int& b) {
    sort(a, b);
}

CStr asStr(int v) {
    return print("%d", v);
}
CStr asStr(unsigned v) {
    return print("%u", v);
}
CStr asStr(long v) {
    return print("%ld", v);
}
CStr asStr(unsigned long v) {
    return print("%lu", v);
}
CStr asStr(long long v) {
    return print("%lld", v);
}
CStr asStr(unsigned long long v) {
    return print("%llu", v);
}
CStr asStr(float v) {
    return print("%f", double(v));
}
CStr asStr(double v) {
    return print("%f", v);
}

CStr asStrFormat(int v, const CStr& format) {
    char kind = 0;
    if (!takesFormat(format.asChar(), "diuxXc", kind)) return format;
    return std::strchr("uxX", kind) ? print(format.asChar(), unsigned(v))
                                    : print(format.asChar(), v);
}

CStr asStrFormat(float v, const CStr& format) {
    return asStrFormat(double(v), format);
}

CStr asStrFormat(double v, const CStr& format) {
    char kind = 0;
    return takesFormat(format.asChar(), "efg", kind) ? print(format.asChar(), v) : format;
}

int strAsInt(const CStr& s) {
    return strAsIntDef(s, 0);
}

int strAsIntDef(const CStr& s, int def) {
    int signs = 0, separators = 0;
    for (const char* c = s.asChar(); *c; ++c) {
        if (*c == '-')
            ++signs;
        else if (*c == ',' || *c == '.')
            ++separators;
        else if (!isDigit(*c))
            return def;
    }
    if (s.empty() || signs > 1 || separators > 1) return def;
    return saturate(std::strtoll(s.asChar(), nullptr, 10));
}

CStr stripValue(const CStr& s) {
    const int at = s.pos("=");
    return at < 0 ? s : s.sub(0, at);
}

float swapFloat(float v) {
    return std::bit_cast<float>(swap4(std::bit_cast<uint32_t>(v)));
}

void asSleep(int ms) {
    if (ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

int asTimeInMS() {
    using namespace std::chrono;
    const auto now = system_clock::now().time_since_epoch();
    return int(uint32_t(duration_cast<milliseconds>(now).count()));
}
