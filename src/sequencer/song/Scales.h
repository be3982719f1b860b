#pragma once

#include <set>
#include <span>

class CPart;

constexpr int octaveKeys = 12;

/// Scales, by their number in the menu and in files.
enum ScaleKind : int { scaleNone = 0, scaleMajor = 1, scaleMinor = 2, scaleCount = 17 };

/// Keys in which a song, or a stretch of it, mostly stands. It helps, and forbids nothing.
struct Scale {
    int root = 0;         ///< 0 for C to 11
    int kind = scaleNone; ///< without one all keys belong to it

    bool any() const { return kind != scaleNone; }
    bool has(int key) const;
    /// The nearest key of the scale, of two as near the lower one, within 0 to 127.
    int nearest(int key) const;
    /// So many degrees of the scale up, or below 0 down, within 0 to 127; a key beside the scale
    /// keeps its distance from the degree below. Without a scale, semitones.
    int moved(int key, int degrees) const;
};
const char* scaleName(int kind);

/// A kind of chord: its name behind that of the root, such as "m7", and semitones over the root.
struct ChordKind {
    static constexpr int mostKeys = 6;
    const char *name, *title; ///< in menus
    int count;
    int above[mostKeys]; ///< rising, the first 0

    std::span<const int> keys() const { return {above, size_t(count)}; }
};
std::span<const ChordKind> chordKinds();
/// Which chord keys form, in any octaves: its kind, -1 for none, its root, 0 to 11, and what is
/// lowest, 0 to 11.
struct FoundChord {
    int kind = -1, root = 0, bass = 0;
};
FoundChord findChord(const std::set<int>& keys);
