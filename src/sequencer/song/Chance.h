#pragma once

#include <cstdint>

/// Draws whether the notes and hits of a song track play. What comes out depends on the start of
/// playback, the pass of a loop and the event, and on nothing that was drawn before: cutting into
/// blocks, threads and other tracks change nothing. Graph holder.
class Chance {
public:
    /// Playback begins; another seed draws something else.
    void start(uint64_t number) {
        seed = number;
        pass = 0;
    }
    void nextPass() { pass++; }

    /// True in `percent` of all cases: 0 never, 100 always. `mark` tells events at one tick apart.
    bool happens(int percent, int tick, int mark) const;

private:
    uint64_t seed = 0;
    uint32_t pass = 0;
};
