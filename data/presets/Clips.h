#pragma once

#include <vector>

// Clips and loops as data. All follow the tempo of the song.

namespace presets {

/// One sound of a kit: a character a sixteenth, as `hitVelocity` reads it.
struct DrumRow {
    int sound;
    const char* steps;
};

struct DrumClip {
    const char* name;
    int kit; ///< of `kits`
    std::vector<DrumRow> rows;
};

struct NoteClip {
    const char* name;
    const char* program; ///< of the factory
    const char* line;    ///< of `parseLine`
};

/// A sound that was worked out, to be stretched.
struct SoundLoop {
    const char* name;
    int bars;
    double bpm; ///< as which it stands in the samples
    /// Its two sides, at 44100 Hz.
    void (*make)(const SoundLoop& loop, std::vector<float>& left, std::vector<float>& right);

    int frames() const { return int(bars * 4 * 60.0 / bpm * 44100.0); }
};

const std::vector<DrumClip>& drumClips();
const std::vector<NoteClip>& noteClips();
const std::vector<SoundLoop>& soundLoops();

} // namespace presets
