#include "sequencer/song/Scales.h"

#include "base/Numbers.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace {

constexpr int mostKey = 127;

struct ScaleShape {
    const char* name;
    unsigned keys; ///< bit n: n semitones over the root belong to it
};
constexpr unsigned keysAt(std::initializer_list<int> semitones) {
    unsigned bits = 0;
    for (const int s : semitones) bits |= 1u << s;
    return bits;
}
constexpr ScaleShape shapes[] = {
    {"No scale", 0xFFF},
    {"Major", keysAt({0, 2, 4, 5, 7, 9, 11})},
    {"Minor", keysAt({0, 2, 3, 5, 7, 8, 10})},
    {"Harmonic minor", keysAt({0, 2, 3, 5, 7, 8, 11})},
    {"Melodic minor", keysAt({0, 2, 3, 5, 7, 9, 11})},
    {"Dorian", keysAt({0, 2, 3, 5, 7, 9, 10})},
    {"Phrygian", keysAt({0, 1, 3, 5, 7, 8, 10})},
    {"Lydian", keysAt({0, 2, 4, 6, 7, 9, 11})},
    {"Mixolydian", keysAt({0, 2, 4, 5, 7, 9, 10})},
    {"Locrian", keysAt({0, 1, 3, 5, 6, 8, 10})},
    {"Major pentatonic", keysAt({0, 2, 4, 7, 9})},
    {"Minor pentatonic", keysAt({0, 3, 5, 7, 10})},
    {"Blues", keysAt({0, 3, 5, 6, 7, 10})},
    {"Whole tones", keysAt({0, 2, 4, 6, 8, 10})},
    {"Half and whole tones", keysAt({0, 1, 3, 4, 6, 7, 9, 10})},
    {"Phrygian dominant", keysAt({0, 1, 4, 5, 7, 8, 10})},
    {"Hungarian minor", keysAt({0, 2, 3, 6, 7, 8, 11})},
};
static_assert(std::size(shapes) == scaleCount);

constexpr ChordKind chords[] = {
    {"", "Major", 3, {0, 4, 7}},
    {"m", "Minor", 3, {0, 3, 7}},
    {"dim", "Diminished", 3, {0, 3, 6}},
    {"aug", "Augmented", 3, {0, 4, 8}},
    {"sus2", "Suspended second", 3, {0, 2, 7}},
    {"sus4", "Suspended fourth", 3, {0, 5, 7}},
    {"5", "Fifth", 2, {0, 7}},
    {"6", "Sixth", 4, {0, 4, 7, 9}},
    {"m6", "Minor sixth", 4, {0, 3, 7, 9}},
    {"7", "Seventh", 4, {0, 4, 7, 10}},
    {"maj7", "Major seventh", 4, {0, 4, 7, 11}},
    {"m7", "Minor seventh", 4, {0, 3, 7, 10}},
    {"m7b5", "Half diminished", 4, {0, 3, 6, 10}},
    {"dim7", "Diminished seventh", 4, {0, 3, 6, 9}},
    {"add9", "Added ninth", 4, {0, 4, 7, 14}},
    {"9", "Ninth", 5, {0, 4, 7, 10, 14}},
    {"m9", "Minor ninth", 5, {0, 3, 7, 10, 14}},
    {"maj9", "Major ninth", 5, {0, 4, 7, 11, 14}},
};

int wrap(int semitones) {
    return (semitones % octaveKeys + octaveKeys) % octaveKeys;
}

unsigned shapeOf(const ChordKind& kind) {
    unsigned bits = 0;
    for (const int above : kind.keys()) bits |= 1u << wrap(above);
    return bits;
}

} // namespace

bool Scale::has(int key) const {
    return shapes[asMinMax(kind, 0, scaleCount - 1)].keys >> wrap(key - root) & 1;
}

int Scale::nearest(int key) const {
    key = asMinMax(key, 0, mostKey);
    for (int away = 0; away < octaveKeys; away++)
        for (const int found : {key - away, key + away})
            if (found >= 0 && found <= mostKey && has(found)) return found;
    return key;
}

int Scale::moved(int key, int degrees) const {
    int degree = key, beside = 0;
    for (; !has(degree); degree--) beside++;
    const int by = degrees < 0 ? -1 : 1;
    for (int left = std::abs(degrees); left > 0;) {
        int next = degree + by;
        while (!has(next)) next += by;
        if (next + beside < 0 || next + beside > mostKey) break;
        degree = next;
        left--;
    }
    return degree + beside;
}

const char* scaleName(int kind) {
    return shapes[asMinMax(kind, 0, scaleCount - 1)].name;
}

std::span<const ChordKind> chordKinds() {
    return chords;
}

/// The lowest key is looked at first as the root: keys of one set may form several chords.
FoundChord findChord(const std::set<int>& keys) {
    if (keys.empty()) return {};
    FoundChord found{-1, 0, wrap(*keys.begin())};
    for (int i = 0; i < octaveKeys; i++) {
        found.root = wrap(found.bass + i);
        unsigned bits = 0;
        for (const int key : keys) bits |= 1u << wrap(key - found.root);
        const auto kind = std::ranges::find(chords, bits, shapeOf);
        if (kind == std::end(chords)) continue;
        found.kind = int(kind - std::begin(chords));
        return found;
    }
    return {};
}
