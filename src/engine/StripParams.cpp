// The parameters of a strip: their values from 0 to 1, names and texts.

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/COutputChannel.h"
#include "engine/ParamUnit.h"

#include <cmath>
#include <iterator>

namespace {

enum Param : int {
    paramVol = 0,
    paramPan = 1,
    paramMute = 2,
    paramFirstBand = 3,
    paramSolo = 19,
    paramCount = 19
};
constexpr float threshold = ParamUnit::threshold;
constexpr double panSteps = 64;

/// What 0 and 1 stand for.
struct Range {
    float low, high;
    float share(float value) const { return (value - low) / (high - low); }
    float value(float share) const { return low + share * (high - low); }
};
constexpr Range panRange{-1.0f, 1.0f};
constexpr Range gainRange{CEQ::minGain, CEQ::maxGain};
constexpr Range frequencyRange{CEQ::minFrequency, CEQ::maxFrequency};
constexpr Range qRange{CEQ::minQ, CEQ::maxQ};

float toVol(double db) {
    return float(std::pow(10.0, db / 40)); // the fader is squared
}

CStr panText(float share) {
    const float at = panRange.value(share);
    if (at == 0.0f) return "<C>";
    return CStr(at < 0.0f ? "L" : "R") + asStr(asInt(std::fabs(double(at)) * panSteps));
}

CStr volText(float vol) {
    if (!(vol > 0.0f)) return "-inf";
    return asStrFormat(20 * std::log10(double(vol) * double(vol)), "%0.2f dB");
}

template <const Range& range>
CStr dbText(float share) {
    return asStrFormat(range.value(share), "%0.1f dB");
}

template <const Range& range>
float shareIn(double number) {
    return range.share(float(number));
}

constexpr ParamUnit volumeUnit{volText, toVol};
constexpr ParamUnit panUnit{panText,
                            [](double steps) { return panRange.share(float(steps / panSteps)); }};
constexpr ParamUnit gainUnit{dbText<gainRange>, shareIn<gainRange>};
constexpr ParamUnit qUnit{dbText<qRange>, shareIn<qRange>};
constexpr ParamUnit frequencyUnit{
    [](float share) { return asStr(asRound(double(frequencyRange.value(share)))) + " Hz"; },
    shareIn<frequencyRange>};

using Strip = COutputChannel;

/// One parameter of a strip, or of each band of its equaliser.
struct Row {
    const char* name;
    float (*get)(const Strip* ch, int band);
    void (*set)(Strip* ch, int band, float share);
    const ParamUnit& unit;
};

const Row volume = {"Volume", [](const Strip* ch, int) { return float(ch->vol); },
                    [](Strip* ch, int, float v) { ch->vol = fLimit(v, 0.0f, 1.0f); }, volumeUnit};
const Row pan = {"Pan", [](const Strip* ch, int) { return panRange.share(ch->pan); },
                 [](Strip* ch, int, float v) {
                     ch->pan = fLimit(panRange.value(v), panRange.low, panRange.high);
                 },
                 panUnit};
const Row mute = {"Mute", [](const Strip* ch, int) { return ch->mute ? 1.0f : 0.0f; },
                  [](Strip* ch, int, float v) { ch->mute = v >= threshold; }, switchUnit};
const Row solo = {"Solo", [](const Strip* ch, int) { return ch->solo ? 1.0f : 0.0f; },
                  [](Strip* ch, int, float v) { ch->solo = v >= threshold; }, switchUnit};
const Row bands[] = {
    {"power", [](const Strip* ch, int k) { return ch->eq[k]->active == 1 ? 1.0f : 0.0f; },
     [](Strip* ch, int k, float v) { ch->setEqPower(k, v >= threshold); }, switchUnit},
    {"gain", [](const Strip* ch, int k) { return gainRange.share(ch->eq[k]->gain); },
     [](Strip* ch, int k, float v) { ch->setEqGain(k, gainRange.value(v)); }, gainUnit},
    {"freq", [](const Strip* ch, int k) { return frequencyRange.share(ch->eq[k]->frequency); },
     [](Strip* ch, int k, float v) { ch->setEqFrequency(k, frequencyRange.value(v)); },
     frequencyUnit},
    {"Q", [](const Strip* ch, int k) { return qRange.share(ch->eq[k]->q); },
     [](Strip* ch, int k, float v) { ch->setEqQ(k, qRange.value(v)); }, qUnit},
};
constexpr int paramsPerBand = int(std::size(bands));

struct Place {
    const Row* row; ///< null for a number without a parameter
    int band;       ///< -1 for none
};

Place placeOf(int index) {
    const int inBands = index - paramFirstBand;
    if (inBands >= 0 && inBands < eqBandCount * paramsPerBand)
        return {&bands[inBands % paramsPerBand], inBands / paramsPerBand};
    switch (index) {
    case paramVol:
        return {&volume, -1};
    case paramPan:
        return {&pan, -1};
    case paramMute:
        return {&mute, -1};
    case paramSolo:
        return {&solo, -1};
    default:
        return {nullptr, -1};
    }
}

} // namespace

int COutputChannel::numParams() const {
    return paramCount;
}

float COutputChannel::param(int index) const {
    const auto [row, band] = placeOf(index);
    return row ? row->get(this, band) : 0.0f;
}

void COutputChannel::setParam(int index, ToStore<float> value) {
    const auto [row, band] = placeOf(index);
    if (row) row->set(this, band, value);
}

CStr COutputChannel::paramName(int index) {
    const auto [row, band] = placeOf(index);
    if (!row) return "";
    return band < 0 ? CStr(row->name) : CStr("EQ") + asStr(band + 1) + " " + row->name;
}

const ParamUnit* COutputChannel::paramUnit(int index) {
    const Row* row = placeOf(index).row;
    return row ? &row->unit : nullptr;
}

CStr COutputChannel::paramText(int index) const {
    const ParamUnit* unit = paramUnit(index);
    return unit ? unit->text(param(index)) : CStr();
}
