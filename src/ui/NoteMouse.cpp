#include "ui/NoteMouse.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "gui/Keys.h"
#include "instruments/CDrumSound.h"
#include "sequencer/Audition.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartEdits.h"
#include "sequencer/PartSplit.h"
#include "sequencer/TempoMap.h"
#include "ui/PlaceText.h"

#include <cstdlib>

namespace {

const EventLane noteLane;

} // namespace

NoteMouse::NoteMouse(CSeqMouseEdit& state, const NotePlace& where) : edit(state), place(where) {
}

NoteMouse::~NoteMouse() = default;

CPart* NoteMouse::shown() const {
    CPart* draft = dragged();
    return draft ? draft : base ? base.get() : place.part;
}

/// What has changed since the press; null if nothing has.
CPart* NoteMouse::dragged() const {
    return painted ? painted.get() : moving && changed() ? moving->draft() : nullptr;
}

// What lies where.

FoundEvent NoteMouse::eventAt(const NotePlace& place, const CSeqMouseEdit& edit, CPoint at) {
    const int y = at.y + edit.scrollY;
    if (!place.rows.covers(y)) return {};
    const int row = place.rows.rowAt(y);
    FoundEvent found = findEvent(place.part, *place.events, place.ticksOf(edit.axis, at.x), row,
                                 edit.axis.ticksIn(reach));
    const bool lower = y - place.rows.top(row) >= CDrumSound::closedHeight;
    if (found.event && place.rows.drums() && lower) found.zone = zoneParam;
    return found;
}

void NoteMouse::selectWithin(const NotePlace& place, const CSeqMouseEdit& edit, CRect band) {
    place.eachNear(*place.events, edit.axis, band, [&](const EventIndex::Entry& e) {
        const NoteFacts facts = factsOf(place.part, e.event, e.tick);
        const CRect box = place.boxOf(edit.axis, edit.scrollY, facts);
        if (!intersect(box, band).empty()) select(e.event, true);
    });
}

void NoteMouse::unselect(CPart* part) {
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) select(e, false);
}

int NoteMouse::tickAt(CPoint at, bool nearest) const {
    const int here = asMinMax(asInt(edit.axis.ticksAt(at.x)), 0, maxTicks);
    return snapped(place.grid.snap, here, nearest);
}

/// Whether Control, pressed since, leaves the grid.
bool NoteMouse::leavesGrid(int btn) const {
    return (btn & modControl) && !(edit.startBtn & modControl);
}

// The press.

int NoteMouse::partMouseDown(CPoint at, int btn) {
    const FoundEvent found = eventAt(place, edit, at);
    if (btn & modRight) return pressRight(found, at, btn);
    return btn & modLeft ? pressLeft(found, at, btn) : int(editIdle);
}

int NoteMouse::pressRight(const FoundEvent& found, CPoint at, int btn) {
    if (!found.event) return editPress;
    if (btn & modAlt) {
        split(found, at);
        return editIdle;
    }
    hold(found);
    return editErase;
}

/// Where the next step goes, and on which row.
int NoteMouse::placeStep(CPoint at) {
    CStepRec& steps = place.seq->stepRec;
    if (steps.getPart() != place.part) place.seq->recordSteps(place.part);
    steps.moveTo(place.seq, tickAt(at, false) - place.part->pos);
    if (place.rows.count() > 0) steps.setNote(rowAt(at.y));
    return editIdle;
}

int NoteMouse::pressLeft(const FoundEvent& found, CPoint at, int btn) {
    if (place.seq->stepRec.getPart()) return placeStep(at);
    alt = btn & modAlt;
    if (found.event && !(btn & modShift)) {
        const int mode = hold(found);
        if (mode != editMove) return mode;
        playEvent(place.track, place.part, found.event, 0);
        return btn & modControl ? editCopy : editMove;
    }
    if (!found.event && !(btn & modShift) && (btn & (modAlt | modDouble))) return insert(at);
    if (!(btn & modShift)) unselect(place.part);
    return editLasso;
}

/// Selects the event, and alone unless it is selected.
int NoteMouse::hold(const FoundEvent& found) {
    if (!isSelected(found.event)) {
        unselect(place.part);
        select(found.event, true);
    }
    pressed = found.event;
    held = factsOf(place.part, found.event, found.tick);
    edit.eventVelocity = asMax(1, held.velocity);
    edit.eventLength = held.length;
    range = eventRange(place.seq, place.part, noteLane);
    switch (found.zone) {
    case zoneParam:
        return editDrawDrums;
    case zoneStart:
        return editResizeStart;
    case zoneEnd:
        return editResizeEnd;
    default:
        return editMove;
    }
}

void NoteMouse::split(const FoundEvent& found, CPoint at) {
    const int cut = tickAt(at, true) - place.part->pos - place.part->offset - found.tick;
    if (place.seq->isLocked(place.part)) return;
    unselect(place.part);
    select(found.event, true);
    CUndo* undo =
        place.seq->host->undoStart("Split", place.seq, {.song = true, .seq = SeqNotice::parts});
    splitEventsInPart(place.seq, place.part, found.tick + cut, undo);
    place.seq->host->undoEnd(undo, false);
}

/// Into a draft: it is in the song at the release alone.
int NoteMouse::insert(CPoint at) {
    const int y = at.y + edit.scrollY;
    const int tick = tickAt(at, false) - place.part->pos, own = tick - place.part->offset;
    const bool inside = place.rows.covers(y) && tick >= 0 && own >= 0 &&
                        tick < place.seq->getTicks(place.part);
    unselect(place.part);
    if (!inside || place.seq->isLocked(place.part)) return editIdle;
    const bool kept = place.seq->options.bytes[SongOptions::rememberNotes] && !place.rows.drums();
    const int length = kept ? edit.eventLength : place.grid.step;
    base = contentDraft(place.part);
    CBaseEvent* event = place.newEvent(rowAt(at.y), length, edit.eventVelocity);
    select(event, true);
    base->addEvent(own, event);
    pressed = event;
    held = factsOf(base.get(), event, own);
    range = {-asMin(tick, own), place.seq->getTicks(place.part) - 1 - tick, 1 - length, -held.row,
             place.rows.count() - 1 - held.row};
    playEvent(place.track, base.get(), event, 0);
    return place.rows.drums() ? editMove : editResizeEnd;
}

// The drag.

void NoteMouse::partMouseMove(CPoint at, CPoint anchor, int btn) {
    edit.current = at;
    strayed = strayed || at != anchor;
    if (edit.mode == editDrawDrums) return paintParam(at);
    const bool drags = edit.mode == editMove || edit.mode == editCopy ||
                       edit.mode == editResizeEnd || edit.mode == editResizeStart;
    if (!drags) return;
    if (edit.mode == editMove && alt != bool(btn & modAlt)) turn(at, anchor, btn);
    drag(at, asPoint(anchor.x + turned.x, anchor.y + turned.y), btn);
}

/// What has changed so far stays, and from here on the other thing changes.
void NoteMouse::turn(CPoint at, CPoint anchor, int btn) {
    settled = delta();
    running = {};
    turned = asPoint(at.x - anchor.x, at.y - anchor.y);
    alt = btn & modAlt;
}

EventDelta NoteMouse::delta() const {
    return {settled.ticks + running.ticks, settled.length + running.length,
            settled.pitch + running.pitch, settled.velocity + running.velocity};
}

void NoteMouse::drag(CPoint at, CPoint from, int btn) {
    const EventDelta before = delta();
    const bool free = leavesGrid(btn);
    const int dx = at.x - from.x;
    const bool moves = edit.mode == editMove || edit.mode == editCopy;
    if (edit.mode == editResizeStart) running.ticks = moved(dx, free);
    if (edit.mode == editResizeEnd || (moves && alt && edit.mode == editMove)) {
        const int length = stretched(dx, free);
        if (settled.length + length >= range.minLength) running.length = length;
        if (moves) running.velocity = (from.y - at.y) / 2;
    } else if (moves) {
        running.ticks = moved(dx, free);
        running.pitch =
            asMinMax(settled.pitch + rowAt(at.y) - rowAt(from.y), range.minPitch, range.maxPitch) -
            settled.pitch;
    }
    const EventDelta now = delta();
    if (now.ticks == before.ticks && now.length == before.length && now.pitch == before.pitch &&
        now.velocity == before.velocity)
        return;
    edit.deltaPos = running.ticks;
    edit.deltaY = alt ? running.velocity : running.pitch;
    if (now.pitch != before.pitch) {
        place.track->preview.mute();
        playEvent(place.track, base ? base.get() : place.part, pressed, now.pitch);
    }
    makeDraft();
}

int NoteMouse::moved(int dx, bool free) const {
    if (!free && place.grid.snap > 1 && std::abs(dx) <= dragRoom) return 0;
    const int dragged = asRound(edit.axis.ticksIn(dx));
    const int by = place.grid.delta(songTick(held.tick) + settled.ticks, dragged, free);
    if (edit.mode == editResizeStart) return asMinMax(by, range.minTicks, -range.minLength);
    return asMinMax(settled.ticks + by, range.minTicks, range.maxTicks) - settled.ticks;
}

int NoteMouse::stretched(int dx, bool free) const {
    if (std::abs(dx) <= dragRoom) return 0;
    const int end = songTick(held.tick + held.length) + settled.ticks + settled.length;
    return place.grid.delta(end, asRound(edit.axis.ticksIn(dx)), free);
}

bool NoteMouse::changed() const {
    const EventDelta by = delta();
    return by.ticks != 0 || by.length != 0 || by.pitch != 0 || by.velocity != 0;
}

void NoteMouse::makeDraft() {
    if (!changed()) return;
    if (!moving) moving = std::make_unique<EventDraft>(place.seq, place.part, base.get());
    const EventDelta by = delta();
    if (edit.mode == editResizeStart)
        moving->trim(by.ticks);
    else
        moving->change(by);
}

/// Hits of the pressed sound under the pointer take the value of its height.
void NoteMouse::paintParam(CPoint at) {
    const CDrumSound* sound = place.track->drumSound(held.row);
    if (!sound) return;
    const FoundEvent found = findEvent(place.part, *place.events, place.ticksOf(edit.axis, at.x),
                                       held.row, edit.axis.ticksIn(reach));
    if (!found.event) return;
    const int wanted = found.tick;
    if (!painted) painted = contentDraft(place.part);
    const int y = at.y + edit.scrollY, top = place.rows.top(held.row);
    const double value = double(paramLane + top - y + CDrumSound::closedHeight) / double(paramLane);
    eachEvent(painted->getEvents(), [&](CBaseEvent* e, int tick) {
        auto* hit = static_cast<CDrumEvent*>(e);
        if (tick == wanted && hit->sound == held.row)
            setDrumParam(hit, sound->shownParam, float(fLimit(value, 0.0, 1.0)));
    });
}

// The release.

void NoteMouse::partMouseUp() {
    place.track->preview.mute();
    if (edit.mode == editErase) return deleteEvents(place.seq, place.part);
    if (copying()) return copyEvents(place.seq, place.part, noteLane, delta());
    if (edit.mode == editMove && !dragged() && !base && !strayed) chooseAlone();
    const bool sized = edit.mode == editResizeEnd || edit.mode == editResizeStart;
    const EventDelta by = delta();
    const char* title = base                             ? "Insert"
                        : edit.mode == editDrawDrums     ? "Drum param"
                        : sized                          ? "Resize"
                        : by.ticks != 0 || by.pitch != 0 ? "Move"
                                                         : "Edit";
    edit.eventLength = now().length;
    std::unique_ptr<CPart> made = painted               ? std::move(painted)
                                  : moving && changed() ? moving->take()
                                                        : std::move(base);
    if (made) applyDraft(place.seq, place.part, std::move(made), title);
}

/// A click on one of several selected events.
void NoteMouse::chooseAlone() {
    unselect(place.part);
    eachEvent(place.part->getEvents(), [&](CBaseEvent* e, int) {
        if (e == pressed) select(e, true);
    });
}

int NoteMouse::songTick(int own) const {
    return place.part->pos + place.part->offset + own;
}

/// What has become of the event under the press.
NoteFacts NoteMouse::now() const {
    const EventDelta by = delta();
    NoteFacts facts = held;
    facts.tick += by.ticks;
    facts.length =
        asMax(1, held.length + by.length - (edit.mode == editResizeStart ? by.ticks : 0));
    facts.row += by.pitch;
    facts.velocity = asMinMax(held.velocity + by.velocity, 1, 127);
    return facts;
}

CStr NoteMouse::told() const {
    return place.text(now());
}
