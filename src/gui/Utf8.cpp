#include "gui/Utf8.h"

namespace {

constexpr uint32_t continuation = 0x80, payload = 0x3f;

/// Bytes that follow a leading one; -1 when it leads nothing.
int followers(unsigned char lead) {
    if (lead < 0x80) return 0;
    if (lead >= 0xc2 && lead < 0xe0) return 1;
    if (lead >= 0xe0 && lead < 0xf0) return 2;
    return lead >= 0xf0 && lead < 0xf5 ? 3 : -1;
}

/// Whether a character needs that many followers and is one at all.
bool isProper(uint32_t character, int count) {
    constexpr uint32_t least[] = {0, 0x80, 0x800, 0x10000}, last = 0x10ffff;
    const bool surrogate = character >= 0xd800 && character < 0xe000;
    return character >= least[count] && character <= last && !surrogate;
}

/// Of a letter of Latin-1, where the small ones stand 32 behind; others stay.
uint32_t capital(uint32_t character) {
    const bool ascii = character >= 'a' && character <= 'z';
    const bool accented = character >= 0xe0 && character <= 0xfe && character != 0xf7;
    return ascii || accented ? character - ('a' - 'A') : character;
}

void append(std::string& text, uint32_t character) {
    int rest = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr uint32_t leads[] = {0, 0xc0, 0xe0, 0xf0};
    text += char(leads[rest] | (character >> (6 * rest)));
    while (rest-- > 0) text += char(continuation | ((character >> (6 * rest)) & payload));
}

} // namespace

uint32_t nextCharacter(std::string_view text, size_t& at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    const int count = followers(lead);
    const size_t end = at + 1 + size_t(count < 0 ? 0 : count);
    if (count > 0 && end <= text.size()) {
        uint32_t character = lead & (payload >> count);
        bool whole = true;
        for (size_t i = at + 1; i < end; i++) {
            whole = whole && (byte(i) & 0xc0) == continuation;
            character = character << 6 | (byte(i) & payload);
        }
        if (whole && isProper(character, count)) {
            at = end;
            return character;
        }
    }
    at++;
    return lead;
}

std::string utf8Of(uint32_t character) {
    const int count = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    std::string text;
    if (isProper(character, count)) append(text, character);
    return text;
}

bool beginsWith(std::string_view text, std::string_view start) {
    size_t at = 0, startAt = 0;
    while (startAt < start.size()) {
        if (at >= text.size()) return false;
        if (capital(nextCharacter(text, at)) != capital(nextCharacter(start, startAt)))
            return false;
    }
    return true;
}

std::string asUtf8(std::string_view text) {
    std::string made;
    for (size_t at = 0; at < text.size();) append(made, nextCharacter(text, at));
    return made;
}

std::string asLatin1(std::string_view text) {
    std::string made;
    for (size_t at = 0; at < text.size();) {
        const uint32_t character = nextCharacter(text, at);
        made += char(character < 0x100 ? character : '?');
    }
    return made;
}
