#pragma once

#include "common/fx/amp/Lanes.h"

/// Pots and capacitors of the passive tone control between two tubes, in ohms and farads: a
/// treble pot `r1` behind `c1`, bass pot `r2` behind `c2`, mid pot `r3` behind `c3`, both fed
/// through `r4`.
struct ToneStackParts {
    double r1, r2, r3, r4, c1, c2, c3;
};

/// A third-order filter, numerator and denominator in powers of 1/z, a[0] = 1.
struct ToneStackCoeffs {
    static constexpr int order = 3;
    double b[order + 1], a[order + 1];
};

/// The exact transfer function of the circuit with its knobs at 0 to 1, by the bilinear transform:
/// D. T. Yeh, J. O. Smith, "Discretization of the '59 Fender Bassman tone stack", 2006. The bass
/// pot is logarithmic. The circuit takes signal away at any setting.
ToneStackCoeffs makeToneStack(const ToneStackParts& parts, double rate, double bass, double mid,
                              double treble);

/// The filter itself, whose coefficients may move from frame to frame.
class ToneStack {
public:
    void clear();
    /// In place. The first frame takes `start` + `first` `step`, each further one a step more.
    void process(Sides* x, int frames, const ToneStackCoeffs& start, const ToneStackCoeffs& step,
                 int first);
    void settle(); ///< what has died away becomes 0
    bool quiet() const { return allZero(s1, s2, s3); }

private:
    Sides s1 = {}, s2 = {}, s3 = {};
};
