#pragma once

#include "base/Atomic.h"
#include "base/ZeroPages.h"

/// Base of the building blocks of the reverb.
class Module {
public:
    virtual ~Module() = default;
    virtual void Suspend() = 0;        ///< clears the state: what follows, follows silence
    virtual int GetMem() { return 0; } ///< bytes of delay memory
};

/// A source of one value per sample.
class MModulator {
public:
    virtual ~MModulator() = default;
    virtual float GetCurValue() = 0;
};

/// A ring of samples with one place to write and one to read.
class MDelayLine : public Module {
public:
    static constexpr int spare = 11; ///< samples of the ring beyond the longest delay

    /// Zero pages until written: most of the lines there are belong to programs that rest.
    ZeroPages<float> ring;
    int size = 0;            ///< samples of the ring
    int write = 0, read = 0; ///< indices of the next sample to write and to read
    int maxDelay = 0;
    int reach = 0; ///< behind the last sample that was written since it was zeroed

    /// Sizes the ring for a delay of `d` samples, 0 or more, zeroes it and sets `read` so far
    /// behind. Allocates.
    void SetMaxDelay(int d);
    void Suspend() override;
    int GetMem() override;

    /// Writes up to `size` samples.
    void append(const float* in, int count);
    /// Copies up to `size` samples from index `from` on, which may lie one round outside the ring.
    void copyFrom(int from, int count, float* out) const;
};

/// A delay line that is read around a nominal delay.
class MModDelayLine : public MDelayLine {
public:
    static constexpr int maxModDepth = 30;

    float curPos = 0.0f;             ///< place of the nominal delay in the ring
    int modDepth = 0, nomDelay = 0;  ///< samples
    MModulator* modulator = nullptr; ///< not owned, may be none

    void SetNomDelay(int samples); ///< allocates, as `SetModDepth`
    void SetModDepth(int samples); ///< 0 to `maxModDepth`

private:
    void resize();
};

/// A delay line modulated by a sine and read with first-order all-pass interpolation.
class MSVRAP1ModDelayLine : public MModDelayLine {
public:
    double phase = 0.0; ///< cycles
    double incr = 0.0;  ///< cycles a sample
    float last = 0.0f;  ///< state of the all-pass

    static constexpr int maxTaps = 64;          ///< looked up at a time
    static constexpr double farPhase = 1 << 14; ///< cycles; here `phase` starts anew

    void movePhase(double cycles); ///< to 0 or more

    /// The next sample at the moving place. What it reads must have been written, so the delay
    /// must exceed `modDepth` by 2 samples, and in `getTaps` by `count` more.
    float GetCurValue();
    /// What the next `count` samples interpolate between, at these phases. To move `phase` and to
    /// run the all-pass is left to the caller, who may have several lines in step:
    ///     last = (next - last) * fraction + tap
    void getTaps(const double* phases, int count, float* taps, float* next, float* fractions);
    void Suspend() override;
};

/// One-pole filter y = a x - b y'. The coefficients may be set while it runs.
class MLPF1a : public Module {
public:
    static constexpr float quiet = 1e-10f; ///< below it the state becomes 0

    float y = 0.0f;
    Shared<float> a{1.0f}, b{0.0f};

    void SetCoeffs(float newA, float newB);
    float process(float x);
    void Suspend() override { y = 0.0f; }
};

/// A sine by the recursion v = 2 cos(w) y1 - y2, held at +-1 against drift.
class MSinOsc : public MModulator {
public:
    void SetFreq(double freq, double rate, double phaseDegrees);
    float GetCurValue() override;

private:
    double k = 0.0, y1 = 0.0, y2 = 0.0, limit = 0.0;
};
