#pragma once

#include <cstdint>
#include <vector>

/// A moment of the song.
struct SongTime {
    double ticks = 0.0;
    float bpm = 120.0f;
    bool playing = false;
};

/// When the song was where, for more than the last second. Graph holder.
class SongTimes {
public:
    /// A block of so many frames begins there.
    void note(const SongTime& time, int frames);
    /// So many frames before the first of the latest block; a frame has so many ticks at one beat
    /// per minute.
    SongTime before(int frames, double ticksPerFrame) const;

    bool empty() const { return count == 0; }

private:
    static constexpr unsigned most = 8192; ///< blocks, a power of two
    struct Block {
        int64_t frame = 0; ///< its first one
        SongTime time;
    };
    const Block& at(unsigned ago) const { return blocks[(count - 1 - ago) & (most - 1)]; }

    std::vector<Block> blocks = std::vector<Block>(most);
    unsigned count = 0;
    int64_t next = 0;
};
