#include "ui/NoteMouse.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "gui/Keys.h"
#include "instruments/CDrumSound.h"
#include "sequencer/edit/EventShift.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/Audition.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Scales.h"
#include "sequencer/song/TempoMap.h"
#include "ui/PlaceText.h"
#include "ui/ScaleItems.h"

#include <algorithm>
#include <cstdlib>

NoteMouse::NoteMouse(CSeqMouseEdit& state, const NotePlace& where, std::vector<NotePlace> beside)
    : edit(state), place(where) {
    beside.insert(beside.begin(), where);
    for (const NotePlace& p : beside) homes.push_back({p, p.part->getEvents(), {}, {}, {}});
}

NoteMouse::~NoteMouse() = default;

CPart* NoteMouse::shown(const CPart* part) const {
    for (const Home& h : homes) {
        if (h.place.part != part) continue;
        if (h.painted) return h.painted.get();
        if (h.moving && changed()) return h.moving->draft();
        return h.base ? h.base.get() : h.place.part;
    }
    return nullptr;
}

bool NoteMouse::stands() const {
    return std::ranges::all_of(homes, [](const Home& h) {
        return h.place.seq->partToTrack(h.place.part) == h.place.track &&
               h.place.part->getEvents() == h.head;
    });
}

PartList NoteMouse::parts() const {
    PartList all;
    for (const Home& h : homes) all.push_back(h.place.part);
    return all;
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

NoteMouse::Hit NoteMouse::hitAt(CPoint at) const {
    for (size_t i = 0; i < homes.size(); i++)
        if (const FoundEvent found = eventAt(homes[i].place, edit, at); found.event)
            return {i, found};
    return {};
}

int NoteMouse::partMouseDown(CPoint at, int btn) {
    const Hit hit = hitAt(at);
    if (btn & modRight) return pressRight(hit, at, btn);
    return btn & modLeft ? pressLeft(hit, at, btn) : int(editIdle);
}

int NoteMouse::pressRight(const Hit& hit, CPoint at, int btn) {
    if (!hit.found.event) return editPress;
    if (btn & modAlt) {
        split(homes[hit.home].place.part, hit.found, at);
        return editIdle;
    }
    hold(hit);
    return editErase;
}

/// Where the next step goes, and on which row.
int NoteMouse::placeStep(CPoint at) {
    CStepRec& steps = place.seq->recorder.stepRec;
    if (steps.getPart() != place.part) place.seq->recorder.recordSteps(place.part);
    steps.moveTo(place.seq, tickAt(at, false) - place.part->pos);
    if (place.rows.count() > 0) steps.setNote(rowAt(at.y));
    return editIdle;
}

int NoteMouse::pressLeft(const Hit& hit, CPoint at, int btn) {
    const CBaseEvent* event = hit.found.event;
    if (place.seq->recorder.stepRec.getPart()) return placeStep(at);
    alt = btn & modAlt;
    if (!(btn & (modShift | modAlt | modControl)))
        if (const int mode = pressTool(hit, at); mode >= 0) return mode;
    if (event && !(btn & modShift)) {
        const int mode = hold(hit);
        if (mode != editMove) return mode;
        playEvent(heldHome().place.track, heldHome().place.part, event, 0);
        return btn & modControl ? editCopy : editMove;
    }
    if (!event && !(btn & modShift) && (btn & (modAlt | modDouble))) return insert(at);
    if (!(btn & modShift)) unselectAll();
    return editLasso;
}

/// What the tool does there; -1 where it acts as the pointer.
int NoteMouse::pressTool(const Hit& hit, CPoint at) {
    const int tool = place.seq->editorComp->tool;
    CPart* part = homes[hit.home].place.part;
    if (tool == toolPaint && !hit.found.event) return beginRun(at);
    if (tool == toolKnife && hit.found.event)
        split(part, hit.found, at);
    else if (tool == toolGlue && hit.found.event)
        glue(part, hit.found);
    else
        return -1;
    return editIdle;
}

/// Selects the event, and alone unless it is selected.
int NoteMouse::hold(const Hit& hit) {
    heldIn = hit.home;
    CPart* part = heldHome().place.part;
    if (!isSelected(hit.found.event)) {
        unselectAll();
        select(hit.found.event, true);
    }
    pressed = hit.found.event;
    held = factsOf(part, hit.found.event, hit.found.tick);
    edit.eventVelocity = asMax(1, held.velocity);
    edit.eventLength = held.length;
    range = eventRange(place.seq, parts());
    switch (hit.found.zone) {
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

void NoteMouse::unselectAll() {
    for (const Home& h : homes) unselect(h.place.part);
}

void NoteMouse::split(CPart* part, const FoundEvent& found, CPoint at) {
    const int cut = tickAt(at, true);
    if (place.seq->isLocked(part)) return;
    unselectAll();
    select(found.event, true);
    splitEvents(place.seq, {part}, cut);
}

/// All that is selected if it is among that, else it and the next of its row.
void NoteMouse::glue(CPart* part, const FoundEvent& found) {
    int chosen = 0;
    eachEvent(part->getEvents(), [&](const CBaseEvent* e, int) { chosen += isSelected(e); });
    if (!isSelected(found.event) || chosen < 2) {
        unselectAll();
        select(found.event, true);
        const int row = rowOf(part, found.event);
        CBaseEvent* next = found.event->next;
        while (next && rowOf(part, next) != row) next = next->next;
        if (next) select(next, true);
    }
    glueEvents(place.seq, {part});
}

int NoteMouse::inScale(int row, int own) const {
    if (!place.seq->editorComp->snapsToScale || place.rows.drums()) return row;
    return place.seq->scales.at(songTick(own)).nearest(row);
}

/// The keys of the chord that is put in over one.
std::vector<int> NoteMouse::stampRows(int row, int own) const {
    row = inScale(row, own);
    const int kind = place.seq->editorComp->chord;
    if (place.rows.drums() || kind < 0 || kind >= int(chordKinds().size())) return {row};
    std::vector<int> keys;
    for (const int above : chordKinds()[size_t(kind)].keys())
        if (row + above < EventRows::keys) keys.push_back(row + above);
    return keys;
}

void NoteMouse::stamp(CPart* into, int own, int row, int length) {
    for (const int key : stampRows(row, own)) {
        CBaseEvent* event = place.newEvent(key, length, edit.eventVelocity);
        select(event, true);
        into->addEvent(own, event);
        if (!pressed) pressed = event;
    }
}

/// Into a draft: it is in the song at the release alone.
int NoteMouse::insert(CPoint at) {
    const int y = at.y + edit.scrollY;
    const int tick = tickAt(at, false) - place.part->pos, own = tick - place.part->offset;
    const bool inside =
        place.rows.covers(y) && tick >= 0 && own >= 0 && tick < place.seq->getTicks(place.part);
    unselectAll();
    if (!inside || place.seq->isLocked(place.part)) return editIdle;
    const bool kept = place.seq->options.bytes[SongOptions::rememberNotes] && !place.rows.drums();
    CPart* base = (homes.front().base = contentDraft(place.part)).get();
    stamp(base, own, rowAt(at.y), kept ? edit.eventLength : place.grid.step);
    eachEvent(base->getEvents(), [&](CBaseEvent* e, int placed) {
        if (e == pressed) held = factsOf(base, e, placed);
    });
    range = rangeOf(place.seq, place.part, base->getEvents(), {});
    playEvent(place.track, base, nullptr, 0);
    return place.rows.drums() ? editMove : editResizeEnd;
}

// A run of notes, one in each step of the grid that the pointer passes.

int NoteMouse::beginRun(CPoint at) {
    if (!place.rows.covers(at.y + edit.scrollY) || place.seq->isLocked(place.part)) return -1;
    unselectAll();
    homes.front().base = contentDraft(place.part);
    runTick = tickAt(at, false) / place.grid.step * place.grid.step;
    putInRun(runTick, rowAt(at.y));
    return editPaint;
}

void NoteMouse::paintRun(CPoint at) {
    const int step = place.grid.step, row = rowAt(at.y);
    const int to = asMinMax(asInt(edit.axis.ticksAt(at.x)), 0, maxTicks) / step * step;
    const int by = to < runTick ? -step : step;
    if (to == runTick) return putInRun(to, row);
    while (runTick != to) putInRun(runTick += by, row);
}

/// Unless something sounds there.
void NoteMouse::putInRun(int tick, int row) {
    const int own = tick - place.part->pos - place.part->offset, first = inScale(row, own);
    const int within = tick - place.part->pos;
    if (own < 0 || within < 0 || within >= place.seq->getTicks(place.part)) return;
    if (findEvent(place.part, *place.events, own, first, 0).event) return;
    if (!run.emplace(tick, first).second) return;
    CPart* base = homes.front().base.get();
    pressed = nullptr;
    stamp(base, own, row, place.grid.step);
    held = factsOf(base, const_cast<CBaseEvent*>(pressed), own);
    place.track->preview.mute();
    playEvent(place.track, base, pressed, 0);
}

// The drag.

void NoteMouse::partMouseMove(CPoint at, CPoint anchor, int btn) {
    edit.current = at;
    strayed = strayed || at != anchor;
    if (edit.mode == editDrawDrums) return paintParam(at);
    if (edit.mode == editPaint) return paintRun(at);
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
        running.pitch = pitched(at, from) - settled.pitch;
    }
    const EventDelta now = delta();
    if (now.ticks == before.ticks && now.length == before.length && now.pitch == before.pitch &&
        now.velocity == before.velocity)
        return;
    edit.deltaPos = running.ticks;
    edit.deltaY = alt ? running.velocity : running.pitch;
    if (now.pitch != before.pitch) {
        Home& home = heldHome();
        home.place.track->preview.mute();
        playEvent(home.place.track, home.base ? home.base.get() : home.place.part, pressed,
                  now.pitch);
    }
    makeDrafts();
}

/// Where the scale holds, the note under the pointer comes to it.
int NoteMouse::pitched(CPoint at, CPoint from) const {
    const int wanted = settled.pitch + rowAt(at.y) - rowAt(from.y);
    const int there = held.tick + delta().ticks;
    const int to = wanted == 0 ? 0 : inScale(held.row + wanted, there) - held.row;
    return asMinMax(to, range.minPitch, range.maxPitch);
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

void NoteMouse::makeDrafts() {
    if (!changed()) return;
    const EventDelta by = delta();
    for (Home& h : homes) {
        if (!h.base && !hasSelectedEvents(h.place.part)) continue;
        if (!h.moving)
            h.moving = std::make_unique<EventDraft>(h.place.seq, h.place.part, h.base.get());
        if (edit.mode == editResizeStart)
            h.moving->trim(by.ticks);
        else
            h.moving->change(by);
    }
}

/// Hits of the pressed sound under the pointer take the value of its height.
void NoteMouse::paintParam(CPoint at) {
    const NotePlace& in = heldHome().place;
    const CDrumSound* sound = in.track->drumSound(held.row);
    if (!sound) return;
    const FoundEvent found = findEvent(in.part, *in.events, in.ticksOf(edit.axis, at.x), held.row,
                                       edit.axis.ticksIn(reach));
    if (!found.event) return;
    const int wanted = found.tick;
    std::unique_ptr<CPart>& painted = heldHome().painted;
    if (!painted) painted = contentDraft(in.part);
    const int y = at.y + edit.scrollY, top = in.rows.top(held.row);
    const double value = double(paramLane + top - y + CDrumSound::closedHeight) / double(paramLane);
    eachEvent(painted->getEvents(), [&](CBaseEvent* e, int tick) {
        auto* hit = asHit(e);
        if (tick == wanted && hit->sound == held.row)
            setDrumParam(hit, sound->shownParam, float(fLimit(value, 0.0, 1.0)));
    });
}

// The release.

void NoteMouse::partMouseUp() {
    for (const Home& h : homes) h.place.track->preview.mute();
    if (edit.mode == editErase) return deleteEvents(place.seq, parts());
    if (copying()) return copyEvents(place.seq, parts(), delta());
    if (edit.mode == editMove && !changed() && !homes.front().base && !strayed) chooseAlone();
    edit.eventLength = now().length;
    edit.eventVelocity = now().velocity;
    const char* name = title();
    std::vector<PartDraft> made;
    for (Home& h : homes)
        made.push_back({h.place.part, h.painted               ? std::move(h.painted)
                                      : h.moving && changed() ? h.moving->take()
                                                              : std::move(h.base)});
    applyDrafts(place.seq, std::move(made), name);
}

const char* NoteMouse::title() const {
    const EventDelta by = delta();
    if (edit.mode == editPaint) return "Paint";
    if (homes.front().base) return "Insert";
    if (edit.mode == editDrawDrums) return "Drum param";
    if (edit.mode == editResizeEnd || edit.mode == editResizeStart) return "Resize";
    return by.ticks != 0 || by.pitch != 0 ? "Move" : "Edit";
}

/// A click on one of several selected events.
void NoteMouse::chooseAlone() {
    unselectAll();
    eachEvent(heldHome().place.part->getEvents(), [&](CBaseEvent* e, int) {
        if (e == pressed) select(e, true);
    });
}

int NoteMouse::songTick(int own) const {
    const CPart* part = heldHome().place.part;
    return part->pos + part->offset + own;
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
    return heldHome().place.text(now());
}
