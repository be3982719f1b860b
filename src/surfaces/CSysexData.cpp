#include "surfaces/CSysexData.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>

namespace {

constexpr size_t shortest = 4; ///< characters that say nothing yet
constexpr size_t prefixed = 4, plain = 2;

} // namespace

void CSysexData::fromStr(const CStr& text, bool append) {
    std::string digits = text.asChar();
    std::erase_if(digits, [](unsigned char c) { return std::isspace(c); });
    if (digits.size() <= shortest) return;
    const bool marked = digits.compare(0, 2, "0x") == 0 && digits.size() % prefixed == 0;
    const size_t step = marked ? prefixed : plain;
    if (digits.size() % step) return;
    std::vector<unsigned char> bytes;
    for (size_t at = 0; at < digits.size(); at += step) {
        if (marked && digits.compare(at, 2, "0x") != 0) return;
        const std::string byte = digits.substr(at + step - plain, plain);
        if (!std::ranges::all_of(byte, [](unsigned char c) { return std::isxdigit(c); })) return;
        bytes.push_back(static_cast<unsigned char>(std::strtoul(byte.c_str(), nullptr, 16)));
    }
    assign(bytes.data(), int(bytes.size()), append);
}

void CSysexData::assign(const unsigned char* bytes, int count, bool append) {
    if (!append) data.clear();
    const int room = std::min(count, mostBytes - size());
    data.insert(data.end(), bytes, bytes + std::max(room, 0));
}
