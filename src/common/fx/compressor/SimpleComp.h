#pragma once

/// A compressor of linked stereo, driven by the power of both sides of a key: an average of the
/// power, its level in decibels, what of it lies over the threshold smoothed by attack and release,
/// and a gain that takes away a part of that. All state is in doubles, since a slow release moves
/// by less than the last bit of a float.
namespace comp {

/// ln(x) times this is decibels of an amplitude.
constexpr double dbPerNeper = 8.685889638065037;
constexpr double neperPerDb = 0.11512925464970228;
/// Far below anything heard and far above a denormal; added where a state could decay to 0.
constexpr double dcOffset = 1e-25;

double lin2dB(double lin);
double dB2lin(double dB);

/// Moves a state towards its input: state = in + coef (state - in), coef = exp(-1000 / (ms rate)).
class EnvelopeDetector {
public:
    /// Both above 0.
    explicit EnvelopeDetector(double ms = 1.0, double sampleRate = 44100.0);

    void setTc(double ms);           ///< time constant, above 0
    void setSampleRate(double rate); ///< Hz, above 0
    double getTc() const { return ms; }
    void run(double in, double& state) const { state = coef * (state - in) + in; }

private:
    double sampleRate, ms, coef = 0.0;

    void setCoef();
};

/// Rises with one time constant and falls with another.
class AttRelEnvelope {
public:
    explicit AttRelEnvelope(double attackMs = 10.0, double releaseMs = 100.0,
                            double sampleRate = 44100.0);
    virtual ~AttRelEnvelope() = default;
    AttRelEnvelope(const AttRelEnvelope&) = delete;
    AttRelEnvelope& operator=(const AttRelEnvelope&) = delete;

    virtual void setAttack(double ms); ///< above 0, as `setRelease`
    virtual void setRelease(double ms);
    virtual double getAttack() const { return attack.getTc(); }
    virtual double getRelease() const { return release.getTc(); }
    virtual void setSampleRate(double rate); ///< Hz, above 0
    void run(double in, double& state) const { (in > state ? attack : release).run(in, state); }

private:
    EnvelopeDetector attack, release;
};

/// The settings of the gain.
class SimpleComp : public AttRelEnvelope {
public:
    int limiter = 0; ///< 1: `limitRatio` in place of `ratio`, from the next block on
    double threshdB = 0.0;
    double ratio = 1.0;      ///< inverse: dB out for each dB over the threshold
    double savedRatio = 1.0; ///< the one to come back to after limiting
    double output = 1.0, outputdB = 0.0;
    double envdB = dcOffset; ///< what lies over the threshold, smoothed

    static constexpr double limitRatio = 0.01;

    virtual void setThresh(double dB) { threshdB = dB; }
    virtual void setRatio(double inverse) { ratio = inverse; }
    virtual void setGain(double dB);
    virtual double getThresh() const { return threshdB; }
    virtual double getRatio() const { return ratio; }
    virtual double getGain() const { return outputdB; }
    virtual void initRuntime(); ///< forgets the past
};

class SimpleCompRms : public SimpleComp {
public:
    void setSampleRate(double rate) override;
    void initRuntime() override;
    void setWindow(double ms); ///< of the average, above 0; 5 at first
    /// Overwrites the output, which may be the input. Having limited once, the window of the
    /// average stays at `limitWindow`.
    /// `keyL` and `keyR` are what drives it, which may be the input as well.
    void process(const float* inL, const float* inR, const float* keyL, const float* keyR,
                 float* outL, float* outR, long frames);

    void settle();      ///< what has died away is as if it had never been
    bool quiet() const; ///< a silent key leaves it as it is

    static constexpr double limitWindow = 0.001; ///< ms

private:
    EnvelopeDetector rms{5.0};
    double envSq = dcOffset; ///< mean of the squares

    void chooseRatio();
};

} // namespace comp
