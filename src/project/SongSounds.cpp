#include "project/SongSounds.h"

#include "common/fx/CFX.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/SynthDrums.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/midi/MidiImport.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Templates.h"
#include "sequencer/song/TrackInstrument.h"

#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr int drumChannel = 9;

/// Makes a finished synthesizer ready and gives it to a track.
CSampler* link(std::unique_ptr<CSampler> made, CSeq* seq, CTrack* track, CUndo* undo) {
    made->createBuffers(seq->host->frames);
    made->setRate(double(seq->host->rate));
    linkInstrument(made.get(), track, undo);
    return made.release();
}

/// The program that a part asks for first, -1 when it asks for none.
int firstProgram(CPart* part) {
    if (part->type != partMIDI) return -1;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        const int data = static_cast<const CMIDIEvent*>(e)->data;
        if (statusByte(data) == midiProgram) return asByte1(data);
    }
    return -1;
}

bool hasNotes(CPart* part) {
    if (part->type != partMIDI) return false;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
        if (noteOn(static_cast<const CMIDIEvent*>(e)->data)) return true;
    return false;
}

/// The song tracks there are and those that a step adds.
std::vector<CSongTrack*> songTracks(CSeq* seq, CUndo* undo) {
    std::vector<CSongTrack*> all;
    eachWithPending<CSongTrack>(undo, &seq->getProg()->tracks,
                                [&](CSongTrack* songTrack) { all.push_back(songTrack); });
    return all;
}

bool bringsNotes(CSeq* seq, CUndo* undo) {
    bool notes = false;
    for (CSongTrack* songTrack : songTracks(seq, undo))
        eachPending<CPart>(undo, &songTrack->parts,
                           [&](CPart* part) { notes = notes || hasNotes(part); });
    return notes;
}

/// Whether a step leads the notes of a track somewhere.
bool feedsInStep(CTrack* track, CUndo* undo) {
    if (!undo) return false;
    for (auto* item : each<CUndoItem>(undo->items)) {
        const auto* cable = dynamic_cast<const CMIDICable*>(item->object);
        if (cable && item->addTo && cable->fromPort == track->outPort()) return true;
    }
    return false;
}

/// Gives a track an instrument if a step brings notes to it that would reach nothing; else null.
CSampler* giveSound(CSeq* seq, CSongTrack* songTrack, int factory, CUndo* undo) {
    CTrack* track = songTrack->track;
    bool notes = false;
    int program = -1;
    eachPending<CPart>(undo, &songTrack->parts, [&](CPart* part) {
        notes = notes || hasNotes(part);
        if (program < 0) program = firstProgram(part);
    });
    if (!notes || feedsAnything(track) || feedsInStep(track, undo)) return nullptr;
    if (factory >= 0) return addSynthesizer(seq, track, factory, undo);
    if (track->channel == drumChannel) return addSynthDrums(seq, track, undo);
    return addSynthesizer(seq, track, std::max(0, program), undo);
}

std::vector<CSampler*> makeInstruments(CSeq* seq, int factory, CUndo* undo) {
    std::vector<CSampler*> instruments;
    for (CSongTrack* songTrack : songTracks(seq, undo))
        if (CSampler* made = giveSound(seq, songTrack, factory, undo)) instruments.push_back(made);
    return instruments;
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

CSampler* addSynthesizer(CSeq* seq, CTrack* track, int program, CUndo* undo) {
    auto made = std::make_unique<CSampler>(seq->host);
    made->createChannels();
    CStr name;
    const int count = made->factoryProg(nullptr, -1, name, false);
    made->factoryProg(nullptr, program % count, name, true);
    made->setId(name);
    return link(std::move(made), seq, track, undo);
}

void setStrip(CSampler* instrument, float fader, float pan) {
    COutputChannel* strip = instrument->output();
    GraphHold hold(instrument->host);
    strip->vol = fader;
    strip->pan = pan;
    strip->setVol(fader, false);
    strip->setPan(pan, false);
}

CSampler* addSynthDrums(CSeq* seq, CTrack* track, CUndo* undo) {
    auto made = std::make_unique<CSampler>(seq->host);
    made->createChannels();
    made->progs.add(synthDrumKit(made.get()));
    made->setId("Drums");
    return link(std::move(made), seq, track, undo);
}

bool hasContent(CSeqProg* prog) {
    for (const auto* songTrack : each<CSongTrack>(prog->tracks))
        for (auto* part : each<CPart>(songTrack->parts))
            if (part->getEvents()) return true;
    return false;
}

MidiSongResult addMidiFile(CSeq* seq, const CStr& path, CSongTrack* onto, int tick,
                           const MidiWay& way, CUndo* step) {
    return resultOf(openMIDIFile(seq, onto, path, step, tick, way));
}

bool giveSounds(CSeq* seq, CUndo* step, int factory) {
    const std::vector<CSampler*> instruments = makeInstruments(seq, factory, step);
    setLevels(instruments);
    if (factory < 0) playDry(instruments);
    return bringsNotes(seq, step);
}

MidiSongResult openMidiSong(CSeq* seq, const CStr& path, int factory) {
    CQV* host = seq->host;
    CSeqProg* prog = seq->getProg();
    const bool begins = !hasContent(prog);
    CUndo* step = host->undoStart("Import", seq, {.graph = true, .song = true});
    const MidiSongResult result = addMidiFile(seq, path, nullptr, 0, {MidiTracks::byChannel}, step);
    const bool notes = giveSounds(seq, step, factory);
    host->undoEnd(step, true);
    if (begins && hasContent(prog)) frameSong(seq);
    return result == MidiSongResult::good && !notes ? MidiSongResult::silent : result;
}
