#pragma once

#include "base/Newest.h"
#include "base/Stored.h"
#include "common/fx/CFX.h"
#include "common/fx/EqBands.h"

/// Forms of a band, in the order of its list.
enum EqType {
    eqLowShelf = 0,
    eqPeaking = 1,
    eqHighShelf = 2,
    eqLowPass = 3,
    eqHighPass = 4,
    eqBandPass = 5,
    eqNotch = 6
};

/// The filter of a band, after Robert Bristow-Johnson's "Cookbook formulae for audio equalizer
/// biquad filter coefficients". `hz` above 0.49 of the rate counts as that; `gainDb` acts on the
/// shelves and on peaking. A type that is none of `EqType` gives silence.
EqCoeffs eqCoeffs(int type, double hz, double gainDb, double q, double rate);

/// One band of an equaliser. Overwrites its output. `dry`, `wet` and `enabled` have no effect;
/// whether it runs is up to its owner, by `active`.
///
/// Setters may be called by the interface thread and by the holder of the graph at the same time.
/// The filter that they work out is heard from the next block on; what is under way goes on in it.
class CEQ : public CFX, public EqBand {
public:
    static constexpr float minFrequency = 20.0f, maxFrequency = 20000.0f;
    static constexpr float minGain = -24.0f, maxGain = 24.0f;
    static constexpr float minQ = 0.1f, maxQ = 12.0f;

    Stored<int> active{1};
    Stored<int> filterType;           ///< of `EqType`
    Stored<float> frequency{4000.0f}; ///< Hz
    Stored<float> gain{0.0f};         ///< dB
    Stored<float> q{minQ};
    int state[4] = {-1, -1, -1, -1}; ///< kept with the band, without effect

    explicit CEQ(int type);

    void setRate(float hz) override;
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override { silence(); }
    /// The band with its newest filter, to be run next. Audio thread.
    EqBand* ready();
    bool runs = false; ///< whether it was `active` when the strip looked last; graph holder

    void setFilterType(ToStore<int> form);
    void setGain(ToStore<float> db);
    void setQ(ToStore<float> value);
    void setFrequency(ToStore<float> hz);
    float getFrequency() const { return frequency; }
    float getQ() const { return q; }
    float getGain() const { return gain; }
    int getFilterType() const { return filterType; }
    /// Works the filter out of the fields.
    void calculateFilter();

private:
    Newest<EqCoeffs> filter;
    Shared<int> changes{0}; ///< that no filter has been worked out for yet
};
