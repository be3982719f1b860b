#include "sequencer/song/Templates.h"

#include "base/Numbers.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/GraphHold.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"

namespace {

constexpr int tracksOfAKind = 8;
constexpr int templateOption = 1; ///< byte of the song's options

CSongTrack* track(CSeq* seq, int kind, const CStr& name) {
    CSongTrack* songTrack = seq->addTrack(kind, seq->getProg(), nullptr);
    songTrack->track->id = name;
    return songTrack;
}

void select(CSeq* seq, CSongTrack* songTrack, bool open) {
    seq->selectTrack(songTrack, true);
    songTrack->track->setOpen(open);
}

CPart* addBar(CSongTrack* songTrack, CPart* part) {
    part->id = songTrack->track->id;
    return songTrack->addPart(part, nullptr);
}

CSongTrack* drumTrack(CSeq* seq) {
    CSongTrack* songTrack = track(seq, trackDrum, "Drum");
    seq->addStandardKit(songTrack->track);
    addBar(songTrack, new CDrumPart);
    return songTrack;
}

} // namespace

void createEmptyProject(CSeq*) {
}

void createDefaultProject(CSeq* seq) {
    GraphHold hold(seq->host);
    seq->options.bytes[templateOption] = 1;
    CSongTrack* songTrack = track(seq, trackMIDI, "Instrument 1");
    select(seq, songTrack, true);
    addBar(songTrack, new CMIDIPart);
    addTrackInstrument(seq, songTrack->track, nullptr);
}

void createSimpleProject(CSeq* seq) {
    GraphHold hold(seq->host);
    CSongTrack* songTrack = track(seq, trackMIDI, "Instrument 1");
    select(seq, songTrack, true);
    addBar(songTrack, new CMIDIPart);
    track(seq, trackAudio, "Audio 1");
}

void createMIDISequencerProject(CSeq* seq) {
    GraphHold hold(seq->host);
    CComp* out = seq->host->getMIDIOut();
    for (int i = 1; i <= tracksOfAKind; i++) {
        CSongTrack* songTrack = track(seq, trackMIDI, CStr("Instrument ") + asStr(i));
        songTrack->track->channel = short(i - 1);
        if (out)
            if (auto* cable = createMIDICable(out, songTrack->track->outPort(), nullptr))
                out->midiCables.add(cable);
        if (i > 1) continue;
        select(seq, songTrack, true);
        addBar(songTrack, new CMIDIPart);
    }
}

void createPortaStudioProject(CSeq* seq) {
    GraphHold hold(seq->host);
    for (int i = 1; i <= tracksOfAKind; i++) {
        CSongTrack* songTrack = track(seq, trackAudio, CStr("Audio ") + asStr(i));
        if (i == 1) select(seq, songTrack, false);
    }
}

void createDrumAndBassProject(CSeq* seq) {
    GraphHold hold(seq->host);
    drumTrack(seq)->parts.getFirst()->setSelected(true);
    CSongTrack* songTrack = track(seq, trackMIDI, "Instrument");
    addBar(songTrack, new CMIDIPart);
    addTrackInstrument(seq, songTrack->track, nullptr);
}

void createGuitaristProject(CSeq* seq) {
    GraphHold hold(seq->host);
    seq->options.bytes[templateOption] = 1;
    drumTrack(seq);
    COutputChannel* channel = track(seq, trackAudio, "Guitar")->track->output();
    for (const int kind : {fxGuitarAmp, fxReverb})
        channel->inserts.add(makeInsert(channel, kind).release());
}

void startUnlooped(CQV* host) {
    host->setLoop(0);
}

void frameSong(CSeq* seq) {
    GraphHold hold(seq->host);
    startUnlooped(seq->host);
    seq->setLoop(0);
    seq->setLoopSection(0, asMax(barTicks, seq->renderDuration()));
}
