#include "sequencer/CSeq.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/ForgetHooks.h"
#include "instruments/CSampleClip.h"
#include "sequencer/AudioVoices.h"
#include "sequencer/CEditorComp.h"
#include "sequencer/CSubTrack.h"
#include "sequencer/PartClipboard.h"
#include "sequencer/PartEdits.h"
#include "sequencer/PartOrder.h"
#include "sequencer/Points.h"
#include "sequencer/SampleUse.h"
#include "sequencer/SongLinks.h"
#include "sequencer/TempoMap.h"

namespace {

constexpr int songChanged = 32; ///< code of `doUpdate`
const char* const settingsSection = "sequencer";

/// The questions of `getSync`.
enum SyncQuestion : int { syncPos = 1, syncLoop = 2, syncLoopStart = 3, syncLoopEnd = 4 };

/// Whether an object of automation is, or belongs to, a component, channel or send.
bool liesIn(const CObject* part, const CObject* whole) {
    if (part == whole) return true;
    if (part->asType(categoryChannel, channelOutput))
        return static_cast<const COutputChannel*>(part)->comp == whole;
    if (part->category == 0 && part->type == typeSend) {
        auto* send = static_cast<const CSend*>(part);
        return send->channel == whole || send->comp == whole;
    }
    if (part->category != categoryComp) return false;
    const COutputChannel* channel = static_cast<const CComp*>(part)->ownerChannel;
    return channel && (channel == whole || channel->comp == whole);
}

void forget(CQV* host, CObject* object) {
    for (auto* c : each<CComp>(host->comps))
        if (c->type == compSeq) c->del(object);
}

} // namespace

Shared<int> useMarkersMIDINoteTrigger{0};

CSeq::CSeq(CQV* root)
    : CComp(root), snap(std::make_unique<CSnap>()), editorComp(std::make_unique<CEditorComp>(root)),
      edits(root) {
    id = "Sequencer";
    type = compSeq;
    preview = iniReadInt(settingsSection, "preview", 1);
    autoQuantize = iniReadInt(settingsSection, "autoq", 0);
}

CSeq::~CSeq() {
    recThread.finish();
    edits.settle();
    clearCopies();
    deleteAll<CObject>(progs);
    deleteAll<CPart>(masterParts);
    deleteAll<CTrack>(tracks);
    deleteAll<CSampleClip>(drumClips);
}

void CSeq::init() {
    progs.add(createProgram());
}

void CSeq::idle() {
    CComp::idle();
    purgeSelection();
    idleTake();
    for (auto* track : each<CTrack>(tracks)) track->idle();
}

void CSeq::doUpdate(int code) {
    if (code != songChanged) return;
    orderParts(nullptr, nullptr, true);
    for (auto* prog : each<CSeqProg>(progs)) {
        sortByPos(prog->timesigs);
        sortByPos(prog->tempos);
    }
    updateGhostCount();
    tempoChanged();
    update(updateParts);
}

void CSeq::perform(CUndoItem* item, int op) {
    constexpr int opDone = 1, opUndone = 2;
    CObject* object = item->object;
    if (!object) return;
    if (item->replaced) return contentSwapped(static_cast<CPart*>(object));
    if (!item->moves()) return performAct(item, op != opUndone);
    for (const CList* list : {item->addTo, item->removeFrom}) {
        if (!list) continue;
        if (object->category == categoryPart)
            partMoved(static_cast<CPart*>(object), list);
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

void CSeq::contentSwapped(CPart* part) {
    eachSongTrack([part](CSongTrack* songTrack) {
        for (auto* user : each<CPart>(songTrack->parts)) {
            if (user != part && user->content() != part) continue;
            user->dropPlay();
            if (songTrack->voices) songTrack->voices->forgetEvents(user);
            songTrack->requests.ask(requestLanes);
        }
    });
}

void CSeq::partMoved(CPart* part, const CList* list) {
    // The list is searched where it matters only: a song may have very many points of tempo.
    const auto left = [&] { return !list->contains(part); };
    eachSongTrack([&](CSongTrack* songTrack) {
        if (list != &songTrack->parts) return;
        songTrack->requests.ask(left() ? requestSetup | requestFlush : requestSetup);
        part->dropPlay();
        if (songTrack->voices) songTrack->voices->forgetEvents(part);
    });
    for (auto* prog : each<CSeqProg>(progs))
        if (list == &prog->markers && left()) prog->purgeMarker(part);
}

void CSeq::songTrackMoved(CObject* object, const CList* list) {
    for (auto* prog : each<CSeqProg>(progs))
        if (list == &prog->tracks)
            static_cast<CSongTrack*>(object)->requests.ask(requestSetup | requestFlush);
}

void CSeq::lanesMoved(const CList* list) {
    for (auto* track : each<CTrack>(tracks))
        if (list == &track->subTracks) lanesChanged(track);
}

void CSeq::lanesChanged(const CTrack* track) {
    eachSongTrack([track](CSongTrack* songTrack) {
        if (songTrack->track != track) return;
        for (auto* part : each<CPart>(songTrack->parts)) part->dropLanePlay();
        songTrack->requests.ask(requestLanes);
    });
}

void CSeq::del(CObject* object) {
    edits.settle();
    selectedTracks.remove(object);
    if (editorComp->part() == object) editorComp->setPart(nullptr);
    releaseCopies(this, object);
    eachSongTrack([object](CSongTrack* songTrack) {
        if (songTrack->voices) songTrack->voices->drop(object);
        for (auto* item : each<CFreezeItem>(songTrack->freezeItems)) {
            if (!item->channel || !liesIn(item->channel, object)) continue;
            item->comp = nullptr;
            item->channel = nullptr;
        }
    });
    for (auto* prog : each<CSeqProg>(progs)) prog->purgeMarker(object);
    for (auto* track : each<CTrack>(tracks)) {
        track->editLanes.remove(object);
        track->take.purge(object);
        bool known = false;
        for (auto* lane : each<CSubTrack>(track->subTracks)) {
            if (!lane->object || !liesIn(lane->object, object)) continue;
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

void CSeq::setLoop(int on) {
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

void CSeq::setLoopSection(int from, int to) {
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
    for (auto* songTrack : each<CSongTrack>(prog->tracks)) {
        if (songTrack->track->output() != channel) continue;
        for (auto* item : each<CFreezeItem>(songTrack->freezeItems))
            if (item->sample) return 1;
    }
    return 0;
}

int CSeq::renderDuration() {
    CSeqProg* prog = getProg();
    return prog ? prog->duration() : 0;
}

CComp* CSeq::getComp(CObject* io) {
    for (auto* track : each<CTrack>(tracks))
        for (const CList* list :
             {&track->outputs, &track->inputs, &track->outPorts, &track->inPorts})
            if (list->contains(io)) return track;
    return nullptr;
}

void CSeq::getTempoMap(CMIDIQ* queue) {
    CSeqProg* prog = getProg();
    if (!prog) return;
    const int from = asInt(getPos());
    for (auto* point : each<CTempoPart>(prog->tempos))
        if (point->pos >= from)
            queue->push(double(point->pos) - from, 0, eventMidi, point->getTempo(), 0, nullptr,
                        nullptr);
}

CSeqProg* CSeq::getProg() {
    return static_cast<CSeqProg*>(getProgram(-1));
}

CSeqProg* CSeq::createProgram() {
    auto* prog = new CSeqProg(this);
    prog->id = getDefaultProgramName();
    for (auto* track : each<CTrack>(tracks)) prog->tracks.add(new CSongTrack(prog, track));
    return prog;
}

CStr CSeq::getDefaultProgramName() {
    return CStr("Mix ") + asStr(++programCount);
}

/// What holds before the first tempo point; without one the tempo of this block.
float CSeq::tempoBefore(const CSeqProg* prog) const {
    return prog->tempos.empty() ? host->tempoNow : host->songTempo;
}

double CSeq::framesToTicks(double ticks, double frames, int rate) {
    CSeqProg* prog = getProg();
    if (!prog) return host->framesToTicks(frames);
    return tempoFramesToTicks(prog->tempos, tempoBefore(prog), ticks, frames, rate);
}

double CSeq::ticksToFrames(int from, int ticks, int rate) {
    CSeqProg* prog = getProg();
    if (!prog) return host->ticksToFrames(ticks);
    return tempoTicksToFrames(prog->tempos, tempoBefore(prog), from, ticks, rate);
}

CTempoPart* CSeq::getTempoAtPos(int tick) {
    CSeqProg* prog = getProg();
    return prog ? lastTempoAt(prog->tempos, tick) : nullptr;
}

CTempoPart* CSeq::getNextTempoChange(int tick) {
    CSeqProg* prog = getProg();
    return prog ? nextTempoAfter(prog->tempos, tick) : nullptr;
}

int CSeq::ticksToNextTempoChange(double tick) {
    CSeqProg* prog = getProg();
    return prog ? ticksToNextTempo(prog->tempos, tick) : -1;
}

void CSeq::onGetSnap(CObject* sender) {
    static_cast<CSnap*>(sender)->setBar(options.num(), options.den());
}

void CSeq::writeSettings() {
    CIniFile(inifile).writeInteger(settingsSection, "autoq", autoQuantize);
}

void enterSequencer() {
    enterCompType(compSeq, [](CQV* host) -> CComp* { return new CSeq(host); });
    enterForgetHook(forget);
    enterForgetHook(forgetSample);
}
