#include "instruments/COSCSound.h"

#include "base/Numbers.h"
#include "instruments/OscGang.h"

COSCSound::COSCSound(CLayer* owner, CQV* host) : CSound(owner, host) {
    id = "synth";
    type = typeOscSound;
}

void COSCSound::startVoice(CVoice* voice) {
    const double right = double(fLimit(phase, 0.0f, 1.0f)) * 0.5;
    voice->carL.start(0.0);
    voice->carR.start(right);
    voice->modL.start(0.0);
    voice->modR.start(right + double(fLimit(phase2, 0.0f, 1.0f)) * 0.5);
}

Stored<float>* COSCSound::target(int number) {
    switch (number) {
    case targetFeed1:
        return &feed1;
    case targetFeed2:
        return &feed2;
    case targetPhaseMod:
        return &phaseMod;
    case targetDetune:
        return &detune;
    default:
        return CSound::target(number);
    }
}

void COSCSound::process(float* left, float* right, CVoice* voice, int frames) {
    processVoices(&voice, 1, left, right, frames);
}

void COSCSound::processVoices(CVoice** voices, int count, float* left, float* right, int frames) {
    OscGang gang(frames, ahead);
    gang.add(this, voices, count, left, right);
    gang.run();
}
