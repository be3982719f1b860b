#include "sequencer/midi/MidiLength.h"

#include "base/CStr.h"
#include "base/CStream.h"
#include "base/Numbers.h"
#include "sequencer/song/CPart.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr int64_t mostBytes = 64 << 20;

/// Walks over the events of one chunk, in ticks of the song.
class Walk {
public:
    Walk(const unsigned char* from, const unsigned char* to, int perQuarter)
        : at(from), end(to), division(perQuarter) {}

    /// Where the last event before the end stands, -1 when no channel event is in it.
    int64_t last() {
        while (at < end && step()) {
        }
        return reached;
    }

private:
    /// False at the end.
    bool step() {
        const int64_t delta = varLen() * quarterTicks / division + carried;
        carried = 0;
        const int status = byte();
        if (status < 0x80 && !running) return false;
        if (status == 0xFF) {
            if (byte() == 0x2F) return false;
            skip(varLen());
        } else if (status >= 0xF8) {
            return false;
        } else if (status >= 0xF0) {
            if (status > 0xF0) carried = delta;
            skip(varLen());
        } else {
            playStatus(status);
        }
        if (carried == 0) tick += delta;
        if (plays) reached = tick;
        return true;
    }
    void playStatus(int status) {
        plays = true;
        if (status >= 0x80) running = status;
        const bool single = (running & 0xE0) == 0xC0;
        skip((single ? 1 : 2) - (status < 0x80 ? 1 : 0));
    }
    int byte() { return at < end ? *at++ : 0; }
    int64_t varLen() {
        int64_t value = 0;
        for (int i = 0, b = 0x80; i < 4 && (b & 0x80); i++) {
            b = byte();
            value = value << 7 | (b & 0x7F);
        }
        return value;
    }
    void skip(int64_t bytes) { at += std::min<int64_t>(bytes, end - at); }

    const unsigned char* at;
    const unsigned char* const end;
    const int division;
    int running = 0;
    bool plays = false;
    int64_t tick = 0, carried = 0, reached = -1;
};

uint32_t bigEndian(const unsigned char* at, int bytes) {
    uint32_t value = 0;
    for (int i = 0; i < bytes; i++) value = value << 8 | at[i];
    return value;
}

} // namespace

int midiLength(const CStr& path) {
    constexpr size_t fileHead = 14, chunkHead = 8;
    CFileStream stream(path, 0);
    if (!stream.isOpen() || stream.getSize() > mostBytes) return 0;
    std::vector<unsigned char> bytes(size_t(stream.getSize()));
    const int got = stream.read(bytes.data(), int(bytes.size()));
    bytes.resize(size_t(std::max(0, got)));
    const auto isChunk = [&](size_t at, const char* id) {
        return std::equal(id, id + 4, bytes.begin() + long(at));
    };
    if (bytes.size() < fileHead || !isChunk(0, "MThd")) return 0;
    const int told = short(bigEndian(&bytes[12], 2));
    const int division = told < 1 ? quarterTicks : told;
    int64_t last = -1;
    for (size_t at = fileHead; at + chunkHead <= bytes.size();) {
        const size_t from = at + chunkHead;
        const size_t to = std::min(bytes.size(), from + bigEndian(&bytes[at + 4], 4));
        if (isChunk(at, "MTrk"))
            last = std::max(last, Walk(bytes.data() + from, bytes.data() + to, division).last());
        at = to;
    }
    if (last < 0) return 0;
    return asMax(barTicks, limitTicks((last + quarterTicks - 1) / quarterTicks * quarterTicks));
}
