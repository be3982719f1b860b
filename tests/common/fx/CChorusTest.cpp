#include "common/fx/CChorus.h"
#include "FxFixture.h"

namespace {

/// One side frame by frame.
struct Side {
    int block;
    double step, offset, nominal, range, feedback, dry, wet;
    bool triangle;
    std::vector<double> line = std::vector<double>(CChorus::bufferFrames);
    double place = 0.0;
    long frame = 0;

    double run(double in) {
        const double wave = lfoWave(triangle, place + offset);
        const long write = frame++ & 0xffff;
        place += step;
        if (endsBlock(block, frame)) place = std::fmod(place, 131072.0);
        const double pos = double(write) - nominal - 1 + range * wave;
        const long n = long(pos);
        const double a = line[std::size_t(n & 0xffff)], b = line[std::size_t((n + 1) & 0xffff)];
        const double y = a + (b - a) * (pos - double(n));
        line[std::size_t(write)] = in + feedback * y;
        return in * dry + wet * y;
    }
};

struct Case {
    const char* name;
    float frequency, delay, depth, phase, feedback, waveform;
    int tempoSync, num, den;
};

const Case cases[] = {{"default", 3, 20, 0.1f, 90, 0, 0, 0, 1, 1},
                      {"deep, fed back", 1, 30, 0.9f, 180, -0.8f, 0, 0, 1, 1},
                      {"read where it is written", 5, 2, 1, 45, 0.5f, 0, 0, 1, 1},
                      {"triangle in tempo", 9, 300, 0.5f, 0, 0.9f, 1, 1, 3, 4},
                      {"shortest", 10, 1, 0, 0, 0.9f, 0, 0, 1, 1}};

} // namespace

/// Long enough for the line to go round, where places below 0 are cut towards 0.
TEST(CChorus, FollowsItsFormulasInAnyCut) {
    constexpr int frames = 70000;
    for (float rate : fxRates)
        for (const Case& c : cases)
            for (int block : fxBlocks) {
                CChorus fx(rate, 0);
                fx.setFrequency(c.frequency);
                fx.setDelay(c.delay);
                fx.setDepth(c.depth);
                fx.setPhase(c.phase);
                fx.setFeedback(c.feedback);
                fx.setWaveform(c.waveform);
                fx.setTempoSync(c.tempoSync);
                fx.setTickNum(c.num);
                fx.setTickDen(c.den);
                fx.tempo = 90.0f;
                fx.setWet(0.75f);
                Stereo in = fxSignal(frames), out = in;
                runFx(fx, in, out, 1000); // no lines yet: nothing happens
                ASSERT_EQ(out.left, in.left);
                fx.setEnabled(1);
                runFx(fx, out, out, block);
                const double hz = c.tempoSync ? 1.5 * c.den / c.num : double(c.frequency);
                const double d = double(c.delay) * double(rate) * 0.001;
                Side l{block,
                       hz * 131072 / double(rate),
                       0,
                       d,
                       d * double(c.depth),
                       double(c.feedback),
                       0.5,
                       0.75,
                       c.waveform == 1.0f};
                Side r = l;
                r.offset = double(c.phase) * 131072 / 360;
                const auto both = [&](double inL, double inR, double& outL, double& outR) {
                    outL = l.run(inL);
                    outR = r.run(inR);
                };
                expectLike(in, out, both, 1e-5,
                           std::string(c.name) + " in " + std::to_string(block));
            }
}
