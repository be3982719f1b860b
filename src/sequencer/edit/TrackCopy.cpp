#include "sequencer/edit/TrackCopy.h"

#include "base/CStream.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/KeyInput.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/TrackInstrument.h"
#include "sequencer/song/TrackRouting.h"

#include <cstring>

namespace {

/// The synthesizer that plays this track and nothing else, null without one.
CComp* ownSynth(CSeq* seq, CTrack* track) {
    CComp* synth = track->kind == trackMIDI ? trackTarget(seq, track) : nullptr;
    if (!synth || synth->type != compSampler) return nullptr;
    for (const auto* cable : synth->midiCables)
        if (cable->fromPort != track->outPort()) return nullptr;
    return synth;
}

void copyOutputs(CComp* at, CComp* source, CComp* twin, CUndo* undo) {
    for (auto* cable : at->audioCables) {
        if (!source->outputs.contains(cable->fromChannel)) continue;
        COutputChannel* from = twin->output(source->outputs.indexed(cable->fromChannel));
        if (auto* made = createAudioCable(at, from, cable->toChannel))
            addTwin(undo, made, &at->audioCables, cable);
    }
}

CComp* copySynth(CComp* source, CTrack* onto, CUndo* undo) {
    CQV* host = source->host;
    CComp* twin = source->copy();
    twin->id = host->autoNameComp(source->id);
    twin->setRate(double(host->rate));
    placeInstrument(twin, onto->seq, undo);
    undo->asAdd(twin, &host->comps);
    if (auto* notes = createMIDICable(twin, onto->outPort(), nullptr))
        undo->asAdd(notes, &twin->midiCables);
    for (auto* at : host->comps) copyOutputs(at, source, twin, undo);
    return twin;
}

/// What stands in the strip of one channel as another one does in that of its twin; null for all
/// else.
CObject* twinInStrip(COutputChannel* of, COutputChannel* twin, const CObject* object) {
    if (!of || !twin) return nullptr;
    if (object == of) return twin;
    for (int i = 0; i < maxSends; i++)
        if (object && of->sendLevels[i] == object) return twin->sendLevels[i];
    const bool same = of->inserts.getCount() == twin->inserts.getCount();
    const int index = same ? of->inserts.indexed(object) : -1;
    return index < 0 ? nullptr : static_cast<CObject*>(twin->inserts.items(index));
}

/// A track and the one that comes beside it, with the synthesizers that are theirs alone.
class TrackPair {
public:
    TrackPair(CSeq* song, CTrack* from, CUndo* step, int index)
        : seq(song), source(from), undo(step), synth(ownSynth(song, from)),
          made(song->addTrackLike(from, synth, step, index)) {
        if (synth) madeSynth = copySynth(synth, made, undo);
    }

    CTrack* copy() {
        made->id = freeName();
        copySettings();
        if (source->output()) made->output()->copySettings(source->output());
        copyKeys(source, made);
        if (synth) copyKeys(synth, madeSynth);
        made->arp->copyData(source->arp.get());
        copyGroove();
        copyKit();
        copyLanes();
        for (auto* prog : seq->programs()) copyParts(prog);
        return made;
    }

private:
    void copySettings() {
        made->colour = int(source->colour);
        made->channel = short(source->channel);
        made->inSens = int(source->inSens);
        made->recChs = static_cast<unsigned char>(source->recChs);
        made->height = int(source->height);
        made->openHeight = int(source->openHeight);
        made->scroll = int(source->scroll);
        made->noteHeight = int(source->noteHeight);
        made->laneMode = int(source->laneMode);
        made->laneStack = int(source->laneStack);
        made->activeLane = int(source->activeLane);
        made->monitor = static_cast<unsigned char>(source->monitor);
        made->live = static_cast<unsigned char>(source->live);
        made->locked = static_cast<unsigned char>(source->locked);
        made->folder = source->folder.load();
        if (source->ownRowHeight()) made->setRowHeight(source->getRowHeight());
        made->setOpen(source->open());
    }

    /// "Bass 2" of "Bass", and numbers as those of new tracks.
    CStr freeName() const {
        const CStr word = trackWord(source->kind) + "-";
        if (source->id.sub(0, word.length()) == word) return seq->autoNameTrack(source->kind, undo);
        CStr stem = source->id;
        const char* number = std::strrchr(stem.asChar(), ' ');
        if (number && strAsInt(number + 1) > 1) stem = stem.sub(0, int(number - stem.asChar()));
        for (int i = 2;; i++) {
            const CStr name = stem + " " + asStr(i);
            bool taken = false;
            eachWithPending(undo, &seq->tracks, [&](const CTrack* t) {
                taken = taken || (t != made && t->id == name);
            });
            if (!taken) return name;
        }
    }

    void copyGroove() {
        const CGroove& from = source->groove;
        CGroove& to = made->groove;
        to.on = int(from.on);
        to.spare = int(from.spare);
        to.amount = float(from.amount);
        to.steps = int(from.steps);
        to.stepTicks = int(from.stepTicks);
        for (int i = 0; i < CGroove::maxSteps; i++) to.offsets[i] = float(from.offsets[i]);
    }

    void copyKit() {
        const CLayer* layer = source->drumLayer();
        if (!layer) return;
        CMemoryStream stream;
        writeDrumKit(&stream, source->synthProg->id, *layer);
        const int size = stream.getPos();
        stream.seek(0, seekStart);
        DrumKit kit(seq->host, made->drumLayer(), seq);
        kit.read(&stream, size);
        made->synthProg->id = source->synthProg->id;
        for (int i = 0; i < kit.sounds.getCount(); i++) // a kit file has no strips
            kit.sounds.items(i)->output->copySettings(source->drumSound(i)->output.get());
        made->openHeight = int(source->openHeight) - kit.height(); // which grows by taking it
        seq->takeKit(kit, made, undo);
    }

    CObject* twinOf(CObject* object) const {
        if (object == source) return made;
        if (object && object == synth) return madeSynth;
        if (CObject* twin = twinInStrip(source->output(), made->output(), object)) return twin;
        for (int i = 0; synth && i < synth->outputs.getCount(); i++)
            if (CObject* twin = twinInStrip(synth->output(i), madeSynth->output(i), object))
                return twin;
        return object;
    }

    void copyLanes() {
        for (auto* lane : source->subTracks) {
            auto* twin = new CSubTrack(lane->id, LaneKind(int(lane->kind)));
            twin->visible = static_cast<unsigned char>(lane->visible);
            twin->height = int(lane->height);
            twin->object = twinOf(lane->object);
            twin->param = int(lane->param);
            twin->slot = int(lane->slot);
            twin->target = int(lane->target);
            twin->bypass = static_cast<unsigned char>(lane->bypass);
            made->subTracks.add(twin);
        }
        for (auto* lane : source->editLanes)
            if (CSubTrack* twin = made->subTracks.items(source->subTracks.indexed(lane)))
                made->editLanes.add(twin);
    }

    void copyParts(CSeqProg* prog) {
        const CSongTrack* from = prog->songTrackOf(source);
        CSongTrack* to = nullptr;
        eachPending(undo, &prog->tracks, [&](CSongTrack* s) {
            if (s->track == made) to = s;
        });
        if (!from || !to) return;
        to->setMuted(from->muted());
        to->setSoloed(from->soloed());
        for (auto* part : from->parts) {
            CPart* twin = part->copy(0);
            twin->setSelected(false);
            to->addPart(twin, undo);
        }
    }

    CSeq* seq;
    CTrack* source;
    CUndo* undo;
    CComp* synth;
    CTrack* made;
    CComp* madeSynth = nullptr;
};

} // namespace

CTrack* copyTrack(CSeq* seq, CTrack* source, CUndo* undo, int index) {
    return TrackPair(seq, source, undo, index).copy();
}
