#include "engine/SettingUnit.h"

#include "base/Numbers.h"
#include "engine/KeyNames.h"

#include <cmath>

namespace {

constexpr double percent = 100.0, centsPerSemitone = 100.0;
constexpr double msPerSecond = 1000.0, hzPerKilohertz = 1000.0;
constexpr double silentDb = -200.0; ///< and below
constexpr double dbPerDecade = 20.0;

double asEntered(const CObject*, double entered) {
    return entered;
}

double ofPercent(const CObject*, double entered) {
    return entered / percent;
}

CStr decibels(double db) {
    constexpr double almostFull = -0.05;
    if (db <= silentDb) return "-inf dB";
    return asStrFormat(db > almostFull && db < 0 ? 0.0 : db, "%.1f dB");
}

double dbOf(double amplitude) {
    return amplitude > 0.0 ? dbPerDecade * std::log10(amplitude) : silentDb;
}

double amplitudeOf(double db) {
    return std::pow(10.0, db / dbPerDecade);
}

CStr plain(const CObject*, double v) {
    return v == std::floor(v) ? asStr(asRound(v)) : asStrFormat(v, "%.2f");
}

CStr pan(const CObject*, double v) {
    const int at = asRound(v * percent);
    if (at == 0) return "C";
    return (at < 0 ? "L" : "R") + asStr(std::abs(at));
}

} // namespace

const SettingUnit plainUnit{plain, asEntered};
const SettingUnit onOffUnit{[](const CObject*, double v) { return CStr(v != 0.0 ? "On" : "Off"); },
                            asEntered};
const SettingUnit shareUnit{
    [](const CObject*, double v) { return asStr(asRound(v * percent)) + " %"; }, ofPercent};
const SettingUnit gainUnit{[](const CObject*, double v) { return decibels(dbOf(v)); },
                           [](const CObject*, double db) { return amplitudeOf(db); }};
const SettingUnit squaredUnit{[](const CObject*, double v) { return decibels(dbOf(v * v)); },
                              [](const CObject*, double db) { return std::sqrt(amplitudeOf(db)); }};
const SettingUnit decibelUnit{[](const CObject*, double v) { return decibels(v); }, asEntered};
const SettingUnit hertzUnit{[](const CObject*, double v) {
                                if (v >= hzPerKilohertz)
                                    return asStrFormat(v / hzPerKilohertz, "%.2f kHz");
                                return asStrFormat(v, v < 100.0 ? "%.2f Hz" : "%.0f Hz");
                            },
                            asEntered};
const SettingUnit msUnit{[](const CObject*, double v) {
                             if (v >= msPerSecond) return asStrFormat(v / msPerSecond, "%.2f s");
                             return asStrFormat(v, v < 10.0 ? "%.1f ms" : "%.0f ms");
                         },
                         asEntered};
const SettingUnit degreeUnit{[](const CObject*, double v) { return asStrFormat(v, "%.0f deg"); },
                             asEntered};
const SettingUnit semitoneUnit{[](const CObject*, double v) {
                                   const bool whole = v == std::floor(v);
                                   if (v == 0.0) return CStr("0 st");
                                   return asStrFormat(v, whole ? "%+.0f st" : "%+.2f st");
                               },
                               asEntered};
const SettingUnit centUnit{
    [](const CObject*, double v) {
        const int cents = asRound(v * centsPerSemitone);
        return cents == 0 ? CStr("0 ct") : asStrFormat(cents, "%+d ct");
    },
    [](const CObject*, double entered) { return entered / centsPerSemitone; }};
const SettingUnit panUnit{pan, ofPercent};
const SettingUnit ratioUnit{
    [](const CObject*, double v) { return asStrFormat(1.0 / v, "%.1f : 1"); },
    [](const CObject*, double entered) { return entered > 0.0 ? 1.0 / entered : 1.0; }};
const SettingUnit keyUnit{[](const CObject*, double v) { return noteToStr(asRound(v)); },
                          asEntered};
const SettingUnit channelUnit{
    [](const CObject*, double v) { return v < 0.0 ? CStr("All") : asStr(asRound(v) + 1); },
    [](const CObject*, double entered) { return entered - 1.0; }};
const SettingUnit controllerUnit{
    [](const CObject*, double v) { return v < 0.0 ? CStr("None") : asStr(asRound(v)); }, asEntered};
