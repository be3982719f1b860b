#include "tools/soundtable/SoundProbe.h"

#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"

#include <algorithm>

namespace soundtable {

namespace {

/// A sampler that hangs nowhere, with one program.
struct Player {
    Player(CQV* root, const MakeProgram& make) : host(root), sampler(root) {
        sampler.createChannels();
        sampler.createBuffers(host->frames);
        sampler.setRate(double(host->rate));
        sampler.listKind = listComps;
        sampler.progs.add(make(host, &sampler));
    }

    void send(int status, const ProbeNote& note) {
        const int velocity = status == midiNoteOn ? note.velocity : 0;
        if (note.key != chordKey) {
            sampler.inPort()->addMidiEvent(0, asData(status, note.key, velocity));
            return;
        }
        for (const int key : {60, 64, 67})
            sampler.inPort()->addMidiEvent(0, asData(status, key, velocity));
    }

    int sounding() const {
        return int(std::count_if(std::begin(sampler.voices), std::end(sampler.voices),
                                 [](const CVoice& v) { return v.state == CVoice::sounding; }));
    }

    /// In which voices are worked out: one or two for each that is heard.
    int lanes() const {
        const auto seats = [&](Seat seat) {
            return std::ranges::count(sampler.voices, seat, &CVoice::seat);
        };
        return int(seats(Seat::mono) + 2 * seats(Seat::stereo));
    }

    CQV* host;
    CSampler sampler;
};

} // namespace

Sound playNote(CQV* host, const MakeProgram& make, const ProbeNote& note, double seconds) {
    const GraphHold hold(host);
    Player player(host, make);
    const int block = host->frames;
    const auto blocksOf = [&](double time) { return int(time * probeRate / block); };
    Sound sound;
    const int release = blocksOf(heldSeconds), blocks = blocksOf(seconds);
    for (int i = 0; i < blocks; i++) {
        player.sampler.prepare(block);
        if (i == 0) player.send(midiNoteOn, note);
        if (i == release) player.send(midiNoteOff, note);
        player.sampler.process(block);
        if (i == 0) sound.voices = player.sounding();
        sound.lanes += double(player.lanes()) / release;
        const COutputChannel* out = player.sampler.output();
        sound.left.insert(sound.left.end(), out->bufL, out->bufL + block);
        sound.right.insert(sound.right.end(), out->bufR, out->bufR + block);
    }
    return sound;
}

std::vector<Sound> playProbe(CQV* host, const MakeProgram& make) {
    std::vector<Sound> sounds;
    for (const ProbeNote& note : probeNotes) sounds.push_back(playNote(host, make, note));
    return sounds;
}

} // namespace soundtable
