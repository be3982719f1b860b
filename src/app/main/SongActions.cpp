#include "app/main/SongActions.h"

#include "app/CAction.h"
#include "app/main/Displays.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "sequencer/Points.h"

#include <algorithm>

const SongActions::Command SongActions::commands[] = {
    {"leftlocator", &SongActions::leftLocator},
    {"rightlocator", &SongActions::rightLocator},
    {"nextbeat", &SongActions::nextBeat},
    {"priorbeat", &SongActions::priorBeat},
    {"priorprog", &SongActions::priorProg},
    {"nextprog", &SongActions::nextProg},
    {"playselection", &SongActions::playSelection},
    {"loopselection", &SongActions::loopSelection},
    {"mute", &SongActions::mute},
    {"solo", &SongActions::solo},
    {"addtrack", &SongActions::addInstrument},
    {"addmarker", &SongActions::addMarker},
    {"deletemarker", &SongActions::deleteMarker},
    {"priormarker", &SongActions::priorMarker},
    {"nextmarker", &SongActions::nextMarker},
};

const SongActions::Command* SongActions::find(const CAction* action) {
    for (const Command& c : commands)
        if (action->name == c.name) return &c;
    return nullptr;
}

bool SongActions::knows(const CAction* action) const {
    return prog() && find(action);
}

bool SongActions::run(const CAction* action) {
    const Command* command = prog() ? find(action) : nullptr;
    if (command) (this->*command->run)();
    return command != nullptr;
}

CSeq* SongActions::seq() const {
    return songOf(qv);
}

CSeqProg* SongActions::prog() const {
    return seq() ? seq()->getProg() : nullptr;
}

// Position.

void SongActions::leftLocator() {
    qv->setPos(double(prog()->leftLocator));
}

void SongActions::rightLocator() {
    qv->setPos(double(prog()->rightLocator));
}

int SongActions::beatTicks(int tick) const {
    int num = 4, den = 4;
    seq()->getTimeSig(num, den);
    if (const CTimesigPart* point = prog()->getTimesigAtPos(tick)) den = point->getDen();
    return asMax(1, quarterTicks * 4 / asMax(1, den));
}

void SongActions::nextBeat() {
    const int tick = asInt(seq()->getPos()), beat = beatTicks(tick);
    qv->setPos(double((tick / beat + 1) * beat));
}

void SongActions::priorBeat() {
    const int tick = asInt(seq()->getPos()), beat = beatTicks(asMax(0, tick - 1));
    qv->setPos(double(asMax(0, (tick + beat - 1) / beat - 1) * beat));
}

// Programs.

void SongActions::stepProg(int by) {
    const int index = seq()->curProg + by;
    if (index >= 0 && index < seq()->numProgs()) seq()->setProg(index);
}

void SongActions::priorProg() {
    stepProg(-1);
}

void SongActions::nextProg() {
    stepProg(1);
}

// Selection.

/// Puts the locators around the selected parts; false without any.
bool SongActions::locateSelection() {
    CList parts;
    prog()->getSelectedParts(&parts);
    if (parts.empty()) return false;
    int from = maxTicks, to = 0;
    for (auto* part : each<CPart>(parts)) {
        from = asMin(from, part->pos);
        to = asMax(to, part->pos + seq()->getTicks(part));
    }
    seq()->setLoopSection(from, to);
    return true;
}

void SongActions::playSelection() {
    if (!locateSelection()) return;
    qv->setPos(double(prog()->leftLocator));
    if (!qv->playing) qv->start();
}

void SongActions::loopSelection() {
    if (!locateSelection()) return;
    qv->loop = 1;
    seq()->setLoop(1);
}

/// Of the selected tracks: all on, unless all are.
void SongActions::mute() {
    const auto& tracks = seq()->selectedTracks;
    bool all = true;
    for (auto* t : each<CSongTrack>(tracks)) all = all && t->muted();
    for (auto* t : each<CSongTrack>(tracks)) t->setMuted(!all);
}

void SongActions::solo() {
    const auto& tracks = seq()->selectedTracks;
    bool all = true;
    for (auto* t : each<CSongTrack>(tracks)) all = all && t->soloed();
    for (auto* t : each<CSongTrack>(tracks)) t->setSoloed(!all);
}

void SongActions::addTrack(int kind) {
    if (!prog()) return;
    CUndo* step = qv->undoStart(addTrackTitle(kind), seq(), undoSongChanged | undoGraph);
    seq()->addTrack(kind, prog(), step);
    qv->undoEnd(step, false);
}

void SongActions::addInstrument() {
    addTrack(trackMIDI);
}

// Markers.

void SongActions::addMarker() {
    auto* marker = new CMarkerPart;
    marker->id = CStr("Marker ") + asStr(prog()->markers.getCount() + 1);
    marker->pos = asInt(seq()->getPos());
    CUndo* step = qv->undoStart("Add marker", seq(), updateParts);
    prog()->addMarker(marker, step);
    qv->undoEnd(step, false);
}

void SongActions::deleteMarker() {
    CMarkerPart* marker = prog()->getMarkerAtPos(asInt(seq()->getPos()));
    if (!marker) return;
    CUndo* step = qv->undoStart("Delete marker", seq(), updateParts);
    step->asRemove(marker, &prog()->markers);
    qv->undoEnd(step, false);
}

/// To the next marker in a direction; with the arranger on it chooses the next section instead.
void SongActions::stepMarker(int by) {
    const int now = asInt(seq()->getPos());
    int target = -1;
    for (auto* m : each<CMarkerPart>(prog()->markers)) {
        const int tick = m->pos;
        const bool ahead = by > 0 ? tick > now : tick < now;
        const bool nearer = target < 0 || (by > 0 ? tick < target : tick > target);
        if (ahead && nearer) target = tick;
    }
    if (target >= 0) qv->setPos(double(target));
}

void SongActions::priorMarker() {
    if (seq()->options.useMarkers())
        prog()->priorMarker();
    else
        stepMarker(-1);
}

void SongActions::nextMarker() {
    if (seq()->options.useMarkers())
        prog()->nextMarker();
    else
        stepMarker(1);
}
