#pragma once

/// Stereo delay line that evens out the latency of parallel paths. The distance between the write
/// and the read position is the delay, so 32767 frames at most are useful. Graph holder only.
class CPDC {
public:
    static constexpr int capacity = 32768; ///< frames, a power of two
    static constexpr int mask = capacity - 1;

    CPDC();
    ~CPDC();
    CPDC(const CPDC&) = delete;
    CPDC& operator=(const CPDC&) = delete;

    int base = 0;  ///< frames that the path has by itself
    int pos = 0;   ///< read position
    int delay = 0; ///< frames to add

    /// Silences the line. Takes no longer than a few frames, however long the line is.
    void clear() { filled = 0; }
    /// Adds what is missing from `base` to `total` frames. A change clears the line.
    void setDelay(int total);
    /// To be told, by its number, of each block that the line takes part in: one that was left out
    /// of the block before (cut off, or without a bus to feed) holds old sound, and is cleared.
    void enter(unsigned block);
    /// Delays one frame: writes the input behind, gives the frame that is due.
    void exchange(float inL, float inR, float& outL, float& outR) {
        const unsigned distance = unsigned(delay) & mask;
        const unsigned write = (unsigned(pos) + distance) & mask;
        left[write] = inL;
        right[write] = inR;
        const bool due = filled >= distance;
        outL = due ? left[pos] : 0.0f;
        outR = due ? right[pos] : 0.0f;
        filled += !due;
        pos = (pos + 1) & mask;
    }

private:
    float* left;         ///< owned, zero pages until written
    float* right;        ///< owned
    unsigned filled = 0; ///< frames written since the line was silent, up to the delay
    unsigned lastBlock = 0;
};
