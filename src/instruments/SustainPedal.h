#pragma once

#include <bitset>

/// The pedal of each MIDI channel: while it is down, keys that are let go sound on. Graph holder.
class SustainPedal {
public:
    static constexpr int channels = 16, keys = 128;
    static constexpr int controller = 64, downFrom = 64; ///< number and value of the message

    /// Takes a key that is let go; false when it shall be silenced now.
    bool holds(int channel, int key) {
        if (down[size_t(channel)]) waiting[channel].set(size_t(key));
        return down[size_t(channel)];
    }
    /// A key that is pressed again is held by the finger.
    void press(int channel, int key) { waiting[channel].reset(size_t(key)); }
    /// Follows the controller; calls `release(key)` for the keys that waited for the pedal to rise.
    template <class F>
    void move(int channel, int value, F&& release) {
        down[size_t(channel)] = value >= downFrom;
        if (down[size_t(channel)]) return;
        for (int key = 0; waiting[channel].any() && key < keys; key++)
            if (waiting[channel][size_t(key)]) release(key);
        waiting[channel].reset();
    }
    void clear() { *this = {}; }

private:
    std::bitset<channels> down;
    std::bitset<keys> waiting[channels];
};
