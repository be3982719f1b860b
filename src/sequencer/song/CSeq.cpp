#include "sequencer/song/CSeq.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/ForgetHooks.h"
#include "engine/ObjectKinds.h"
#include "engine/UndoPlan.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampleClip.h"
#include "sequencer/edit/KitStrips.h"
#include "sequencer/edit/PartClipboard.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/play/SongSeconds.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/OrderPlan.h"
#include "sequencer/song/PartOrder.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SampleUse.h"
#include "sequencer/song/TempoMap.h"
#include "sequencer/songfile/SongLinks.h"

#include <cassert>

namespace {

const char* const settingsSection = "sequencer";

/// The questions of `getSync`.
enum SyncQuestion : int { syncPos = 1, syncLoop = 2, syncLoopStart = 3, syncLoopEnd = 4 };

/// Whether an object of automation is, or belongs to, a component, channel or send that goes.
bool liesIn(const CObject* part, const ForgetSet& gone) {
    if (gone.has(part)) return true;
    if (const COutputChannel* strip = asStrip(part)) return gone.has(strip->comp);
    if (const CSend* send = asSend(part)) return gone.has(send->channel) || gone.has(send->comp);
    const CComp* comp = asComp(part);
    if (!comp) return false;
    const COutputChannel* channel = comp->ownerChannel;
    return channel && (gone.has(channel) || gone.has(channel->comp));
}

void forgetInSongs(CQV* host, const ForgetSet& gone) {
    for (auto* c : host->comps)
        if (auto* seq = compAs<CSeq>(c)) seq->forget(gone);
}

void dropVoicesOf(AudioVoices& voices, const ForgetSet& gone) {
    for (const AudioVoice& v : voices.voices) {
        if (!v.active) continue; // it may remember what is freed already
        const CObject* uses[] = {v.sample, v.part, v.sound, v.out, v.out->comp};
        for (const CObject* object : uses)
            if (gone.has(object)) voices.drop(object);
    }
}

void purgeMarkers(CSeqProg* prog, const ForgetSet& gone) {
    for (const CObject* marker : {prog->activeMarker.load(), prog->playingMarker.load()})
        if (gone.has(marker)) prog->purgeMarker(marker);
    for (int i = prog->session.count() - 1; i >= 0; i--)
        if (i < prog->session.count() && gone.has(prog->session.at(i)))
            prog->purgeMarker(prog->session.at(i));
}

} // namespace

Shared<int> useMarkersMIDINoteTrigger{0};

CSeq::CSeq(CQV* root)
    : CComp(root), tempo(this), selection(this), recorder(this), snap(std::make_unique<CSnap>()),
      editorComp(std::make_unique<CEditorComp>(root)), stretchersAhead(this) {
    id = "Sequencer";
    type = compSeq;
    preview = iniReadInt(settingsSection, "preview", 1);
    autoQuantize = iniReadInt(settingsSection, "autoq", 0);
    recorder.readSettings();
}

CSeq::~CSeq() {
    recorder.recThread.finish();
    recorder.edits.settle();
    clearCopies();
    deleteAll<CObject>(progs);
    deleteAll(masterParts);
    deleteAll(tracks);
    deleteAll(drumClips);
}

void CSeq::init() {
    progs.add(createProgram());
}

void CSeq::idle() {
    CComp::idle();
    editorComp->idle();
    selection.purge();
    recorder.idle();
    stretchersAhead.idle();
    for (auto* track : tracks) track->idle();
}

void CSeq::doUpdate(int code) {
    if (code != updateSong) return;
    const auto order = [this](CList& parts, PartBefore isBefore) {
        if (inOrder(parts, isBefore, this)) return;
        const GraphHold hold(host);
        sortParts(parts, isBefore, this);
    };
    for (auto* prog : programs()) {
        for (auto* songTrack : prog->tracks) order(songTrack->parts, partBefore);
        order(prog->timesigs, earlier);
        order(prog->tempos, earlier);
    }
    updateGhostCount();
    tempo.changed();
    songNotices.raise(SeqNotice::parts);
}

bool CSeq::takesWhole(const CUndoItem* item) {
    const CObject* object = item->object;
    return object && object->category == categoryPart && object->type != partMarker &&
           (item->replaced || item->moves());
}

void CSeq::planStep(UndoPlan& plan, CUndo* step) {
    if (step->effects.song) planOrder(this, plan, step);
    stepMarks.collect(this, plan, step);
    tempo.planRooms(plan);
}

void CSeq::performPlan() {
    assert(heldByThread());
    stepMarks.serve();
    tempo.takeRooms();
    clipChanges.fetchAdd(1);
}

void CSeq::perform(CUndoItem* item, int op) {
    assert(heldByThread());
    constexpr int opDone = 1;
    CObject* object = item->object;
    if (!object || !item->moves()) return;
    for (const CList* list : {item->addTo, item->removeFrom}) {
        if (!list) continue;
        if (object->category == categoryPart)
            markerMoved(object, list);
        else
            songTrackMoved(object, list);
        lanesMoved(list);
        freezeMoved(item, list, op != opDone);
    }
}

/// A freeze file comes or goes. One that was taken out dies with the history, one that comes back
/// may be what the saved project plays.
void CSeq::freezeMoved(CUndoItem* step, const CList* list, bool back) {
    eachSongTrack([&](CSongTrack* songTrack) {
        if (list != &songTrack->freezeItems) return;
        CSample* sample = static_cast<CFreezeItem*>(step->object)->sample;
        if (step->held()) sample->keep = false;
        if (!step->held() && back) sample->keep = true;
        if (songTrack->voices) songTrack->voices->drop(sample);
        songTrack->requests.ask(requestSetup | requestFlush);
    });
}

void CSeq::markerMoved(CObject* marker, const CList* list) {
    for (auto* prog : programs())
        if (list == &prog->markers && !list->contains(marker)) prog->purgeMarker(marker);
}

void CSeq::songTrackMoved(CObject* object, const CList* list) {
    for (auto* prog : programs())
        if (list == &prog->tracks)
            static_cast<CSongTrack*>(object)->requests.ask(requestSetup | requestFlush);
}

void CSeq::lanesMoved(const CList* list) {
    for (auto* track : tracks)
        if (list == &track->subTracks) lanesChanged(track);
}

void CSeq::lanesChanged(const CTrack* track) {
    assert(heldByThread());
    eachSongTrack([track](CSongTrack* songTrack) {
        if (songTrack->track != track) return;
        for (auto* part : songTrack->parts) part->dropLanePlay();
        songTrack->requests.ask(requestLanes);
    });
}

void CSeq::del(CObject* object) {
    forget(ForgetSet(object));
}

void CSeq::forget(const ForgetSet& gone) {
    recorder.edits.settle();
    selection.forget(gone);
    if (gone.has(editorComp->part())) editorComp->setPart(nullptr);
    releaseCopies(this, gone);
    const GraphHold hold(host);
    eachSongTrack([&gone](CSongTrack* songTrack) {
        if (songTrack->voices) dropVoicesOf(*songTrack->voices, gone);
        for (auto* item : songTrack->freezeItems) {
            if (!item->channel || !liesIn(item->channel, gone)) continue;
            item->comp = nullptr;
            item->channel = nullptr;
        }
    });
    for (auto* prog : programs()) purgeMarkers(prog, gone);
    for (auto* track : tracks) {
        removeGone(track->editLanes, gone);
        track->take.purge(gone);
        bool known = false;
        for (auto* lane : track->subTracks) {
            if (!lane->object || !liesIn(lane->object, gone)) continue;
            lane->object = nullptr;
            known = true;
        }
        if (known) lanesChanged(track);
    }
}

double CSeq::getSync(int question) {
    CSeqProg* prog = getProg();
    if (!prog) return sync;
    switch (question) {
    case syncPos:
        return prog->pos;
    case syncLoop:
        return prog->loop;
    case syncLoopStart:
        return prog->leftLocator;
    case syncLoopEnd:
        return prog->rightLocator;
    default:
        return sync;
    }
}

void CSeq::setLoop(ToStore<int> on) {
    if (CSeqProg* prog = getProg()) prog->loop = on != 0;
}

int CSeq::getLoop() {
    CSeqProg* prog = getProg();
    return prog ? int(prog->loop) : 0;
}

void CSeq::getLoopSection(int& from, int& to) {
    CSeqProg* prog = getProg();
    if (!prog) return CComp::getLoopSection(from, to);
    from = prog->leftLocator;
    to = prog->rightLocator;
}

void CSeq::setLoopSection(ToStore<int> from, ToStore<int> to) {
    CSeqProg* prog = getProg();
    if (!prog) return;
    prog->leftLocator = limitTicks(from);
    prog->rightLocator = limitTicks(to);
}

double CSeq::getPos() {
    CSeqProg* prog = getProg();
    return prog ? double(prog->pos) : CComp::getPos();
}

void CSeq::getTimeSig(int& num, int& den) {
    num = options.num();
    den = options.den();
}

int CSeq::freezed(COutputChannel* channel) {
    CSeqProg* prog = getProg();
    if (!prog || host->renderMode) return 0; // a render plays what was frozen itself
    for (auto* songTrack : prog->tracks) {
        if (songTrack->track->output() != channel) continue;
        for (auto* item : songTrack->freezeItems)
            if (item->sample) return 1;
    }
    return 0;
}

int CSeq::renderDuration() {
    CSeqProg* prog = getProg();
    return prog ? prog->duration() : 0;
}

CComp* CSeq::getComp(CObject* io) {
    for (auto* track : tracks)
        for (const CList* list :
             listsOf(track->outputs, track->inputs, track->outPorts, track->inPorts))
            if (list->contains(io)) return track;
    return nullptr;
}

void CSeq::getTempoMap(CMIDIQ* queue) {
    CSeqProg* prog = getProg();
    if (!prog) return;
    const int from = asInt(getPos());
    for (auto* point : prog->tempos)
        if (point->pos >= from)
            queue->push(double(point->pos) - from, 0, eventMidi, point->getTempo(), 0, nullptr,
                        nullptr);
}

CSeqProg* CSeq::getProg() {
    return programs().items(curProg);
}

CSeqProg* CSeq::createProgram() {
    auto* prog = new CSeqProg(this);
    prog->id = getDefaultProgramName();
    for (auto* track : tracks) prog->tracks.add(new CSongTrack(prog, track));
    return prog;
}

CStr CSeq::getDefaultProgramName() {
    return CStr("Mix ") + asStr(++programCount);
}

int CSeq::gridTicks() const {
    return snap ? snap->getTicks() : CSnap().getTicks();
}

void CSeq::onGetSnap(CSnap* sender) {
    sender->setBar(options.num(), options.den());
}

void CSeq::writeSettings() {
    CIniFile file(inifile);
    file.writeInteger(settingsSection, "autoq", autoQuantize);
    recorder.writeSettings(file);
}

void enterSequencer() {
    enterCompType(compSeq, [](CQV* host) -> CComp* { return new CSeq(host); });
    enterForgetHook(forgetInSongs);
    enterSongSeconds();
    enterForgetHook(forgetSamples);
    enterKitStrips();
}
