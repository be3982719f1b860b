#include "panels/rack/EffectShape.h"

#include "base/Numbers.h"
#include "common/fx/CBitcrusher.h"
#include "common/fx/CChorus.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CDelay.h"
#include "common/fx/CGate.h"
#include "common/fx/CPhaser.h"
#include "common/fx/CReverb.h"
#include "effects/EffectKinds.h"
#include "engine/EffectSettings.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace {

constexpr double pi = std::numbers::pi;
constexpr double lowestHz = 20.0, highestHz = 20000.0;
constexpr int points = 96; ///< of a curve
constexpr double msPerSecond = 1000.0;

double shareOf(double i) {
    return i / (points - 1);
}

/// Equal ratios are equal ways.
double hertzAt(double share) {
    return lowestHz * std::pow(highestHz / lowestHz, share);
}

double shareOfHertz(double hz) {
    return std::clamp(std::log(hz / lowestHz) / std::log(highestHz / lowestHz), 0.0, 1.0);
}

/// A scale that ends at a round number of seconds and has room for so many.
double scaleFor(double seconds) {
    for (const double end : {0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 30.0})
        if (seconds <= end) return end;
    return 60.0;
}

CStr secondsText(double s) {
    return asStrFormat(s, s < 1.0 ? "%.1f s" : "%.0f s");
}

/// A curve by what it is at each place.
template <class F>
EffectShape::Line curve(F&& at, bool second = false) {
    EffectShape::Line line;
    line.second = second;
    for (int i = 0; i < points; i++)
        line.points.push_back({shareOf(i), std::clamp(at(shareOf(i)), 0.0, 1.0)});
    return line;
}

/// By the laws that the effect tells: low notes fall by 60 dB in its time, high ones faster.
EffectShape decayOf(const CReverb& fx) {
    constexpr double highsFaster = 2.4;
    const double start = fx.getPreDelay() / msPerSecond, time = fx.getRevTime() / msPerSecond;
    const double end = scaleFor(start + time);
    EffectShape made;
    for (const double fall : {time / highsFaster, time}) {
        EffectShape::Line line;
        line.second = fall != time;
        line.points = {{start / end, 0.0}, {start / end, 1.0}, {(start + fall) / end, 0.0}};
        made.lines.push_back(line);
    }
    made.from = "0";
    made.to = secondsText(end);
    made.spoken = "Decay";
    return made;
}

double echoSeconds(const CDelay& fx, int mul, int div, float ms, double tempo) {
    constexpr double secondsPerMinute = 60.0;
    if (!fx.getSync()) return double(ms) / msPerSecond;
    return double(mul) / asMax(1, div) * secondsPerMinute / std::max(1.0, tempo);
}

/// Left up, right down.
EffectShape echoesOf(const CDelay& fx, double tempo) {
    constexpr int shown = 8;
    constexpr double least = 0.02, half = 0.5;
    const double left = echoSeconds(fx, fx.mulLeft, fx.divLeft, fx.timeLeft, tempo);
    const double right = echoSeconds(fx, fx.mulRight, fx.divRight, fx.timeRight, tempo);
    const double end = scaleFor(std::max(left, right) * 4.0);
    EffectShape made;
    for (int i = 1; i <= shown; i++) {
        const double level = std::pow(double(fx.getFeedback()), i) * half;
        if (level < least) break;
        if (i * left <= end) made.bars.push_back({i * left / end, level, false});
        if (i * right <= end) made.bars.push_back({i * right / end, -level, true});
    }
    made.lines.push_back({{{0.0, half}, {1.0, half}}, false});
    made.from = "0";
    made.to = secondsText(end);
    made.spoken = "Echoes";
    return made;
}

double sweptPhase(double share, bool right, double degrees) {
    constexpr double halfTurn = 180.0;
    return 2.0 * pi * share + (right ? degrees / halfTurn * pi : 0.0);
}

/// The time of its delay, during one turn of its oscillator.
EffectShape sweepOf(const CChorus& fx) {
    constexpr double longest = 600.0;
    EffectShape made;
    for (const bool right : {true, false})
        made.lines.push_back(curve(
            [&](double share) {
                const double swept = std::sin(sweptPhase(share, right, double(fx.getPhase())));
                const double ms = double(fx.getDelay()) * (1.0 + double(fx.getDepth()) * swept);
                return std::log(std::max(1.0, ms)) / std::log(longest);
            },
            right));
    made.spoken = "Sweep of the delay";
    return made;
}

EffectShape sweepOf(const CPhaser& fx) {
    EffectShape made;
    const double low = shareOfHertz(double(fx.getRangeMin()));
    const double high = shareOfHertz(double(fx.getRangeMax()));
    for (const bool right : {true, false})
        made.lines.push_back(curve(
            [&](double share) {
                const double swept = std::sin(sweptPhase(share, right, double(fx.getPhase())));
                return low + (high - low) * (swept + 1.0) / 2.0;
            },
            right));
    made.spoken = "Sweep of the notches";
    return made;
}

/// A turn of a sine, before and after.
EffectShape stepsOf(const CBitcrusher& fx) {
    constexpr int frames = 2 * CBitcrusher::maxDegrade;
    const double step = std::pow(0.5, fx.getBits() - 1);
    const auto wave = [](double frame) { return std::sin(2.0 * pi * frame / frames); };
    EffectShape made;
    made.lines.push_back(curve([&](double s) { return (wave(s * frames) + 1.0) / 2.0; }, true));
    EffectShape::Line line;
    for (int i = 0; i < frames; i += fx.getDegrade()) {
        const double rounded = std::floor(wave(i) / step + 0.5) * step;
        const double y = std::clamp((rounded + 1.0) / 2.0, 0.0, 1.0);
        line.points.push_back({double(i) / frames, y});
        line.points.push_back({double(std::min(frames, i + fx.getDegrade())) / frames, y});
    }
    made.lines.push_back(line);
    made.spoken = "Steps of a sine";
    return made;
}

/// How loud comes out what goes in, by what `gain` makes of a level, all in decibels.
template <class F>
EffectShape levelLaw(F&& gain) {
    constexpr double quietest = -60.0, loudest = 6.0;
    EffectShape made;
    made.lines.push_back({{{0.0, 0.0}, {1.0, 1.0}}, true});
    made.lines.push_back(curve([&](double share) {
        const double in = quietest + share * (loudest - quietest);
        return (in + gain(in) - quietest) / (loudest - quietest);
    }));
    made.from = "-60 dB";
    made.to = "6 dB";
    made.spoken = "Level out by level in";
    return made;
}

EffectShape lawOf(const CCompressor& fx) {
    return levelLaw([&](double in) {
        const double over = std::max(0.0, in - double(fx.getThreshold()));
        return double(fx.getGain()) - over * (1.0 - double(fx.getRatio()));
    });
}

EffectShape lawOf(const CGate& fx) {
    return levelLaw(
        [&](double in) { return in < double(fx.getThreshold()) ? double(fx.getRange()) : 0.0; });
}

} // namespace

EffectShaper::EffectShaper() = default;
EffectShaper::~EffectShaper() = default;

EffectShape EffectShaper::shapeOf(const CFX& fx, double tempo) {
    switch (fx.type) {
    case fxDelay:
        return echoesOf(static_cast<const CDelay&>(fx), tempo);
    case fxReverb:
        return decayOf(static_cast<const CReverb&>(fx));
    case fxChorus:
        return sweepOf(static_cast<const CChorus&>(fx));
    case fxPhaser:
        return sweepOf(static_cast<const CPhaser&>(fx));
    case fxBitcrusher:
        return stepsOf(static_cast<const CBitcrusher&>(fx));
    case fxFilter:
        return response(fx, 24.0, -48.0, "Level by frequency");
    case fxCompressor:
        return lawOf(static_cast<const CCompressor&>(fx));
    case fxGate:
        return lawOf(static_cast<const CGate&>(fx));
    case fxGuitarAmp:
        return response(fx, 50.0, -30.0, "Tone: level by frequency");
    default:
        return {};
    }
}

EffectShape EffectShaper::response(const CFX& fx, double top, double bottom, const CStr& spoken) {
    const std::vector<double> db = decibels(fx);
    EffectShape made;
    EffectShape::Line line;
    for (int i = 0; i < points; i++)
        line.points.push_back(
            {shareOf(i), std::clamp((db[size_t(i)] - bottom) / (top - bottom), 0.0, 1.0)});
    made.lines.push_back(line);
    made.from = "20 Hz";
    made.to = "20 kHz";
    made.spoken = spoken;
    return made;
}

/// Of a pulse so soft that nothing is driven, behind enough silence for all glides to end.
std::vector<double> EffectShaper::decibels(const CFX& fx) {
    constexpr int silence = 4096, frames = 4096;
    constexpr float pulse = 1e-5f;
    constexpr double leastLevel = 1e-6;
    if (!twin) twin.reset(makeEffect(fx.type, fx.rate, 0));
    for (const Setting& s : settingsOf(fx)) {
        const bool gate = CStr(s.name()) == "Gate"; // would not let it through
        s.kind.set(twin.get(), s.index, gate ? StoredValue::Numbers{} : s.kind.get(&fx, s.index));
    }
    std::vector<float> left(silence + frames), right(silence + frames);
    left[silence] = right[silence] = pulse;
    twin->process(left.data(), right.data(), left.data(), right.data(), long(left.size()));
    std::vector<double> db;
    for (int i = 0; i < points; i++) {
        const double turn = 2.0 * pi * hertzAt(shareOf(i)) / double(fx.rate);
        const std::complex<double> step = std::polar(1.0, -turn);
        std::complex<double> sum, phase = 1.0;
        for (int k = silence; k < silence + frames; k++, phase *= step)
            sum += double(left[size_t(k)]) * phase;
        db.push_back(20.0 * std::log10(std::max(leastLevel, std::abs(sum) / double(pulse))));
    }
    return db;
}
