#pragma once

#include "base/Atomic.h"

#include <cstdint>

/// Counts the frames of the graph in strides. What is worked out now and then, and not for each
/// frame, begins anew with them: the tempo, slices of modulation, steps of automation; and with
/// their ends what has died away is dropped. They follow the song and not the device's blocks: the
/// first one begins where the transport starts, and one more at each 1,024 frames from there, at
/// each tempo point, at the turn of a loop and at a jump. So a song sounds the same in blocks of
/// any size. A block ends at the latest where a stride does.
///
/// Graph holder, but for `askCut`.
class SongClock {
public:
    static constexpr int strideFrames = 1024;

    /// The coming frame is the first of a song that starts.
    void restart();
    /// The coming frame begins a stride.
    void cut();
    /// As `cut`, for any thread: with the next block.
    void askCut() { asked = true; }
    /// The next stride has at most so many frames, 1 or more, and positions up to so many ticks.
    void limit(int frames, double reach);

    /// Whether a stride begins with the coming block.
    bool due();
    void begin();
    void advance(int frames);

    /// Frames of the stride that lie before this block.
    int passed() const { return into; }
    /// Frames from the start of the song to that of the stride.
    int64_t strideStart() const { return at - into; }
    /// Whether the stride begins with this block.
    bool begins() const { return into == 0; }
    /// Whether the stride ends with this block of `frames` frames.
    bool ends(int frames) const { return into + frames >= length; }
    /// Frames from the start of this block to the end of the stride, at least `frames`.
    int left(int frames) const { return into + frames > length ? frames : length - into; }
    /// Most frames that the coming block may have.
    int room();

    /// A number of ticks, rounded so that sums of it, and of whole products with frames, are exact
    /// as far as the positions of this stride go: then it makes no difference in how many steps a
    /// position is reached.
    double exact(double ticks) const;

private:
    static constexpr int exactBits = 52;
    static constexpr double leastReach = 65536.0;

    int64_t at = 0; ///< frames since the start, of this block
    int into = 0, length = 0;
    int most = strideFrames; ///< frames of the next stride
    double nextReach = leastReach;
    double unit = 0x1p-35; ///< what `exact` rounds to: a power of two
    Shared<bool> asked{false};

    int nextLength() const;
};
