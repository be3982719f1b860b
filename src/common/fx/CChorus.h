#pragma once

#include "common/fx/CFX.h"

class EchoLine;

/// Chorus: a delay line per channel, read at a place that a low oscillator moves. Overwrites its
/// output.
class CChorus : public CFX {
public:
    static constexpr int bufferFrames = 65536; ///< of each line

    double phasePos = 0.0; ///< of the oscillator, in steps of its table
    int writeL = 0, writeR = 0;
    Shared<EchoLine*> lineL{nullptr}, lineR{nullptr}; ///< owned; none before first enabled
    Stored<float> frequency{3.0f};                    ///< Hz
    Stored<float> delay{20.0f};                       ///< ms
    Stored<float> depth{0.1f};                        ///< part of `delay` that is swept
    Stored<float> phase{90.0f};                       ///< of the right side, degrees
    Stored<float> feedback{0.0f};
    Stored<int> tempoSync{0};     ///< 1: `tickDen` / `tickNum` cycles a beat
    Stored<float> waveform{0.0f}; ///< 0 sine, 1 triangle
    Stored<int> tickNum{1}, tickDen{1};

    CChorus(float hz, int frames);
    ~CChorus() override;
    CChorus(const CChorus&) = delete;
    CChorus& operator=(const CChorus&) = delete;

    void takeRoom() override;
    /// Nothing while there are no lines.
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    void start() override;
    bool rests() const override;

    void setFrequency(ToStore<float> hz) { store(frequency, hz, 0.0f, 100.0f); }
    void setDelay(ToStore<float> ms) { store(delay, ms, 1.0f, 300.0f); }
    void setDepth(ToStore<float> v) { store(depth, v, 0.0f, 1.0f); }
    void setPhase(ToStore<float> degrees) { store(phase, degrees, 0.0f, 180.0f); }
    void setFeedback(ToStore<float> v) { store(feedback, v, -1.0f, 1.0f); }
    void setTempoSync(ToStore<int> on) { store(tempoSync, on, 0, 1); }
    void setWaveform(ToStore<float> wave) { store(waveform, wave, 0.0f, 1.0f); }
    void setTickNum(ToStore<int> n) { store(tickNum, n, 1, 64); }
    void setTickDen(ToStore<int> n) { store(tickDen, n, 1, 64); }
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
    /// One of its lines and where it is written.
    struct Side {
        EchoLine& line;
        int& write;
        int& silent;
    };
    Block prepare() const;
    void runSide(const Block& block, const Side& side, const double* places, double offset,
                 const float* in, float* out, int count);
    static void passSide(const Side& side, float* out, int count);

    int silentL = bufferFrames, silentR = bufferFrames; ///< zeros that were written last, at least
};
