#include "sequencer/play/SongPlayback.h"

#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <cassert>

// How a song track comes to a position: which parts play there, where in their lists, and which
// values of automation are in force.

namespace {

/// Calls `visit(point, tick)` for the points of a slot that lie in the part, until it answers
/// false.
template <class F>
void eachPoint(CSongTrack* songTrack, CPart* part, int slot, F visit) {
    const double end = double(part->pos) + songTrack->track->seq->playedTicks(part);
    double tick = double(part->pos) + part->offset;
    for (CEnvEvent* e = part->getParam(slot); e; e = asLanePoint(e->next)) {
        tick += e->delta;
        if (tick >= end) return;
        if (tick >= part->pos && !visit(e, tick)) return;
    }
}

/// The last point of a part at or before a position, null without one.
CEnvEvent* pointBefore(CSongTrack* songTrack, CPart* part, int slot, double position) {
    CEnvEvent* found = nullptr;
    eachPoint(songTrack, part, slot, [&](CEnvEvent* e, double tick) {
        if (tick <= position) found = e;
        return tick <= position;
    });
    return found;
}

/// The first point of a part behind a position, null without one.
CEnvEvent* pointBehind(CSongTrack* songTrack, CPart* part, int slot, double position) {
    CEnvEvent* found = nullptr;
    eachPoint(songTrack, part, slot, [&](CEnvEvent* e, double tick) {
        if (tick > position) found = e;
        return !found;
    });
    return found;
}

/// The point whose value is in force at a position: the last one until there, else the first of
/// all.
CEnvEvent* pointInForce(CSongTrack* songTrack, int slot, double position) {
    const PartIndex& index = songTrack->index;
    const auto entries = index.entries();
    const uint64_t bit = uint64_t(1) << slot;
    for (size_t i = index.begunAt(position); i-- > 0;)
        if (entries[i].slots & bit)
            if (CEnvEvent* e = pointBefore(songTrack, entries[i].part, slot, position)) return e;
    for (const auto& entry : entries.subspan(index.firstOn(position)))
        if ((entry.slots & bit) && entry.end > position)
            if (CEnvEvent* e = pointBehind(songTrack, entry.part, slot, position)) return e;
    return nullptr;
}

PlayKind mainKind(int trackKind) {
    if (trackKind == trackAudio) return PlayKind::audio;
    return trackKind == trackDrum ? PlayKind::drum : PlayKind::midi;
}

/// A clip that has begun before `songPos`.
void joinClip(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
              int delay) {
    if (!e->sample || e->sample == songTrack->track->recSample) return;
    VoiceStart start = clipStart(songTrack, part, e, tick, songPos, delay);
    start.into = songPos - tick;
    songTrack->voices->join(start);
}

/// The freeze files in place of the events, from a position on.
void playFrozen(CSongTrack* songTrack, double position, int delay) {
    for (const auto* item : songTrack->freezeItems) {
        if (!item->sample || !item->channel) continue;
        VoiceStart start;
        start.sample = item->sample;
        start.start = item->start;
        start.end = item->end;
        start.into = start.songPos = position;
        start.delay = delay;
        start.out = item->channel;
        songTrack->voices->join(start);
    }
}

/// Puts a pointer on the first event at or after `position` that lies in the part. Clips that have
/// begun before sound from their middle on, `delay` frames into the block.
void seekPointer(CSongTrack* songTrack, CPlayStruct& p, CPart* part, double position, int delay) {
    const double from = std::max(position, double(part->pos));
    p.pos = part->pos + part->offset;
    CBaseEvent* prior = nullptr;
    CBaseEvent* e = p.head;
    while (e && double(p.pos) + e->delta < from) {
        p.pos += e->delta;
        if (p.kind == PlayKind::audio && p.pos >= part->pos)
            joinClip(songTrack, part, asClip(e), p.pos, position, delay);
        prior = e;
        e = e->next;
    }
    p.current = e;
    if (p.kind != PlayKind::envelope || !e) return;
    const double tick = double(p.pos) + e->delta;
    if (tick <= position) return;
    if (!prior || tick <= from) {
        p.state = RampState::beforeFirst;
        return;
    }
    p.rampFrom = asLanePoint(prior)->value;
    p.rampTo = asLanePoint(e)->value;
    p.curve = asLanePoint(e)->curve;
    p.rampLength = e->delta;
    p.rampPos = from - p.pos;
}

void addLanePointer(CPart* part, CSubTrack* lane) {
    if (!lane->automation() || lane->slot < 0 || lane->slot >= maxSlots) return;
    CPlayStruct* p = part->addPlay();
    if (!p) return;
    p->kind = PlayKind::envelope;
    p->lane = lane;
    p->param = lane->param;
    p->object = lane->object;
    p->head = part->getParam(lane->slot);
}

} // namespace

VoiceStart clipStart(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
                     int delay) {
    VoiceStart start;
    start.part = part;
    start.event = e;
    start.sample = e->sample;
    start.start = e->start;
    start.end = e->end;
    start.mode = e->mode;
    start.reverse = e->reverse;
    start.pitch = e->semitones + double(e->fine);
    start.ticks = e->ticks;
    start.tick = tick;
    start.songPos = songPos;
    start.delay = delay;
    start.out = songTrack->track->output();
    return start;
}

void CSongTrack::setup(double position, double offset, bool keepMain) {
    assert(track->heldByThread());
    const CQV* host = track->host;
    const int delay = std::max(0, asRound(host->ticksToFrames(-offset)));
    audible = !muted() && !(prog->anySolo && !soloed());
    frozen = !host->renderMode && audible && voices && !freezeItems.empty();
    if (!keepMain) {
        pass++;
        reached = position;
    }
    if (voices) voices->beginRebuild(keepMain);
    if (frozen && !keepMain) playFrozen(this, position, delay);
    seekParts(position, keepMain, delay);
    if (voices) voices->endRebuild();
    for (CSubTrack* lane : track->subTracks) chaseLane(lane, position);
}

/// Finds the parts that play at a position; those to come follow by `admitParts`.
void CSongTrack::seekParts(double position, bool keepMain, int delay) {
    playingParts = nullptr;
    playingEnd = &playingParts;
    lead = grooveLead(&track->groove);
    index.refresh(parts);
    coming = index.begunAt(position + lead);
    const auto entries = index.entries().first(coming);
    for (size_t i = index.firstOn(position); i < coming; i++)
        if (entries[i].end > position) playPart(entries[i].part, position, keepMain, delay);
}

void CSongTrack::admitParts(double until) {
    const auto entries = index.entries();
    for (; coming < entries.size() && entries[coming].pos < until + lead; coming++) {
        CPart* part = entries[coming].part;
        playPart(part, std::min(pos, double(part->pos)), true, 0);
    }
}

/// Sets up the pointers of a part that plays at, or soon after, a position.
void CSongTrack::playPart(CPart* part, double position, bool keepMain, int delay) {
    if (!audible || part->muted() || part->type == partPlain) return;
    if (double(part->pos) + track->seq->playedTicks(part) <= position) return;
    const bool kept = keepMain && part->mainPlays(pass);
    part->playPass = pass;
    part->numPlay = kept ? 1 : 0;
    if (!kept) {
        CPlayStruct* p = part->addPlay();
        p->kind = mainKind(track->kind);
        p->head = part->getEvents();
    }
    if (frozen) part->play(0)->current = nullptr; // the file plays in its place
    for (CSubTrack* lane : track->subTracks) addLanePointer(part, lane);
    const int pointers = part->numPlay;
    for (int i = kept || frozen ? 1 : 0; i < pointers; i++)
        seekPointer(this, *part->play(i), part, position, delay);
    part->nextPlaying = nullptr;
    *playingEnd = part;
    playingEnd = &part->nextPlaying;
}

/// Whether a part that plays is on its way between two points of the lane.
bool CSongTrack::insideRamp(const CSubTrack* lane, double position) {
    bool found = false;
    eachPlaying([&](CPart* part) {
        for (int i = 0; i < part->numPlay && part->pos <= position; i++)
            if (const CPlayStruct* p = part->play(i); p->lane == lane)
                found |= p->current && p->state != RampState::beforeFirst;
        return true;
    });
    return found;
}

/// Finds the value of a lane that is in force at a position, where no part gives one itself.
void CSongTrack::chaseLane(CSubTrack* lane, double position) {
    lane->chasePending = false;
    if (!lane->automation() || lane->slot < 0 || lane->slot >= maxSlots) return;
    if (insideRamp(lane, position)) return;
    const CEnvEvent* point = pointInForce(this, lane->slot, position);
    if (!point) return;
    lane->chaseValue = point->value;
    lane->chasePending = true;
}
