#include "surfaces/CPresetBuffer.h"

#include "surfaces/CSysexData.h"

#include <algorithm>
#include <string>

namespace {

constexpr unsigned char begins = 0xF0, ends = 0xF7, status = 0x80;

/// What names the maker of the device in a message: one byte, or three of which the first is 0.
std::span<const unsigned char> maker(std::span<const unsigned char> message) {
    if (message.size() < 2) return {};
    const size_t length = message[1] == 0 ? 3 : 1;
    return message.subspan(1, std::min(length, message.size() - 1));
}

bool same(std::span<const unsigned char> a, std::span<const unsigned char> b) {
    return std::ranges::equal(a, b);
}

} // namespace

bool isExclusive(std::span<const unsigned char> bytes) {
    if (bytes.size() < 3 || bytes.front() != begins || bytes.back() != ends) return false;
    return std::ranges::all_of(bytes.subspan(1, bytes.size() - 2),
                               [](unsigned char b) { return b < status; });
}

void CPresetBuffer::await(const MidiBytes& request, int offset, int now) {
    asked = request;
    start = std::max(offset, 0);
    askedAt = now;
    waiting = true;
}

bool CPresetBuffer::receive(std::span<const unsigned char> message, int now) {
    if (!isExclusive(message)) return false;
    const size_t from = size_t(start), inside = message.size() - 1; // the last one ends it
    if (inside <= from) return false;
    const bool answer = awaiting(now) && same(maker(message), maker(asked));
    const bool likeLast =
        defined() && inside - from == bytes.size() && same(message.first(from), head);
    if (!answer && !likeLast) return false;
    head.assign(message.begin(), message.begin() + long(from));
    bytes.assign(message.begin() + long(from), message.begin() + long(inside));
    waiting = false;
    return true;
}

int CPresetBuffer::byteAt(int index) const {
    return index >= 0 && size_t(index) < bytes.size() ? bytes[size_t(index)] : -1;
}

void CPresetBuffer::setByte(int index, int value) {
    if (byteAt(index) >= 0) bytes[size_t(index)] = static_cast<unsigned char>(value & 127);
}

CStr CPresetBuffer::getText(int offset, int size) const {
    constexpr int firstLetter = ' ', lastLetter = '~';
    std::string text;
    for (int i = 0; i < size && byteAt(offset + i) >= 0; i++) {
        const int letter = byteAt(offset + i);
        text += letter >= firstLetter && letter <= lastLetter ? char(letter) : ' ';
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text.c_str();
}

MidiBytes presetMessage(const CStr& text, const CPresetBuffer& preset) {
    constexpr const char *marker = "%s", *prefix = "0x", *digits = "0123456789ABCDEF";
    std::string whole = text.asChar();
    const size_t at = whole.find(marker);
    if (at == std::string::npos || !preset.defined()) return {};
    std::string written;
    const bool prefixed = whole.find(prefix) != std::string::npos;
    for (const unsigned char byte : preset.data()) {
        if (prefixed) written += prefix;
        written += digits[byte >> 4];
        written += digits[byte & 15];
    }
    whole.replace(at, 2, written);
    CSysexData message;
    message.fromStr(whole.c_str(), false);
    return isExclusive(message.data) ? message.data : MidiBytes();
}
