#include "instruments/ProgramKnobs.h"

#include "instruments/COSCSound.h"
#include "instruments/CSynthProg.h"

#include <algorithm>

namespace {

constexpr int wheel = 1, timbre = 16, spread = 17, grain = 18, resonance = 71, brightness = 74;

/// A filter that only takes out what lies below all notes: its cutoff is no brightness.
constexpr float rumbleCutoff = 0.2f;
bool onlyCleans(const CSound& s) {
    return s.filter == filterHigh && s.cutoff < rumbleCutoff;
}

int brightnessOf(const COSCSound& s) {
    if (!onlyCleans(s)) return targetCutoff;
    return s.feed1 > 0.0f ? targetFeed1 : targetPhaseMod;
}

/// Something that adds to the sound as it rises from 0.
int wheelOf(const COSCSound& s) {
    if (s.phaseMod > 0.0f && s.feed2 == 0.0f) return targetFeed2;
    if (s.q == 0.0f && !onlyCleans(s)) return targetQ;
    if (s.feed1 == 0.0f) return targetFeed1;
    if (s.phaseMod == 0.0f) return targetPhaseMod;
    return s.detune == 0.0f ? targetDetune : targetNone;
}

struct Knob {
    const char* name;
    int controller;
};

constexpr Knob knobs[] = {{"Brightness", brightness}, {"Resonance", resonance}, {"Wheel", wheel},
                          {"Timbre", timbre},         {"Spread", spread},       {"Grain", grain}};
constexpr int levelControllers[progMacros] = {19, 80, 81, 82, 83, 85, 86, 87};

bool follows(CSynthProg& prog, int controller) {
    bool any = false;
    prog.eachSound([&](const CSound* s) { any = any || s->ccMap[controller] != targetNone; });
    return any;
}

} // namespace

void mapControllers(COSCSound& s) {
    s.ccMap[brightness] = brightnessOf(s);
    s.ccMap[resonance] = targetQ;
    s.ccMap[timbre] = targetPhaseMod;
    s.ccMap[spread] = targetDetune;
    s.ccMap[grain] = s.phaseMod > 0.0f ? targetFeed2 : targetFeed1;
    s.ccMap[wheel] = wheelOf(s);
}

void nameMacros(CSynthProg& prog) {
    int used = 0;
    for (const Knob& k : knobs)
        if (follows(prog, k.controller)) prog.macros[used++] = {k.name, k.controller};
    const int firstLevel = used;
    prog.eachSound([&](CSound* s) {
        int at = firstLevel;
        while (at < used && prog.macros[at].name != s->id) at++;
        if (at >= progMacros) return;
        const int controller = levelControllers[at - firstLevel];
        prog.macros[at] = {s->id, controller};
        s->ccMap[controller] = targetVolume;
        used = std::max(used, at + 1);
    });
    // What is free still goes to the tops of all sounds and to their places.
    constexpr struct {
        const char* name;
        int controller, target;
    } more[] = {{"Edge", 20, targetFeed1}, {"Place", 21, targetPan}, {"Filter", 22, targetCutoff}};
    for (const auto& m : more) {
        if (used >= progMacros) return;
        prog.eachSound([&](CSound* s) { s->ccMap[m.controller] = m.target; });
        prog.macros[used++] = {m.name, m.controller};
    }
}
