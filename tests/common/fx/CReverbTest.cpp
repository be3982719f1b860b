#include "common/fx/CReverb.h"
#include "FxFixture.h"

#include <complex>
#include <memory>

namespace {

constexpr int delays[12] = {601, 691, 773, 839, 919, 997, 1061, 1093, 1129, 1151, 1171, 1187};

/// The network frame by frame: lines as plain arrays of all that went in, read by their age.
struct Reference {
    double rate, wet, dry;
    int pd;
    double a[12], b[12], y[12] = {}, last[6] = {};
    std::vector<double> fed[12], mono;
    double phase[6];
    float place[6]; ///< in a ring of the delay and 17 frames

    Reference(double r, double seconds, double w, double d, int preDelay)
        : rate(r), wet(w), dry(d), pd(preDelay) {
        for (int i = 0; i < 6; i++) {
            phase[i] = i / 8.0;
            place[i] = 17.0f;
        }
        for (int i = 0; i < 12; i++) {
            const double gain = std::pow(10.0, -3.0 * delays[i] / (rate * seconds));
            const double p =
                std::log(10.0) * 20 * std::log10(gain) / 80 * (1 - 1 / std::pow(1 / 2.4, 2));
            a[i] = gain * (1 - p);
            b[i] = -p;
        }
    }

    double past(const std::vector<double>& line, long age) const {
        const long at = long(line.size()) - age;
        return at < 0 ? 0.0 : line[std::size_t(at)];
    }

    double tap(int i) {
        if (i >= 6) return past(fed[i], delays[i]);
        const long step = long(phase[i] * 65536) & 65535;
        const float pos = place[i] + 6 * float(std::sin(2 * M_PI * double(step) / 65536));
        const long whole = long(pos >= 0 ? pos : pos - 1);
        const double f = double(pos - float(whole));
        const long age = delays[i] + long(place[i]) - whole;
        phase[i] += 2.0 / rate;
        if (++place[i] >= float(delays[i] + 17)) place[i] = 0;
        last[i] = (past(fed[i], age - 1) - last[i]) * f + past(fed[i], age);
        return last[i];
    }

    void operator()(double inL, double inR, double& outL, double& outR) {
        const double m = (inL + inR) / 2;
        mono.push_back(m);
        const double x = past(mono, pd + 1);
        double accL = m, accR = m, sum = 0;
        for (int i = 0; i < 12; i++) {
            y[i] = a[i] * tap(i) - b[i] * y[i];
            accL += "+-+-+-+-+-+-"[i] == '+' ? y[i] : -y[i];
            accR += "++--++--++--"[i] == '+' ? y[i] : -y[i];
            sum += y[i];
        }
        for (int i = 0; i < 12; i++) fed[i].push_back(y[(i + 1) % 12] - sum / 6 + x);
        outL += wet * accL * 0.167 + inL * dry;
        outR += wet * accR * 0.167 + inR * dry;
    }
};

std::vector<float> impulseResponse(float rate, int size, int frames) {
    CReverb fx(rate, 0);
    fx.setSize(size);
    fx.setWet(1.0f);
    fx.setDry(0.0f);
    Stereo in(frames), out(frames);
    in.left[0] = in.right[0] = 1.0f;
    runFx(fx, in, out, 512);
    return out.left;
}

/// Seconds in which the energy that is still to come of what passes a resonance at `hz` falls by
/// 60 dB, from how it falls by `span` dB from -5 on.
double decaySeconds(const std::vector<float>& response, double rate, double hz, double span) {
    const std::complex<double> turn = std::polar(0.99, 2 * M_PI * hz / rate);
    std::complex<double> state = 0.0;
    std::vector<double> left(response.size() + 1);
    for (std::size_t i = 0; i < response.size(); i++) {
        state = state * turn + double(response[i]);
        left[i] = std::norm(state);
    }
    for (std::size_t i = response.size(); i-- > 0;) left[i] += left[i + 1];
    const auto reaches = [&](double db) {
        std::size_t i = 0;
        while (i + 1 < left.size() && left[i] > left[0] * std::pow(10.0, db / 10)) i++;
        return double(i) / rate;
    };
    return 60 / span * (reaches(-5 - span) - reaches(-5));
}

} // namespace

TEST(CReverb, FollowsItsFormulasInAnyCut) {
    struct Case {
        int size, preDelay;
    };
    for (float rate : {44100.0f, 48000.0f, 96000.0f, 192000.0f})
        for (const Case& c : {Case{1000, 0}, {2000, 20}, {8000, 250}})
            for (int block : fxBlocks) {
                const bool fullPreDelay = rate * float(c.preDelay) == 48e6f; // all of its line
                const int frames = fullPreDelay ? 60000 : 12000;
                CReverb fx(rate, 0);
                fx.setSize(c.size);
                fx.setPreDelay(c.preDelay);
                fx.setWet(0.5f);
                fx.setDry(0.3f);
                Stereo in = fxSignal(frames), out = in, same = in;
                runFx(fx, same, same, block);
                for (std::size_t i = 0; i < std::size_t(frames); i++) { // what stood there
                    same.left[i] -= out.left[i];
                    same.right[i] -= out.right[i];
                }
                expectLike(in, same,
                           Reference(double(rate), c.size * 0.001, 0.5, double(0.3f),
                                     int(double(rate) * c.preDelay * 0.001)),
                           1e-4, std::to_string(c.size) + " in " + std::to_string(block));
            }
}

/// Low notes decay by 60 dB in the time told, within 5 %, and the top 2.4 times as fast. What is
/// 0.28 of the rate stands for the top: above it the filters' law, a gain a round of
/// |g (1 - p) / (1 - p e^-jw)|, goes on rising.
TEST(CReverb, DecaysInItsTime) {
    for (float rate : fxRates)
        for (int size : {1000, 3000}) {
            const std::vector<float> response =
                impulseResponse(rate, size, int(rate) * 3 * size / 2000);
            const double low = decaySeconds(response, double(rate), 150, 60);
            const double high = decaySeconds(response, double(rate), 0.28 * double(rate), 30);
            EXPECT_NEAR(low, size * 0.001, size * 0.00005) << size << " at " << rate;
            EXPECT_NEAR(low / high, 2.4, 0.24) << size << " at " << rate;
        }
}

/// Two seconds of silence send it to rest. There time stands still: the next sound brings back what
/// was left, however long the rest was.
TEST(CReverb, RestsInSilence) {
    CReverb fx(44100, 0), longer(44100, 0);
    Stereo burst = fxSignal(2048), silence(512), out(2048);
    for (CReverb* unit : {&fx, &longer}) {
        unit->setSize(1000);
        runFx(*unit, silence, out, 512);
        EXPECT_EQ(unit->state, 1) << "silence does not wake it";
        runFx(*unit, burst, out, 512);
        EXPECT_EQ(unit->state, 2);
        for (int i = 0; unit->state == 2 && i < 5 * 44100 / 512; i++)
            runFx(*unit, silence, out, 512);
        EXPECT_EQ(unit->silence, 88576) << "the first whole block at or past two seconds";
        ASSERT_EQ(unit->state, 1);
    }
    Stereo written(512), back(2048), later(2048);
    for (int i = 0; i < 20; i++) runFx(longer, silence, written, 512);
    EXPECT_EQ(written.left, silence.left) << "at rest nothing is written";
    runFx(fx, burst, back, 512);
    runFx(longer, burst, later, 512);
    EXPECT_EQ(fx.state, 2);
    EXPECT_EQ(back.left, later.left);
}

TEST(CReverb, ForgetsItsTailWhenSwitchedOff) {
    CReverb fx(44100, 0), fresh(44100, 0);
    Stereo burst = fxSignal(4096), out(4096), again(4096), first(4096);
    runFx(fx, burst, out, 512);
    fx.setEnabled(0);
    fx.setEnabled(1);
    for (int i = 0; i < 6; i++) fresh.modLines[i].phase = fx.modLines[i].phase;
    runFx(fx, burst, again, 512);
    runFx(fresh, burst, first, 512);
    double differs = 0.0;
    for (std::size_t i = 0; i < 4096; i++)
        differs = std::fmax(differs, double(std::fabs(again.left[i] - first.left[i])));
    EXPECT_LT(differs, 1e-3);
}
