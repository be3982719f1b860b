#pragma once

#include "instruments/OscLanes.h"

#include <optional>

class COSCSound;

/// Settings of an operator sound for one call.
struct OscPlan : SlicePlan {
    double tuning, coarse2;
    double modRing, oscRing;
    int pmMul;
    float width;
    float inv; ///< +1 or -1: sign of the right pair
    bool dist;

    OscPlan(COSCSound* s, const CVoice* any);
};

/// Voices of operator sounds that are worked out in step, as many at a time as there are lanes,
/// whichever sound they are of. What each sound gives is what it would give alone. Lies on the
/// stack for one call; graph holder.
class OscGang {
public:
    static constexpr int mostSounds = 8; ///< that are added at a time; more are run before

    /// For calls of `frames`, `ahead` frames before the end of a stride.
    OscGang(int frames, int ahead);

    /// Some voices of a sound, which are heard in these outputs once all have been run.
    void add(COSCSound* sound, CVoice** voices, int count, float* left, float* right);
    /// Adds all voices to their outputs and forgets them.
    void run();

    // Of a batch of lanes: for `runBatch`.
    LaneVoice voices[OscLanes::lanesInAll];
    int count = 0;
    OscLanes s;
    bool beginSlice(LaneVoice& lv, int most);
    bool endSlice(LaneVoice& lv);
    void run(int from, int n);

private:
    static constexpr int mostGroups = maxBatchVoices;

    /// Up to eight lanes of voices of one sound, which are summed up before others come to them.
    struct Group {
        const OscPlan* plan;
        COSCSound* sound;
        float* left;
        float* right;
        CVoice* voices[maxLanes];
        int count = 0;
        int lanes = 0;
        int first = 0; ///< lane
    };

    int frames, ahead;
    std::optional<OscPlan> plans[mostSounds];
    int planCount = 0;
    Group groups[mostGroups];
    int groupCount = 0;
    const Group* groupOf[OscLanes::lanesInAll] = {}; ///< by place in `voices`
    int lanes = 0;                                   ///< in use

    void addSeated(COSCSound* sound, CVoice** seated, int n, float* left, float* right);
    void addTo(Group*& group, const Group& empty, CVoice* v, int width);
    int seatGroups(int from);
    void seatGroup(Group& group);
    void seatVoice(const Group& group, CVoice* v);
    void loadOperators(int lane, const COscState& car, const COscState& mod);
    void leaveGroup(const Group& group);
    void storeVoice(const LaneVoice& lv, const OscPlan& plan);
    void storeOperators(int lane, COscState& car, COscState& mod) const;
    const OscPlan& planOf(const LaneVoice& lv) const { return *groupOf[&lv - voices]->plan; }
    void setStrip(const LaneVoice& lv, const StripRamps& ramps);
    void setRamps(const LaneVoice& lv, int n);
    void setLevels(const LaneVoice& lv);
    void setPitches(const LaneVoice& lv);
    void resume(LaneVoice& lv);
    void hold(const LaneVoice& lv) const;
};
