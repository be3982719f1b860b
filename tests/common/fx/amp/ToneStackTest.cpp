#include "common/fx/amp/ToneStack.h"

#include "common/fx/amp/Voicing.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>

namespace {

using Complex = std::complex<double>;

/// The circuit of the tone stack, solved by its currents. Nodes: 0 above the treble pot, 1 between
/// it and the bass pot, 2 behind r4, 3 between bass and mid pot, 4 the tap of the mid pot.
struct Circuit {
    static constexpr int nodes = 5, ground = -1, source = -2; ///< of 1 V
    Complex y[nodes][nodes + 1] = {};                         ///< last column: the source's current

    void join(int a, int b, Complex admittance) {
        y[a][a] += admittance;
        if (b == source) y[a][nodes] += admittance;
        if (b < 0) return;
        y[b][b] += admittance;
        y[a][b] -= admittance;
        y[b][a] -= admittance;
    }
    void solve() {
        for (int p = 0; p < nodes; p++) {
            for (int c = nodes; c >= p; c--) y[p][c] /= y[p][p];
            for (int r = 0; r < nodes; r++)
                for (int c = nodes; r != p && c >= p; c--) y[r][c] -= y[r][p] * y[p][c];
        }
    }
};

Complex circuitGain(const ToneStackParts& p, double omega, double l, double m, double t) {
    const Complex s(0.0, omega);
    const double wire = 1e-3; // ohms of a pot turned to its end
    Circuit c;
    c.join(0, Circuit::source, s * p.c1);
    c.join(0, 1, 1 / p.r1);
    c.join(2, Circuit::source, 1 / p.r4);
    c.join(1, 2, s * p.c2);
    c.join(1, 3, 1 / (l * p.r2 + wire));
    c.join(3, 4, 1 / ((1 - m) * p.r3 + wire));
    c.join(4, Circuit::ground, 1 / (m * p.r3 + wire));
    c.join(4, 2, s * p.c3);
    c.solve();
    return t * c.y[0][5] + (1 - t) * c.y[1][5];
}

} // namespace

TEST(ToneStack, IsItsCircuit) {
    constexpr double rate = 48000;
    const ToneStackParts& parts = ampVoicings[1].tone;
    for (double bass : {0.0, 0.6, 1.0})
        for (double mid : {0.0, 0.3, 1.0})
            for (double treble : {0.0, 0.5, 1.0})
                for (double hz : {30.0, 300.0, 3000.0, 15000.0}) {
                    const ToneStackCoeffs k = makeToneStack(parts, rate, bass, mid, treble);
                    const double pot = (std::exp(3.4 * bass) - 1) / (std::exp(3.4) - 1);
                    const Complex z = std::polar(1.0, -2 * M_PI * hz / rate);
                    const Complex got = (k.b[0] + z * (k.b[1] + z * (k.b[2] + z * k.b[3]))) /
                                        (k.a[0] + z * (k.a[1] + z * (k.a[2] + z * k.a[3])));
                    const double omega = 2 * rate * std::tan(M_PI * hz / rate);
                    EXPECT_LT(std::abs(got - circuitGain(parts, omega, pot, mid, treble)), 1e-6)
                        << bass << mid << treble << " at " << hz;
                }
}
