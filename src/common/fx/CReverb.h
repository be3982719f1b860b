#pragma once

#include "common/fx/CFX.h"
#include "common/fx/DelayLines.h"

/// Seconds of silence after which a reverb stops working.
constexpr int bypasstreshold = 2;

/// Reverb: a feedback network of twelve delay lines, half of them modulated, behind a pre-delay.
/// Adds to its output. Low notes decay by 60 dB in `size` milliseconds, high ones 2.4 times as
/// fast. After two seconds of silence it rests, and what is left in its lines sounds again with
/// the next note.
class CReverb : public CFX {
public:
    static constexpr int lineCount = 12, modLineCount = 6, plainLineCount = 6;
    static constexpr int preDelayFrames = 48000;

    int state = 1;                                     ///< 1 idle, 2 working
    int silence = 0;                                   ///< silent frames since it left idle
    Stored<float> lowCut{20.0f}, highCut{20000.0f};    ///< Hz; no sound depends on them
    float lowCutCoeffs[5] = {}, highCutCoeffs[5] = {}; ///< b0, b1, b2, a1, a2
    Stored<int> size{2000};                            ///< ms
    Stored<int> preDelay{20};                          ///< ms
    int lengths[lineCount] = {};                       ///< samples, whatever the rate
    float signL[lineCount] = {}, signR[lineCount] = {};
    MSVRAP1ModDelayLine modLines[modLineCount];
    MDelayLine plainLines[plainLineCount];
    MLPF1a filters[lineCount];
    MDelayLine preDelayLine;

    CReverb(float hz, int frames);

    void setRate(float hz) override;
    /// 0 also forgets the tail, before the next sample is made.
    void setEnabled(int on) override;
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    void start() override;
    /// Forgets the tail at once; its modulation goes on. Holder of the graph only.
    void suspend();

    void setSize(ToStore<int> ms);       ///< 1000 to 60000
    void setRevTimeOld(ToStore<int> ms); ///< as `setSize`, of whole seconds
    int getRevTime() const { return size; }
    void setPreDelay(ToStore<int> ms) { store(preDelay, ms, 0, 250); }
    int getPreDelay() const { return preDelay; }
    void setLowCutFrq(ToStore<float> hz); ///< 20 to 20000, as `setHighCutFrq`
    void setHighCutFrq(ToStore<float> hz);
    float getLowCutFrq() const { return lowCut; }
    float getHighCutFrq() const { return highCut; }

private:
    struct Chunk;
    void startModulation();
    long toFirstSound(const float* inL, const float* inR, long frames);
    void wake(int framesAgo);
    void settle();

    Shared<int> clearRequest{0};
    double heard = 0.0, arrived = 0.0; ///< sums of squares since the latest settling
    bool rings = false;                ///< it was heard before that
    int sinceSettled = 0;              ///< frames

    void setDecay(ToStore<int> ms);
    void calculateFilter(int mode, float frequency);
    void readLines(Chunk& c, int count);
    void filterLines(Chunk& c, int count);
    void writeLines(Chunk& c, int count);
};
