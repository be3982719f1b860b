// The parameters of a strip: their values from 0 to 1, names and texts.

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/COutputChannel.h"

#include <cmath>

namespace {

enum Param : int {
    paramVol = 0,
    paramPan = 1,
    paramMute = 2,
    paramFirstBand = 3,
    paramSolo = 19,
    paramCount = 19
};
enum BandParam : int { bandPower, bandGain, bandFrequency, bandQ, paramsPerBand };

constexpr float threshold = 0.5f; ///< of a switch
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

bool isOfBand(int index) {
    return index >= paramFirstBand && index < paramFirstBand + eqBandCount * paramsPerBand;
}
int bandOf(int index) {
    return (index - paramFirstBand) / paramsPerBand;
}
int bandParamOf(int index) {
    return (index - paramFirstBand) % paramsPerBand;
}

float bandParam(const CEQ& band, int param) {
    switch (param) {
    case bandPower:
        return band.active == 1 ? 1.0f : 0.0f;
    case bandGain:
        return gainRange.share(band.gain);
    case bandFrequency:
        return frequencyRange.share(band.frequency);
    default:
        return qRange.share(band.q);
    }
}

void setBandParam(COutputChannel* ch, int band, int param, float value) {
    switch (param) {
    case bandPower:
        return ch->setEqPower(band, value >= threshold);
    case bandGain:
        return ch->setEqGain(band, gainRange.value(value));
    case bandFrequency:
        return ch->setEqFrequency(band, frequencyRange.value(value));
    default:
        return ch->setEqQ(band, qRange.value(value));
    }
}

CStr onOff(bool on) {
    return on ? "on" : "off";
}

CStr bandText(const CEQ& band, int param) {
    switch (param) {
    case bandPower:
        return onOff(band.active == 1);
    case bandGain:
        return asStrFormat(float(band.gain), "%0.1f dB");
    case bandFrequency:
        return asStr(asRound(double(band.frequency))) + " Hz";
    default:
        return asStrFormat(float(band.q), "%0.1f dB");
    }
}

CStr panText(float pan) {
    if (pan == 0.0f) return "<C>";
    return CStr(pan < 0.0f ? "L" : "R") + asStr(asInt(std::fabs(double(pan)) * panSteps));
}

CStr volText(float vol) {
    if (!(vol > 0.0f)) return "-inf";
    return asStrFormat(20 * std::log10(double(vol) * double(vol)), "%0.2f dB");
}

} // namespace

int COutputChannel::numParams() const {
    return paramCount;
}

float COutputChannel::param(int index) const {
    if (isOfBand(index)) return bandParam(*eq[bandOf(index)], bandParamOf(index));
    switch (index) {
    case paramVol:
        return vol;
    case paramPan:
        return panRange.share(pan);
    case paramMute:
        return mute ? 1.0f : 0.0f;
    case paramSolo:
        return solo ? 1.0f : 0.0f;
    default:
        return 0.0f;
    }
}

void COutputChannel::setParam(int index, ToStore<float> value) {
    if (isOfBand(index)) return setBandParam(this, bandOf(index), bandParamOf(index), value);
    switch (index) {
    case paramVol:
        vol = fLimit(value, 0.0f, 1.0f);
        break;
    case paramPan:
        pan = fLimit(panRange.value(value), panRange.low, panRange.high);
        break;
    case paramMute:
        mute = value >= threshold;
        break;
    case paramSolo:
        solo = value >= threshold;
        break;
    default:
        break;
    }
}

CStr COutputChannel::paramName(int index) {
    static const char* const bandParams[paramsPerBand] = {" power", " gain", " freq", " Q"};
    if (isOfBand(index))
        return CStr("EQ") + asStr(bandOf(index) + 1) + bandParams[bandParamOf(index)];
    switch (index) {
    case paramVol:
        return "Volume";
    case paramPan:
        return "Pan";
    case paramMute:
        return "Mute";
    case paramSolo:
        return "Solo";
    default:
        return "";
    }
}

CStr COutputChannel::paramText(int index) const {
    if (isOfBand(index)) return bandText(*eq[bandOf(index)], bandParamOf(index));
    switch (index) {
    case paramVol:
        return volText(vol);
    case paramPan:
        return panText(pan);
    case paramMute:
        return onOff(mute);
    case paramSolo:
        return onOff(solo);
    default:
        return "";
    }
}
