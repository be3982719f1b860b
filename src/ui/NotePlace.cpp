#include "ui/NotePlace.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "instruments/CDrumSound.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "ui/PlaceText.h"
#include "ui/TimeAxis.h"

NoteFacts factsOf(const CPart* part, CBaseEvent* event, int tick) {
    NoteFacts facts;
    facts.tick = tick;
    const int* length = eventLength(part->type, event);
    if (!length) return facts;
    facts.length = asMax(1, *length);
    facts.row = rowOf(part, event);
    facts.velocity = part->type == partDrum ? asRound(double(asHit(event)->velocity) * 127)
                                            : asByte2(asMessage(event)->data);
    if (part->type == partMIDI) facts.channel = asMessage(event)->data & 15;
    facts.style = event->style;
    return facts;
}

double NotePlace::ticksOf(const TimeAxis& axis, double x) const {
    return axis.ticksAt(x) - part->pos - part->offset;
}

int NotePlace::xOf(const TimeAxis& axis, int tick) const {
    return axis.xOf(double(part->pos) + part->offset + tick);
}

CRect NotePlace::boxOf(const TimeAxis& axis, int scrollY, const NoteFacts& facts) const {
    if (facts.length == 0 || facts.row < 0 || facts.row >= rows.count()) return {};
    const int left = xOf(axis, facts.tick), right = xOf(axis, facts.tick + facts.length);
    const int top = rows.top(facts.row) - scrollY, high = rows.height(facts.row);
    if (high == 0) return {};
    return asRect(left, top, asMax(left + 2, right),
                  top + (rows.drums() ? asMin(high, int(CDrumSound::closedHeight)) : high));
}

CBaseEvent* NotePlace::newEvent(int row, int length, int velocity) const {
    if (rows.drums()) {
        CDrumEvent* hit = createDrumEvent();
        hit->sound = row;
        hit->length = length;
        hit->velocity = float(velocity) / 127;
        return hit;
    }
    CMIDIEvent* note = createMIDIEvent();
    note->data = track->setCh(asData(midiNoteOn, row, velocity));
    note->length = length;
    return note;
}

CStr NotePlace::text(const NoteFacts& facts) const {
    const CDrumSound* sound = rows.drums() ? track->drumSound(facts.row) : nullptr;
    CStr told = rows.drums() ? sound ? sound->getId() : CStr() : noteToStr(facts.row);
    told += ", " + placeText(seq, part->pos + part->offset + facts.tick) + ", " +
            lengthText(seq, facts.length);
    told += ", velocity " + asStr(facts.velocity);
    if (facts.style.chance < mostChance) told += ", chance " + asStr(facts.style.chance) + "%";
    if (facts.style.repeats > 1) told += ", " + asStr(facts.style.repeats) + " times";
    if (facts.style.flamMs > 0) told += ", flam " + asStr(facts.style.flamMs) + " ms";
    return facts.style.muted ? told + ", muted" : told;
}
