#include "project/SongSounds.h"

#include "common/fx/CFX.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/SynthDrums.h"
#include "sequencer/CSeq.h"
#include "sequencer/MidiImport.h"

#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr int drumChannel = 9;

/// Cables a finished synthesizer between a track and the audio out, and links it.
CSampler* link(std::unique_ptr<CSampler> made, CSeq* seq, CTrack* track) {
    CQV* host = seq->host;
    made->createBuffers(host->frames);
    made->setRate(double(host->rate));
    CMIDICable* midi = createMIDICable(made.get(), track->outPort(), nullptr);
    CComp* out = host->getAudioOut();
    CAudioCable* audio = out ? createAudioCable(out, made->output(), nullptr) : nullptr;

    GraphHold hold(host);
    if (midi) made->midiCables.add(midi);
    if (audio) out->audioCables.add(audio);
    host->comps.add(made.get());
    host->update(updateDelays);
    return made.release();
}

/// The program that a part asks for first, -1 when it asks for none.
int firstProgram(CPart* part) {
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        const int data = static_cast<const CMIDIEvent*>(e)->data;
        if (statusByte(data) == midiProgram) return asByte1(data);
    }
    return -1;
}

bool hasNotes(CPart* part) {
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
        if (noteOn(static_cast<const CMIDIEvent*>(e)->data)) return true;
    return false;
}

/// Gives a track an instrument if it has notes; null for a track without.
CSampler* giveSound(CSeq* seq, CSongTrack* songTrack) {
    bool notes = false;
    int program = -1;
    for (CPart* part : each<CPart>(songTrack->parts)) {
        if (part->type != partMIDI) continue;
        notes = notes || hasNotes(part);
        if (program < 0) program = firstProgram(part);
    }
    if (!notes) return nullptr;
    if (songTrack->track->channel == drumChannel) return addSynthDrums(seq, songTrack->track);
    return addSynthesizer(seq, songTrack->track, std::max(0, program));
}

/// Leaves room for many instruments that sound together: their power adds up, so each gets the root
/// of its share. The fader counts squared.
void setLevels(const std::vector<CSampler*>& instruments) {
    const float fader = std::pow(float(instruments.size()), -0.25f);
    for (CSampler* s : instruments) setStrip(s, fader, 0.0f);
}

/// Turns the send effects off: a hall per instrument would cost more than the notes.
void playDry(const std::vector<CSampler*>& instruments) {
    for (CSampler* s : instruments)
        for (const auto& effect : s->getProg()->fx) effect->setEnabled(0);
}

MidiSongResult resultOf(MidiImport import) {
    switch (import) {
    case MidiImport::good:
        return MidiSongResult::good;
    case MidiImport::unreadable:
        return MidiSongResult::unreadable;
    case MidiImport::notMidi:
        return MidiSongResult::notMidi;
    case MidiImport::broken:
        return MidiSongResult::broken;
    case MidiImport::truncated:
        return MidiSongResult::truncated;
    }
    return MidiSongResult::broken;
}

} // namespace

CSeq* addSequencer(CQV* host) {
    auto seq = std::make_unique<CSeq>(host);
    seq->init();
    seq->createBuffers(host->frames);
    GraphHold hold(host);
    host->comps.add(seq.get());
    return seq.release();
}

CSampler* addSynthesizer(CSeq* seq, CTrack* track, int program) {
    auto made = std::make_unique<CSampler>(seq->host);
    made->createChannels();
    CStr name;
    const int count = made->factoryProg(nullptr, -1, name, false);
    made->factoryProg(nullptr, program % count, name, true);
    made->setId(name);
    return link(std::move(made), seq, track);
}

void setStrip(CSampler* instrument, float fader, float pan) {
    COutputChannel* strip = instrument->output();
    GraphHold hold(instrument->host);
    strip->vol = fader;
    strip->pan = pan;
    strip->setVol(fader, false);
    strip->setPan(pan, false);
}

CSampler* addSynthDrums(CSeq* seq, CTrack* track) {
    auto made = std::make_unique<CSampler>(seq->host);
    made->createChannels();
    made->progs.add(synthDrumKit(made.get()));
    made->setId("Drums");
    return link(std::move(made), seq, track);
}

MidiSongResult openMidiSong(CSeq* seq, const CStr& path) {
    CQV* host = seq->host;
    CUndo* step = host->undoStart("Import", seq, undoSongChanged);
    const MidiSongResult result = resultOf(openMIDIFile(seq, nullptr, path, step, 0));
    host->undoEnd(step, true);
    if (result == MidiSongResult::unreadable || result == MidiSongResult::notMidi) return result;
    std::vector<CSampler*> instruments;
    for (CSongTrack* songTrack : each<CSongTrack>(seq->getProg()->tracks))
        if (CSampler* made = giveSound(seq, songTrack)) instruments.push_back(made);
    setLevels(instruments);
    playDry(instruments);
    const bool silent = instruments.empty() && result == MidiSongResult::good;
    return silent ? MidiSongResult::silent : result;
}
