#include "sequencer/take/CStepRec.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/take/RecQueue.h"

#include <algorithm>

namespace {

constexpr int middleRow = 60;
constexpr int highestNote = 127;

} // namespace

void CStepRec::setPart(CPart* newPart, CSongTrack* on) {
    part = newPart;
    pos = 0;
    held = count = 0;
    setNote(part && part->type == partMIDI ? middleRow : 0);
    songTrack = part ? on : nullptr;
}

void CStepRec::setNote(int row) {
    note = asMinMax(row, 0, highestNote);
}

void CStepRec::addNote(int msg) {
    if (count < capacity) notes[count++] = msg;
}

int CStepRec::removeNote() {
    return count > 0 ? notes[--count] : -1;
}

/// The part while it stands where it stood; else the recording ends.
CPart* CStepRec::current(CSeq* seq) {
    CSongTrack* on = songTrack;
    if (part && (!on || seq->partToSongTrack(part) != on)) setPart(nullptr, nullptr);
    return part;
}

void CStepRec::idle(CSeq* seq) {
    RecEvent e;
    while (current(seq) && !seq->host->undoBusy() && songTrack.load()->track->recQueue->take(e))
        play(seq, e.msg);
}

void CStepRec::play(CSeq* seq, int msg) {
    if (!current(seq)) return;
    if (noteOn(msg)) {
        addNote(msg);
        held++;
    } else if (noteOff(msg)) {
        held = std::max(0, held - 1);
        if (held == 0 && count > 0) writeChord(seq, songTrack);
    }
}

int CStepRec::stepTicks(const CSeq* seq) const {
    return seq->gridTicks();
}

int CStepRec::lastPos(const CSeq* seq) const {
    return std::max(0, part->length - stepTicks(seq));
}

void CStepRec::moveTo(CSeq* seq, int ticks) {
    if (!current(seq)) return;
    pos = asMinMax(ticks, 0, lastPos(seq));
    seq->songNotices.raise(SeqNotice::parts);
}

void CStepRec::rest(CSeq* seq, int by) {
    moveTo(seq, saturate(int64_t(pos) + int64_t(by) * stepTicks(seq)));
}

void CStepRec::tie(CSeq* seq) {
    if (!current(seq) || seq->isLocked(part)) return;
    std::unique_ptr<CPart> draft = contentDraft(part);
    const int here = pos - part->offset, len = stepTicks(seq);
    eachEvent(draft->getEvents(), [&](CBaseEvent* e, int tick) {
        int* own = eventLength(part->type, e);
        if (own && tick < here && tick + *own == here) *own += len;
    });
    applyDraft(seq, part, std::move(draft), "Record");
    rest(seq, 1);
}

void CStepRec::takeBack(CSeq* seq) {
    if (!current(seq) || seq->isLocked(part)) return;
    rest(seq, -1);
    const int from = pos - part->offset, to = from + stepTicks(seq);
    std::unique_ptr<CPart> draft = contentDraft(part);
    eachEvent(draft->getEvents(), [&](CBaseEvent* e, int tick) {
        select(e, tick >= from && tick < to && eventLength(part->type, e));
    });
    draft->deleteSelected();
    applyDraft(seq, part, std::move(draft), "Delete");
}

void CStepRec::writeChord(CSeq* seq, CSongTrack* on) {
    CUndo* step = seq->host->undoStart("Record", seq, {.seq = SeqNotice::parts});
    CPart* content = part->content();
    CPart* edited = content->copy();
    const int len = stepTicks(seq), last = lastPos(seq);
    const int tick = asMinMax(pos, 0, last) - part->offset;
    for (int msg = removeNote(); msg >= 0; msg = removeNote()) addTo(edited, on, msg, tick, len);
    pos = std::min(pos + len, last);
    swapUndoPart(step, content, edited);
    seq->host->undoEnd(step, false);
}

void CStepRec::addTo(CPart* edited, CSongTrack* on, int msg, int tick, int len) {
    if (part->type == partDrum) {
        CDrumEvent* event = createDrumEvent();
        event->sound = asByte1(msg) - firstDrumKey;
        event->velocity = float(asByte2(msg)) / float(highestNote);
        event->length = on->track->seq->snap ? on->track->seq->snap->val() : len;
        return edited->addEvent(tick, event);
    }
    CMIDIEvent* event = createMIDIEvent();
    event->data = on->track->setCh(msg);
    event->length = len;
    event->flags = eventSelected;
    edited->addEvent(tick, event);
    setNote(asByte1(msg));
}
