#include "base/BlockSearch.h"

#include <bit>
#include <cctype>
#include <cstring>

namespace {

constexpr int wordBytes = int(sizeof(int));
constexpr int longestName = 256;
constexpr int longestKnown = 32;

bool isName(const CStr& text) {
    for (int i = 0; i < text.length(); i++)
        if (text[i] <= ' ' || text[i] > '~') return false;
    return !text.empty();
}

/// Names of blocks can be printed; false, with an empty name, where none stands.
bool readHead(CStream& stream, BlockStart& start) {
    start = BlockStart();
    if (stream.left() < 2 * wordBytes) return false;
    const int length = stream.readInt();
    if (length < 1 || length > longestName || length > stream.left() - wordBytes) return false;
    CStr name;
    name.resize(length);
    stream.read(name.buffer(), length);
    if (!isName(name)) return false;
    start.name = name;
    start.size = stream.readInt();
    start.body = stream.getPos();
    return true;
}

/// Bits that differ. A digit in place of another one is the name of a later form.
int bitsApart(std::string_view known, const char* found) {
    int bits = 0;
    for (const char c : known) {
        const char other = *found++;
        if (c != other && std::isdigit(c) && std::isdigit(static_cast<unsigned char>(other)))
            return longestName;
        bits += std::popcount(static_cast<unsigned char>(c ^ other));
    }
    return bits;
}

} // namespace

/// Makes out a head of which one bit has changed, in the name or its length: the first that `fits`.
template <class Fits>
bool BlockNames::repair(CStream& stream, int64_t at, BlockStart& start, Fits fits) const {
    char raw[longestKnown + 2 * wordBytes] = {};
    stream.setPos(at);
    const int got = stream.read(raw, int(sizeof raw));
    unsigned length = 0;
    std::memcpy(&length, raw, sizeof length);
    for (const std::string_view name : names) {
        const int n = int(name.size());
        if (n > longestKnown || n + 2 * wordBytes > got) continue;
        const int lengthBits = std::popcount(length ^ unsigned(n));
        if (lengthBits > 1 || lengthBits + bitsApart(name, raw + wordBytes) != 1) continue;
        start.name = name.data();
        std::memcpy(&start.size, raw + wordBytes + n, sizeof start.size);
        start.body = at + n + 2 * wordBytes;
        start.damaged = true;
        if (fits(start)) return true;
    }
    return false;
}

bool BlockNames::readStart(CStream& stream, BlockStart& start) const {
    const int64_t at = stream.getPos();
    const bool whole = readHead(stream, start);
    if (whole && has(start.name)) return true;
    const bool fits = whole && start.size >= 0 && isAt(stream, start.body + start.size);
    BlockStart repaired;
    const bool meant = repair(stream, at, repaired, [&](const BlockStart& found) {
        return found.size >= 0 && (!fits || found.name.length() == start.name.length()) &&
               isAt(stream, found.body + found.size);
    });
    if (meant) start = repaired;
    return meant || fits;
}

bool BlockNames::isAt(CStream& stream, int64_t position) const {
    if (position >= stream.getSize()) return position == stream.getSize();
    BlockStart start;
    stream.setPos(position);
    return readHead(stream, start) ||
           repair(stream, position, start, [](const BlockStart&) { return true; });
}

int64_t BlockNames::find(CStream& stream, int64_t from) const {
    stream.setPos(from);
    BufferedView view(&stream, stream.getSize());
    BlockStart start;
    for (; from < view.getSize(); ++from) {
        view.setPos(from);
        if (readHead(view, start) && has(start.name)) return from;
    }
    return from;
}
