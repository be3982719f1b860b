#pragma once

#include "common/fx/CFX.h"

/// Chorus: a delay line per channel, read at a place that a low oscillator moves. Overwrites its
/// output.
class CChorus : public CFX {
public:
    static constexpr int bufferFrames = 65536; ///< of each line

    double phasePos = 0.0; ///< of the oscillator, in steps of its table
    int writeL = 0, writeR = 0;
    Shared<float*> bufferL{nullptr}, bufferR{nullptr}; ///< owned; none before first enabled
    Shared<float> frequency{3.0f};                     ///< Hz
    Shared<float> delay{20.0f};                        ///< ms
    Shared<float> depth{0.1f};                         ///< part of `delay` that is swept
    Shared<float> phase{90.0f};                        ///< of the right side, degrees
    Shared<float> feedback{0.0f};
    Shared<int> tempoSync{0};     ///< 1: `tickDen` / `tickNum` cycles a beat
    Shared<float> waveform{0.0f}; ///< 0 sine, 1 triangle
    Shared<int> tickNum{1}, tickDen{1};

    CChorus(float hz, int frames);
    ~CChorus() override;
    CChorus(const CChorus&) = delete;
    CChorus& operator=(const CChorus&) = delete;

    void setEnabled(int on) override;
    /// Nothing while there are no lines.
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;

    void setFrequency(float hz) { store(frequency, hz, 0.0f, 100.0f); }
    void setDelay(float ms) { store(delay, ms, 1.0f, 300.0f); }
    void setDepth(float v) { store(depth, v, 0.0f, 1.0f); }
    void setPhase(float degrees) { store(phase, degrees, 0.0f, 180.0f); }
    void setFeedback(float v) { store(feedback, v, -1.0f, 1.0f); }
    void setTempoSync(int on) { store(tempoSync, on, 0, 1); }
    void setWaveform(float wave) { store(waveform, wave, 0.0f, 1.0f); }
    void setTickNum(int n) { store(tickNum, n, 1, 64); }
    void setTickDen(int n) { store(tickDen, n, 1, 64); }
    float getFrequency() const { return frequency; }
    float getDelay() const { return delay; }
    float getDepth() const { return depth; }
    float getPhase() const { return phase; }
    float getFeedback() const { return feedback; }
    int getTempoSync() const { return tempoSync; }
    float getWaveform() const { return waveform; }
    int getTickNum() const { return tickNum; }
    int getTickDen() const { return tickDen; }

private:
    struct Block;
    Block prepare() const;
    void runSide(const Block& block, float* line, int& write, const double* places, double offset,
                 const float* in, float* out, int count);
};
