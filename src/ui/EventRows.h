#pragma once

#include <vector>

class CPart;
class CTrack;

/// Where the events of a MIDI or drum part stand, one below the other: the keys from 127 down, all
/// of one height, or the sounds of the kit, of which opened ones are taller. A row has the number
/// of its key or sound; folded away, it has no height. Heights in pixels, from the top of the first
/// row. Interface thread.
class EventRows {
public:
    static constexpr int keys = 128, leastHeight = 4, mostHeight = 64;

    EventRows() = default;
    /// `keyHeight` pixels, kept between the least and the most.
    EventRows(const CTrack* track, const CPart* part, int keyHeight);
    /// The same rows, of which only those show whose element is set; all of them if none is.
    EventRows folded(const std::vector<bool>& shown) const;
    /// The same rows, the first of which begins at a height.
    EventRows from(int height) const;

    bool drums() const { return ofKit; }
    int count() const { return ofKit ? int(tops.size()) - 1 : keys; }
    int total() const { return tops.empty() ? keys * high : tops.back(); }
    int keyHeight() const { return high; } ///< of each key that shows
    bool covers(int y) const { return y >= origin && y < origin + total(); }
    /// The row at a height, above and below all the first and the last one; 0 without any.
    int rowAt(int y) const;
    int top(int row) const;
    int height(int row) const;

    static constexpr int octave = 12; ///< keys
    static bool blackKey(int key) { return 0x54A >> (key % octave) & 1; }

private:
    int placeOf(int row) const { return ofKit ? row : keys - 1 - row; } ///< from the top

    bool ofKit = false;
    int high = leastHeight, origin = 0;
    std::vector<int> tops; ///< by place, and below the last; empty while all keys show
};
