#include "instruments/SoundModulation.h"

#include "instruments/COSCSound.h"
#include "instruments/SoundParams.h"

#include <algorithm>
#include <cmath>

namespace {

/// From where to where a source goes during a note.
struct Span {
    double low = 0.0, high = 1.0;
};

Span spanOf(const CEnv& env) {
    const double from = double(env.initial), held = double(env.sustain);
    const bool holds = env.release == 1.0f; // and is not let go
    Span span{std::min(from, held), 1.0};
    if (env.attack == 0.0f) span.low = held;
    if (!holds) span.low = 0.0;
    return span;
}

struct Reach {
    double low, high;
    bool any = false;

    void route(const CMod& mod, const Span& span, int target) {
        for (const CMod::Param& slot : mod.params) {
            const double amount = double(slot.amount);
            if (slot.index != target || amount == 0.0) continue;
            any = true;
            const double a = at(amount, span.low, target), b = at(amount, span.high, target);
            if (isAdditive(target)) {
                low += std::min(a, b);
                high += std::max(a, b);
                continue;
            }
            const double corners[] = {low * a, low * b, high * a, high * b};
            low = *std::ranges::min_element(corners);
            high = *std::ranges::max_element(corners);
        }
    }

private:
    static double at(double amount, double source, int target) {
        return isAdditive(target) ? amount * (2.0 * source - 1.0) : 1.0 + amount * (source - 1.0);
    }
};

/// What a voice has made of a setting, in its unit: some are worked with in another.
double shownOf(const CSound& sound, int target, double coarse) {
    const double v = double(sound.curShown[target].load());
    if (target == targetPitch) return coarse + v;
    if (target == targetVolume && sound.type == typeOscSound) return v / double(COSCSound::ownGain);
    return target == targetDetune ? std::sqrt(std::max(0.0, 2.0 * v)) : v;
}

} // namespace

ModulatedValue modulationOf(const CSound& sound, const Setting& setting) {
    const int target = targetOfSetting(setting);
    if (target == targetNone) return {};
    const double own = setting.kind.get(&sound, setting.index)[0];
    const bool squared = target == targetDetune; // before it is modulated
    Reach reach{squared ? own * own : own, squared ? own * own : own};
    for (int i = 1; i < envelopeCount; i++)
        reach.route(*sound.envelope[i], spanOf(*sound.envelope[i]), target);
    for (const auto& lfo : sound.lfo) reach.route(*lfo, {}, target);
    reach.route(*sound.vel, {}, target);
    if (!reach.any || reach.low == reach.high) return {};
    if (squared) {
        reach.low = std::sqrt(std::max(0.0, reach.low));
        reach.high = std::sqrt(std::max(0.0, reach.high));
    }
    ModulatedValue made{true, std::clamp(reach.low, setting.least, setting.most),
                        std::clamp(reach.high, setting.least, setting.most)};
    made.sounding = sound.peakL > 0.0f || sound.peakR > 0.0f;
    if (made.sounding) made.now = shownOf(sound, target, own);
    return made;
}
