#pragma once

#include "common/fx/CFX.h"

/// Phaser: a chain of first-order all-pass sections, swept by a low oscillator, with feedback.
/// Overwrites its output.
class CPhaser : public CFX {
public:
    static constexpr int maxStages = 16;

    Stored<float> frequency{0.1f}; ///< Hz
    Stored<float> phase{0.0f};     ///< of the right side, degrees
    Stored<float> feedback{0.7f};
    Stored<float> rangeMin{2000.0f}, rangeMax{20000.0f}; ///< Hz, ends of the sweep
    Stored<int> stages{6};                               ///< 1 to `maxStages`
    Stored<int> tempoSync{0};                            ///< 1: `tickDen` / `tickNum` cycles a beat
    Stored<int> waveform{0};                             ///< 0 sine, 1 triangle, 2 sawtooth
    Stored<int> tickNum{1}, tickDen{1};
    double phasePos = 0.0; ///< of the oscillator, in steps of its table
    float lastL = 0.0f, lastR = 0.0f;
    float zL[maxStages] = {}, zR[maxStages] = {};

    CPhaser(float hz, int frames);

    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    void start() override;
    bool rests() const override;

    void setFrequency(ToStore<float> hz) { store(frequency, hz, 0.0f, 100.0f); }
    void setPhase(ToStore<float> degrees) { store(phase, degrees, 0.0f, 180.0f); }
    void setFeedback(ToStore<float> v) { store(feedback, v, -1.0f, 1.0f); }
    void setRangeMin(ToStore<float> hz) { store(rangeMin, hz, 20.0f, 20000.0f); }
    void setRangeMax(ToStore<float> hz) { store(rangeMax, hz, 20.0f, 20000.0f); }
    void setStages(ToStore<int> n) { store(stages, n, 1, maxStages); }
    void setTempoSync(ToStore<int> on) { store(tempoSync, on, 0, 1); }
    void setWaveform(ToStore<int> wave) { store(waveform, wave, 0, 2); }
    void setTickNum(ToStore<int> n) { store(tickNum, n, 1, 64); }
    void setTickDen(ToStore<int> n) { store(tickDen, n, 1, 64); }
    float getFrequency() const { return frequency; }
    float getPhase() const { return phase; }
    float getFeedback() const { return feedback; }
    float getRangeMin() const { return rangeMin; }
    float getRangeMax() const { return rangeMax; }
    int getStages() const { return stages; }
    int getTempoSync() const { return tempoSync; }
    int getWaveform() const { return waveform; }
    int getTickNum() const { return tickNum; }
    int getTickDen() const { return tickDen; }

private:
    void settle();
};
