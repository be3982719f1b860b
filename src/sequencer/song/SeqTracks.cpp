#include "sequencer/song/CSeq.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/GraphHold.h"
#include "engine/KeyInput.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSubTrack.h"

#include <set>

/// Tracks come and go.

/// What makes up a track, before it is linked.
struct CSeq::NewTrack {
    CTrack* track = nullptr;
    CMIDICable* midiIn = nullptr;    ///< into the sequencer
    CAudioCable* audioIn = nullptr;  ///< into the sequencer
    CAudioCable* audioOut = nullptr; ///< into the audio output
};

namespace {

/// Links an object into a list, or records that.
struct Linker {
    CUndo* undo;
    void operator()(CObject* object, CList* list, int index = -1) const {
        if (!object) return;
        if (undo)
            undo->asAdd(object, list, index);
        else
            list->insert(index < 0 ? list->getCount() : index, object);
    }
};

void addLanes(CTrack* track) {
    if (track->kind == trackMIDI) track->subTracks.add(new CSubTrack("Velocity", laneVelocity));
    if (track->kind != trackAudio) return;
    auto* lane = new CSubTrack(COutputChannel::paramName(0), laneAutomation);
    lane->object = track->output();
    track->subTracks.add(lane);
}

/// Files have the MIDI ports of these tracks alone, and the outputs of those below.
bool takesNotes(int kind) {
    return kind == trackMIDI || kind == trackDrum;
}

bool makesSound(int kind) {
    return kind == trackAudio || kind == trackDrum;
}

void setKindDefaults(CTrack* track) {
    if (track->kind == trackFolder) {
        track->height = folderHeight;
        track->setOpen(true);
    }
    if (track->kind == trackDrum) {
        track->openHeight = drumOpenHeight;
        track->scroll = 0;
    }
}

} // namespace

void CSeq::makePorts(CTrack* track) {
    const int kind = track->kind;
    const bool plays = kind == trackMIDI || kind == trackAudio || kind == trackDrum;
    if (plays) track->inPorts.add(new CInputPort(this));
    if (kind == trackMIDI || kind == trackAudio) track->outPorts.add(new COutputPort(this));
}

void CSeq::makeChannels(CTrack* track) {
    const int kind = track->kind;
    if (kind == trackAudio) track->inputs.add(new CInputChannel(this));
    if (kind == trackAudio || kind == trackDrum) track->outputs.add(new COutputChannel(this));
    track->createBuffers(host->frames);
}

void CSeq::makeTrackIO(NewTrack& made) {
    CTrack* track = made.track;
    const int kind = track->kind;
    makePorts(track);
    makeChannels(track);
    CComp* midi = kind == trackMIDI || kind == trackDrum ? host->getMIDIIn() : nullptr;
    if (midi) made.midiIn = createMIDICable(this, midi->outPort(), track->inPort());
    CComp* in = kind == trackAudio ? host->getAudioIn() : nullptr;
    if (in) made.audioIn = createAudioCable(this, in->output(), track->input());
    CComp* out = host->getAudioOut();
    if (out) made.audioOut = createAudioCable(out, track->output(), nullptr);
}

bool CSeq::hasTrackRoom(int kind, const CUndo* undo, int more) const {
    constexpr int most = 255; ///< of each kind of port and channel
    int noted = takesNotes(kind) ? more : 0, sounding = makesSound(kind) ? more : 0;
    const bool notes = noted, sounds = sounding;
    eachWithPending(undo, &tracks, [&](const CTrack* track) {
        noted += takesNotes(track->kind) ? 1 : 0;
        sounding += makesSound(track->kind) ? 1 : 0;
    });
    return (!notes || noted <= most) && (!sounds || sounding <= most);
}

CSongTrack* CSeq::addTrack(int kind, CSeqProg* prog, CUndo* undo, int index) {
    if (!hasTrackRoom(kind, undo)) {
        showMsg(nullptr, "Error", "Too many tracks");
        return nullptr;
    }
    NewTrack made;
    made.track = new CTrack(host, this, kind);
    made.track->id = autoNameTrack(kind, undo);
    if (host->settings.getInt("rndTrackCol", 0)) made.track->colour = getRandomTrackColor();
    setKindDefaults(made.track);
    makeTrackIO(made);
    addLanes(made.track);
    if (undo) return linkTrack(made, prog, undo, index);
    GraphHold hold(host);
    host->hostNotices.raise(HostNotice::delays);
    return linkTrack(made, prog, nullptr, index);
}

CSongTrack* CSeq::linkTrack(NewTrack& made, CSeqProg* prog, CUndo* undo, int index) {
    const Linker link{undo};
    CTrack* track = made.track;
    for (auto* io : track->inPorts) link(io, &inPorts);
    for (auto* io : track->outPorts) link(io, &outPorts);
    for (auto* io : track->inputs) link(io, &inputs);
    for (auto* io : track->outputs) link(io, &outputs);
    link(track, &tracks, index);

    CSongTrack* result = nullptr;
    const auto bind = [&](CSeqProg* to) {
        auto* songTrack = new CSongTrack(to, track);
        link(songTrack, &to->tracks, index);
        if (to == prog) result = songTrack;
    };
    for (auto* linked : programs()) bind(linked);
    if (prog && !result) bind(prog);

    link(made.midiIn, &midiCables);
    link(made.audioIn, &audioCables);
    if (made.audioOut) link(made.audioOut, &made.audioOut->toComp->audioCables);
    return result;
}

namespace {

/// Records the removal of the cables of a list whose ends `touches`.
template <class Cable, class F>
void removeCables(ListOf<Cable>& cables, CUndo* undo, F touches) {
    for (auto* cable : cables)
        if (touches(cable)) undo->asRemove(cable, &cables);
}

template <class F>
void eachComp(CComp* tree, F visit) {
    visit(tree);
    for (auto* child : tree->comps) eachComp(child, visit);
}

} // namespace

namespace {

/// What a port or channel is for the other track, null where it is not of the first.
template <class T>
T* twinOf(const T* end, const ListOf<T>& of, const ListOf<T>& twins) {
    return of.contains(end) ? twins.items(of.indexed(end)) : nullptr;
}

/// Records for each cable of a component that begins or ends at a track one like it for another.
void twinCables(CComp* at, const CTrack* source, const CTrack* twin, CUndo* undo) {
    for (auto* cable : at->midiCables) {
        CMIDIQ* from = twinOf(cable->fromPort, source->outPorts, twin->outPorts);
        CMIDIQ* to = twinOf(cable->toPort, source->inPorts, twin->inPorts);
        if (!from && !to) continue;
        CMIDICable* made =
            createMIDICable(at, from ? from : cable->fromPort, to ? to : cable->toPort);
        if (made) addTwin(undo, made, &at->midiCables, cable);
    }
    for (auto* cable : at->audioCables) {
        COutputChannel* from = twinOf(cable->fromChannel, source->outputs, twin->outputs);
        CInputChannel* to = twinOf(cable->toChannel, source->inputs, twin->inputs);
        if (!from && !to) continue;
        CAudioCable* made =
            createAudioCable(at, from ? from : cable->fromChannel, to ? to : cable->toChannel);
        if (made) addTwin(undo, made, &at->audioCables, cable);
    }
}

} // namespace

CTrack* CSeq::addTrackLike(const CTrack* source, const CComp* without, CUndo* undo, int index) {
    NewTrack made;
    made.track = new CTrack(host, this, source->kind);
    setKindDefaults(made.track);
    makePorts(made.track);
    makeChannels(made.track);
    linkTrack(made, getProg(), undo, index);
    const auto twin = [&](CComp* at) {
        if (at != without) twinCables(at, source, made.track, undo);
    };
    eachComp(host, twin);
    for (auto* bus : host->sends) twin(bus);
    return made.track;
}

void CSeq::removeTrack(CTrack* track, CUndo* undo) {
    if (track->armed) host->endTake();
    const auto strip = [&](CComp* to) {
        removeCables(to->midiCables, undo, [&](CMIDICable* cable) {
            return track->outPorts.contains(cable->fromPort) ||
                   track->inPorts.contains(cable->toPort);
        });
        removeCables(to->audioCables, undo, [&](CAudioCable* cable) {
            return track->outputs.contains(cable->fromChannel) ||
                   track->inputs.contains(cable->toChannel);
        });
    };
    eachComp(host, strip);
    for (auto* bus : host->sends) strip(bus);
    removeKeys(host, undo, [track](COutputChannel* key) { return track->outputs.contains(key); });
    for (auto* other : tracks) {
        if (other != track) strip(other);
        if (other->folder != track) continue;
        undo->asPtr(reinterpret_cast<void**>(other->folder.address()));
        other->folder = nullptr;
    }
    eachSongTrack([&](CSongTrack* songTrack) {
        if (songTrack->track != track) return;
        selection.tracks.remove(songTrack);
        undo->asRemove(songTrack, &songTrack->prog->tracks);
    });
    undo->asRemove(track, &tracks);
    for (auto* io : track->inPorts) undo->asRemove(io, &inPorts);
    for (auto* io : track->outPorts) undo->asRemove(io, &outPorts);
    for (auto* io : track->inputs) undo->asRemove(io, &inputs);
    for (auto* io : track->outputs) undo->asRemove(io, &outputs);
}

CStr CSeq::autoNameTrack(int kind, const CUndo* undo) {
    const CStr stem = trackWord(kind) + "-";
    std::set<int> taken;
    eachWithPending(undo, &tracks, [&](const CTrack* track) {
        const int number = strAsInt(track->id.sub(stem.length(), -1));
        if (track->id == stem + asStr(number)) taken.insert(number);
    });
    int number = 1;
    while (taken.count(number)) number++;
    return stem + asStr(number);
}
