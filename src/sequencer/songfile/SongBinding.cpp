#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/ObjectKinds.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/songfile/SongLinks.h"

#include <filesystem>
#include <memory>
#include <utility>

// How a song is tied to what is around it: the ports and channels of its tracks, and what its
// blocks name by index.

namespace {

/// Moves what tracks have to the front of a list, in their order.
template <class IO>
void orderLike(const ListOf<CTrack>& tracks, CList& list, ListOf<IO> CComp::*of) {
    CList ordered;
    for (auto* t : tracks)
        for (auto* io : t->*of) ordered.move(&list, io, -1);
    while (void* rest = list.getFirst()) ordered.move(&list, rest, -1);
    while (void* io = ordered.getFirst()) list.move(&ordered, io, -1);
}

/// Whether `orderLike` would leave all as it is.
template <class IO>
bool isLike(const ListOf<CTrack>& tracks, const CList& list, ListOf<IO> CComp::*of) {
    CListItem* it = nullptr;
    for (auto* t : tracks)
        for (const auto* io : t->*of)
            if (nextOf<IO>(list, it) != io) return false;
    return true;
}

template <class IO>
void keepLike(CSeq* seq, ListOf<IO> CComp::*of) {
    if (isLike(seq->tracks, seq->*of, of)) return;
    const GraphHold hold(seq->host);
    orderLike(seq->tracks, seq->*of, of);
}

void countClips(CSeq* seq) {
    for (auto* clip : seq->drumClips) clip->useCount = 0;
    for (auto* t : seq->tracks) {
        const CLayer* layer = t->drumLayer();
        if (!layer) continue;
        for (auto* sound : drumSounds(*layer))
            for (int i = 0; i < sound->clipCount; i++) sound->clips[i]->useCount++;
    }
}

/// Deletes what `unused` picks from a list.
template <class T, class F>
void deleteUnused(ListOf<T>& list, F unused) {
    ListOf<T> kept;
    while (auto* object = list.getFirst()) {
        if (unused(object)) {
            list.del(0);
            delete object;
        } else {
            kept.move(&list, object, -1);
        }
    }
    while (auto* object = kept.getFirst()) list.move(&kept, object, -1);
}

/// The file that plays instead of a frozen track, from the project's audio folder; null without.
std::unique_ptr<CSample> openFrozen(CQV* host, const CStr& file) {
    const CStr folder = host->getAudioFolder(false, false, false);
    const CStr name = extractFileName(file);
    if (folder.empty() || name.empty()) return nullptr;
    const CStr path = addSep(folder) + name;
    std::error_code failed;
    if (!std::filesystem::is_regular_file(path.asChar(), failed)) return nullptr;
    auto sample = std::make_unique<CSample>();
    sample->streamed = 1;
    sample->keep = true;
    return sample->open(path) ? std::move(sample) : nullptr;
}

COutputChannel* frozenChannel(CSeq* seq, const SongLinks::Freeze& f, CComp*& comp) {
    if (f.comp == -1) {
        comp = seq;
        return f.songTrack->track->output();
    }
    comp = seq->host->comps.items(f.comp);
    return comp ? comp->output(f.channel) : nullptr;
}

void bindFrozen(CSeq* seq, const SongLinks::Freeze& f) {
    CComp* comp = nullptr;
    COutputChannel* channel = frozenChannel(seq, f, comp);
    std::unique_ptr<CSample> sample = channel ? openFrozen(seq->host, f.file) : nullptr;
    if (!sample || sample->frames < 1) return;
    auto* item = new CFreezeItem;
    item->comp = comp;
    item->channel = channel;
    item->songTrack = f.songTrack;
    item->setSample(sample.release());
    if (!f.songTrack->voices)
        f.songTrack->voices = std::make_unique<AudioVoices>(f.songTrack, false);
    f.songTrack->freezeItems.add(item);
}

void bindSource(CSeq* seq, const SongLinks::Source& s) {
    auto* from = seq->tracks.items(s.index);
    if (!from || from == s.track || !from->outPort()) return;
    auto* cable = createMIDICable(s.track, from->outPort(), s.track->inPort());
    if (!cable) return;
    cable->muted = s.muted;
    s.track->midiCables.add(cable);
}

/// What stands at the same place in a duplicate of a sequencer.
CObject* twinOf(CSeq* seq, CSeq* twin, CObject* object) {
    const auto sameChannel = [&](COutputChannel* channel) {
        auto* owner = compAs<CTrack>(seq->getComp(channel));
        auto* other = twin->tracks.items(seq->tracks.indexed(owner));
        return other ? other->output() : nullptr;
    };
    if (COutputChannel* channel = asStrip(object))
        return channel->comp == seq ? sameChannel(channel) : object;
    int index = -1;
    COutputChannel* channel = asStrip(seq->host->objectToOwner(object, index));
    if (!channel || channel->comp != seq) return object;
    COutputChannel* same = sameChannel(channel);
    if (!same || index < 0) return nullptr;
    if (object->category == 0) return index < maxSends ? same->sendLevels[index] : nullptr;
    return static_cast<CObject*>(same->inserts.items(index));
}

} // namespace

CSeqProg* CSeq::addProgram(const CStr& name) {
    auto* prog = new CSeqProg(this);
    prog->id = name;
    programCount++;
    progs.add(prog);
    return prog;
}

void CSeq::saving() {
    CComp::saving();
    // Projects are copied while they play: a block is given up only for what was really moved.
    keepLike(this, &CComp::inPorts);
    keepLike(this, &CComp::outPorts);
    keepLike(this, &CComp::inputs);
    keepLike(this, &CComp::outputs);
}

void CSeq::bindLinks() {
    const std::unique_ptr<SongLinks> read = std::move(links);
    if (read) {
        for (const auto& l : read->lanes) l.lane->object = l.link.resolve(host);
        for (const auto& s : read->sources) bindSource(this, s);
        for (const auto& f : read->frozen) bindFrozen(this, f);
    }
    countClips(this);
    deleteUnused(drumClips, [](const CSampleClip* c) { return c->useCount == 0; });
    updateGhostCount();
    deleteUnused(masterParts, [](const CPart* p) { return p->ghostCount == 0; });
    CSeqProg* current = getProg();
    if (!current) return;
    for (auto* t : current->tracks)
        if (t->track->selected()) selection.tracks.add(t);
}

void CSeq::afterRead() {
    {
        const GraphHold hold(host);
        bindLinks();
    }
    host->setPos(getPos());
}

void CSeq::linkEnds(CTrack* track) {
    for (auto* io : track->inPorts) inPorts.addUnique(io);
    for (auto* io : track->outPorts) outPorts.addUnique(io);
    for (auto* io : track->inputs) inputs.addUnique(io);
    for (auto* io : track->outputs) outputs.addUnique(io);
}

void CSeq::addAudioPorts(CTrack* track) {
    makePorts(track);
    linkEnds(track);
}

CComp* CSeq::copy() {
    auto* twin = new CSeq(host);
    twin->copyData(this);
    CListItem* it = nullptr;
    for (auto* track : twin->tracks) {
        auto* original = nextOf<CTrack>(tracks, it);
        if (track->inPorts.empty()) twin->makePorts(track);
        twin->makeChannels(track);
        if (track->output()) track->output()->copySettings(original->output());
        twin->linkEnds(track);
    }
    twin->bindLinks();
    for (auto* track : twin->tracks)
        for (auto* lane : track->subTracks)
            if (lane->object) lane->object = twinOf(this, twin, lane->object);
    return twin;
}
