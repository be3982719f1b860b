#pragma once

#include <array>
#include <string>
#include <vector>

// What a program of an instrument sounds like, in figures: it plays a row of notes, and what comes
// out is measured. The row is the same for all, so that banks of any kind can be compared.

namespace soundtable {

constexpr int probeRate = 44100;

constexpr int chordKey = -1; ///< stands for C4, E4 and G4 together

/// One place of the row.
struct ProbeNote {
    int key, velocity;
};

/// The row: octaves of C at one velocity, C4 at others, a chord.
constexpr std::array<ProbeNote, 11> probeNotes = {{{36, 100},
                                                   {48, 100},
                                                   {60, 100},
                                                   {72, 100},
                                                   {84, 100},
                                                   {96, 100},
                                                   {60, 20},
                                                   {60, 64},
                                                   {60, 127},
                                                   {chordKey, 100},
                                                   {48, 127}}};
constexpr int probeOctaves = 6, probeC3 = 1, probeC4 = 2, probeSoft = 6, probeLoud = 8,
              probeChord = 9;

constexpr double noteSeconds = 2.5; ///< from note to note
constexpr double heldSeconds = 1.2; ///< how long a key is held

/// Stereo sound of one note.
struct Sound {
    std::vector<float> left, right;
    int voices = 0;     ///< that it takes; 0 unknown
    double lanes = 0.0; ///< that it takes as long as the key is held, its end counted in; 0 unknown
};

/// 32 bands of a third octave and less in 8 slices of time, dB of the whole sound.
constexpr int bandCount = 32, sliceCount = 8;
using Shape = std::array<float, bandCount * sliceCount>;

struct Figures {
    std::string name;
    std::string family;                      ///< or use; those of one may be nearer to each other
    double chordLufs = 0.0, chordPeak = 0.0; ///< loudest 0.4 s; dB of full scale
    double worstDc = 0.0;                    ///< dB of the signal, the worst from C2 to C7
    double above2k = 0.0, above5k = 0.0;     ///< dB of the signal, C4
    double velocitySpan = 0.0;               ///< dB from velocity 20 to 127
    double velocityColour = 0.0;             ///< dB that the share above 1 or 3 kHz grows by then
    std::array<double, probeOctaves> octaves{}; ///< LUFS of each C, from C2 on
    double range = 0.0;                         ///< dB between loudest and softest octave
    double width = 0.0;                         ///< dB of the difference of both sides to their sum
    int voices = 0;                             ///< of C4
    double lanes = 0.0;                         ///< of C4: what it costs
    std::vector<Shape> shapes;                  ///< of C3 and C4; as many for all of a bank
    bool onlyHeard = false;                     ///< where both are silent, distances don't count
    double nearest = 0.0;                       ///< dB to the nearest other program
    std::string neighbour;
};

/// A spectrum of `size` values (a power of 2) from `from` on, mean of both sides, Hann window:
/// power of `size` / 2 bins.
std::vector<double> powerSpectrum(const Sound& s, size_t from, size_t size);

/// Mean over root mean square without it, dB, of the steady part of a note.
double dcOf(const Sound& s);
/// LUFS of the loudest 0.4 s.
double loudnessOf(const Sound& s);
/// Share of the power above `hz` in the first `seconds`, dB.
double shareAbove(const Sound& s, double hz, double from, double seconds);

/// Difference of the sides over their sum while the key is held, and the highest sample, dB.
double widthOf(const Sound& s);
double peakOf(const Sound& s);

/// Where the slices of a shape lie, each heard for `window` frames (a power of 2) from its start.
struct Slicing {
    double from = 0.0, seconds = heldSeconds;
    size_t window = 8192;
};
/// As loud as any other.
Shape shapeOf(const Sound& s, const Slicing& slices = {});
/// Of what both sides have in common, and of what they differ by, together as loud as any other.
std::array<Shape, 2> shapesOfWidth(const Sound& s, const Slicing& slices);

/// The figures of one program; the sounds are those of `probeNotes`.
Figures measure(const std::string& name, const std::vector<Sound>& sounds);

/// How far two programs are apart: dB, the root of the mean square over bands, slices and shapes.
double distanceOf(const Figures& a, const Figures& b);
/// Fills in the nearest of each.
void findNearest(std::vector<Figures>& bank);

/// What programs are to be apart at least, dB.
constexpr double familyApart = 6.0, othersApart = 10.0;

/// Two programs and how far they are apart.
struct Pair {
    const Figures *first, *second; ///< of the bank, not owned
    double apart;
    bool oneFamily() const { return first->family == second->family; }
    bool tooNear() const { return apart < (oneFamily() ? familyApart : othersApart); }
};
/// Every two of a bank, the nearest first.
std::vector<Pair> pairsOf(const std::vector<Figures>& bank);

} // namespace soundtable
