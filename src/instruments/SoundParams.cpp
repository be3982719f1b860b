#include "instruments/SoundParams.h"

#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "instruments/CSampler.h"
#include "instruments/SoundSettings.h"

#include <set>
#include <string_view>
#include <utility>

namespace {

/// The controller that each target has elsewhere as well, and the first of those that are free for
/// any use.
constexpr int usualControllers[targetCount] = {-1, -1, 7, 10, 74, 71, 16, 17, 18, 94};
constexpr int firstFree = 20, lastFree = 119;

struct Named {
    std::string_view group, name;
    int target;
};
constexpr Named named[] = {
    {"Level", "Volume", targetVolume},      {"Level", "Pan", targetPan},
    {"Filter", "Cutoff", targetCutoff},     {"Filter", "Resonance", targetQ},
    {"Carrier", "Feedback", targetFeed1},   {"Modulator", "Feedback", targetFeed2},
    {"Modulator", "Depth", targetPhaseMod}, {"Stereo", "Detune", targetDetune},
    {"Pitch", "Coarse", targetPitch},
};

/// The usual one before others, such as the wheel, which a player has for himself.
int controllerTo(const CSound& sound, int target) {
    const int usual = usualControllers[target];
    if (usual >= 0 && sound.ccMap[usual] == target) return usual;
    for (int i = 0; i < int(std::size(sound.ccMap)); i++)
        if (sound.ccMap[i] == target) return i;
    return -1;
}

bool movesNothing(CSynthProg& prog, int controller) {
    bool free = true;
    prog.eachSound([&](const CSound* s) { free = free && s->ccMap[controller] == targetNone; });
    return free;
}

int freeController(CSynthProg& prog, int target) {
    const int usual = usualControllers[target];
    if (usual >= 0 && movesNothing(prog, usual)) return usual;
    for (int i = firstFree; i <= lastFree; i++)
        if (movesNothing(prog, i)) return i;
    return -1;
}

void lead(ValueDoor& door, CSound& sound, int target, int controller) {
    for (const Setting& s : controllerSettings(sound))
        if (s.index == target) door.set(s.of(&sound), controller);
}

/// Calls `visit` for each sound of the current program that it moves, with what it moves there.
template <class F>
void eachMoved(CSampler& sampler, int param, F&& visit) {
    CSynthProg* prog = sampler.getProg();
    if (!prog || param < 0 || param >= CSampler::controllers) return;
    prog->eachSound([&](CSound* s) {
        const int target = s->ccMap[param];
        if (s->target(target)) visit(s, target);
    });
}

} // namespace

int targetOfSetting(const Setting& setting) {
    for (const Named& n : named)
        if (n.group == setting.group && n.name == setting.name()) return n.target;
    return targetNone;
}

ParamRef soundParamOf(CSampler& sampler, CSound& sound, const Setting& setting, bool assign,
                      const std::vector<CSound*>& along) {
    const int target = targetOfSetting(setting);
    CSynthProg* prog = sampler.getProg();
    if (!prog || !sound.target(target)) return {};
    int controller = controllerTo(sound, target);
    if (controller < 0 && assign) {
        controller = freeController(*prog, target);
        if (controller < 0) return {};
        ValueDoor& door = *sampler.host->values;
        const bool alone = !door.dragging(); // else it belongs to that gesture
        if (alone) door.begin("Controller");
        lead(door, sound, target, controller);
        for (CSound* s : along)
            if (controllerTo(*s, target) < 0) lead(door, *s, target, controller);
        if (alone) door.end();
    }
    return controller < 0 ? ParamRef{} : ParamRef{&sampler, controller};
}

float soundParamShare(CSampler& sampler, int param) {
    float share = sampler.param(param);
    bool first = true;
    eachMoved(sampler, param, [&](CSound* s, int target) {
        if (!std::exchange(first, false)) return;
        const float v = *s->target(target);
        share = target == targetPan ? (v + 1.0f) / 2.0f : v;
    });
    return share;
}

bool soundParamMoves(CSampler& sampler, int param) {
    bool any = false;
    eachMoved(sampler, param, [&any](CSound*, int) { any = true; });
    return any;
}

StoredValue soundParameter(CSampler& sampler, int param) {
    static const StoredValue::Kind kind = {
        nullptr,
        [](const CObject* o, int i) {
            // A sampler tells what it has without being const, though it changes nothing.
            auto* s = const_cast<CSampler*>(static_cast<const CSampler*>(o));
            return StoredValue::Numbers{double(soundParamShare(*s, i))};
        },
        [](CObject* o, int i, const StoredValue::Numbers& to) {
            static_cast<CSampler*>(o)->setParam(i, float(to[0]));
        },
        [](int i) { return i; },
        [](CObject* o, int i, std::vector<StoredValue>& all) {
            static_cast<CSampler*>(o)->listParam(i, all);
        }};
    return {&kind, &sampler, param};
}

CStr soundParamName(CSampler& sampler, int param) {
    std::set<int> moved;
    eachMoved(sampler, param, [&](CSound*, int target) { moved.insert(target); });
    CStr names;
    for (const int target : moved)
        names += (names.empty() ? CStr() : CStr(", ")) + paramAsStr(target);
    return names.empty() ? CStr("CC-") + asStr(param) : names;
}
