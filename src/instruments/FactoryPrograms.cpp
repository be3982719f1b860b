#include "instruments/FactoryPrograms.h"

#include "engine/CQV.h"
#include "instruments/COSCSound.h"
#include "instruments/CSynthProg.h"

namespace {

const char* const names[factoryCount] = {
    "DanceBass",     "80's Bass",   "DeepBass",      "Pads",        "Up-right bass", "Eurosynth",
    "Digital pluck", "Phaser bass", "Resonant lead", "Tremolo pad", "Trumpet",       "Digital",
    "Klang",         "Amplified",   "Scary",         "Lead on!",    "Arpeggio",      "Flute",
    "Detune",        "Massive",     "Melody",        "Old piano",   "Noiser",        "Violina",
    "Synth",         "Trance",      "Pulse",         "Strings",     "Analog",        "Sub",
    "Random",        "Sinus"};

} // namespace

const char* factoryName(int index) {
    return names[index];
}

CSynthProg* buildFactoryProg(CQV* host, CSampler* sampler, int index) {
    auto* prog = new CSynthProg(host, sampler);
    prog->id = names[index];
    CLayer* layer = prog->addLayer();
    auto* sound = new COSCSound(layer, host);
    layer->addSound(sound);
    sound->feed1 = 1.0f;
    sound->cutoff = 0.9f;
    sound->envelope[1]->sustain = 0.24f;
    sound->envelope[1]->decay = 0.15f;
    sound->envelope[1]->dc = 0.2f;
    return prog;
}
