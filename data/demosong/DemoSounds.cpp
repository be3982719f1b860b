#include "data/demosong/DemoSounds.h"

#include "common/fx/CCompressor.h"
#include "common/fx/CEQ.h"
#include "data/demosong/Score.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "instruments/CSampler.h"
#include "project/SongSends.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <iterator>

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

void setChannel(COutputChannel* strip, float fader) {
    strip->vol = fader;
    strip->setVol(fader, false);
}

struct Squeeze {
    float thresholdDb, ratio, attackMs, releaseMs, gainDb;
};

void compress(COutputChannel* strip, const Squeeze& s) {
    auto rack = makeInsert(strip, fxCompressor);
    auto* unit = static_cast<CCompressor*>(effectOf(rack.get()));
    unit->setThreshold(s.thresholdDb);
    unit->setRatio(s.ratio);
    unit->setAttack(s.attackMs);
    unit->setRelease(s.releaseMs);
    unit->setGain(s.gainDb);
    strip->inserts.add(rack.release());
}

} // namespace

int kitSoundOf(int key) {
    static constexpr int keys[] = {keyKick, keySnare, keyClap, keyHatClosed, keyHatOpen};
    const auto* found = std::find(std::begin(keys), std::end(keys), key);
    return found == std::end(keys) ? -1 : int(found - keys);
}

DemoSounds::DemoSounds(SongBuilder& builder) : song(builder) {
    kit = song.drumTrack("Kit");
    drums = song.track("Percussion");
    bass = song.track("Bass");
    pad = song.track("Pad");
    pluck = song.track("Pluck");
    lead = song.track("Lead");
    harmony = song.track("Harmony");

    players[0] = addSynthDrums(song.seq, drums);
    setStrip(players[0], 0.72f, 0.0f);
    players[1] = instrument(bass, programBass, 1.0f, 0.0f);
    players[2] = instrument(pad, programPads, 1.0f, 0.0f);
    players[3] = instrument(pluck, programPluck, 1.0f, 0.0f);
    players[4] = instrument(lead, programLead, 0.96f, 0.06f);
    players[5] = instrument(harmony, programHarmony, 0.95f, -0.12f);
    mix();

    padCutoff = brightnessLane(pad, players[2]);
    padVolume = channelLane(pad, players[2], "Volume", paramVolume);
    pluckCutoff = brightnessLane(pluck, players[3]);
    pluckPan = channelLane(pluck, players[3], "Pan", paramPan);
}

/// A hall that all share, room for the bass below the chords, and a master that holds the beat
/// and the rest together.
void DemoSounds::mix() {
    constexpr float rooms[] = {0.12f, 0.0f, 0.4f, 0.3f, 0.35f, 0.4f};
    SongSends sends(song.host, nullptr);
    for (size_t i = 0; i < std::size(players); i++) sends.send(players[i], rooms[i], 0.0f);
    sends.settle();

    const GraphHold hold(song.host);
    constexpr int lowBand = 3, highBand = 0;
    for (CSampler* chords : {players[2], players[5]}) {
        CEQ* low = chords->output()->eq[lowBand];
        low->setFrequency(180.0f);
        low->setGain(-5.0f);
        low->active = 1;
    }
    CEQ* air = players[2]->output()->eq[highBand];
    air->setFrequency(9000.0f);
    air->setGain(3.0f);
    air->active = 1;

    players[1]->output()->trim = 0.4f; // 4.8 dB
    setChannel(kit->output(), 0.52f);
    compress(kit->output(), {-32.0f, 0.3f, 1.0f, 90.0f, 7.0f});
    compress(song.host->getAudioOut()->output(), {-20.0f, 0.45f, 1.0f, 140.0f, 5.1f});
}

CSampler* DemoSounds::instrument(CTrack* track, int program, float volume, float pan) {
    CSampler* made = addSynthesizer(song.seq, track, program);
    setStrip(made, volume, pan);
    return made;
}

DemoLane DemoSounds::channelLane(CTrack* track, CSampler* source, const char* name, int param) {
    return {&song, track, song.lane(track, name, source->output(), param)};
}

/// The factory programs follow this controller.
DemoLane DemoSounds::brightnessLane(CTrack* track, CSampler* source) {
    return {&song, track, song.lane(track, "Brightness", source, brightness)};
}
