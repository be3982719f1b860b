#include "data/demosong/Starters.h"

#include "data/demosong/TextSong.h"
#include "data/presets/Line.h"
#include "data/presets/TrackPresets.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "sequencer/song/CSeq.h"

#include <string_view>

namespace {

constexpr int barSteps = 16, bars = 16;

template <class Row>
const Row& named(const std::vector<Row>& rows, std::string_view name) {
    for (const Row& row : rows)
        if (row.name == name) return row;
    return rows.front();
}

struct StarterTrack {
    const char *preset, *clip;
    int fromBar = 0;
    bool drums = false;
};

struct StarterRow {
    float bpm;
    float level;            ///< of the master: what is played together leaves room above
    StarterTrack tracks[4]; ///< fewer when one has no name
};

constexpr StarterRow starters[starterCount] = {
    {122,
     0.85f,
     {{"Club drums", "Four on the floor", 0, true},
      {"Sub bass", "Off-beat bass"},
      {"Gated chords", "Minor chords", 8},
      {"Stab", "House stabs", 4}}},
    {112,
     0.8f,
     {{"Wooden room drums", "Straight rock", 0, true},
      {"Slap bass", "Driving eighths"},
      {"Stage piano", "Song chords", 4},
      {"String section", "Slow strings", 8}}},
    {96,
     0.9f,
     {{"Brush drums", "Brush swing", 0, true},
      {"Upright bass", "Walking bass"},
      {"Stage piano", "Night chords", 4}}},
};

/// Calls `put` with each step at which a clip of `length` steps begins, to the end.
template <class Put>
void repeat(int length, int fromBar, Put&& put) {
    for (int step = fromBar * barSteps; step + length <= bars * barSteps; step += length) put(step);
}

/// A track out of the presets, with a clip that repeats to the end.
void fill(TextSong& song, const StarterTrack& row) {
    CTrack* track = song.track(row.drums ? trackDrum : trackMIDI, row.preset);
    presets::fillTrack(track, named(presets::trackPresets(), row.preset));
    if (row.drums) {
        const presets::DrumClip& of = named(presets::drumClips(), row.clip);
        const int length = int(std::string_view(of.rows.front().steps).size());
        repeat(length, row.fromBar, [&](int step) { song.beat(track, step, of.rows); });
    } else {
        const char* line = named(presets::noteClips(), row.clip).line;
        repeat(presets::lengthOf(line), row.fromBar,
               [&](int step) { song.line(track, step, line); });
    }
}

} // namespace

void createStarter(CSeq* seq, StarterSong which) {
    const GraphHold hold(seq->host);
    const StarterRow& row = starters[which];
    TextSong song(seq);
    song.tempo(0, row.bpm, false);
    seq->host->setTempo(row.bpm);
    for (const StarterTrack& track : row.tracks)
        if (track.preset) fill(song, track);
    presets::setLevel(seq->host->getAudioOut()->output(), row.level, 0.0f);
}
