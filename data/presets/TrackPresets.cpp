#include "data/presets/TrackPresets.h"

#include "common/fx/CEQ.h"
#include "data/presets/ArpPresets.h"
#include "data/presets/Kits.h"
#include "data/presets/RackPresets.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "instruments/FactoryPrograms.h"
#include "project/SongSounds.h"
#include "sequencer/song/CTrack.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace presets {

namespace {

constexpr int blue = 0x4A90D9, green = 0x4FA36B, amber = 0xC8973A, red = 0xC65B5B,
              violet = 0x8A6BC8, teal = 0x3F9FA3;
constexpr int highShelf = 0, mids = 1, lowMids = 2, lowShelf = 3;

/// Null for a name that is not in the list.
template <class Row>
const Row* find(const std::vector<Row>& rows, std::string_view name) {
    const auto found =
        std::ranges::find_if(rows, [name](const Row& row) { return name == row.name; });
    return found == rows.end() ? nullptr : &*found;
}

std::unique_ptr<CEffect> rackFor(COutputChannel* strip, const RackPreset& preset) {
    CQV* host = strip->comp->host;
    auto rack = std::make_unique<CEffect>(host);
    rack->createIO();
    rack->createBuffers(host->frames);
    fillRack(rack.get(), preset);
    rack->id = preset.name;
    rack->listKind = listInsert;
    rack->ownerChannel = strip;
    return rack;
}

bool fillStrip(COutputChannel* strip, const TrackPreset& preset) {
    for (const char* name : preset.effects)
        if (!addRack(strip, name)) return false;
    for (const EqCut& cut : preset.eq) {
        strip->setEqFrequency(cut.band, cut.hz);
        strip->setEqGain(cut.band, cut.db);
        strip->setEqQ(cut.band, 0.7f);
        strip->setEqPower(cut.band, true);
    }
    setLevel(strip, preset.fader, preset.pan);
    return true;
}

bool giveKit(CTrack* track, const char* name) {
    const Kit* kit = find(kits(), name);
    if (kit) takeKit(track->seq, track, *kit);
    return kit;
}

} // namespace

const std::vector<TrackPreset>& trackPresets() {
    static const std::vector<TrackPreset> all = {
        {"Sub bass", trackMIDI, "Sub", {"Even"}, "", {{highShelf, 6000, -6}}, 0.95f, 0, blue},
        {"Slap bass", trackMIDI, "80's Bass", {"Fingers"}, "", {{mids, 1800, 3}}, 0.9f, 0, blue},
        {"Upright bass",
         trackMIDI,
         "Up-right bass",
         {"Even"},
         "",
         {{lowMids, 300, -3}},
         0.95f,
         0,
         blue},
        {"Wide pad", trackMIDI, "Pads", {"Slow sky"}, "", {{lowShelf, 180, -5}}, 0.8f, 0, teal},
        {"Gated chords",
         trackMIDI,
         "Trance",
         {"Across"},
         "Chord gate",
         {{lowShelf, 200, -4}},
         0.75f,
         0,
         violet},
        {"Stab", trackMIDI, "Eurosynth", {"Across"}, "", {{lowShelf, 200, -4}}, 0.8f, 0.1f, violet},
        {"Glass runs",
         trackMIDI,
         "Digital pluck",
         {"Sixteenths"},
         "Two octaves up",
         {},
         0.8f,
         0.1f,
         violet},
        {"Rain", trackMIDI, "Klang", {"Cloud"}, "Rain", {{lowShelf, 250, -6}}, 0.7f, 0, violet},
        {"Singing lead",
         trackMIDI,
         "Lead on!",
         {"Dotted throw"},
         "",
         {{mids, 3200, 2}},
         0.8f,
         0,
         red},
        {"Stage piano",
         trackMIDI,
         "Old piano",
         {"Sway"},
         "",
         {{highShelf, 8000, 3}},
         0.9f,
         0,
         green},
        {"String section",
         trackMIDI,
         "Strings",
         {"Ensemble"},
         "",
         {{lowShelf, 150, -3}},
         0.85f,
         0,
         teal},
        {"Amplified riff",
         trackMIDI,
         "Amplified",
         {"Crunch rhythm"},
         "",
         {{lowShelf, 110, -4}},
         0.8f,
         -0.1f,
         red},
        {"Wooden room drums",
         trackDrum,
         "Wooden room",
         {"Glue", "Small room"},
         "",
         {{highShelf, 9000, 2}},
         0.85f,
         0,
         amber},
        {"Club drums", trackDrum, "Club", {"Glue"}, "", {{lowShelf, 70, 2}}, 0.8f, 0, amber},
        {"Brush drums", trackDrum, "Brushes", {"Small room"}, "", {}, 0.95f, 0, amber},
        {"Dusty beat", trackDrum, "Worn tape", {"Behind the door"}, "", {}, 0.9f, 0, amber},
        {"Lead vocal",
         trackAudio,
         "",
         {"Lead vocal"},
         "",
         {{lowShelf, 110, -9}, {mids, 3500, 2}},
         0.9f,
         0,
         red},
        {"Rhythm guitar",
         trackAudio,
         "",
         {"Crunch rhythm"},
         "",
         {{lowShelf, 100, -5}},
         0.8f,
         -0.3f,
         green},
        {"Solo guitar", trackAudio, "", {"Solo"}, "", {{lowMids, 500, -2}}, 0.85f, 0.2f, green},
        {"Bass guitar", trackAudio, "", {"Fingers"}, "", {{lowMids, 400, -2}}, 0.95f, 0, blue},
    };
    return all;
}

bool giveArpeggio(CTrack* track, const char* name) {
    const std::vector<ArpPreset> all = arpPresets();
    const ArpPreset* preset = find(all, name);
    if (!preset) return false;
    fillArp(*track->arp->getProg(), *preset);
    track->arp->enable(1);
    return true;
}

bool addRack(COutputChannel* strip, const char* name) {
    const std::vector<RackPreset> all = rackPresets();
    const RackPreset* preset = find(all, name);
    if (preset) strip->inserts.add(rackFor(strip, *preset).release());
    return preset;
}

void setLevel(COutputChannel* strip, float fader, float pan) {
    strip->vol = fader;
    strip->pan = pan;
    strip->setVol(fader, false);
    strip->setPan(pan, false);
}

CSampler* giveProgram(CTrack* track, const char* program) {
    for (int i = 0; i < factoryCount; i++)
        if (std::string_view(factoryName(i)) == program)
            return addSynthesizer(track->seq, track, i);
    return nullptr;
}

bool fillTrack(CTrack* track, const TrackPreset& preset) {
    track->id = preset.name;
    track->colour = preset.colour;
    COutputChannel* strip = track->output();
    if (preset.kind == trackMIDI) {
        CSampler* synth = giveProgram(track, preset.sound);
        if (!synth) return false;
        strip = synth->output();
    }
    if (preset.kind == trackDrum && !giveKit(track, preset.sound)) return false;
    const bool plain = std::string_view(preset.arpeggio).empty();
    return (plain || giveArpeggio(track, preset.arpeggio)) && fillStrip(strip, preset);
}

} // namespace presets
