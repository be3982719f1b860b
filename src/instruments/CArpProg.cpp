#include "instruments/CArpProg.h"

#include "base/Numbers.h"
#include "base/Random.h"
#include "instruments/CArpVoice.h"

#include <algorithm>

void CArpProg::setMode(ToStore<int> v) {
    const int valid = v >= 0 && v < arpModes ? int(v) : int(arpAsPlayed);
    mode = valid;
    sorted = valid != arpAsPlayed && valid != arpChord;
}

void CArpProg::setSwing(ToStore<float> v) {
    swing = fLimit(v, 0.0f, 1.0f);
}

void CArpProg::setStepTicks(ToStore<float> v) {
    stepTicks = fLimit(v, minStep, maxStep);
}

void CArpProg::setTriplets(ToStore<int> v) {
    triplets = asMinMax(v, 0, 1);
}

void CArpProg::setRndGate(ToStore<float> v) {
    rndGate = fLimit(v, 0.0f, 1.0f);
}

void CArpProg::setRndVelocity(ToStore<float> v) {
    rndVelocity = fLimit(v, 0.0f, 1.0f);
}

void CArpProg::setOctaves(ToStore<int> v) {
    octaves = asMinMax(v, 1, maxOctaves);
}

void CArpProg::setTransposeMode(ToStore<int> v) {
    transposeMode = asMinMax(v, 0, 1);
}

void CArpProg::setGate(ToStore<float> v) {
    gate = fLimit(v, minShare, 1.0f);
}

void CArpProg::setProb(ToStore<float> v) {
    prob = fLimit(v, minShare, 1.0f);
}

void CArpProg::copySettings(const CArpProg& src) {
    id = src.id;
    sorted = src.sorted;
    mode = src.mode;
    swing = src.swing;
    stepTicks = src.stepTicks;
    triplets = src.triplets;
    rndGate = src.rndGate;
    rndVelocity = src.rndVelocity;
    octaves = src.octaves;
    transposeMode = src.transposeMode;
    gate = src.gate;
    prob = src.prob;
}

double CArpProg::getStepInTicks() const {
    const double ticks = double(fLimit(stepTicks, minStep, maxStep));
    return triplets ? ticks * 2.0 / 3.0 : ticks;
}

double CArpProg::getSwing() const {
    return double(fLimit(swing, 0.0f, 1.0f));
}

void CArpProg::addKey(int key, int velocity) {
    if (keyCount >= maxKeys) return;
    const CArpKey made{static_cast<signed char>(key - CArpKey::middle),
                       static_cast<unsigned char>(velocity)};
    int at = keyCount;
    if (sorted) {
        at = 0;
        while (at < keyCount && keys[at].key < made.key) at++;
    }
    std::copy_backward(keys + at, keys + keyCount, keys + keyCount + 1);
    keys[at] = made;
    keyCount++;
}

void CArpProg::removeAt(int i) {
    std::copy(keys + i + 1, keys + keyCount, keys + i);
    keyCount--;
}

void CArpProg::removeKey(int key) {
    if (const CArpKey* held = getkeyPressed(key)) removeAt(int(held - keys));
}

CArpKey* CArpProg::getkeyPressed(int key) {
    for (int i = 0; i < keyCount; i++)
        if (keys[i].key + CArpKey::middle == key) return &keys[i];
    return nullptr;
}

void CArpProg::removeLatched() {
    for (int i = keyCount - 1; i >= 0; i--)
        if (!keys[i].down) removeAt(i);
    latchHeld = 0;
}

void CArpProg::removeAllKeys() {
    keyCount = 0;
    latchHeld = 0;
}

void CArpProg::buildPattern(CArpVoice* voice, Random& chance) const {
    if (!voice) return;
    voice->count = 0;
    const int last = keyCount - 1;
    const auto up = [&](int from, int to) {
        for (int i = from; i <= to; i++) voice->add(keys[i]);
    };
    const auto down = [&](int from, int to) {
        for (int i = from; i >= to; i--) voice->add(keys[i]);
    };
    switch (mode) {
    case arpDown:
        return down(last, 0);
    case arpUpDown:
        return up(0, last - 1), down(last, 1);
    case arpUpAndDown:
        return up(0, last), down(last, 0);
    case arpDownUp:
        return down(last, 1), up(0, last - 1);
    case arpDownAndUp:
        return down(last, 0), up(0, last);
    case arpRandom:
        for (int i = 0; i < keyCount; i++) voice->add(keys[asInt(chance.unit() * keyCount)]);
        return;
    default:
        return up(0, last);
    }
}
