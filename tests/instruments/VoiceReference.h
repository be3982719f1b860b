#pragma once

#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CWavSound.h"

#include <vector>

/// One voice, calculated in double precision and one sample after the other, as the oscillators,
/// filters and modulators are defined. It shares no code with the instrument; it only reads the
/// settings of a sound.
class VoiceReference {
public:
    std::vector<double> left, right; ///< all that was rendered
    bool ended = false;              ///< the amp envelope or the clip is through

    VoiceReference(CSound* s, double engineRate, int key, int vel, double tempo = 120.0);

    void release();
    /// A call for `frames` frames, which slices are cut to.
    void render(int frames);
    double bend = 0.0; ///< -1 to 1

private:
    struct Stage {
        bool active = true;
        int stage = 0;
        double from = 0, to = 1, value = 0, curve = 0;
        int remaining = 0, total = 0;
    };
    struct Lfo {
        double value = 0.5, phase = 0, incr = 0;
        int delay = 0, toWrap = 0;
        bool ran = false;
    };
    struct Operator {
        double phase = 0, last = 0;
    };
    struct Filter {
        double low = 0, band = 0, high = 0;
    };
    struct Line {
        double at = 0, step = 0;
    };

    CSound* sound;
    COSCSound* osc = nullptr;
    CWavSound* wav = nullptr;
    double rate, velocity, bpm;
    int note, tail = 0, tap;
    bool first = true;
    Stage env[6];
    Lfo lfo[4];
    Operator car[2], mod[2];
    Filter filters[2];
    double gain[2] = {}, cut2 = 0, feed1Sq = 0, feed2Sq = 0, phaseModSq = 0;
    double pos = 0, speed = 1, cur[10] = {};

    int stageLength(double setting, int maxTime) const;
    void nextStage(int i);
    void loadCur();
    int cutSlice(int n);
    int cutToClip(int n, int& ending);
    void modulate(int n);
    void apply(const CMod& m, double source);
    bool advance(int n);
    Line ramp(double& value, double target, int n) const;
    void renderSlice(int n);
    double oscillate(int side, int i, const Line& f1, const Line& f2, const Line& pm);
    double readClip(int channel, double x) const;
    static double sine(double x);
};
