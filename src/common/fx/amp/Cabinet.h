#pragma once

#include "common/fx/amp/Lanes.h"

enum CabinetShape { cabinetLowCut, cabinetBell, cabinetHighCut };

struct CabinetSection {
    CabinetShape shape;
    double hz, q;
    double db; ///< of a bell
};

/// A loudspeaker in its box as a row of second-order sections: below its resonance nothing comes
/// out, the box is hollow around 400 Hz, the cone breaks up at 2 to 4 kHz with some gain, and
/// beyond, it is too heavy to follow. Sections by R. Bristow-Johnson, "Cookbook formulae for audio
/// EQ biquad filter coefficients".
class Cabinet {
public:
    static constexpr int sections = 6;

    /// `parts`: that many, with corners below half the rate or else drawn to 0.45 of it. Forgets
    /// the past.
    void set(const CabinetSection* parts, double rate);
    void clear();
    /// In place.
    void process(Sides* x, int frames);
    void settle(); ///< what has died away becomes 0
    bool quiet() const;

    struct Section {
        double b0, b1, b2, a1, a2;
        Sides s1, s2;
    };

private:
    Section rows[sections] = {};
};
