#pragma once

/// A way from `from` (at `t` 0) to `to` (at `t` 1) on a hyperbola. `a` above 0: 1 is a straight
/// line, above 1 starts slowly, below 1 fast. `t` outside 0 to 1 counts as the nearer end.
///
/// The fraction is 1 - (a / D - a) / (1 - a) with D = (1 - a) t + a, which is t / D without the
/// pole at a = 1.
inline float curvePoint(float from, float to, float t, float a) {
    const float at = t > 0.0f ? (t < 1.0f ? t : 1.0f) : 0.0f;
    return (to - from) * (at / ((1.0f - a) * at + a)) + from;
}

/// Steepness of a curve setting of -1 to 1, of either sign: 1 to 64.
inline float curveSteepness(float curve) {
    return 1.0f + 63.0f * curve * curve;
}

/// The `a` of an envelope stage: a positive `curve` starts fast, a negative one slowly.
inline float envelopeBend(float curve) {
    const float k = curveSteepness(curve);
    return curve >= 0.0f ? 1.0f / k : k;
}

inline float envelopePoint(float from, float to, float t, float curve) {
    return curvePoint(from, to, t, envelopeBend(curve));
}

/// An automation ramp: a positive `curve` starts slowly, a negative one fast. `shape` 1 holds
/// `from`, 0 is the ramp, any other gives 0.
inline float automationPoint(int shape, float from, float to, float t, float curve) {
    if (shape == 1) return from;
    if (shape != 0) return 0.0f;
    const float k = curveSteepness(curve);
    return curvePoint(from, to, t, curve > 0.0f ? k : 1.0f / k);
}
