#include "instruments/CArpVoice.h"

#include "base/Numbers.h"
#include "base/Random.h"
#include "instruments/CArp.h"

namespace {

constexpr int semitones = 12;

} // namespace

bool CArpVoice::takeStep(Random& chance, int& first, int& last) {
    const bool chord = prog->mode == arpChord;
    if (!chord && step >= count) {
        step = 0;
        if (prog->mode == arpRandom) prog->buildPattern(this, chance);
    }
    if (count < 1) return false;
    if (prog->octaves && played >= (chord ? 1 : count)) turnOctave();
    played++;
    taken++;
    first = chord ? 0 : step++;
    last = chord ? count - 1 : first;
    return true;
}

void CArpVoice::turnOctave() {
    const int range = asMinMax(prog->octaves, 1, CArpProg::maxOctaves) * semitones;
    played = 0;
    if (!prog->transposeMode) octaveDir = 1;
    octave += octaveDir * semitones;
    if (!prog->transposeMode) {
        if (octave >= range) octave = 0;
    } else if (octaveDir > 0) {
        if (octave >= range - semitones) octaveDir = -1;
    } else if (octave < 1) {
        octaveDir = 1;
    }
}

double CArpVoice::swungShare() const {
    return 1.0 - swing + swing * CArp::swing[(swingPhase + 1) & 1];
}

int CArpVoice::gateTicks(double chance) const {
    const double rnd = double(prog->rndGate);
    const double length = prog->getStepInTicks() * swungShare() * (1.0 - rnd + rnd * chance);
    const float gated = float(length) * prog->gate;
    return asMax(asInt(double(gated) - 1.0), 1);
}

void CArpVoice::advance() {
    nextTick += prog->getStepInTicks() * swungShare();
    swingPhase = (swingPhase + 1) & 1;
    if (swingPhase == 0) swing = prog->getSwing();
}
