#include "common/fx/amp/ToneStack.h"

namespace {

constexpr int order = ToneStackCoeffs::order;

/// A polynomial in s as one in 1/z, with s = c (1 - 1/z) / (1 + 1/z), times (1 + 1/z)^3.
void transform(const double* analog, double c, double* digital) {
    constexpr double products[order + 1][order + 1] = {// (1 - 1/z)^i (1 + 1/z)^(3 - i)
                                                       {1, 3, 3, 1},
                                                       {1, 1, -1, -1},
                                                       {1, -1, -1, 1},
                                                       {1, -3, 3, -1}};
    for (int k = 0; k <= order; k++) {
        digital[k] = 0.0;
        double scale = 1.0;
        for (int i = 0; i <= order; i++, scale *= c)
            digital[k] += analog[i] * scale * products[i][k];
    }
}

} // namespace

ToneStackCoeffs makeToneStack(const ToneStackParts& p, double rate, double bass, double mid,
                              double treble) {
    const double t = treble, m = mid, l = std::expm1(3.4 * bass) / std::expm1(3.4);
    const double r1 = p.r1, r2 = p.r2, r3 = p.r3, r4 = p.r4;
    const double c12 = p.c1 * p.c2, c13 = p.c1 * p.c3, c23 = p.c2 * p.c3, c123 = c12 * p.c3;
    const double lowC = (p.c1 + p.c2) * r2, midC = (c13 + c23) * r3, midC2 = midC * r3;
    const double r33 = r3 * r3, shunt = r1 * r3 + r3 * r4;

    const double b[order + 1] = {0.0, t * p.c1 * r1 + m * p.c3 * r3 + l * lowC + (p.c1 + p.c2) * r3,
                                 t * (c12 + c13) * r1 * r4 - m * m * midC2 +
                                     m * (c13 * r1 * r3 + midC2) +
                                     l * (c12 * r1 * r2 + c12 * r2 * r4 + c13 * r2 * r4) +
                                     l * m * midC * r2 + (c12 * shunt + c13 * r3 * r4),
                                 c123 * (l * m * r2 * shunt + (m - m * m) * r3 * shunt +
                                         t * r1 * r3 * r4 * (1.0 - m) + t * l * r1 * r2 * r4)};
    const double a[order + 1] = {
        1.0, p.c1 * (r1 + r3) + p.c2 * (r3 + r4) + p.c3 * r4 + m * p.c3 * r3 + l * lowC,
        m * (c13 * r1 * r3 - c23 * r3 * r4 + midC2) + l * m * midC * r2 - m * m * midC2 +
            l * (c12 * r2 * (r1 + r4) + (c13 + c23) * r2 * r4) +
            ((c12 + c13) * r1 * r4 + c12 * shunt + (c13 + c23) * r3 * r4),
        c123 * (l * m * r2 * shunt - m * m * r3 * shunt + m * (r33 * (r1 + r4) - r1 * r3 * r4) +
                l * r1 * r2 * r4 + r1 * r3 * r4)};

    ToneStackCoeffs out;
    transform(b, 2.0 * rate, out.b);
    transform(a, 2.0 * rate, out.a);
    const double norm = out.a[0];
    for (int k = 0; k <= order; k++) {
        out.b[k] /= norm;
        out.a[k] /= norm;
    }
    return out;
}

void ToneStack::clear() {
    s1 = s2 = s3 = Sides{};
}

void ToneStack::process(Sides* x, int frames, const ToneStackCoeffs& start,
                        const ToneStackCoeffs& step, int first) {
    for (int i = 0; i < frames; i++) {
        const double n = first + i;
        ToneStackCoeffs c;
        for (int k = 0; k <= order; k++) {
            c.b[k] = start.b[k] + n * step.b[k];
            c.a[k] = start.a[k] + n * step.a[k];
        }
        const Sides in = x[i], out = c.b[0] * in + s1;
        s1 = c.b[1] * in - c.a[1] * out + s2;
        s2 = c.b[2] * in - c.a[2] * out + s3;
        s3 = c.b[3] * in - c.a[3] * out;
        x[i] = out;
    }
}

void ToneStack::settle() {
    cutTiny(s1, s2, s3);
}
