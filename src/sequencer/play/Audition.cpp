#include "sequencer/play/Audition.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

namespace {

constexpr int topVelocity = 127;
constexpr int chordReach = 60; ///< ticks within which a strummed chord begins

void play(CTrack* track, const CPart* part, const CBaseEvent* event, int transpose) {
    if (part->type == partDrum) {
        const auto* hit = asHit(event);
        const int velocity = asMinMax(asRound(double(hit->velocity) * topVelocity), 1, topVelocity);
        if (track->drumSound(hit->sound + transpose))
            track->preview.addNote(firstDrumKey + hit->sound + transpose, velocity);
    } else if (part->type == partMIDI) {
        const int data = asMessage(event)->data;
        if (noteOn(data)) track->preview.addNote(asByte1(data) + transpose, asByte2(data));
    }
}

} // namespace

void playEvent(CTrack* track, CPart* part, const CBaseEvent* event, int transpose) {
    if (!track->seq->preview) return;
    if (event) return play(track, part, event, transpose);
    int64_t tick = 0, first = -1;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        tick += e->delta;
        if (!isSelected(e)) continue;
        if (first < 0) first = tick;
        if (tick - first > chordReach) return;
        play(track, part, e, transpose);
    }
}
