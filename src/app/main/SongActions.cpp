#include "app/main/SongActions.h"

#include "app/CAction.h"
#include "app/main/Displays.h"
#include "app/main/GridActions.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/ValueDoor.h"
#include "sequencer/BarEdits.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartActions.h"
#include "sequencer/PartClipboard.h"
#include "sequencer/PartMerge.h"
#include "sequencer/Points.h"
#include "sequencer/Quantize.h"
#include "sequencer/SongValues.h"
#include "sequencer/TrackInstrument.h"

#include <algorithm>

namespace {

bool anyPart(CSeq* seq) {
    return seq->getProg()->hasParts();
}

bool anySelected(CSeq* seq) {
    return seq->getProg()->getFirstSelectedPart() != nullptr;
}

/// Whether `fits` holds for more selected parts of a track than `count`, or of all tracks together.
template <class F>
bool more(CSeq* seq, int count, bool together, F fits) {
    int found = 0;
    for (const auto* songTrack : each<CSongTrack>(seq->getProg()->tracks)) {
        if (!together) found = 0;
        for (const auto* part : each<CPart>(songTrack->parts))
            if (part->selected() && fits(part) && ++found > count) return true;
    }
    return false;
}

bool anyGhost(CSeq* seq) {
    return more(seq, 0, true, [](const CPart* part) { return part->ghostOf.load() != nullptr; });
}

bool severalOnTrack(CSeq* seq) {
    return more(seq, 1, false, [](const CPart*) { return true; });
}

bool twoAudio(CSeq* seq) {
    return more(seq, 1, true, [](const CPart* part) { return part->type == partAudio; });
}

bool anyCopy(CSeq* seq) {
    return !seq->copies.empty();
}

bool anySpan(CSeq* seq) {
    return seq->getProg()->leftLocator < seq->getProg()->rightLocator;
}

void split(CSeq* seq) {
    seq->splitAtCursorClicked();
}

void crossfade(CSeq* seq) {
    seq->crossfadeClicked();
}

void selectEverything(CSeq* seq) {
    seq->selectAll();
    seq->update(updateParts);
}

} // namespace

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
    {"timesig-add", &SongActions::addTimesig},
    {"opencomp", &SongActions::openComp},
    {"snap", &SongActions::snap},
    {"snapPrior", &SongActions::snapPrior},
    {"snapNext", &SongActions::snapNext},
};

const SongActions::PartCommand SongActions::partCommands[] = {
    {"quantize", quantizeParts, anySelected}, {"splitatcursor", split, anyPart},
    {"glue", glueParts, severalOnTrack},      {"insertbars", insertBars, anySpan},
    {"removebars", removeBars, anySpan},      {"unghost", unghostParts, anyGhost},
    {"mutepart", toggleMutes, anySelected},   {"crossfade", crossfade, twoAudio},
    {"delete", deleteParts, anySelected},     {"duplicate", duplicateParts, anySelected},
    {"cut", cutParts, anySelected},           {"copy", copyParts, anySelected},
    {"paste", pasteParts, anyCopy},           {"selectAll", selectEverything, anyPart},
};

const SongActions::Command* SongActions::find(const CAction* action) {
    for (const Command& c : commands)
        if (action->name == c.name) return &c;
    return nullptr;
}

const SongActions::PartCommand* SongActions::findPart(const CAction* action) {
    for (const PartCommand& c : partCommands)
        if (action->name == c.name) return &c;
    return nullptr;
}

bool SongActions::knows(const CAction* action) const {
    return prog() && (find(action) || findPart(action));
}

bool SongActions::ready(const CAction* action) const {
    const PartCommand* command = prog() ? findPart(action) : nullptr;
    return !command || (!recording() && command->ready(seq()));
}

bool SongActions::isOn(const CAction* action) const {
    const Command* command = prog() ? find(action) : nullptr;
    return command && command->run == &SongActions::snap && seq()->snap->active;
}

bool SongActions::run(const CAction* action) {
    if (!prog()) return false;
    if (const PartCommand* edit = findPart(action)) {
        if (ready(action)) edit->run(seq());
        return true;
    }
    const Command* command = find(action);
    if (command) (this->*command->run)();
    return command != nullptr;
}

bool SongActions::recording() const {
    return qv->recording || qv->recUndo;
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
    if (index < 0 || index >= seq()->numProgs()) return;
    qv->values->begin("Program");
    qv->values->set(programOf(seq()), index);
    const double on = qv->loop ? 1.0 : 0.0; // the switch that is shown, which play goes by
    qv->values->set(loopOf(prog()), {on, on});
    qv->values->end();
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
    qv->values->set(locatorsOf(prog()), {double(from), double(to)});
    return true;
}

void SongActions::playSelection() {
    if (!locateSelection()) return;
    qv->setPos(double(prog()->leftLocator));
    if (!qv->playing) qv->start();
}

void SongActions::loopSelection() {
    qv->values->begin("Loop selection");
    if (locateSelection()) qv->values->set(loopOf(prog()), {1.0, 1.0});
    qv->values->end();
}

/// A switch of the selected tracks: all on, unless all are.
void SongActions::toggle(StoredValue (*valueOf)(CSongTrack*)) {
    const auto& tracks = seq()->selectedTracks;
    bool all = true;
    for (auto* t : each<CSongTrack>(tracks)) all = all && valueOf(t).get()[0] != 0.0;
    qv->values->begin();
    for (auto* t : each<CSongTrack>(tracks)) qv->values->set(valueOf(t), all ? 0.0 : 1.0);
    qv->values->end();
}

void SongActions::mute() {
    toggle(mutedOf);
}

void SongActions::solo() {
    toggle(soloedOf);
}

void SongActions::addTrack(int kind) {
    if (!prog()) return;
    if (!seq()->hasTrackRoom(kind)) {
        showMsg(nullptr, "Error", "Too many tracks");
        return;
    }
    CUndo* step = qv->undoStart(addTrackTitle(kind), seq(), undoSongChanged | undoGraph);
    CSongTrack* made = seq()->addTrack(kind, prog(), step);
    if (made && kind == trackMIDI) addTrackInstrument(seq(), made->track, step);
    if (made && kind == trackDrum) addDrums(seq(), made->track, step);
    qv->undoEnd(step, true);
    if (!made) return;
    seq()->unselectTracks();
    seq()->selectTrack(made, true);
}

void SongActions::addInstrument() {
    addTrack(trackMIDI);
}

/// Shows what the first selected track plays through.
void SongActions::openComp() {
    const auto* songTrack = static_cast<CSongTrack*>(seq()->selectedTracks.getFirst());
    if (!songTrack) return;
    CTrack* track = songTrack->track;
    for (auto* comp : each<CComp>(qv->comps)) {
        const auto feeds = [&] {
            for (const auto* cable : each<CMIDICable>(comp->midiCables))
                if (cable->fromPort == track->outPort()) return true;
            for (const auto* cable : each<CAudioCable>(comp->audioCables))
                if (cable->fromChannel == track->output()) return true;
            return false;
        };
        if (feeds()) return comp->edit(true);
    }
}

// The grid.

void SongActions::snap() {
    toggleSnap(seq());
}

void SongActions::snapPrior() {
    stepSnap(seq(), -1);
}

void SongActions::snapNext() {
    stepSnap(seq(), 1);
}

// Markers and signatures.

/// At the position, the signature that is in force there.
void SongActions::addTimesig() {
    auto* point = new CTimesigPart;
    point->pos = asInt(seq()->getPos());
    int num = 4, den = 4;
    seq()->getTimeSig(num, den);
    for (const auto* other : each<CTimesigPart>(prog()->timesigs)) {
        if (other->pos > point->pos) break;
        num = other->getNum();
        den = other->getDen();
    }
    point->setTimesig(num, den);
    CUndo* step = qv->undoStart("Add time signature", seq(), updateParts);
    prog()->addTimesig(point, step);
    qv->undoEnd(step, false);
}

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
