#include "data/demosong/DemoSounds.h"

#include "common/fx/CCompressor.h"
#include "common/fx/CEQ.h"
#include "data/demosong/Score.h"
#include "data/presets/PartText.h"
#include "data/presets/TrackPresets.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/KeyInput.h"
#include "instruments/CSampler.h"
#include "project/SongSends.h"
#include "project/SongSounds.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

/// Factory programs, by their place in the list.
enum Program : int {
    programBass = 1,
    programPads = 3,
    programPluck = 6,
    programGuitar = 13,
    programLead = 15,
    programHarmony = 27,
};

constexpr int paramVolume = 0;
constexpr int paramPan = 1;
constexpr int brightness = 74; ///< the MIDI controller of that name

void cutLows(COutputChannel* strip, float hz, float db) {
    constexpr int lowBand = 3;
    CEQ* low = strip->eq[lowBand];
    low->setFrequency(hz);
    low->setGain(db);
    low->active = 1;
}

struct Squeeze {
    float thresholdDb, ratio, attackMs, releaseMs, gainDb;
};

CEffect* compress(COutputChannel* strip, const Squeeze& s) {
    auto rack = makeInsert(strip, fxCompressor);
    auto* unit = static_cast<CCompressor*>(effectOf(rack.get()));
    unit->setThreshold(s.thresholdDb);
    unit->setRatio(s.ratio);
    unit->setAttack(s.attackMs);
    unit->setRelease(s.releaseMs);
    unit->setGain(s.gainDb);
    strip->inserts.add(rack.get());
    return rack.release();
}

/// Gives way to the sound of another strip.
void duck(COutputChannel* strip, COutputChannel* before) {
    setKey(compress(strip, {-14.0f, 0.45f, 1.0f, 110.0f, 0.0f}), before);
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
    guitar = song.track("Guitar");
    beat = song.audioTrack("Beat");
    voices = song.audioTrack("Voices");
    beatLoop = loop("Funky break");
    voiceLoop = loop("Chopped chords");

    players[0] = addSynthDrums(song.seq, drums);
    setStrip(players[0], 0.66f, 0.0f);
    players[1] = instrument(bass, programBass, 1.0f, 0.0f);
    players[2] = instrument(pad, programPads, 1.0f, 0.0f);
    players[3] = instrument(pluck, programPluck, 1.0f, 0.0f);
    players[4] = instrument(lead, programLead, 0.86f, 0.06f);
    players[5] = instrument(harmony, programHarmony, 0.95f, -0.12f);
    players[6] = instrument(guitar, programGuitar, 0.8f, -0.25f);
    presets::giveArpeggio(pluck, "There and back, short");
    mix();
    group();
    duckBehindDrums();

    padCutoff = brightnessLane(pad, players[2]);
    padVolume = channelLane(pad, players[2], "Volume", paramVolume);
    pluckCutoff = brightnessLane(pluck, players[3]);
    pluckPan = channelLane(pluck, players[3], "Pan", paramPan);
}

/// A hall that all share, room for the bass below the chords, and a master that holds the beat
/// and the rest together.
void DemoSounds::mix() {
    constexpr float rooms[] = {0.12f, 0.0f, 0.4f, 0.3f, 0.35f, 0.4f, 0.15f};
    SongSends sends(song.host, nullptr);
    for (size_t i = 0; i < std::size(players); i++) sends.send(players[i], rooms[i], 0.0f);
    sends.settle();

    const GraphHold hold(song.host);
    constexpr int highBand = 0;
    for (CSampler* chords : {players[2], players[5]}) cutLows(chords->output(), 180.0f, -5.0f);
    CEQ* air = players[2]->output()->eq[highBand];
    air->setFrequency(9000.0f);
    air->setGain(3.0f);
    air->active = 1;

    // The trim is a power of 4.
    players[1]->output()->trim = 0.128f;
    players[3]->output()->trim = 0.25f;
    presets::setLevel(kit->output(), 0.4f, 0.0f);
    presets::setLevel(beat->output(), 0.55f, 0.0f);
    presets::setLevel(voices->output(), 0.85f, 0.0f);
    cutLows(beat->output(), 350.0f, -14.0f);
    cutLows(voices->output(), 250.0f, -8.0f);
    presets::addRack(players[6]->output(), "Crunch rhythm");
    COutputChannel* master = song.host->getAudioOut()->output();
    compress(master, {-16.0f, 0.5f, 1.0f, 350.0f, 3.2f});
    compress(master, {-14.0f, 0.07f, 1.0f, 30.0f, 1.65f});
}

/// What drums and beat have in common.
void DemoSounds::group() {
    CComp* drumGroup =
        groupStrips(song.host, {kit->output(), players[0]->output(), beat->output()});
    drumGroup->setId("Drums");
    const GraphHold hold(song.host);
    compress(drumGroup->output(), {-22.0f, 0.4f, 1.0f, 100.0f, 1.2f});
}

void DemoSounds::duckBehindDrums() {
    for (const int i : {1, 2, 3, 4, 6}) duck(players[i]->output(), kit->output());
}

CSample* DemoSounds::loop(const char* name) {
    for (const presets::SoundLoop& of : presets::soundLoops())
        if (std::string_view(of.name) == name) return presets::poolSample(song.host, of);
    return nullptr;
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
