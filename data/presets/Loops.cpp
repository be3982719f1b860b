#include "data/presets/Clips.h"

#include "data/presets/Kits.h"
#include "data/presets/Line.h"
#include "instruments/DrumPieces.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace presets {

namespace {

using namespace drumsynth;
using Side = std::vector<float>;

constexpr int stepsOfBar = 16;

void clear(const SoundLoop& loop, Side& left, Side& right) {
    left.assign(size_t(loop.frames()), 0.0f);
    right = left;
}

/// Adds one sound at a frame; what rings on comes back at the start of the loop.
void mix(Side& side, const std::vector<float>& sound, int from, float level) {
    const size_t all = side.size();
    for (size_t i = 0; i < sound.size() && i < all; i++)
        side[(size_t(from) + i) % all] += sound[i] * level;
}

/// Plays rows of a kit, every other sixteenth late by a share of one.
void beat(const SoundLoop& loop, const Kit& kit, const std::vector<DrumRow>& rows, double swing,
          Side& left, Side& right) {
    clear(loop, left, right);
    const double step = double(loop.frames()) / (loop.bars * stepsOfBar);
    for (const DrumRow& row : rows) {
        const DrumVoice& voice = kit.voices[size_t(row.sound)];
        const std::vector<float> sound = synthesize(voice);
        for (int i = 0; i < loop.bars * stepsOfBar; i++) {
            const int velocity = hitVelocity(row.steps[i]);
            if (velocity == 0) continue;
            const int at = int(step * (i + (i % 2 ? swing : 0.0)));
            const float level =
                0.75f * voice.place.volume * float(velocity * velocity) / (127.0f * 127.0f);
            mix(left, sound, at, level * (1.0f - std::max(0.0f, voice.place.pan)));
            mix(right, sound, at, level * (1.0f + std::min(0.0f, voice.place.pan)));
        }
    }
}

void funkyBreak(const SoundLoop& loop, Side& left, Side& right) {
    beat(loop, kits()[0],
         {{0, "X.x...x...xx....X.x.......x..x.."},
          {1, "....X..o.o..X..o....X..o.o..X.oo"},
          {3, "x.x.x.x.x.x.x.x.x.x.x.x.x.x.x..."},
          {4, "..............................x."}},
         0.18, left, right);
}

void shakers(const SoundLoop& loop, Side& left, Side& right) {
    beat(loop, kits()[6],
         {{3, "X.oxX.oxX.oxX.oxX.oxX.oxX.oxX.ox"},
          {4, "........x...............x......."},
          {8, "......o....o..o.......o....o..o."},
          {9, "x..x..x...x.x...x..x..x...x.x..."}},
         0.12, left, right);
}

void clicks(const SoundLoop& loop, Side& left, Side& right) {
    beat(loop, kits()[7],
         {{3, "x.xxx.x.xx.x.xx.x.xxx.x.xx.x.xxx"},
          {4, "....x.......x.......x.......x..."},
          {7, "..x..x..x..x..x...x..x..x..x..x."},
          {5, "..............o..............o.."}},
         0.0, left, right);
}

/// Noise through a band that opens, over all of the loop.
void riser(const SoundLoop& loop, Side& left, Side& right) {
    constexpr int piece = 256;
    constexpr double lowest = 180.0, octaves = 6.0, top = 0.5;
    clear(loop, left, right);
    Noise noise(777u);
    for (Side* side : {&left, &right}) {
        double x = 0.0, y = 0.0; // a band of two poles, moved from piece to piece
        for (size_t i = 0; i < side->size(); i++) {
            const double share = double(i / piece * piece) / double(side->size());
            const double hz = lowest * std::pow(2.0, octaves * share);
            const double f = 2.0 * std::sin(pi * std::min(hz, rate / 7.0) / rate);
            y += f * x;
            x += f * (noise.next() - y - 0.35 * x);
            const double tremor = 0.8 + 0.2 * std::sin(2.0 * pi * 4.0 * std::pow(2.0, 2.0 * share) *
                                                       double(i) / rate);
            (*side)[i] = float(top * tremor * share * share * std::tanh(x));
        }
    }
}

struct Chord {
    double keys[4];
};

/// A tone and its partials 2, 3 and 5, frame by frame. The angle goes on by turning the point of
/// the circle where it stands, and gives the partials by its powers, as a sine for each would cost
/// most of what the songs take to be made.
class Reed {
public:
    Reed(double hz, double seconds) {
        const double step = 2.0 * pi * hz / rate, angle = 2.0 * pi * hz * seconds;
        turnX = std::cos(step), turnY = std::sin(step);
        x = std::cos(angle), y = std::sin(angle);
    }
    double next() {
        const double square = y * y;
        const double third = 3.0 - 4.0 * square;
        const double fifth = (16.0 * square - 20.0) * square + 5.0;
        const double sum = y * (1.0 + x + 0.33 * third + 0.2 * fifth); // the second is 2xy
        const double turned = x * turnX - y * turnY;
        y = x * turnY + y * turnX;
        x = turned;
        return sum;
    }

private:
    double turnX, turnY, x, y;
};

/// Soft voices, two for each key, that come and go.
void voices(const SoundLoop& loop, const std::vector<Chord>& chords, const char* gate, Side& left,
            Side& right) {
    constexpr double apart = 0.0017, rest = 0.06;
    clear(loop, left, right);
    const double each = double(loop.frames()) / double(chords.size());
    const double step = double(loop.frames()) / (loop.bars * stepsOfBar);
    double level = 0.0;
    const Chord* chord = nullptr;
    std::vector<Reed> sides[2];
    for (size_t i = 0; i < left.size(); i++) {
        const double within = std::fmod(double(i), each) / rate;
        if (const Chord* now = &chords[size_t(double(i) / each)]; now != chord) {
            chord = now;
            for (const int side : {0, 1}) {
                sides[side].clear();
                for (const double key : chord->keys) {
                    const double hz = 440.0 * std::pow(2.0, (key - 69.0) / 12.0);
                    sides[side].emplace_back(hz * (1.0 + (side ? apart : -apart)), within);
                }
            }
        }
        const int velocity = hitVelocity(gate[size_t(double(i) / step) % stepsOfBar]);
        level += (double(velocity) / 127.0 - level) * 0.004;
        const double fade = rise(within, rest) * rise(each / rate - within, rest);
        double sums[2] = {};
        for (const int side : {0, 1})
            for (Reed& reed : sides[side]) sums[side] += reed.next();
        left[i] = float(0.09 * level * fade * sums[0]);
        right[i] = float(0.09 * level * fade * sums[1]);
    }
}

void choppedChords(const SoundLoop& loop, Side& left, Side& right) {
    voices(loop, {{{57, 60, 64, 71}}, {{53, 57, 60, 67}}, {{55, 60, 64, 71}}, {{55, 59, 62, 69}}},
           "X..x..x.X..x.xx.", left, right);
}

void lateVoices(const SoundLoop& loop, Side& left, Side& right) {
    voices(loop, {{{50, 57, 65, 69}}, {{48, 55, 64, 67}}}, "xxxxxxxxxxxxxxxx", left, right);
}

} // namespace

const std::vector<SoundLoop>& soundLoops() {
    static const std::vector<SoundLoop> all = {
        {"Funky break", 2, 104, funkyBreak},
        {"Shakers and wood", 2, 116, shakers},
        {"Clicks", 2, 124, clicks},
        {"Riser", 4, 120, riser},
        {"Chopped chords", 4, 112, choppedChords},
        {"Late voices", 4, 84, lateVoices},
    };
    return all;
}

} // namespace presets
