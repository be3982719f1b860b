#include "project/ClipDrop.h"

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "instruments/CSampler.h"
#include "project/ClipContent.h"
#include "project/KitDrop.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/TrackInstrument.h"

#include <unordered_set>

namespace {

/// The samples that the part plays go to the pool.
void takeSamples(ClipContent& clip, CQV* host, CUndo* undo) {
    std::unordered_set<const CSample*> played;
    for (const CBaseEvent* e = clip.part->getEvents(); e; e = e->next)
        played.insert(asClip(e)->sample);
    CList rest;
    while (auto* sample = clip.samples.getFirst()) {
        clip.samples.del(0);
        if (played.count(sample))
            undo->asAdd(sample, &host->samples);
        else
            rest.add(sample);
    }
    deleteAll<CSample>(rest);
}

CSampler* makeSampler(CQV* host, const ClipDevice& device) {
    auto* sampler = new CSampler(host);
    CMemoryStream stream;
    stream.write(device.data.data(), int(device.data.size()));
    stream.setPos(0);
    sampler->createChannels();
    sampler->read(&stream, int(stream.size));
    sampler->createBuffers(host->frames);
    sampler->setRate(double(host->rate));
    if (const CSynthProg* prog = sampler->getProg()) sampler->setId(prog->id);
    return sampler;
}

void takeDevices(const ClipContent& clip, CTrack* track, CUndo* undo) {
    if (!track->outPort() || feedsAnything(track)) return;
    CStr missing;
    for (const ClipDevice& device : clip.devices) {
        if (device.kind == deviceSampler)
            linkInstrument(makeSampler(track->host, device), track, undo);
        if (device.kind == devicePlugin)
            missing += missing.empty() ? device.path : ", " + device.path;
    }
    if (!missing.empty()) showMsg(nullptr, "VST", CStr("Failed to open ") + missing);
}

} // namespace

int trackKindOf(const CPart* part) {
    if (part->type == partAudio) return trackAudio;
    return part->type == partDrum ? trackDrum : trackMIDI;
}

CPart* dropClip(ClipContent& clip, CSeq* seq, CSongTrack* onto, int tick, CUndo* undo) {
    CSeqProg* prog = seq->getProg();
    if (!prog || !clip.part) return nullptr;
    if (!onto || !onto->acceptPart(clip.part.get()))
        onto = seq->addTrack(trackKindOf(clip.part.get()), prog, undo);
    if (!onto) return nullptr;
    if (clip.part->type == partDrum && !takeDrums(clip, seq, onto->track, undo)) return nullptr;
    if (clip.part->type == partAudio) takeSamples(clip, seq->host, undo);
    if (clip.part->type == partMIDI) takeDevices(clip, onto->track, undo);
    clip.part->pos = asMax(limitTicks(tick), 0);
    return onto->addPart(clip.part.release(), undo);
}

CPart* dropClip(ClipContent& clip, CSeq* seq, CSongTrack* onto, int tick, const CStr& path) {
    CQV* host = seq->host;
    CUndo* step = host->undoStart("Drop " + extractFileName(path), seq,
                                  {.graph = true,
                                   .song = true,
                                   .host = HostNotice::pool,
                                   .seq = SeqNotice::tracks | SeqNotice::parts});
    CPart* part = dropClip(clip, seq, onto, tick, step);
    host->undoEnd(step, true);
    host->updatePeaks();
    return part;
}
