#include "ui/NoteActions.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/Keys.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/Audition.h"
#include "sequencer/song/CSeq.h"
#include "ui/NoteMouse.h"
#include "ui/ScaleItems.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <set>

namespace {

constexpr int velocityStep = 8;

/// Behind what is selected.
void duplicateEvents(const HeldNotes& hand) {
    int from = maxTicks, to = 0;
    for (CPart* part : hand.parts)
        eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
            if (!isSelected(e)) return;
            const int at = saturate(int64_t(part->pos) + part->offset + tick);
            from = asMin(from, at);
            to = asMax(to, saturate(int64_t(at) + asMax(1, factsOf(part, e, tick).length)));
        });
    const int by = to - from;
    if (by <= 0) return;
    if (by > eventRange(hand.place.seq, hand.parts).maxTicks)
        return hand.workspace.setStatus("The part ends before the copies");
    copyEvents(hand.place.seq, hand.parts, {.ticks = by});
}

/// Of the part that is active, if anything is selected in it.
void copySelected(const HeldNotes& hand) {
    if (!hasSelectedEvents(hand.place.part)) return;
    hand.place.seq->clearCopies();
    hand.place.seq->copyToClipboard(hand.place.part);
}

void deleteSelected(const HeldNotes& hand) {
    deleteEvents(hand.place.seq, hand.parts);
}

void cutSelected(const HeldNotes& hand) {
    if (!hasSelectedEvents(hand.place.part)) return;
    copySelected(hand);
    deleteEvents(hand.place.seq, {hand.place.part}, "Cut");
}

/// At the position, or where the part begins if that lies outside.
void paste(const HeldNotes& hand) {
    CSeq* seq = hand.place.seq;
    CPart* part = hand.place.part;
    auto* copied = seq->clipboard.parts.getFirst();
    if (seq->clipboard.parts.getCount() != 1 || copied->type != part->type)
        return hand.workspace.setStatus("The clipboard has no events for this part");
    if (seq->isLocked(part)) return hand.workspace.setStatus("The track is locked");
    int tick = asInt(seq->getPos());
    const int end = part->pos + seq->getTicks(part);
    if (tick < part->pos || tick >= end) tick = part->pos;
    CUndo* undo = seq->host->undoStart("Paste", seq, {.song = true, .seq = SeqNotice::parts});
    seq->pasteData(undo, copied, part, tick);
    seq->host->undoEnd(undo, false);
}

void selectAll(const HeldNotes& hand) {
    for (CPart* part : hand.parts)
        for (CBaseEvent* e = part->getEvents(); e; e = e->next) select(e, true);
}

void quantizeSelected(const HeldNotes& hand) {
    quantizeEvents(hand.place.seq, hand.parts, hand.place.grid.step);
}

void muteSelected(const HeldNotes& hand) {
    if (!anySelected(hand.parts)) return hand.workspace.setStatus("No notes are selected");
    muteEvents(hand.place.seq, hand.parts);
}

void glueSelected(const HeldNotes& hand) {
    glueEvents(hand.place.seq, hand.parts);
}

void splitAtPosition(const HeldNotes& hand) {
    splitEvents(hand.place.seq, hand.parts, asInt(hand.place.seq->getPos()));
}

void selectOutOfScale(const HeldNotes& hand) {
    const SongScales& scales = hand.place.seq->scales;
    int found = 0;
    for (CPart* part : hand.parts) {
        const double origin = double(part->pos) + part->offset;
        eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
            const int row = rowOf(part, e);
            const Scale scale = scales.at(origin + tick);
            const bool wanted = part->type == partMIDI && row >= 0 && !scale.has(row);
            select(e, wanted);
            found += wanted;
        });
    }
    hand.workspace.setStatus(!scales.any() ? CStr("The song has no scale")
                                           : asStr(found) + " out of the scale");
}

constexpr struct {
    const char* name;
    void (*run)(const HeldNotes& hand);
} actions[] = {{"delete", deleteSelected},      {"cut", cutSelected},
               {"copy", copySelected},          {"paste", paste},
               {"selectAll", selectAll},        {"duplicate", duplicateEvents},
               {"quantize", quantizeSelected},  {"glue", glueSelected},
               {"mutenotes", muteSelected},     {"splitatcursor", splitAtPosition},
               {"outofscale", selectOutOfScale}};

/// The event before or behind another one; without one the first or the last of all.
NoteEvent neighbour(const NotePlace& place, const CBaseEvent* of, bool next) {
    NoteEvent found, before;
    bool passed = !of && next;
    const int rows = place.rows.count();
    eachEvent(place.part->getEvents(), [&](CBaseEvent* e, int tick) {
        const NoteFacts facts = factsOf(place.part, e, tick);
        if (e == of) {
            if (!next) found = before;
            passed = true;
        } else if (facts.length > 0 && facts.row < rows) {
            if (passed && next && !found.event) found = {e, facts};
            before = {e, facts};
        }
    });
    return !of && !next ? before : found;
}

bool walk(const HeldNotes& hand, bool next, bool more,
          const std::function<void(const NoteEvent&)>& show) {
    const NoteEvent from = selectedEvent(hand.place, next);
    const NoteEvent to = neighbour(hand.place, from.event, next);
    if (!to.event) return from.event != nullptr;
    if (!more)
        for (CPart* part : hand.parts) NoteMouse::unselect(part);
    select(to.event, true);
    hand.place.track->preview.mute();
    playEvent(hand.place.track, hand.place.part, to.event, 0);
    show(to);
    return true;
}

void change(const HeldNotes& hand, EventDelta by,
            const std::function<void(const NoteEvent&)>& show) {
    CSeq* seq = hand.place.seq;
    const EventRange range = eventRange(seq, hand.parts);
    by.ticks = asMinMax(by.ticks, range.minTicks, range.maxTicks);
    by.pitch = asMinMax(by.pitch, range.minPitch, range.maxPitch);
    if (by.length < range.minLength) by.length = 0;
    dragEvents(seq, hand.parts, by);
    seq->host->settle(); // what is played and told is what has become of it
    if (seq->partToTrack(hand.place.part) != hand.place.track) return;
    hand.place.track->preview.mute();
    if (by.pitch != 0 || by.velocity != 0) playEvent(hand.place.track, hand.place.part, nullptr, 0);
    if (const NoteEvent first = selectedEvent(hand.place, false); first.event) show(first);
}

} // namespace

bool isNoteAction(const CStr& name) {
    return std::ranges::any_of(actions, [&](const auto& a) { return name == a.name; });
}

bool noteAction(const HeldNotes& hand, const CStr& name) {
    for (const auto& action : actions) {
        if (name != action.name) continue;
        action.run(hand);
        return true;
    }
    return false;
}

NoteEvent selectedEvent(const NotePlace& place, bool last) {
    NoteEvent found;
    int tick = 0;
    for (CBaseEvent* e = place.part->getEvents(); e && (last || !found.event); e = e->next) {
        tick += e->delta;
        if (isSelected(e)) found = {e, factsOf(place.part, e, tick)};
    }
    return found;
}

CStr selectedChord(const PartList& parts) {
    std::set<int> keys;
    for (CPart* part : parts) {
        if (part->type != partMIDI) continue;
        for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
            if (const int row = rowOf(part, e); isSelected(e) && row >= 0) keys.insert(row);
    }
    return chordText(findChord(keys));
}

bool noteArrow(const HeldNotes& hand, int key, int mods,
               const std::function<void(const NoteEvent&)>& show) {
    const int along = (key == keyRight) - (key == keyLeft);
    const int up = (key == ::keyUp) - (key == ::keyDown);
    if (along == 0 && up == 0) return false;
    if (along != 0 && !(mods & ~modShift)) return walk(hand, along > 0, mods & modShift, show);
    if ((mods != modControl && mods != modAlt) || !anySelected(hand.parts)) return false;
    const int grid = hand.place.grid.step;
    if (mods == modAlt)
        change(hand, {.length = along * grid, .velocity = up * velocityStep}, show);
    else
        change(hand, {.ticks = along * grid, .pitch = hand.place.rows.drums() ? -up : up}, show);
    return true;
}
