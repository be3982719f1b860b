#include "instruments/OscGang.h"

#include "base/Numbers.h"
#include "instruments/COSCSound.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double feedbackDepth = 0.2 * OscLanes::cycle; ///< of full feedback
constexpr double lowestHz = 13.75;                      ///< of the note 9 semitones up
constexpr double lowestNote = 9.0;
constexpr float mostOperatorLevel = 5.6f; ///< far beyond what the controls give
constexpr float sameFilter = 1e-9f;       ///< filters that differ by less sound alike

bool sameOperators(const COscState& a, const COscState& b) {
    return a.phase == b.phase && a.last == b.last;
}

/// Whether left and right of a voice are, and stay, the same signal but for the sign.
bool channelsEqual(const CVoice& v, const OscPlan& plan) {
    if (plan.base[targetDetune] != 0.0f) return false;
    if (!sameOperators(v.carL, v.carR) || !sameOperators(v.modL, v.modR)) return false;
    for (int i = 0; i < CVoice::rightSvf; i++)
        if (!(std::fabs(v.svf[i] - plan.inv * v.svf[CVoice::rightSvf + i]) < sameFilter))
            return false;
    return v.outR - v.outL == CVoice::rightSvf;
}

void tune(COscState& osc, double semitones, const CVoice& v) {
    if (osc.pitch == semitones) return;
    osc.pitch = semitones;
    osc.incr = pitchRatio(semitones) * lowestHz / double(v.rate);
}

/// Whether the amp envelope alone decides if a voice is heard, and nothing else of a voice that is
/// not heard matters to others.
bool canRest(const COSCSound& s) {
    const CMod::Param& amp = s.envelope[0]->params[0];
    if (amp.index != targetVolume || amp.amount != 1.0f) return false;
    return std::none_of(std::begin(s.lfo), std::end(s.lfo),
                        [](const auto& l) { return l->restart == restartMono; });
}

/// A note that has died away before its key or its release came to an end.
bool atRest(const CVoice& v) {
    const CEnvStage& amp = v.stages[0];
    return v.live() && !v.first && v.gainL == 0.0f && v.gainR == 0.0f &&
           amp.stage >= phaseSustain && amp.value == 0.0f && amp.to == 0.0f;
}

int widthOf(const CVoice& v) {
    return v.seat == Seat::stereo ? 2 : 1;
}

} // namespace

OscPlan::OscPlan(COSCSound* s, const CVoice* any) : SlicePlan(s, any, COSCSound::ownGain, false) {
    base[targetFeed1] = s->feed1;
    base[targetFeed2] = s->feed2;
    base[targetPhaseMod] = s->phaseMod;
    base[targetDetune] = s->detune * s->detune * 0.5f;
    tuning = double(float(s->coarse)) + double(float(s->fine)) - lowestNote;
    coarse2 = double(float(s->coarse2));
    modRing = double(fLimit(s->modRing, 0.0f, 1.0f));
    oscRing = double(fLimit(s->oscRing, 0.0f, 1.0f));
    pmMul = asMinMax(s->pmMul, 1, COSCSound::maxPmMul);
    width = fLimit(s->width, 0.0f, 1.0f);
    inv = s->oscInv < 0.0f ? -1.0f : 1.0f;
    dist = s->dist != 0;
}

OscGang::OscGang(int callFrames, int aheadFrames) : frames(callFrames), ahead(aheadFrames) {
}

// What is to be run.

void OscGang::add(COSCSound* sound, CVoice** voiceList, int voiceCount, float* left, float* right) {
    const bool mayRest = canRest(*sound);
    eachSeated(
        voiceList, voiceCount, frames, [&](const CVoice& v) { return mayRest && atRest(v); },
        [&](CVoice** seated, int n) { addSeated(sound, seated, n, left, right); });
}

void OscGang::addSeated(COSCSound* sound, CVoice** seated, int n, float* left, float* right) {
    if (planCount == mostSounds || groupCount + n > mostGroups) run();
    const OscPlan& plan = plans[planCount++].emplace(sound, seated[0]);
    for (int i = 0; i < n; i++)
        if (seated[i]->seat == Seat::none)
            seated[i]->seat = channelsEqual(*seated[i], plan) ? Seat::mono : Seat::stereo;
    const Group empty{&plan, sound, left, right, {}};
    Group* group = nullptr;
    for (const Seat seat : {Seat::stereo, Seat::mono})
        for (int i = 0; i < n; i++)
            if (seated[i]->seat == seat) addTo(group, empty, seated[i], widthOf(*seated[i]));
}

void OscGang::addTo(Group*& group, const Group& empty, CVoice* v, int width) {
    if (!group || group->lanes + width > maxLanes) {
        group = &groups[groupCount++];
        *group = empty;
    }
    group->voices[group->count++] = v;
    group->lanes += width;
}

void OscGang::run() {
    for (int from = 0; from < groupCount;) {
        const int behind = seatGroups(from);
        runBatch(*this, frames, ahead);
        for (; from < behind; from++) leaveGroup(groups[from]);
    }
    groupCount = planCount = 0;
}

// Groups in their lanes.

/// Gives lanes to groups from one on, as long as there are some; the group behind the last.
int OscGang::seatGroups(int from) {
    count = lanes = 0;
    for (; from < groupCount; from++) {
        Group& group = groups[from];
        const int start = lanes + lanes % widthOf(*group.voices[0]); // stereo voices come first
        if (start + group.lanes > OscLanes::lanesInAll) break;
        if (start > lanes) s.leaveEmpty(lanes);
        group.first = lanes = start;
        seatGroup(group);
    }
    for (int lane = lanes; lane < OscLanes::lanesInAll; lane++) s.leaveEmpty(lane);
    return from;
}

void OscGang::seatGroup(Group& group) {
    for (int i = 0; i < group.count; i++) {
        CVoice* v = group.voices[i];
        if (v->state == CVoice::sounding)
            seatVoice(group, v);
        else
            for (int k = widthOf(*v); k > 0; k--) s.leaveEmpty(lanes++);
    }
}

void OscGang::seatVoice(const Group& group, CVoice* v) {
    const OscPlan& plan = *group.plan;
    const bool stereo = v->seat == Seat::stereo;
    groupOf[count] = &group;
    LaneVoice& lv = voices[count++] = {v, lanes, stereo};
    loadOperators(lanes, v->carL, v->modL);
    s.stripOf(lanes).load(lanes % maxLanes, *v, 0);
    s.direct[lanes] = plan.inv < 0.0f ? plan.width : 1.0f;
    s.cross[lanes] = 0.0f;
    if (stereo) {
        const float own = (1.0f + plan.width) * 0.5f, other = (1.0f - plan.width) * 0.5f;
        s.direct[lanes] = own;
        s.cross[lanes] = plan.inv * other;
        lanes++;
        loadOperators(lanes, v->carR, v->modR);
        s.stripOf(lanes).load(lanes % maxLanes, *v, 1);
        s.direct[lanes] = plan.inv * own;
        s.cross[lanes] = other;
    }
    for (int lane = lv.lane; lane <= lanes; lane++) {
        s.modRing[lane] = plan.modRing;
        s.oscRing[lane] = plan.oscRing;
        s.dist[lane] = plan.dist ? -1 : 0;
    }
    lanes++;
    if (v->held.left > 0) resume(lv);
}

void OscGang::loadOperators(int lane, const COscState& car, const COscState& mod) {
    s.carPhase[lane] = car.phase;
    s.carLast[lane] = car.last;
    s.modPhase[lane] = mod.phase;
    s.modLast[lane] = mod.last;
}

void OscGang::leaveGroup(const Group& group) {
    for (int i = 0; i < count; i++)
        if (groupOf[i] == &group) storeVoice(voices[i], *group.plan);
    s.meter(group.first, group.lanes, group.sound);
}

void OscGang::storeVoice(const LaneVoice& lv, const OscPlan& plan) {
    CVoice& v = *lv.voice;
    const int right = lv.rightLane();
    storeOperators(lv.lane, v.carL, v.modL);
    s.stripOf(lv.lane).store(lv.lane % maxLanes, v, 0);
    storeOperators(right, v.carR, v.modR);
    s.stripOf(right).store(right % maxLanes, v, 1, lv.stereo ? 1.0f : plan.inv);
    v.held.left = lv.alive ? lv.left : 0;
    if (v.held.left > 0) hold(lv);
    if (ahead == 0) guardVoice(&v);
}

void OscGang::storeOperators(int lane, COscState& car, COscState& mod) const {
    car.phase = s.carPhase[lane];
    car.last = s.carLast[lane];
    mod.phase = s.modPhase[lane];
    mod.last = s.modLast[lane];
}

// Slices.

bool OscGang::beginSlice(LaneVoice& lv, int most) {
    CVoice* v = lv.voice;
    const OscPlan& plan = planOf(lv);
    int n = 0;
    for (;;) {
        n = plan.begin(v, std::min(most, plan.sliceMax));
        plan.modulate(v, n);
        if (n > 0) break;
        plan.advance(v, 0);
    }
    lv.slice = n;
    for (int lane = lv.lane; lane <= lv.rightLane(); lane++) s.setBack(lane);
    setRamps(lv, n);
    setLevels(lv);
    setPitches(lv);
    v->first = false;
    return true;
}

bool OscGang::endSlice(LaneVoice& lv) {
    planOf(lv).fade(lv.voice);
    SlicePlan::advance(lv.voice, lv.slice);
    return true;
}

void OscGang::run(int from, int n) {
    s.run(lanes, n);
    const Group* mixed = nullptr;
    for (int i = 0; i < count; i++) {
        const Group* group = groupOf[i];
        if (group != mixed)
            s.mix(group->first, group->lanes, group->left + from, group->right + from, n);
        mixed = group;
    }
    s.pass(lanes, n);
}

void OscGang::setStrip(const LaneVoice& lv, const StripRamps& ramps) {
    StripLanes& strip = s.stripOf(lv.lane);
    const int lane = lv.lane % maxLanes;
    strip.setSlice(lane, ramps, true, !lv.stereo);
    if (lv.stereo) {
        strip.setSlice(lane + 1, ramps, false, true);
    } else {
        strip.gainR[lane] *= planOf(lv).inv;
        strip.gainRStep[lane] *= planOf(lv).inv;
    }
}

void OscGang::setRamps(const LaneVoice& lv, int n) {
    CVoice* v = lv.voice;
    const OscPlan& plan = planOf(lv);
    const StripTargets to = stripTargets(*v, plan);
    const auto level = [cur = v->sound->cur](int target) {
        const float x = fLimit(cur[target], -mostOperatorLevel, mostOperatorLevel);
        return x * x;
    };
    float values[] = {v->gainL, v->gainR, v->cut2, v->feed1Sq, v->feed2Sq, v->phaseModSq};
    Ramp ramps[6];
    rampsTo(
        values,
        {to.gainL, to.gainR, to.cut, level(targetFeed1), level(targetFeed2), level(targetPhaseMod)},
        ramps, plan, v->first, n);
    v->gainL = values[0];
    v->gainR = values[1];
    v->cut2 = values[2];
    v->feed1Sq = values[3];
    v->feed2Sq = values[4];
    v->phaseModSq = values[5];
    setStrip(lv, {ramps[0], ramps[1], ramps[2], to.damp});
    v->held.feed1 = ramps[3];
    v->held.feed2 = ramps[4];
    v->held.phaseMod = ramps[5];
}

void OscGang::setLevels(const LaneVoice& lv) {
    const HeldSlice& held = lv.voice->held;
    const double depth = planOf(lv).pmMul * OscLanes::cycle;
    for (int lane = lv.lane; lane <= lv.rightLane(); lane++) {
        s.feed1[lane] = double(held.feed1.value) * feedbackDepth;
        s.feed1Step[lane] = double(held.feed1.step) * feedbackDepth;
        s.feed2[lane] = double(held.feed2.value) * feedbackDepth;
        s.feed2Step[lane] = double(held.feed2.step) * feedbackDepth;
        s.phaseMod[lane] = double(held.phaseMod.value) * depth;
        s.phaseModStep[lane] = double(held.phaseMod.step) * depth;
    }
}

void OscGang::setPitches(const LaneVoice& lv) {
    CVoice* v = lv.voice;
    const OscPlan& plan = planOf(lv);
    const float* cur = v->sound->cur;
    const double p = double(cur[targetPitch]) + double(v->stages[pitchEnvIndex].value) +
                     double(v->pitch) + plan.tuning;
    const double apart = double(cur[targetDetune]);
    tune(v->carL, p + apart, *v);
    tune(v->modL, p + apart + plan.coarse2, *v);
    s.carIncr[lv.lane] = v->carL.incr;
    s.modIncr[lv.lane] = v->modL.incr;
    if (!lv.stereo) return;
    tune(v->carR, p - apart, *v);
    tune(v->modR, p - apart + plan.coarse2, *v);
    s.carIncr[lv.lane + 1] = v->carR.incr;
    s.modIncr[lv.lane + 1] = v->modR.incr;
}

/// Goes on with a slice that the end of a call has cut off.
void OscGang::resume(LaneVoice& lv) {
    const CVoice* v = lv.voice;
    const HeldSlice& held = v->held;
    lv.slice = held.frames;
    lv.left = held.left;
    setStrip(lv, held.strip);
    setLevels(lv);
    for (int lane = lv.lane; lane <= lv.rightLane(); lane++) {
        s.stripOf(lane).at[lane % maxLanes] = float(held.frames - held.left);
        s.feed1[lane] = held.feed1Now;
        s.feed2[lane] = held.feed2Now;
        s.phaseMod[lane] = held.modNow;
    }
    s.carIncr[lv.lane] = v->carL.incr;
    s.modIncr[lv.lane] = v->modL.incr;
    if (!lv.stereo) return;
    s.carIncr[lv.lane + 1] = v->carR.incr;
    s.modIncr[lv.lane + 1] = v->modR.incr;
}

/// Keeps what is left of a slice for the next call.
void OscGang::hold(const LaneVoice& lv) const {
    HeldSlice& held = lv.voice->held;
    held.frames = lv.slice;
    held.strip = s.stripOf(lv.lane).slice(lv.lane % maxLanes, lv.rightLane() % maxLanes);
    if (!lv.stereo) {
        held.strip.gainR.value *= planOf(lv).inv;
        held.strip.gainR.step *= planOf(lv).inv;
    }
    held.feed1Now = s.feed1[lv.lane];
    held.feed2Now = s.feed2[lv.lane];
    held.modNow = s.phaseMod[lv.lane];
}
