#include "instruments/FactoryTable.h"

#include "instruments/FactoryShapes.h"

namespace factory {

const Program programs[factoryCount] = {
    {"DanceBass", "Bass", "dance house short", danceBass},
    {"80's Bass", "Bass", "slap funk picked", eightiesBass, 0.805f},
    {"DeepBass", "Bass", "dark analog slow", deepBass, 0.718f},
    {"Pads", "Pad", "air warm slow wide", pads, 0.879f, 3500},
    {"Up-right bass", "Bass", "acoustic jazz plucked", uprightBass, 0.841f, 1000},
    {"Eurosynth", "Lead", "stab dance bright chord", eurosynth, 0.813f, 1800, {0.4f, 3, 4, 3, 4}},
    {"Digital pluck", "Pluck", "glass clear echo", digitalPluck, 0.856f, 1800, {0.45f, 3, 4, 1, 2}},
    {"Phaser bass", "Bass", "moving funk sweep", phaserBass, 0.761f},
    {"Resonant lead",
     "Lead",
     "mono acid filter glide",
     resonantLead,
     0.692f,
     1600,
     {0.4f, 1, 2, 3, 4}},
    {"Tremolo pad", "Pad", "organ vintage swaying", tremoloPad, 0.972f, 2800},
    {"Trumpet", "Wind", "brass solo", trumpet, 0.833f, 1600},
    {"Digital", "Keys", "electric piano tine bell", digital, 0.933f, 1500},
    {"Klang", "Bell", "metal gong strange", klang, 0.769f, 3000},
    {"Amplified", "Lead", "guitar distorted rock", amplified, 0.756f, 1300, {0.35f, 3, 4, 1, 1}},
    {"Scary", "Effect", "dark film ghost", scary, 0.57f, 4500},
    {"Lead on!", "Lead", "mono sync bright glide", leadOn, 0.851f, 1500, {0.42f, 1, 2, 3, 4}},
    {"Arpeggio", "Pluck", "short hollow echo sequence", arpeggio, 0.982f, 1600, {0.5f, 3, 4, 1, 2}},
    {"Flute", "Wind", "soft breath solo", flute, 0.757f, 2200},
    {"Detune", "Lead", "wide saw chord rave", detune, 0.594f, 1800},
    {"Massive", "Lead", "huge distorted sub", massive, 0.727f, 2200},
    {"Melody", "Wind", "reed clarinet soft", melody, 0.794f, 1800, {0.35f, 3, 4, 1, 1}},
    {"Old piano", "Keys", "acoustic honky-tonk bar", oldPiano, 1.052f, 1300},
    {"Noiser", "Effect", "noise wind sweep", noiser, 0.620f, 2200},
    {"Violina", "Strings", "violin solo bowed", violina, 0.721f, 2200},
    {"Synth", "Lead", "pulse fourth filter chord", synth, 0.780f, 1500},
    {"Trance", "Lead", "supersaw bright wide dance", trance, 0.600f, 2600, {0.42f, 3, 4, 1, 2}},
    {"Pulse", "Lead", "narrow nasal retro", pulseWave, 0.859f, 1400},
    {"Strings", "Strings", "ensemble orchestra slow", stringsEnsemble, 0.893f, 3000},
    {"Analog", "Keys", "warm vintage chord brass", analog, 0.622f, 1400},
    {"Sub", "Bass", "deep pure club", sub, 0.640f},
    {"Random", "Effect", "sample hold steps tempo", randomSteps, 0.734f, 1600, {0.4f, 3, 4, 1, 2}},
    {"Sinus", "Keys", "sine pure plain test", pureSine, 0.557f, 1800},
};

} // namespace factory
