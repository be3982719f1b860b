#include "project/SongSounds.h"

#include "common/fx/CFX.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/SoundSet.h"
#include "instruments/SynthDrums.h"
#include "project/ChannelMix.h"
#include "project/SongSends.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/midi/MidiImport.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
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
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        const int data = asMessage(e)->data;
        if (statusByte(data) == midiProgram) return asByte1(data);
    }
    return -1;
}

bool hasNotes(CPart* part) {
    if (part->type != partMIDI) return false;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
        if (noteOn(asMessage(e)->data)) return true;
    return false;
}

/// The song tracks there are and those that a step adds.
std::vector<CSongTrack*> songTracks(CSeq* seq, CUndo* undo) {
    std::vector<CSongTrack*> all;
    eachWithPending(undo, &seq->getProg()->tracks,
                    [&](CSongTrack* songTrack) { all.push_back(songTrack); });
    return all;
}

bool bringsNotes(CSeq* seq, CUndo* undo) {
    bool notes = false;
    for (CSongTrack* songTrack : songTracks(seq, undo))
        eachPending(undo, &songTrack->parts, [&](CPart* part) { notes = notes || hasNotes(part); });
    return notes;
}

/// Whether a step leads the notes of a track somewhere.
bool feedsInStep(CTrack* track, CUndo* undo) {
    if (!undo) return false;
    for (auto* item : undo->items) {
        const auto* cable = dynamic_cast<const CMIDICable*>(item->object);
        if (cable && item->addTo && cable->fromPort == track->outPort()) return true;
    }
    return false;
}

/// What comes to the tracks of a song with a step.
class Sounding {
public:
    Sounding(CSeq* song, int program, const CStr& setFolder, CUndo* step, SongSends& buses)
        : seq(song), factory(program), set(listSoundSet(setFolder)), undo(step), sends(buses) {}

    void giveAll() {
        for (CSongTrack* songTrack : songTracks(seq, undo)) collect(songTrack);
        const float headroom = headroomOf(wanting.size());
        if (factory >= 0) {
            for (const Wanting& w : wanting)
                setStrip(addSynthesizer(seq, w.track, factory, undo), headroom, 0.0f);
            return;
        }
        for (const Wanting& w : wanting) {
            CSampler* instrument = instrumentFor(w.track, w.program);
            playDry(instrument);
            w.mix.apply(instrument, w.track, headroom, undo);
            sends.send(instrument, w.mix.reverb, w.mix.chorus);
        }
    }

private:
    /// A track that gets an instrument, and what its parts tell about it.
    struct Wanting {
        CTrack* track;
        int program;
        ChannelMix mix;
    };

    /// Whether the step brings notes to the track that would reach nothing.
    void collect(CSongTrack* songTrack) {
        CTrack* track = songTrack->track;
        std::vector<CPart*> parts;
        bool notes = false;
        int program = -1;
        eachPending(undo, &songTrack->parts, [&](CPart* part) {
            if (part->type != partMIDI) return;
            parts.push_back(part);
            notes = notes || hasNotes(part);
            if (program < 0) program = firstProgram(part);
        });
        if (!notes || feedsAnything(track) || feedsInStep(track, undo)) return;
        wanting.push_back({track, std::max(0, program), ChannelMix(parts)});
    }

    CSampler* instrumentFor(CTrack* track, int program) {
        if (track->channel == drumChannel) return addSynthDrums(seq, track, undo);
        for (const SetProgram& p : set)
            if (p.number == program)
                if (CSampler* read = addSetProgram(track, p)) return read;
        return addSynthesizer(seq, track, program, undo);
    }

    CSampler* addSetProgram(CTrack* track, const SetProgram& program) {
        auto sampler = std::make_unique<CSampler>(seq->host);
        sampler->createChannels();
        if (!readPrograms(sampler.get(), program.path)) return nullptr;
        sampler->setId(program.name);
        return link(std::move(sampler), seq, track, undo);
    }

    /// Leaves room for many instruments that sound together: their power adds up, so each gets the
    /// root of its share. The fader counts squared.
    static float headroomOf(size_t instruments) {
        constexpr float forTheHall = 0.9f;
        return forTheHall * std::pow(float(std::max<size_t>(1, instruments)), -0.25f);
    }

    /// Turns the send effects off: all instruments share the halls of the song.
    static void playDry(CSampler* s) {
        for (const auto& effect : s->getProg()->fx) effect->setEnabled(0);
    }

    CSeq* seq;
    int factory;
    std::vector<SetProgram> set;
    CUndo* undo;
    SongSends& sends;
    std::vector<Wanting> wanting;
};

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
    for (const auto* songTrack : prog->tracks)
        for (auto* part : songTrack->parts)
            if (part->getEvents()) return true;
    return false;
}

MidiSongResult addMidiFile(CSeq* seq, const CStr& path, CSongTrack* onto, int tick,
                           const MidiWay& way, CUndo* step) {
    return resultOf(openMIDIFile(seq, onto, path, step, tick, way));
}

bool giveSounds(CSeq* seq, CUndo* step, SongSends& sends, int factory, const CStr& setFolder) {
    Sounding(seq, factory, setFolder, step, sends).giveAll();
    return bringsNotes(seq, step);
}

bool giveSounds(CSeq* seq, CUndo* step, SongSends& sends) {
    return giveSounds(seq, step, sends, -1, soundSetFolder());
}

MidiSongResult openMidiSong(CSeq* seq, const CStr& path, int factory, const CStr& setFolder) {
    CQV* host = seq->host;
    CSeqProg* prog = seq->getProg();
    const bool begins = !hasContent(prog);
    CUndo* step = host->undoStart("Import", seq, {.graph = true, .song = true});
    const MidiSongResult result = addMidiFile(seq, path, nullptr, 0, {MidiTracks::byChannel}, step);
    SongSends sends(host, step);
    const bool notes = giveSounds(seq, step, sends, factory, setFolder);
    host->undoEnd(step, true);
    sends.settle();
    if (begins && hasContent(prog)) frameSong(seq);
    return result == MidiSongResult::good && !notes ? MidiSongResult::silent : result;
}

MidiSongResult openMidiSong(CSeq* seq, const CStr& path, int factory) {
    return openMidiSong(seq, path, factory, soundSetFolder());
}
