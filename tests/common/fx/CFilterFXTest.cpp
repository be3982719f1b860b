#include "common/fx/CFilterFX.h"
#include "FxFixture.h"

namespace {

/// What goes from one value to another in 300 frames.
struct Glide {
    double from, to;
    int frames = 300;

    double value() const { return from + (to - from) * frames / 300; }
    void ask(float request) {
        if (double(request) == to) return;
        from = value();
        to = double(request);
        frames = 0;
    }
    void move() { frames = std::min(frames + 1, 300); }
};

/// The filter frame by frame, as it is told.
struct Reference {
    int mode;
    double resonance;
    Glide cutoff{1.0, 1.0}, drive{0.0, 0.0};
    double low[2] = {}, band[2] = {};

    double run(int side, double in) {
        const double f = cutoff.value() * cutoff.value(), d = 1 - resonance * 0.99;
        low[side] += f * band[side];
        const double high = in - low[side] - d * band[side];
        band[side] += f * high;
        const double taps[] = {low[side], band[side], high};
        return drive.value() > 0 ? std::tanh(taps[mode] * 30 * drive.value()) : taps[mode];
    }
    void operator()(double inL, double inR, double& outL, double& outR) {
        outL = run(0, inL);
        outR = run(1, inR);
        cutoff.move();
        drive.move();
    }
};

/// Frames, cutoff and drive: ramps that end within a block, at its end, that turn round, and that
/// change with each frame.
const struct {
    int frames;
    float cutoff, drive;
} steps[] = {{500, 1.0f, 0.0f}, {2000, 0.3f, 0.0f}, {100, 0.9f, 0.2f}, {300, 0.5f, 0.2f},
             {1, 0.4f, 0.1f},   {1, 0.35f, 0.1f},   {1, 0.3f, 0.0f},   {2000, 0.05f, 0.0f},
             {600, 0.0f, 0.0f}, {3000, 0.6f, 0.0f}};

} // namespace

TEST(CFilterFX, FollowsItsFormulasInAnyCut) {
    for (int mode : {0, 1, 2})
        for (float resonance : {0.0f, 0.7f, 1.0f})
            for (int block : fxBlocks) {
                CFilterFX fx(44100, 0);
                fx.setFilterMode(mode);
                fx.setResonance(resonance);
                Reference ref{mode, double(resonance)};
                for (const auto& s : steps) {
                    fx.setCutoff(s.cutoff);
                    fx.setDrive(s.drive);
                    ref.cutoff.ask(s.cutoff);
                    ref.drive.ask(s.drive);
                    Stereo in = fxSignal(s.frames, unsigned(s.frames)), out = in;
                    runFx(fx, out, out, block);
                    expectLike(in, out, std::ref(ref), 1e-5,
                               std::to_string(mode) + " at " + std::to_string(s.cutoff));
                }
            }
}

TEST(CFilterFX, ForgetsThePastWhenTurnedOn) {
    CFilterFX fx(44100, 0);
    fx.setResonance(0.9f);
    Stereo in = fxSignal(100), out(100), silence(100);
    runFx(fx, in, out, 100);
    fx.setEnabled(1);
    runFx(fx, silence, out, 100);
    expectNear(out, silence, 0, "silence");
}
