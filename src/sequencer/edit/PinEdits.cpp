#include "sequencer/edit/PinEdits.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr StepEffects pinEffects{.song = true, .seq = SeqNotice::parts};

/// One step: `change(clip)`, of a copy that takes the place of the part's content.
template <class F>
bool edit(CSeq* seq, const ClipPlace& place, F&& change) {
    if (!place.clip() || seq->isLocked(place.part)) return false;
    CPart* content = place.part->content();
    std::unique_ptr<CPart> draft(content->copy(0));
    change(clipAt(draft.get(), place.index));
    if (sameContent(draft.get(), content)) return false;
    CUndo* undo = seq->host->undoStart("Stretch markers", seq, pinEffects);
    swapUndoPart(undo, content, draft.release());
    seq->host->undoEnd(undo, false);
    return true;
}

bool has(const CAudioEvent* clip, int pin) {
    return clip && pin >= 0 && pin < clip->pins.count;
}

/// Between its neighbours, a tick from each.
double limited(const CAudioEvent* clip, int pin, double share) {
    const ClipPins& pins = clip->pins;
    const double tick = 1.0 / std::max(clip->ticks, 1);
    const double low = (pin > 0 ? pins.list[pin - 1].share : 0.0) + tick;
    const double high = (pin + 1 < pins.count ? pins.list[pin + 1].share : 1.0) - tick;
    return high < low ? pins.list[pin].share : std::clamp(share, low, high);
}

/// Where a frame is heard now, as a share while the clip plays forward.
double shareNow(CSeq* seq, CPart* part, const CAudioEvent* clip, int tick, int ticks, int frame) {
    if (isPinned(clip)) return shareOfFrames(clip, clip->start, frame);
    if (clip->mode != playRepitch)
        return (frame - clip->start) / (double(clip->end) - clip->start + 1);
    const double into = clip->reverse ? clip->end + 1.0 - frame : double(frame) - clip->start;
    const int rate = tunedRate(clip->sample, clip->semitones + double(clip->fine));
    const int songTick = saturate(int64_t(part->pos) + part->offset + tick);
    const double share = seq->framesToTicks(songTick, into, rate) / std::max(ticks, 1);
    return clip->reverse ? 1.0 - share : share;
}

void insert(CAudioEvent* clip, const ClipPin& pin) {
    ClipPins& pins = clip->pins;
    const auto end = pins.list + pins.count;
    ClipPin* at = std::ranges::lower_bound(pins.list, end, pin.frame, {}, &ClipPin::frame);
    std::move_backward(at, end, end + 1);
    *at = pin;
    pins.count++;
}

bool fits(const CAudioEvent* clip, int frame, double share) {
    const auto same = [frame](const ClipPin& pin) { return pin.frame == frame; };
    return clip->pins.count < ClipPins::most && frame > clip->start && frame <= clip->end &&
           share > 0.0 && share < 1.0 && std::ranges::none_of(clip->pins, same);
}

int tickOf(CPart* part, int index) {
    int tick = 0;
    const CBaseEvent* e = part->getEvents();
    for (int i = 0; e; e = e->next) {
        tick += e->delta;
        if (i++ == index) break;
    }
    return tick;
}

} // namespace

bool addPins(CSeq* seq, const ClipPlace& place, const std::vector<int>& frames) {
    const CAudioEvent* now = place.clip();
    if (!now || !now->sample) return false;
    const int tick = tickOf(place.part, place.index);
    const int ticks = isMulticlip(place.part)
                          ? sampleAsTicks2(seq, now, saturate(int64_t(place.part->pos) + tick))
                          : seq->getTicks(place.part);
    return edit(seq, place, [&](CAudioEvent* clip) {
        const int before = clip->pins.count;
        for (const int frame : frames) {
            const double share = shareNow(seq, place.part, now, tick, ticks, frame);
            const float pitch =
                isPinned(now) ? pieceAt(now, double(frame) - now->start).pitch : 0.0f;
            if (fits(clip, frame, share)) insert(clip, {frame, pitch, share});
        }
        if (clip->pins.count == before) return;
        if (clip->mode == playRepitch) clip->ticks = asMax(ticks, 1);
        clip->mode = playStretch;
    });
}

double limitPinShare(const ClipPlace& place, int pin, double share) {
    const CAudioEvent* clip = place.clip();
    return has(clip, pin) ? limited(clip, pin, share) : share;
}

bool movePin(CSeq* seq, const ClipPlace& place, int pin, double share) {
    return has(place.clip(), pin) && edit(seq, place, [&](CAudioEvent* clip) {
               clip->pins.list[pin].share = limited(clip, pin, share);
           });
}

bool tunePin(CSeq* seq, const ClipPlace& place, int pin, float semitones) {
    return has(place.clip(), pin) && edit(seq, place, [&](CAudioEvent* clip) {
               clip->pins.list[pin].pitch =
                   fLimit(semitones, -ClipPins::mostPitch, ClipPins::mostPitch);
           });
}

bool deletePin(CSeq* seq, const ClipPlace& place, int pin) {
    return has(place.clip(), pin) && edit(seq, place, [&](CAudioEvent* clip) {
               ClipPins& pins = clip->pins;
               std::move(pins.list + pin + 1, pins.list + pins.count, pins.list + pin);
               pins.list[--pins.count] = ClipPin();
           });
}

bool deletePins(CSeq* seq, const ClipPlace& place) {
    return edit(seq, place, [](CAudioEvent* clip) { clip->pins = ClipPins(); });
}

bool quantizePins(CSeq* seq, const ClipPlace& place, int step) {
    const CAudioEvent* now = place.clip();
    if (!now) return false;
    const int start =
        saturate(int64_t(place.part->pos) + place.part->offset + tickOf(place.part, place.index));
    return edit(seq, place, [&](CAudioEvent* clip) {
        for (int i = 0; i < clip->pins.count; i++) {
            const double share = clip->pins.list[i].share;
            const double into = (clip->reverse ? 1.0 - share : share) * clip->ticks;
            const double line = snapped(step, asRound(start + into), true) - start;
            const double moved = line / std::max(clip->ticks, 1);
            clip->pins.list[i].share = limited(clip, i, clip->reverse ? 1.0 - moved : moved);
        }
    });
}
