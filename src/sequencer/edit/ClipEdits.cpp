#include "sequencer/edit/ClipEdits.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <unordered_set>
#include <vector>

namespace {

constexpr StepEffects clipEffects{.song = true, .seq = SeqNotice::parts};
constexpr float maxSemitones = 120.0f, maxFadeMs = 1e6f, maxGain = 4.0f;
constexpr int maxLoops = 65536;

const char* titleOf(ClipSetting setting) {
    switch (setting) {
    case ClipSetting::fadeIn:
        return "Fade In";
    case ClipSetting::fadeOut:
        return "Fade Out";
    case ClipSetting::gain:
        return "Gain";
    case ClipSetting::pan:
        return "Pan";
    case ClipSetting::mode:
        return "Play mode";
    default:
        return "Pitch";
    }
}

float valueOf(const CAudioEvent* e, ClipSetting setting) {
    switch (setting) {
    case ClipSetting::semitones:
        return float(e->semitones);
    case ClipSetting::fine:
        return e->fine;
    case ClipSetting::fadeIn:
        return e->fadeInMs;
    case ClipSetting::fadeOut:
        return e->fadeOutMs;
    case ClipSetting::gain:
        return e->gain;
    case ClipSetting::pan:
        return e->pan;
    default:
        return float(e->mode);
    }
}

void set(CAudioEvent* e, ClipSetting setting, float value) {
    switch (setting) {
    case ClipSetting::semitones:
        e->semitones = asRound(double(fLimit(value, -maxSemitones, maxSemitones)));
        break;
    case ClipSetting::fine:
        e->fine = fLimit(value, -1.0f, 1.0f);
        break;
    case ClipSetting::fadeIn:
        e->fadeInMs = fLimit(value, 0.0f, maxFadeMs);
        break;
    case ClipSetting::fadeOut:
        e->fadeOutMs = fLimit(value, 0.0f, maxFadeMs);
        break;
    case ClipSetting::gain:
        e->gain = fLimit(value, 0.0f, maxGain);
        break;
    case ClipSetting::pan:
        e->pan = fLimit(value, -1.0f, 1.0f);
        break;
    case ClipSetting::mode:
        e->mode = (unsigned char)asMinMax(asRound(double(value)), playRepitch, playStretch);
        break;
    }
}

/// Calls `visit(part)` for each of the audio parts meant, one for each master.
template <class F>
void eachAudioPart(CSeq* seq, F&& visit) {
    std::unordered_set<const CPart*> done;
    for (const PlacedPart& p : selectedParts(seq))
        if (p.part->type == partAudio && done.insert(p.part->content()).second) visit(p.part);
}

/// Calls `visit(clip, tick)` for the clips meant of a list of a part.
template <class F>
void eachChosen(CPart* part, CBaseEvent* list, F&& visit) {
    const bool several = isMulticlip(part);
    eachEvent(list, [&](CBaseEvent* e, int tick) {
        if (!several || (e->flags & eventSelected)) visit(asClip(e), tick);
    });
}

/// One step: `change(part, clip, tick)` for all that are meant. False if there are none.
bool edit(CSeq* seq, const char* title,
          const std::function<void(CPart*, CAudioEvent*, int)>& change) {
    CUndo* undo = seq->host->undoStart(title, seq, clipEffects);
    bool any = false;
    eachAudioPart(seq, [&](CPart* part) {
        std::unique_ptr<CPart> draft(part->content()->copy(0));
        eachChosen(part, draft->events, [&](CAudioEvent* clip, int tick) {
            change(part, clip, tick);
            any = true;
        });
        if (!sameContent(draft.get(), part->content()))
            swapUndoPart(undo, part->content(), draft.release());
    });
    seq->host->undoEnd(undo, false);
    return any;
}

/// The ticks that a clip lasts, which it keeps when it comes to follow the tempo.
int ticksOf(CSeq* seq, CPart* part, const CAudioEvent* clip, int tick) {
    if (!isMulticlip(part)) return seq->getTicks(part);
    return sampleAsTicks2(seq, clip, saturate(int64_t(part->pos) + part->offset + tick));
}

void change(CSeq* seq, ClipSetting setting, float value, CPart* part, CAudioEvent* clip, int tick) {
    const int ticks = ticksOf(seq, part, clip, tick);
    const bool ownSpeed = clip->mode == playRepitch;
    set(clip, setting, value);
    if (ownSpeed && clip->mode != playRepitch) clip->ticks = asMax(ticks, 1);
}

bool apply(CSeq* seq, ClipSetting setting, float value, bool relative) {
    return edit(seq, titleOf(setting), [&](CPart* part, CAudioEvent* clip, int tick) {
        change(seq, setting, relative ? valueOf(clip, setting) + value : value, part, clip, tick);
    });
}

/// The only clip of a part; null for parts of another kind, which slip by their offset.
const CAudioEvent* singleClip(CPart* part) {
    const CAudioEvent* clip = onlyClip(part);
    return clip && clip->sample && clip->sample->valid ? clip : nullptr;
}

/// Frames of a clip that pass in so many ticks.
int slipFrames(CSeq* seq, CPart* part, const CAudioEvent* clip, int ticks) {
    if (clip->mode == playRepitch)
        return framesBetween(seq, clip, part->pos, saturate(int64_t(part->pos) + ticks));
    const double range = double(clip->end) - clip->start + 1;
    return saturate(asRound64(range * ticks / asMax(clip->ticks, 1)));
}

/// The most ticks, up to `limit`, whose frames a clip has to one side.
int mostTicks(CSeq* seq, CPart* part, const CAudioEvent* clip, int frames, int sign) {
    int fits = 0, tooMany = maxTicks;
    while (tooMany - fits > 1) {
        const int ticks = fits + (tooMany - fits) / 2;
        const bool fit = int64_t(sign) * slipFrames(seq, part, clip, sign * ticks) <= frames;
        (fit ? fits : tooMany) = ticks;
    }
    return fits;
}

SlipRange rangeOf(CSeq* seq, CPart* part) {
    const CAudioEvent* clip = singleClip(part);
    if (!clip)
        return {saturate(-int64_t(maxTicks) - part->offset),
                saturate(int64_t(maxTicks) - part->offset)};
    const int before = asMax(clip->start, 0),
              behind = asMax(clip->sample->frames - 1 - clip->end, 0);
    const bool back = clip->reverse != 0;
    return {-mostTicks(seq, part, clip, back ? before : behind, -1),
            mostTicks(seq, part, clip, back ? behind : before, 1)};
}

} // namespace

bool setClips(CSeq* seq, ClipSetting setting, float value) {
    return apply(seq, setting, value, false);
}

bool changeClips(CSeq* seq, ClipSetting setting, float by) {
    return apply(seq, setting, by, true);
}

bool scaleClips(CSeq* seq, float before, float after) {
    if (!(before > 0)) return setClips(seq, ClipSetting::gain, after);
    return edit(seq, titleOf(ClipSetting::gain), [&](CPart*, CAudioEvent* clip, int) {
        set(clip, ClipSetting::gain, clip->gain * (after / before));
    });
}

bool setClip(CSeq* seq, const ClipPlace& place, ClipSetting setting, float value) {
    if (!place.clip() || seq->isLocked(place.part)) return false;
    std::unique_ptr<CPart> draft(place.part->content()->copy(0));
    int i = 0;
    eachEvent(draft->events, [&](CBaseEvent* e, int tick) {
        if (i++ == place.index) change(seq, setting, value, place.part, asClip(e), tick);
    });
    if (sameContent(draft.get(), place.part->content())) return false;
    CUndo* undo = seq->host->undoStart(titleOf(setting), seq, clipEffects);
    swapUndoPart(undo, place.part->content(), draft.release());
    seq->host->undoEnd(undo, false);
    return true;
}

void reverseClips(CSeq* seq) {
    bool all = true;
    eachAudioPart(seq, [&](CPart* part) {
        eachChosen(part, part->getEvents(),
                   [&](const CAudioEvent* clip, int) { all = all && clip->reverse; });
    });
    edit(seq, "Reverse", [all](CPart*, CAudioEvent* clip, int) { clip->reverse = !all; });
}

SlipRange slipRange(CSeq* seq) {
    const std::vector<PlacedPart> parts = selectedParts(seq);
    if (parts.empty()) return {};
    constexpr auto bounds = std::numeric_limits<int>();
    SlipRange range{bounds.min(), bounds.max()};
    for (const PlacedPart& p : parts) {
        const SlipRange own = rangeOf(seq, p.part);
        range.least = std::max(range.least, own.least);
        range.greatest = std::min(range.greatest, own.greatest);
    }
    return range;
}

void slipParts(CSeq* seq, int ticks) {
    const SlipRange range = slipRange(seq);
    const int by = asMinMax(ticks, range.least, range.greatest);
    if (by == 0) return;
    CUndo* undo = seq->host->undoStart("Slip", seq, clipEffects);
    std::unordered_set<const CPart*> done;
    for (const PlacedPart& p : selectedParts(seq)) {
        const CAudioEvent* clip = singleClip(p.part);
        if (!clip) {
            undo->asGrow(p.part, p.part->offset, by);
        } else if (done.insert(p.part->content()).second) {
            const int frames = slipFrames(seq, p.part, clip, by) * (clip->reverse ? 1 : -1);
            CPart* edited = p.part->content()->copy(0);
            auto* moved = firstClip(edited);
            moved->start += frames;
            moved->end += frames;
            recutPins(moved, clip);
            swapUndoPart(undo, p.part->content(), edited);
        }
    }
    seq->host->undoEnd(undo, false);
}

CStr loopPart(CSeq* seq, CPart* part, int count) {
    CSongTrack* songTrack = seq->partToSongTrack(part);
    if (!songTrack || songTrack->track->locked || count < 1) return "";
    const int64_t length = seq->getTicks(part);
    if (count > maxLoops || part->pos + length * (int64_t(count) + 1) > maxTicks)
        return songTooLong;
    CUndo* undo = seq->host->undoStart("Loop", seq, clipEffects);
    PartChange change;
    int at = part->pos + int(length);
    for (int i = 0; i < count; i++) {
        std::unique_ptr<CPart> ghost(seq->makeGhost(part, undo));
        ghost->setSelected(false);
        ghost->pos = at;
        at = limitTicks(int64_t(at) + seq->getTicks(ghost.get()));
        change.add(songTrack, std::move(ghost));
    }
    change.record(undo);
    seq->host->undoEnd(undo, false);
    return "";
}
