#include "arrange/SongCommands.h"

#include "arrange/SongRange.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/ValueDoor.h"
#include "instruments/CArp.h"
#include "sequencer/edit/BarEdits.h"
#include "sequencer/edit/PartActions.h"
#include "sequencer/edit/PartClipboard.h"
#include "sequencer/edit/PartMerge.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/edit/Remix.h"
#include "sequencer/play/PlayedNotes.h"
#include "sequencer/render/CRender.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TrackInstrument.h"
#include "sequencer/take/Takes.h"
#include "ui/Commands.h"
#include "ui/GridCommands.h"
#include "ui/Options.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

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
    for (const auto* songTrack : seq->getProg()->tracks) {
        if (!together) found = 0;
        for (auto* part : songTrack->parts)
            if (part->selected() && fits(part) && ++found > count) return true;
    }
    return false;
}

bool anyGhost(CSeq* seq) {
    return more(seq, 0, true, [](const CPart* part) { return part->ghostOf.load() != nullptr; });
}

bool anyTakes(CSeq* seq) {
    return more(seq, 0, true, [](CPart* part) { return takesOf(part) != nullptr; });
}

bool severalOnTrack(CSeq* seq) {
    return more(seq, 1, false, [](const CPart*) { return true; });
}

bool twoAudio(CSeq* seq) {
    return more(seq, 1, true, [](const CPart* part) { return part->type == partAudio; });
}

bool anySelectedTrack(CSeq* seq) {
    return !seq->selection.tracks.empty();
}

bool hasPriorProg(CSeq* seq) {
    return seq->curProg > 0;
}

bool hasNextProg(CSeq* seq) {
    return seq->curProg + 1 < seq->numProgs();
}

bool anyMarker(CSeq* seq) {
    return !seq->getProg()->markers.empty();
}

bool onMarker(CSeq* seq) {
    return seq->getProg()->getMarkerAtPos(asInt(seq->getPos())) != nullptr;
}

bool anyCopy(CSeq* seq) {
    return !seq->clipboard.parts.empty();
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
    seq->songNotices.raise(SeqNotice::parts);
}

} // namespace

SongCommands::SongCommands(Workspace& space, SongRange& songRange)
    : workspace(space), range(songRange), qv(space.host()) {
    bindAll();
    bindParts();
    bindClipboard();
}

void SongCommands::bindAll() {
    static constexpr struct {
        const char* name;
        void (SongCommands::*run)();
        bool (*ready)(CSeq* seq) = nullptr; ///< null: with any song
    } rows[] = {
        {"leftlocator", &SongCommands::leftLocator},
        {"rightlocator", &SongCommands::rightLocator},
        {"nextbeat", &SongCommands::nextBeat},
        {"priorbeat", &SongCommands::priorBeat},
        {"priorprog", &SongCommands::priorProg, hasPriorProg},
        {"nextprog", &SongCommands::nextProg, hasNextProg},
        {"mute", &SongCommands::mute, anySelectedTrack},
        {"solo", &SongCommands::solo, anySelectedTrack},
        {"addtrack", &SongCommands::addInstrument},
        {"addaudio", &SongCommands::addAudio},
        {"adddrum", &SongCommands::addDrums},
        {"addfolder", &SongCommands::addFolder},
        {"addmarker", &SongCommands::addMarker},
        {"deletemarker", &SongCommands::deleteMarker, onMarker},
        {"priormarker", &SongCommands::priorMarker, anyMarker},
        {"nextmarker", &SongCommands::nextMarker, anyMarker},
        {"timesig-add", &SongCommands::addTimesig},
        {"snapPrior", &SongCommands::snapPrior},
        {"snapNext", &SongCommands::snapNext},
    };
    for (const auto& row : rows)
        workspace.commands().bind(
            row.name, [this, run = row.run] { (this->*run)(); },
            [this, fits = row.ready] { return prog() && (!fits || fits(seq())); });
    workspace.commands().bind(
        "punch", [this] { flip(punchOf(seq())); }, [this] { return prog() && !recording(); },
        [this] { return prog() && punchOf(seq()).get()[0] != 0.0; });
    // How takes are recorded, which the settings file keeps.
    const auto bindSwitch = [this](const char* name, auto of) {
        workspace.commands().bind(
            name,
            [this, of] {
                of(seq()) = !of(seq());
                seq()->writeSettings();
            },
            [this] { return prog() && !recording(); }, [this, of] { return prog() && of(seq()); });
    };
    bindSwitch(
        "takesinloops", [](CSeq * s) -> auto& { return s->recorder.loopTakes; });
    bindSwitch(
        "notetakes", [](CSeq * s) -> auto& { return s->recorder.loopNoteTakes; });
    bindSwitch(
        "quantizetakes", [](CSeq * s) -> auto& { return s->autoQuantize; });
    workspace.commands().bind(
        "remix",
        [this] {
            const CStr failure = ::remix(seq(), prog());
            if (!failure.empty()) showMsg(workspace.mainWindow(), "Remix", failure);
        },
        [this] { return prog() && !recording() && prog()->session.count() > 0; });
    workspace.commands().bind(
        "snap", [this] { snap(); }, [this] { return prog() != nullptr; },
        [this] { return prog() && seq()->snap->active; });
    const auto bindOption = [this](const char* name, Option& option) {
        workspace.commands().bind(
            name, [&option] { option.toggle(); }, [this] { return prog() != nullptr; },
            [&option] { return option.on(); });
    };
    bindOption("snaprelative", workspace.options().relativeSnap);
    bindOption("snapadaptive", workspace.options().adaptiveGrid);
    workspace.commands().bind(
        "opencomp", [this] { openComp(); },
        [this] { return prog() && workspace.hasEditor(shownComp()); });
    workspace.commands().bind(
        "trackarp", [this] { workspace.openEditor(shownTrack()->arp.get()); },
        [this] { return prog() && shownTrack() && shownTrack()->kind == trackMIDI; });
}

void SongCommands::bindParts() {
    static constexpr struct {
        const char* name;
        void (*run)(CSeq* seq);
        bool (*ready)(CSeq* seq);
        CStr (*onRange)(CSeq* seq, const TimeRange& range) = nullptr; ///< while one is chosen
    } rows[] = {
        {"quantize", quantizeParts, anySelected},
        {"splitatcursor", split, anyPart, splitRange},
        {"glue", glueParts, severalOnTrack},
        {"insertbars", insertBars, anySpan},
        {"removebars", removeBars, anySpan},
        {"unghost", unghostParts, anyGhost},
        {"mutepart", toggleMutes, anySelected, muteRange},
        {"crossfade", crossfade, twoAudio},
        {"duplicate", duplicateParts, anySelected, duplicateRange},
        {"selectAll", selectEverything, anyPart},
        {"unusedtakes", deleteUnusedTakes, anyTakes},
        {"keepplayed", keepPlayed, canKeepPlayed},
    };
    for (const auto& row : rows)
        workspace.commands().bind(
            row.name,
            [this, &row] {
                if (row.onRange && range.get())
                    editRange(row.onRange);
                else
                    row.run(seq());
            },
            [this, &row] {
                return shown() && !recording() &&
                       ((row.onRange && range.get()) || row.ready(seq()));
            });
    const auto anyChosen = [this] { return prog() && (range.get() || anySelected(seq())); };
    workspace.commands().bind(
        "playselection", [this] { playSelection(); }, anyChosen);
    workspace.commands().bind(
        "loopselection", [this] { loopSelection(); }, anyChosen);
    workspace.commands().bind(
        "exportrange", [this] { exportRange(); },
        [anyChosen, this] { return anyChosen() && !recording(); });
    workspace.commands().bind(
        "rangemarkers", [this] { range.setWithMarkers(!range.withMarkers()); },
        [this] { return prog() != nullptr; }, [this] { return range.withMarkers(); });
    workspace.commands().bind(
        "rangetool", [this] { range.setTool(!range.tool()); }, [this] { return prog() != nullptr; },
        [this] { return range.tool(); });
}

/// Selected points go before selected parts, and what was copied last is pasted.
void SongCommands::bindClipboard() {
    const auto idle = [this] { return shown() && !recording(); };
    const auto any = [this, idle] {
        return idle() && (anySelected(seq()) || anyChosenPoint(seq()));
    };
    workspace.commands().bind(
        "copy", [this] { copy(false); }, any);
    workspace.commands().bind(
        "cut", [this] { copy(true); }, any);
    workspace.commands().bind(
        "paste",
        [this] {
            if (points.empty())
                pasteParts(seq());
            else
                points.paste(seq(), asInt(seq()->getPos()));
        },
        [this, idle] { return idle() && (!points.empty() || anyCopy(seq())); });
}

void SongCommands::copy(bool cuts) {
    const std::vector<PartSlot> places = chosenPoints(seq());
    if (places.empty()) {
        points.clear();
        return cuts ? cutParts(seq()) : copyParts(seq());
    }
    points.copy(seq());
    if (cuts) deletePoints(seq(), places);
}

void SongCommands::editRange(CStr (*edit)(CSeq*, const TimeRange&)) {
    const TimeRange chosen = *range.get();
    const CStr failure = edit(seq(), chosen);
    if (!failure.empty()) return void(showMsg(workspace.mainWindow(), "Error", failure));
    if (edit != duplicateRange) return;
    TimeRange next = chosen;
    next.from = chosen.to;
    next.to = limitTicks(int64_t(chosen.to) + chosen.to - chosen.from);
    range.set(next);
}

bool SongCommands::shown() const {
    return prog() && workspace.isOpen(seq());
}

bool SongCommands::recording() const {
    return qv->recording || qv->recUndo;
}

CSeq* SongCommands::seq() const {
    return songOf(qv);
}

CSeqProg* SongCommands::prog() const {
    return seq() ? seq()->getProg() : nullptr;
}

// Position.

void SongCommands::leftLocator() {
    qv->setPos(double(prog()->leftLocator));
}

void SongCommands::rightLocator() {
    qv->setPos(double(prog()->rightLocator));
}

int SongCommands::beatTicks(int tick) const {
    int num = 4, den = 4;
    seq()->getTimeSig(num, den);
    if (const CTimesigPart* point = prog()->timesigInForce(tick)) den = point->getDen();
    return asMax(1, quarterTicks * 4 / asMax(1, den));
}

void SongCommands::nextBeat() {
    const int tick = asInt(seq()->getPos()), beat = beatTicks(tick);
    qv->setPos(double((tick / beat + 1) * beat));
}

void SongCommands::priorBeat() {
    const int tick = asInt(seq()->getPos()), beat = beatTicks(asMax(0, tick - 1));
    qv->setPos(double(asMax(0, (tick + beat - 1) / beat - 1) * beat));
}

// Programs.

void SongCommands::stepProg(int by) {
    qv->values->begin("Program");
    qv->values->set(programOf(seq()), seq()->curProg + by);
    const double on = qv->loop ? 1.0 : 0.0; // the switch that is shown, which play goes by
    qv->values->set(loopOf(prog()), {on, on});
    qv->values->end();
}

void SongCommands::priorProg() {
    stepProg(-1);
}

void SongCommands::nextProg() {
    stepProg(1);
}

// Selection.

/// Puts the locators around the selected parts; false without any.
bool SongCommands::locateSelection() {
    if (const TimeRange* chosen = range.get()) {
        qv->values->set(locatorsOf(prog()), {double(chosen->from), double(chosen->to)});
        return true;
    }
    ListOf<CPart> parts;
    prog()->getSelectedParts(&parts);
    if (parts.empty()) return false;
    int from = maxTicks, to = 0;
    for (auto* part : parts) {
        from = asMin(from, part->pos);
        to = asMax(to, part->pos + seq()->getTicks(part));
    }
    qv->values->set(locatorsOf(prog()), {double(from), double(to)});
    return true;
}

void SongCommands::playSelection() {
    if (!locateSelection()) return;
    qv->setPos(double(prog()->leftLocator));
    if (!qv->playing) qv->start();
}

void SongCommands::loopSelection() {
    qv->values->begin("Loop selection");
    if (locateSelection()) qv->values->set(loopOf(prog()), {1.0, 1.0});
    qv->values->end();
}

/// The dialog asks for the rest, and begins with what lies between the locators.
void SongCommands::exportRange() {
    if (!locateSelection()) return;
    CRender choices(qv, seq());
    choices.readSettings();
    choices.rangeMode = rangeLocators;
    choices.writeSettings();
    workspace.commands().run(workspace.commands().getAction("render"));
}

void SongCommands::flip(const StoredValue& value) {
    qv->values->set(value, value.get()[0] != 0.0 ? 0.0 : 1.0);
}

/// A switch of the selected tracks: all on, unless all are.
void SongCommands::toggle(StoredValue (*valueOf)(CSongTrack*)) {
    const auto& tracks = seq()->selection.tracks;
    bool all = true;
    for (auto* t : tracks) all = all && valueOf(t).get()[0] != 0.0;
    qv->values->begin();
    for (auto* t : tracks) qv->values->set(valueOf(t), all ? 0.0 : 1.0);
    qv->values->end();
}

void SongCommands::mute() {
    toggle(mutedOf);
}

void SongCommands::solo() {
    toggle(soloedOf);
}

void SongCommands::addTrack(int kind) {
    if (!seq()->hasTrackRoom(kind)) {
        showMsg(nullptr, "Error", "Too many tracks");
        return;
    }
    CUndo* step = qv->undoStart(addTrackTitle(kind), seq(), {.graph = true, .song = true});
    CSongTrack* made = seq()->addTrack(kind, prog(), step);
    if (made && kind == trackMIDI) addTrackInstrument(seq(), made->track, step);
    if (made && kind == trackDrum) ::addDrums(seq(), made->track, step);
    qv->undoEnd(step, true);
    if (!made) return;
    seq()->unselectTracks();
    seq()->selectTrack(made, true);
}

void SongCommands::addInstrument() {
    addTrack(trackMIDI);
}

void SongCommands::addAudio() {
    addTrack(trackAudio);
}

void SongCommands::addDrums() {
    addTrack(trackDrum);
}

void SongCommands::addFolder() {
    addTrack(trackFolder);
}

CTrack* SongCommands::shownTrack() const {
    const auto* songTrack = seq()->selection.tracks.getFirst();
    return songTrack ? songTrack->track : nullptr;
}

CComp* SongCommands::shownComp() const {
    CTrack* track = shownTrack();
    if (!track || track->kind == trackDrum) return track;
    for (auto* comp : qv->comps)
        if (fedBy(comp, track->outPort()) || fedBy(comp, track->output())) return comp;
    return nullptr;
}

void SongCommands::openComp() {
    shownComp()->edit(true);
}

// The grid.

void SongCommands::snap() {
    toggleSnap(seq());
}

void SongCommands::snapPrior() {
    stepSnap(seq(), -1);
}

void SongCommands::snapNext() {
    stepSnap(seq(), 1);
}

// Markers and signatures.

/// At the position, the signature that is in force there.
void SongCommands::addTimesig() {
    ::addTimesig(seq(), asInt(seq()->getPos()));
}

void SongCommands::addMarker() {
    ::addMarker(seq(), asInt(seq()->getPos()));
}

void SongCommands::deleteMarker() {
    deletePoint(seq(), prog()->getMarkerAtPos(asInt(seq()->getPos())));
}

/// To the next marker in a direction; with the arranger on it chooses the next section instead.
void SongCommands::stepMarker(int by) {
    const int now = asInt(seq()->getPos());
    int target = -1;
    for (auto* m : prog()->markers) {
        const int tick = m->pos;
        const bool ahead = by > 0 ? tick > now : tick < now;
        const bool nearer = target < 0 || (by > 0 ? tick < target : tick > target);
        if (ahead && nearer) target = tick;
    }
    if (target >= 0) qv->setPos(double(target));
}

void SongCommands::priorMarker() {
    if (seq()->options.useMarkers())
        prog()->priorMarker();
    else
        stepMarker(-1);
}

void SongCommands::nextMarker() {
    if (seq()->options.useMarkers())
        prog()->nextMarker();
    else
        stepMarker(1);
}
