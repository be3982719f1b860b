#include "sequencer/CStepRec.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/MidiBytes.h"
#include "sequencer/CSeq.h"
#include "sequencer/RecQueue.h"

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

void CStepRec::idle(CSeq* seq) {
    if (!part) return;
    CSongTrack* on = songTrack;
    if (!on || seq->partToSongTrack(part) != on) return setPart(nullptr, nullptr);
    if (seq->host->undoBusy()) return;
    RecEvent e;
    while (on->track->recQueue->take(e)) {
        if (noteOn(e.msg)) {
            addNote(e.msg);
            held++;
        } else if (noteOff(e.msg)) {
            held = std::max(0, held - 1);
            if (held == 0 && count > 0) writeChord(seq, on);
        }
    }
}

void CStepRec::writeChord(CSeq* seq, CSongTrack* on) {
    CUndo* step = seq->host->undoStart("Record", seq, {.seq = SeqNotice::parts});
    CPart* content = part->content();
    CPart* edited = content->copy();
    const int len = seq->gridTicks();
    const int last = std::max(0, part->length - len);
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
