#include "data/demosong/DemoSounds.h"

#include "engine/MidiBytes.h"
#include "instruments/CLayer.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

namespace {

/// Factory programs, by their place in the list.
enum Program : int {
    programBass = 1,
    programPads = 3,
    programPluck = 6,
    programLead = 15,
    programHarmony = 27,
};

constexpr int paramVolume = 0;
constexpr int paramPan = 1;
constexpr int brightness = 74; ///< the MIDI controller of that name

} // namespace

DemoSounds::DemoSounds(SongBuilder& builder) : song(builder) {
    drums = song.track("Drums");
    bass = song.track("Bass");
    pad = song.track("Pad");
    pluck = song.track("Pluck");
    lead = song.track("Lead");
    harmony = song.track("Harmony");

    CSampler* kit = addSynthDrums(song.seq, drums);
    setStrip(kit, 0.9f, 0.0f);
    instrument(bass, programBass, 0.95f, 0.0f);
    CSampler* pads = instrument(pad, programPads, 0.74f, 0.0f);
    CSampler* plucks = instrument(pluck, programPluck, 0.6f, 0.0f);
    instrument(lead, programLead, 0.7f, 0.06f);
    instrument(harmony, programHarmony, 0.58f, -0.12f);

    padCutoff = cutoffLane(pad, pads);
    padVolume = channelLane(pad, pads, "Volume", paramVolume);
    pluckCutoff = cutoffLane(pluck, plucks);
    pluckPan = channelLane(pluck, plucks, "Pan", paramPan);
}

CSampler* DemoSounds::instrument(CTrack* track, int program, float volume, float pan) {
    CSampler* made = addSynthesizer(song.seq, track, program);
    setStrip(made, volume, pan);
    return made;
}

DemoLane DemoSounds::channelLane(CTrack* track, CSampler* source, const char* name, int param) {
    return {&song, track, song.lane(track, name, source->output(), param)};
}

/// The brightness controller moves the filter of every sound of the program.
DemoLane DemoSounds::cutoffLane(CTrack* track, CSampler* source) {
    source->getProg()->eachSound([](CSound* s) { s->ccMap[brightness] = targetCutoff; });
    return {&song, track, song.lane(track, "Cutoff", source, brightness)};
}
