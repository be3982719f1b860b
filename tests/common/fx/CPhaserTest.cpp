#include "common/fx/CPhaser.h"
#include "FxFixture.h"

namespace {

struct Side {
    int block;
    double step, offset, low, high, feedback, dry, wet;
    int stages, waveform;
    double z[16] = {}, last = 0.0;
    double place = 0.0;
    long frame = 0;

    double run(double in) {
        double x = in + last * feedback;
        const double w = low + (high - low) * lfoWave(waveform, place + offset);
        place += step;
        if (endsBlock(block, ++frame)) place = std::fmod(place, 131072.0);
        const double a = (1 - w) / (1 + w);
        for (int s = 0; s < stages; s++) {
            const double y = -a * x + z[s];
            z[s] = y * a + x;
            x = y;
        }
        last = x;
        return in * dry + wet * x;
    }
};

struct Case {
    const char* name;
    float frequency, phase, feedback, low, high;
    int stages, waveform, tempoSync, num, den;
};

const Case cases[] = {{"default", 0.1f, 0, 0.7f, 2000, 20000, 6, 0, 0, 1, 1},
                      {"negative feedback", 2, 90, -0.9f, 100, 5000, 4, 1, 0, 1, 1},
                      {"all stages in tempo", 1, 180, 0.5f, 20, 8000, 16, 2, 1, 2, 3},
                      {"one stage, no sweep", 1, 10, 0, 1000, 1000, 1, 0, 0, 1, 1}};

} // namespace

TEST(CPhaser, FollowsItsFormulasInAnyCut) {
    for (float rate : fxRates)
        for (const Case& c : cases)
            for (int block : fxBlocks) {
                CPhaser fx(rate, 0);
                fx.setFrequency(c.frequency);
                fx.setPhase(c.phase);
                fx.setFeedback(c.feedback);
                fx.setRangeMin(c.low);
                fx.setRangeMax(c.high);
                fx.setStages(c.stages);
                fx.setWaveform(c.waveform);
                fx.setTempoSync(c.tempoSync);
                fx.setTickNum(c.num);
                fx.setTickDen(c.den);
                fx.tempo = 150.0f;
                fx.setWet(0.7f);
                Stereo in = fxSignal(20000), out = in;
                runFx(fx, out, out, block);
                const double hz = c.tempoSync ? 2.5 * c.den / c.num : double(c.frequency);
                Side l{block,
                       hz * 131072 / double(rate),
                       0,
                       2 * double(c.low) / double(rate),
                       2 * double(c.high) / double(rate),
                       double(c.feedback) * 0.998,
                       0.5,
                       double(0.7f),
                       c.stages,
                       c.waveform};
                Side r = l;
                r.offset = l.step + double(c.phase) * 131072 / 360; // one step ahead of the left
                const auto both = [&](double inL, double inR, double& outL, double& outR) {
                    outL = l.run(inL);
                    outR = r.run(inR);
                };
                expectLike(in, out, both, 1e-5,
                           std::string(c.name) + " in " + std::to_string(block));
            }
}
