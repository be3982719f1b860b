#include "common/fx/amp/AmpKnobs.h"

#include <cmath>

namespace {

constexpr double glideSeconds = 0.015; // time constant of a knob
constexpr double arrived = 1e-4;       // what is left to go then

double fromDb(double db) {
    return std::pow(10.0, db / 20.0);
}

double between(double from, double to) {
    return (to - from) / AmpKnobs::piece;
}

AmpSettings between(const AmpSettings& from, const AmpSettings& to) {
    AmpSettings s = {between(from.drive, to.drive),
                     between(from.shelf, to.shelf),
                     between(from.volume, to.volume),
                     {}};
    for (int k = 0; k <= ToneStackCoeffs::order; k++) {
        s.tone.b[k] = between(from.tone.b[k], to.tone.b[k]);
        s.tone.a[k] = between(from.tone.a[k], to.tone.a[k]);
    }
    return s;
}

} // namespace

AmpKnobs::AmpKnobs(const AmpVoicing& parts) : voicing(parts) {
    for (int k = 0; k < ampKnobs; k++) targets[k] = voicing.rest[k];
    setRate(rate);
}

void AmpKnobs::setRate(double hz) {
    rate = hz;
    pull = 1.0 - std::exp(-piece / (glideSeconds * rate));
    jump();
}

/// Moves the knobs; false if all stand where they should.
bool AmpKnobs::turn() {
    bool moved = false;
    for (int k = 0; k < ampKnobs; k++) {
        const double target = double(targets[k]), left = target - knobs[k];
        if (left == 0.0) continue;
        moved = true;
        knobs[k] = std::fabs(left) > arrived && started ? knobs[k] + left * pull : target;
    }
    return moved;
}

bool AmpKnobs::still() const {
    if (!started || moving) return false;
    for (int k = 0; k < ampKnobs; k++)
        if (double(targets[k]) != knobs[k]) return false;
    return true;
}

AmpSettings AmpKnobs::work() const {
    const AmpVoicing& v = voicing;
    return {v.driveLow * std::pow(v.driveHigh / v.driveLow, knobs[knobDrive]),
            fromDb(v.shelfDb * knobs[knobShelf]) - 1.0,
            knobs[knobVolume] * knobs[knobVolume] * v.level,
            makeToneStack(v.tone, rate, knobs[knobBass], knobs[knobMid], knobs[knobTreble])};
}

void AmpKnobs::startPiece() {
    const bool jumps = !started, moved = turn();
    if (!jumps && !moved && !moving) return;
    start = end;
    if (jumps || moved) end = work();
    if (jumps) start = end;
    step = between(start, end);
    moving = moved && !jumps;
    started = true;
}
