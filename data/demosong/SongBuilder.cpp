#include "data/demosong/SongBuilder.h"

#include "data/demosong/Score.h"
#include "data/demosong/SongPoints.h"
#include "data/presets/PartText.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"

namespace {

/// A little less than written, so that a repeated note is heard as one.
constexpr int noteGapTicks = 20;

/// Of a place in a part.
int ticksAt(int bar, int step = 0) {
    return bar * demoBarTicks + step * demoStepTicks;
}

} // namespace

int stepVelocity(char c) {
    switch (c) {
    case 'o':
        return 62;
    case 'x':
        return 92;
    case 'X':
        return 112;
    default:
        return 0;
    }
}

void PartBuilder::note(int bar, int step, int length, int key, int velocity) {
    CMIDIEvent* event = createMIDIEvent();
    event->data = asData(midiNoteOn, key, velocity);
    event->length = length * demoStepTicks - noteGapTicks;
    events.add(ticksAt(bar, step), event);
}

void PartBuilder::hit(int bar, int step, int sound, int velocity) {
    CDrumEvent* event = createDrumEvent();
    event->sound = sound;
    event->velocity = float(velocity) / 127.0f;
    event->length = demoStepTicks;
    events.add(ticksAt(bar, step), event);
}

int PartBuilder::steps() const {
    return part->length / demoStepTicks;
}

void PartBuilder::close() {
    if (!events.empty()) part->setEvents(events.takeList());
}

PartBuilder::~PartBuilder() {
    close();
}

SongBuilder::SongBuilder(CQV* master) : host(master), seq(addSequencer(master)) {
}

CTrack* SongBuilder::track(const CStr& name) {
    CTrack* made = seq->addTrack(trackMIDI, seq->getProg(), nullptr)->track;
    made->setId(name);
    return made;
}

CSongTrack* SongBuilder::songTrackOf(CTrack* track) {
    return seq->getProg()->songTrackOf(track);
}

CTrack* SongBuilder::drumTrack(const CStr& name) {
    const GraphHold hold(host);
    CTrack* made = seq->addTrack(trackDrum, seq->getProg(), nullptr)->track;
    made->setId(name);
    seq->addStandardKit(made);
    return made;
}

CPart* SongBuilder::part(CTrack* track, int fromBar, int toBar) {
    CPart* made = track->kind == trackDrum ? static_cast<CPart*>(new CDrumPart) : new CMIDIPart;
    made->id = track->id;
    made->pos = songTick(fromBar);
    made->length = songTick(toBar) - songTick(fromBar);
    songTrackOf(track)->addPart(made, nullptr);
    return made;
}

CTrack* SongBuilder::audioTrack(const CStr& name) {
    CTrack* made = seq->addTrack(trackAudio, seq->getProg(), nullptr)->track;
    made->setId(name);
    return made;
}

CPart* SongBuilder::clip(CTrack* track, CSample* sample, int fromBar, int toBar) {
    CPart* made = presets::soundPart(sample, toBar - fromBar).release();
    made->id = track->id;
    made->pos = songTick(fromBar);
    songTrackOf(track)->addPart(made, nullptr);
    return made;
}

void SongBuilder::ghost(CTrack* track, CPart* original, int atBar) {
    CUndo* step = host->undoStart("Ghost", seq, {.song = true});
    CPart* made = seq->makeGhost(original, step);
    made->pos = songTick(atBar);
    songTrackOf(track)->addPart(made, step);
    host->undoEnd(step, true);
}

CSubTrack* SongBuilder::lane(CTrack* track, const CStr& name, CObject* object, int param) {
    auto* made = new CSubTrack(name, laneAutomation);
    made->object = object;
    made->param = param;
    return track->addLane(made, nullptr);
}

CPart* SongBuilder::partAt(CTrack* track, int bar) {
    for (CPart* p : each<CPart>(songTrackOf(track)->parts))
        if (p->pos == songTick(bar)) return p;
    return nullptr;
}

void SongBuilder::curve(CTrack* track, CSubTrack* lane, int fromBar, int toBar,
                        std::initializer_list<CurvePoint> points) {
    CPart* target = partAt(track, fromBar);
    if (!target) target = part(track, fromBar, toBar);
    for (const CurvePoint& p : points) {
        CEnvEvent* event = createEnvEvent(nullptr, p.value);
        event->curve = p.bend;
        target->addEventParam(ticksAt(p.bar, p.step), event, lane->slot);
    }
}

void SongBuilder::tempo(int bar, float bpm) {
    addTempoPoint(seq, songTick(bar), bpm);
}

void SongBuilder::signature(int bar, int beats, int unit) {
    addSignature(seq, songTick(bar), beats, unit);
}

void SongBuilder::marker(int fromBar, int toBar, const CStr& name) {
    addSongMarker(seq, songTick(fromBar), songTick(toBar), name);
}

CSeq* SongBuilder::finish(int endBar) {
    finishSong(seq, songTick(endBar), demoBpm);
    return seq;
}
