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

    /// Silences the line; one that was never written stays untouched.
    void clear();
    /// Adds what is missing from `base` to `total` frames. A change clears the line.
    void setDelay(int total);
    /// Delays one frame: writes the input behind, gives the frame that is due. With `delay` above
    /// 0.
    void exchange(float inL, float inR, float& outL, float& outR) {
        const unsigned write = unsigned(pos) + unsigned(delay);
        left[write & mask] = inL;
        right[write & mask] = inR;
        outL = left[unsigned(pos) & mask];
        outR = right[unsigned(pos) & mask];
        pos = (pos + 1) & mask;
        written = true;
    }

private:
    float* left;  ///< owned, zero pages until written
    float* right; ///< owned
    bool written = false;
};
