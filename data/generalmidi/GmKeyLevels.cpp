#include "data/generalmidi/GmPieces.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace gm {

namespace {

constexpr int partCount = 6;
constexpr int lastKey[partCount] = {41, 53, 65, 77, 89, 127};

/// What a program takes or gives around each C from C2 to C7, dB.
struct KeyLevels {
    std::string_view program;
    float gains[partCount];
};

/// Programs whose filters stay where they are while the key moves. Made by
/// `sondrava-sounds --keys gm` without them: seven tenths of the way to the median.
constexpr KeyLevels table[] = {
    {"Bright piano", {-2.5f, -2.0f, -0.5f, 0.5f, 2.0f, 1.5f}},
    {"Clavi", {4.0f, 2.0f, 0.5f, -0.5f, -1.5f, -1.0f}},
    {"Marimba", {2.0f, 1.5f, 0.0f, 0.0f, -0.5f, -2.5f}},
    {"Xylophone", {2.0f, 1.0f, 0.5f, -0.5f, -1.5f, -2.5f}},
    {"Drawbar organ", {2.5f, 2.0f, 0.5f, -0.5f, -1.0f, -2.0f}},
    {"Percussive organ", {2.5f, 1.5f, 0.0f, 0.0f, -0.5f, -2.0f}},
    {"Reed organ", {2.0f, 0.0f, 0.0f, -1.0f, -3.0f, 0.0f}},
    {"Harmonica", {2.0f, 2.0f, -0.5f, 0.0f, 0.0f, -3.0f}},
    {"Tango accordion", {1.0f, 0.0f, -2.0f, -3.5f, -2.5f, 2.0f}},
    {"Nylon guitar", {2.0f, 0.5f, 0.5f, -0.5f, -2.5f, -3.0f}},
    {"Steel guitar", {3.0f, 2.0f, 0.0f, 0.0f, -1.0f, -3.0f}},
    {"Jazz guitar", {0.0f, -1.5f, -2.0f, 0.0f, 5.0f, 0.5f}},
    {"Clean guitar", {2.0f, -0.5f, 0.0f, 0.5f, 0.0f, -2.0f}},
    {"Muted guitar", {1.5f, 1.0f, 0.5f, -1.0f, -3.0f, -0.5f}},
    {"Finger bass", {2.0f, 1.0f, 0.0f, -3.0f, -4.5f, 0.0f}},
    {"Pop bass", {2.5f, 2.0f, 0.0f, 0.0f, -0.5f, -2.0f}},
    {"Synth bass", {2.5f, 1.0f, 1.0f, -1.0f, -4.5f, -4.5f}},
    {"Square bass", {3.5f, 2.5f, -1.0f, 0.0f, -1.0f, 0.0f}},
    {"Viola", {3.0f, 2.0f, 0.5f, -1.0f, -0.5f, -1.5f}},
    {"Cello", {0.0f, -0.5f, -3.5f, 0.0f, 2.5f, 6.0f}},
    {"Contrabass", {0.0f, -1.5f, -1.5f, -0.5f, 1.5f, 8.0f}},
    {"Tremolo strings", {2.0f, 1.0f, 0.5f, -0.5f, -1.5f, -2.0f}},
    {"Harp", {2.0f, 0.0f, 0.0f, 0.0f, -1.5f, -2.5f}},
    {"Slow strings", {3.0f, 1.5f, 0.5f, -0.5f, -0.5f, -1.5f}},
    {"Synth strings", {2.5f, 0.5f, 0.0f, 0.0f, -0.5f, -3.5f}},
    {"Soft synth strings", {3.0f, 2.0f, 0.5f, -0.5f, -1.0f, -1.5f}},
    {"Choir aahs", {5.0f, 4.5f, 0.0f, 0.0f, -0.5f, -0.5f}},
    {"Choir oohs", {0.0f, -2.0f, -4.0f, 2.0f, 3.5f, 3.5f}},
    {"Tuba", {2.5f, 0.5f, -0.5f, 0.5f, 0.5f, 1.0f}},
    {"Muted trumpet", {2.0f, 2.5f, 1.0f, 0.5f, -1.5f, -5.0f}},
    {"French horn", {-1.0f, -3.5f, -2.0f, 1.0f, 2.0f, 2.0f}},
    {"Soft synth brass", {2.0f, 1.0f, 0.5f, -0.5f, -2.0f, -2.0f}},
    {"Soprano sax", {3.5f, 3.5f, 0.0f, 0.0f, 0.0f, -3.0f}},
    {"Alto sax", {1.0f, 0.5f, 0.5f, -0.5f, -4.5f, -4.5f}},
    {"Tenor sax", {3.0f, 1.5f, -2.5f, -1.5f, -2.0f, 3.5f}},
    {"Baritone sax", {0.0f, -2.0f, 1.0f, 0.0f, -1.5f, 4.0f}},
    {"Bassoon", {3.0f, 3.0f, -9.0f, -1.0f, -1.5f, 1.5f}},
    {"Flute", {2.5f, 1.0f, 0.0f, 0.0f, -0.5f, -2.0f}},
    {"Recorder", {2.5f, 2.0f, -0.5f, 0.0f, 0.0f, -2.0f}},
    {"Blown bottle", {2.5f, 2.0f, -0.5f, 0.0f, 0.0f, -1.5f}},
    {"Shakuhachi", {2.5f, 1.5f, -0.5f, 0.5f, -0.5f, -2.0f}},
    {"Whistle", {2.5f, 2.0f, -0.5f, 0.5f, -0.5f, -2.0f}},
    {"Ocarina", {2.5f, 2.0f, -0.5f, 0.0f, 0.0f, -2.0f}},
    {"Voice lead", {6.0f, 4.5f, -2.0f, -2.0f, -4.0f, -0.5f}},
    {"Warm pad", {2.0f, 2.0f, -0.5f, 0.5f, -0.5f, -2.0f}},
    {"Polysynth pad", {4.5f, 1.0f, 0.5f, -1.0f, -5.5f, -1.0f}},
    {"Choir pad", {2.5f, 3.0f, -0.5f, 0.0f, 0.0f, -2.0f}},
    {"Halo pad", {3.0f, 3.0f, 0.0f, 0.0f, 0.0f, -3.0f}},
    {"Sweep pad", {3.5f, 0.5f, 0.0f, 0.0f, -1.5f, -0.5f}},
    {"Brightness", {4.0f, 5.0f, 0.0f, -0.5f, 0.0f, -0.5f}},
    {"Goblins", {3.0f, 1.0f, 1.0f, -1.0f, -3.0f, -3.0f}},
    {"Banjo", {5.0f, 3.5f, 0.5f, -0.5f, -1.0f, -2.0f}},
    {"Shamisen", {1.0f, 0.5f, -0.5f, -2.0f, -4.0f, 0.5f}},
    {"Shanai", {-2.5f, -1.5f, -0.5f, 0.5f, 2.0f, 2.0f}},
    {"Agogo", {2.5f, 1.5f, 0.5f, -0.5f, -1.5f, -2.0f}},
    {"Woodblock", {3.5f, 1.5f, 0.5f, -0.5f, -1.0f, -2.5f}},
    {"Taiko", {2.5f, 1.0f, 0.0f, 0.0f, -0.5f, -2.0f}},
};

} // namespace

Patches evened(std::string_view program, const Patches& patches) {
    const auto* row = std::ranges::find(table, program, &KeyLevels::program);
    if (row == std::end(table)) return patches;
    Patches all;
    for (const Patch& p : patches)
        for (int part = 0, first = 0; part < partCount; first = lastKey[part++] + 1) {
            if (lastKey[part] < p.lowKey || first > p.hiKey) continue;
            all.push_back(zone(p, std::max(first, p.lowKey), std::min(lastKey[part], p.hiKey)));
            all.back().volume *= std::pow(10.0f, row->gains[part] / 40.0f);
        }
    return all;
}

} // namespace gm
