#include "data/demosong/Starters.h"

#include "data/demosong/TextSong.h"
#include "data/presets/Line.h"
#include "data/presets/TrackPresets.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "sequencer/song/CSeq.h"

#include <initializer_list>
#include <string_view>

namespace {

constexpr int barSteps = 16, bars = 16;

template <class Row>
const Row& named(const std::vector<Row>& rows, std::string_view name) {
    for (const Row& row : rows)
        if (row.name == name) return row;
    return rows.front();
}

/// Tracks out of the presets, each with a clip that repeats to the end.
class Starter {
public:
    Starter(CSeq* seq, float bpm) : song(seq) {
        song.tempo(0, bpm, false);
        seq->host->setTempo(bpm);
    }

    void drums(const char* preset, const char* clip) {
        CTrack* track = make(preset, trackDrum);
        const presets::DrumClip& of = named(presets::drumClips(), clip);
        const int length = int(std::string_view(of.rows.front().steps).size());
        repeat(length, [&](int step) { song.beat(track, step, of.rows); });
    }

    void notes(const char* preset, const char* clip, int fromBar = 0) {
        CTrack* track = make(preset, trackMIDI);
        const char* line = named(presets::noteClips(), clip).line;
        repeat(
            presets::lengthOf(line), [&](int step) { song.line(track, step, line); }, fromBar);
    }

private:
    CTrack* make(const char* preset, int kind) {
        CTrack* track = song.track(kind, preset);
        presets::fillTrack(track, named(presets::trackPresets(), preset));
        return track;
    }

    template <class Put>
    static void repeat(int length, Put&& put, int fromBar = 0) {
        for (int step = fromBar * barSteps; step + length <= bars * barSteps; step += length)
            put(step);
    }

    TextSong song;
};

} // namespace

void createBeatProject(CSeq* seq) {
    const GraphHold hold(seq->host);
    Starter starter(seq, 122.0f);
    starter.drums("Club drums", "Four on the floor");
    starter.notes("Sub bass", "Off-beat bass");
    starter.notes("Gated chords", "Minor chords", 8);
    starter.notes("Stab", "House stabs", 4);
}

void createBandProject(CSeq* seq) {
    const GraphHold hold(seq->host);
    Starter starter(seq, 112.0f);
    starter.drums("Wooden room drums", "Straight rock");
    starter.notes("Slap bass", "Driving eighths");
    starter.notes("Stage piano", "Song chords", 4);
    starter.notes("String section", "Slow strings", 8);
}

void createLateNightProject(CSeq* seq) {
    const GraphHold hold(seq->host);
    Starter starter(seq, 96.0f);
    starter.drums("Brush drums", "Brush swing");
    starter.notes("Upright bass", "Walking bass");
    starter.notes("Stage piano", "Night chords", 4);
}
