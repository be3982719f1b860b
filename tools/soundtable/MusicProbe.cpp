#include "tools/soundtable/MusicProbe.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "data/presets/Kits.h"
#include "data/presets/Line.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "instruments/FactoryPrograms.h"
#include "sequencer/song/CTrack.h"
#include "tools/soundtable/PresetProbe.h"

#include <algorithm>
#include <string_view>

namespace soundtable {

namespace {

constexpr int stepsOfBar = 16, barCount = 2;
constexpr double stepSeconds = 0.125, wholeSeconds = barCount * stepsOfBar * stepSeconds;
constexpr size_t window = 4096;

Figures figuresOf(const char* name, const char* family, const Sound& s) {
    Figures f;
    f.name = name;
    f.family = family;
    f.chordLufs = loudnessOf(s);
    f.chordPeak = peakOf(s);
    f.width = widthOf(s);
    constexpr double shapeSeconds = sliceCount * stepSeconds;
    for (double at = 0.0; at < wholeSeconds; at += shapeSeconds)
        f.shapes.push_back(shapeOf(s, {at, shapeSeconds, window}));
    return f;
}

int programOf(std::string_view name) {
    for (int i = 0; i < factoryCount; i++)
        if (name == factoryName(i)) return i;
    return 0;
}

/// Notes as they are played, in sixteenths, by a program of the factory; through an arpeggiator if
/// there is one.
Sound play(CQV* host, int program, const std::vector<presets::LineNote>& notes,
           const presets::ArpPreset* arpeggio) {
    const GraphHold hold(host);
    CSampler sampler(host);
    sampler.createChannels();
    sampler.createBuffers(host->frames);
    sampler.setRate(double(host->rate));
    sampler.listKind = listComps;
    sampler.progs.add(buildFactoryProg(host, &sampler, program));
    CArp arp(host);
    arp.init();
    if (arpeggio) presets::fillArp(*arp.getProg(), *arpeggio);
    arp.enable(arpeggio ? 1 : 0);

    Sound out;
    const int block = host->frames;
    const auto frameOf = [](int step) { return int(step * stepSeconds * probeRate); };
    for (int past = 0; past < frameOf(barCount * stepsOfBar); past += block) {
        sampler.prepare(block);
        arp.prepare(block);
        const auto send = [&](int frame, int data) {
            if (frame >= past && frame < past + block)
                arp.inPort()->addMidiEvent(double(frame - past), data);
        };
        for (const presets::LineNote& n : notes) {
            send(frameOf(n.step), asData(midiNoteOn, n.key, n.velocity));
            send(frameOf(n.step + n.length) - block, asData(midiNoteOff, n.key, 0));
        }
        arp.process(block);
        for (const CMIDIBytes* e = arp.outPort()->first(); e; e = e->next)
            sampler.inPort()->addMidiEvent(e->time, e->data);
        sampler.process(block);
        const COutputChannel* strip = sampler.output();
        out.left.insert(out.left.end(), strip->bufL, strip->bufL + block);
        out.right.insert(out.right.end(), strip->bufR, strip->bufR + block);
    }
    return out;
}

Sound beat(const presets::Kit& kit, const std::vector<presets::DrumRow>& rows) {
    Sound s;
    s.left.assign(size_t(wholeSeconds * probeRate), 0.0f);
    s.right = s.left;
    for (const presets::DrumRow& row : rows) {
        const std::string_view steps = row.steps;
        const presets::DrumVoice& voice = kit.voices[size_t(row.sound)];
        const std::vector<float> stroke = presets::synthesize(voice);
        for (size_t step = 0; step < barCount * stepsOfBar; step++) {
            const float hit = float(presets::hitVelocity(steps[step % steps.size()])) / 127.0f;
            const float level = 0.5f * voice.place.volume * hit * hit, pan = voice.place.pan;
            const size_t from = size_t(double(step) * stepSeconds * probeRate);
            for (size_t i = 0; level > 0.0f && i < stroke.size() && from + i < s.left.size(); i++) {
                s.left[from + i] += stroke[i] * level * std::min(1.0f, 1.0f - pan);
                s.right[from + i] += stroke[i] * level * std::min(1.0f, 1.0f + pan);
            }
        }
    }
    return s;
}

const presets::RackPreset* rackOf(const std::vector<presets::RackPreset>& all,
                                  std::string_view name) {
    const auto found = std::ranges::find(all, name, &presets::RackPreset::name);
    return found == all.end() ? nullptr : &*found;
}

void equalize(Sound& s, const presets::EqCut& cut) {
    constexpr EqType forms[] = {eqHighShelf, eqPeaking, eqPeaking, eqLowShelf};
    CEQ band(forms[cut.band]);
    band.setRate(float(probeRate));
    band.setFrequency(cut.hz);
    band.setGain(cut.db);
    band.setQ(0.7f);
    Sound out = s;
    band.process(s.left.data(), s.right.data(), out.left.data(), out.right.data(),
                 long(s.left.size()));
    s = out;
}

Sound sourceOf(CQV* host, const presets::TrackPreset& preset) {
    if (preset.kind == trackAudio) return probeOf(false);
    if (preset.kind == trackDrum) {
        const auto kit = std::ranges::find(presets::kits(), std::string_view(preset.sound),
                                           [](const auto& k) { return std::string_view(k.name); });
        return beat(*kit,
                    {{0, "X.......x.x....."}, {1, "....X.......X..o"}, {3, "x.o.x.o.x.o.x..."}});
    }
    const std::vector<presets::ArpPreset> all = presets::arpPresets();
    const auto arpeggio = std::ranges::find_if(
        all, [&](const auto& a) { return std::string_view(a.name) == preset.arpeggio; });
    return play(host, programOf(preset.sound),
                presets::parseLine("C2:7 -:1 C3+G3+C4+E4:15 -:1 C4:3! -:1"),
                arpeggio == all.end() ? nullptr : &*arpeggio);
}

} // namespace

Figures measureArpeggio(CQV* host, const presets::ArpPreset& preset) {
    const Sound s = play(host, programOf("Pulse"), presets::parseLine("G3+C3+Bb3+Eb3:32"), &preset);
    return figuresOf(preset.name, "Arpeggios", s);
}

Figures measureClip(const presets::DrumClip& clip) {
    return figuresOf(clip.name, "Drums", beat(presets::kits()[size_t(clip.kit)], clip.rows));
}

Figures measureClip(CQV* host, const presets::NoteClip& clip) {
    const Sound s = play(host, programOf(clip.program), presets::parseLine(clip.line), nullptr);
    return figuresOf(clip.name, "Notes", s);
}

Figures measureClip(const presets::SoundLoop& loop) {
    Sound s;
    loop.make(loop, s.left, s.right);
    return figuresOf(loop.name, "Sounds", s);
}

Figures measureTrack(CQV* host, const presets::TrackPreset& preset) {
    Sound s = sourceOf(host, preset);
    const auto racks = presets::rackPresets();
    for (const char* name : preset.effects)
        if (const presets::RackPreset* rack = rackOf(racks, name)) s = playRack(host, *rack, s);
    for (const presets::EqCut& cut : preset.eq) equalize(s, cut);
    constexpr const char* families[] = {"Audio", "Notes", "Drums"};
    return figuresOf(preset.name,
                     preset.kind == trackAudio  ? families[0]
                     : preset.kind == trackMIDI ? families[1]
                                                : families[2],
                     s);
}

} // namespace soundtable
