#include "data/presets/RackPresets.h"

#include "effects/CEffect.h"
#include "effects/EffectKinds.h"
#include "engine/CQV.h"
#include "engine/EffectSettings.h"

#include <cstring>

namespace presets {

namespace {

using Knobs = std::vector<Knob>;

Unit echo(double dry, double wet, double feedback, double left, double leftBy, double right,
          double rightBy, double cross = 0.0) {
    return {fxDelay,
            {{"Mix", "Dry", dry},
             {"Mix", "Wet", wet},
             {"Echo", "Feedback", feedback},
             {"Echo", "Sync", 1},
             {"Left", "Beats", left},
             {"Left", "Divided by", leftBy},
             {"Right", "Beats", right},
             {"Right", "Divided by", rightBy},
             {"Echo", "Cross", cross}}};
}

/// Of a fixed time in milliseconds.
Unit slap(double dry, double wet, double feedback, double left, double right) {
    return {fxDelay,
            {{"Mix", "Dry", dry},
             {"Mix", "Wet", wet},
             {"Echo", "Feedback", feedback},
             {"Echo", "Sync", 0},
             {"Left", "Time", left},
             {"Right", "Time", right}}};
}

Unit room(double dry, double wet, double ms, double preDelay) {
    return {fxReverb,
            {{"Mix", "Dry", dry},
             {"Mix", "Wet", wet},
             {"Room", "Time", ms},
             {"Room", "Pre-delay", preDelay}}};
}

Unit voices(double dry, double wet, double delay, double depth, double hz, double feedback = 0.0,
            double phase = 90.0) {
    return {fxChorus,
            {{"Mix", "Dry", dry},
             {"Mix", "Wet", wet},
             {"Voices", "Delay", delay},
             {"Voices", "Depth", depth},
             {"Voices", "Feedback", feedback},
             {"Sweep", "Rate", hz},
             {"Sweep", "Phase", phase}}};
}

Unit notches(double dry, double wet, double feedback, double from, double to, double hz,
             double phase = 0.0) {
    return {fxPhaser,
            {{"Mix", "Dry", dry},
             {"Mix", "Wet", wet},
             {"Notches", "Feedback", feedback},
             {"Notches", "From", from},
             {"Notches", "To", to},
             {"Sweep", "Rate", hz},
             {"Sweep", "Phase", phase}}};
}

Unit crush(double bits, double held) {
    return {fxBitcrusher, {{"Crush", "Bits", bits}, {"Crush", "Hold", held}}};
}

constexpr double lowPass = 0, bandPass = 1, highPass = 2;

/// The cutoff counts squared: 1 is 7 kHz, 0.5 is 1.8 kHz, 0.2 is 280 Hz.
Unit filter(double kind, double cutoff, double resonance) {
    return {fxFilter,
            {{"Filter", "Kind", kind},
             {"Filter", "Cutoff", cutoff},
             {"Filter", "Resonance", resonance}}};
}

/// `over`: dB that go in for one that comes out.
Unit squeeze(double threshold, double over, double attack, double release, double gain) {
    return {fxCompressor,
            {{"Level", "Threshold", threshold},
             {"Level", "Ratio", 1.0 / over},
             {"Level", "Gain", gain},
             {"Time", "Attack", attack},
             {"Time", "Release", release}}};
}

Unit gate(double threshold, double range, double attack, double held, double release) {
    return {fxGate,
            {{"Level", "Threshold", threshold},
             {"Level", "Range", range},
             {"Time", "Attack", attack},
             {"Time", "Hold", held},
             {"Time", "Release", release}}};
}

Unit cleanAmp(double bass, double mid, double treble, double volume) {
    return {fxGuitarAmp,
            {{"Amplifier", "Channel", 0},
             {"Clean", "Bass", bass},
             {"Clean", "Mid", mid},
             {"Clean", "Treble", treble},
             {"Clean", "Volume", volume}}};
}

Unit crunchAmp(double drive, double bass, double treble, double topCut, double volume) {
    return {fxGuitarAmp,
            {{"Amplifier", "Channel", 1},
             {"Crunch", "Drive", drive},
             {"Crunch", "Bass", bass},
             {"Crunch", "Treble", treble},
             {"Crunch", "Top cut", topCut},
             {"Crunch", "Volume", volume}}};
}

Unit dirtyAmp(double drive, double bass, double mid, double treble, double presence,
              double volume) {
    return {fxGuitarAmp,
            {{"Amplifier", "Channel", 2},
             {"Dirty", "Drive", drive},
             {"Dirty", "Bass", bass},
             {"Dirty", "Mid", mid},
             {"Dirty", "Treble", treble},
             {"Dirty", "Presence", presence},
             {"Dirty", "Volume", volume}}};
}

std::vector<RackPreset> vocals() {
    constexpr const char* use = "Vocals";
    return {
        {use,
         "Lead vocal",
         {filter(highPass, 0.2, 0), squeeze(-32, 5, 8, 120, 6), room(1, 0.13, 1400, 45)}},
        {use,
         "Doubled",
         {filter(highPass, 0.27, 0), voices(0.8, 0.6, 28, 0.06, 0.35),
          squeeze(-30, 4, 10, 100, 8)}},
        {use,
         "Slap echo",
         {filter(highPass, 0.26, 0), squeeze(-24, 3, 5, 90, 5), slap(1, 0.9, 0.22, 115, 128)}},
        {use,
         "Telephone",
         {filter(highPass, 0.22, 0.1), filter(highPass, 0.22, 0), filter(lowPass, 0.66, 0.25),
          filter(lowPass, 0.66, 0), squeeze(-30, 8, 2, 60, -1)}},
        {use,
         "Announcer",
         {filter(highPass, 0.2, 0.2), filter(lowPass, 0.74, 0.1), gate(-30, -40, 1, 120, 180),
          squeeze(-32, 6, 2, 140, 12), slap(1, 0.35, 0.25, 240, 310)}},
        {use,
         "Far choir",
         {voices(0.4, 0.8, 36, 0.14, 0.5), room(0.4, 0.8, 5200, 60), filter(highPass, 0.2, 0),
          filter(lowPass, 0.44, 0)}},
        {use, "Robot", {voices(0.2, 0.9, 7, 0, 0, 0.88, 0), crush(9, 3)}},
        {use, "Dotted throw", {squeeze(-22, 3, 8, 120, 4), echo(1, 0.4, 0.45, 3, 4, 1, 1, 0.4)}},
        {use, "Old gramophone", {filter(bandPass, 0.46, 0.2), crush(7, 4), room(1, 0.1, 1000, 0)}},
    };
}

std::vector<RackPreset> drums() {
    constexpr const char* use = "Drums";
    return {
        {use, "Pump", {room(1, 0.35, 1000, 0), squeeze(-40, 12, 4, 320, 7)}},
        {use, "Tight gate", {gate(-30, -80, 0.2, 35, 40)}},
        {use, "Small room", {room(0.9, 0.9, 1300, 5)}},
        {use,
         "Arena",
         {room(1, 0.6, 3700, 60), squeeze(-34, 6, 6, 180, 6), filter(lowPass, 0.81, 0),
          filter(highPass, 0.1, 0)}},
        {use, "Cut-off room", {room(0.8, 0.9, 2600, 0), gate(-20, -80, 0.5, 130, 40)}},
        {use, "Crushed", {crush(6, 6), squeeze(-26, 6, 2, 80, 8)}},
        {use, "Behind the door", {filter(lowPass, 0.24, 0.3), squeeze(-28, 4, 4, 120, 6)}},
        {use,
         "Dub",
         {filter(highPass, 0.26, 0.2), filter(lowPass, 0.6, 0.1),
          echo(1, 0.6, 0.62, 3, 4, 3, 4, 0.8), room(1, 0.3, 2800, 10)}},
        {use, "Tin can", {voices(0.5, 0.8, 3, 0.02, 0.1, 0.9, 0), filter(highPass, 0.27, 0)}},
    };
}

std::vector<RackPreset> bass() {
    constexpr const char* use = "Bass";
    return {
        {use, "Even", {filter(lowPass, 0.5, 0), squeeze(-28, 4, 12, 160, 7)}},
        {use,
         "Fingers",
         {squeeze(-24, 3, 30, 120, 4), cleanAmp(0.6, 0.55, 0.45, 0.5), filter(lowPass, 0.4, 0)}},
        {use, "Grit", {crunchAmp(0.9, 0.75, 0.3, 0.6, 0.4), filter(lowPass, 0.45, 0.1)}},
        {use,
         "Fuzz",
         {dirtyAmp(0.9, 0.8, 0.3, 0.3, 0.1, 0.4), filter(lowPass, 0.34, 0.2),
          gate(-48, -60, 1, 60, 120)}},
        {use, "Only the sub", {filter(lowPass, 0.125, 0.05), squeeze(-24, 4, 10, 140, 6)}},
        {use, "Liquid", {notches(0.6, 0.7, 0.8, 100, 1600, 0.25, 90), squeeze(-24, 3, 10, 120, 4)}},
    };
}

std::vector<RackPreset> guitars() {
    constexpr const char* use = "Guitar and amp";
    return {
        {use, "Jazz box", {cleanAmp(0.65, 0.6, 0.25, 0.55), room(1, 0.12, 1200, 10)}},
        {use,
         "Clean and wide",
         {squeeze(-26, 3, 8, 120, 5), cleanAmp(0.4, 0.4, 0.7, 0.5),
          voices(0.7, 0.6, 22, 0.15, 0.5, 0, 180), room(1, 0.2, 2200, 20)}},
        {use,
         "Surf",
         {cleanAmp(0.35, 0.5, 0.85, 0.55), voices(0.8, 0.4, 33, 0, 0, 0.5, 0),
          room(1, 0.55, 2800, 5), filter(highPass, 0.13, 0)}},
        {use,
         "Country slap",
         {squeeze(-28, 5, 4, 100, 7), cleanAmp(0.4, 0.55, 0.75, 0.5), slap(1, 0.8, 0.45, 125, 125),
          filter(highPass, 0.16, 0)}},
        {use, "Blues", {crunchAmp(0.4, 0.55, 0.5, 0.35, 0.5), room(1, 0.18, 1500, 10)}},
        {use, "Crunch rhythm", {crunchAmp(0.65, 0.5, 0.6, 0.25, 0.5)}},
        {use, "Garage", {crunchAmp(0.95, 0.35, 0.75, 0.1, 0.3), room(1, 0.3, 1000, 0)}},
        {use,
         "Solo",
         {dirtyAmp(0.7, 0.45, 0.7, 0.55, 0.45, 0.32), echo(1, 0.35, 0.35, 1, 1, 3, 4),
          room(1, 0.2, 2400, 20)}},
        {use,
         "Wall",
         {gate(-50, -80, 0.5, 60, 60), dirtyAmp(0.85, 0.7, 0.25, 0.6, 0.5, 0.45),
          voices(0.7, 0.7, 26, 0.05, 0.2, 0, 180)}},
        {use, "Chug", {gate(-40, -80, 0.2, 25, 25), dirtyAmp(1, 0.6, 0.45, 0.5, 0.35, 0.4)}},
        {use,
         "Haze",
         {dirtyAmp(0.6, 0.5, 0.5, 0.35, 0.2, 0.4), voices(0.5, 0.8, 30, 0.35, 0.4),
          room(0.5, 0.9, 9500, 0)}},
        {use,
         "Rotating",
         {crunchAmp(0.3, 0.5, 0.45, 0.4, 0.5), voices(0.4, 0.9, 5, 0.45, 6.2, 0, 180)}},
        {use, "Wah at rest", {filter(bandPass, 0.36, 0.75), crunchAmp(0.6, 0.4, 0.6, 0.2, 0.5)}},
    };
}

std::vector<RackPreset> keys() {
    constexpr const char* use = "Keys and synths";
    return {
        {use, "Sway", {voices(0.7, 0.6, 16, 0.12, 0.7, 0, 180)}},
        {use,
         "Ensemble",
         {filter(highPass, 0.14, 0), voices(0.2, 0.8, 24, 0.3, 0.6),
          voices(0.5, 0.6, 11, 0.2, 1.1, 0, 180)}},
        {use, "Slow sky", {notches(0.6, 0.8, 0.5, 400, 9000, 0.06, 90), room(1, 0.5, 6500, 40)}},
        {use, "Jet", {notches(0.5, 0.9, 0.85, 200, 12000, 0.35)}},
        {use, "Flanged", {voices(0.7, 0.7, 3, 0.6, 0.18, 0.8, 60)}},
        {use,
         "Across",
         {echo(0.7, 0.7, 0.7, 1, 2, 1, 2, 1), voices(0.7, 0.5, 14, 0.1, 0.5, 0, 180)}},
        {use, "Sixteenths", {filter(highPass, 0.34, 0.1), echo(1, 0.5, 0.6, 3, 4, 1, 4)}},
        {use, "Dust", {crush(8, 5), filter(lowPass, 0.7, 0.05), voices(0.8, 0.4, 40, 0.05, 0.9)}},
        {use,
         "Cloud",
         {filter(highPass, 0.2, 0), echo(0.6, 0.6, 0.7, 1, 3, 3, 8, 0.6),
          room(0.5, 0.9, 9000, 80)}},
    };
}

/// Without the sound itself, for send buses.
std::vector<RackPreset> sends() {
    constexpr const char* use = "Sends";
    return {
        {use, "Chamber", {room(0, 1, 1400, 12), filter(highPass, 0.2, 0), filter(lowPass, 0.7, 0)}},
        {use, "Hall", {room(0, 1, 2800, 35), filter(highPass, 0.15, 0)}},
        {use, "Cathedral", {room(0, 1, 8500, 70), filter(lowPass, 0.44, 0)}},
        {use, "Dark hall", {room(0, 1, 3600, 30), filter(lowPass, 0.5, 0)}},
        {use, "Bright plate", {room(0, 1, 2000, 5), filter(highPass, 0.36, 0)}},
        {use, "Quarter echo", {echo(0, 1, 0.45, 1, 1, 1, 1)}},
        {use, "Dotted echo", {echo(0, 1, 0.5, 3, 4, 3, 4, 1)}},
        {use, "Eighths left and right", {echo(0, 1, 0.35, 1, 2, 1, 1), filter(highPass, 0.28, 0)}},
        {use, "Endless", {echo(0, 1, 0.82, 2, 3, 3, 4, 0.7), room(0, 1, 12000, 0)}},
    };
}

std::vector<RackPreset> masters() {
    constexpr const char* use = "Master";
    return {
        {use, "Glue", {squeeze(-18, 2, 30, 180, 2)}},
        {use, "Night listening", {squeeze(-46, 6, 5, 700, 7)}},
        {use, "Small speaker", {filter(highPass, 0.17, 0), filter(lowPass, 0.85, 0)}},
    };
}

std::vector<RackPreset> special() {
    constexpr const char* use = "Special";
    return {
        {use,
         "Under water",
         {filter(lowPass, 0.22, 0.4), voices(0.3, 0.9, 45, 0.4, 0.3), room(0.6, 0.6, 3000, 0)}},
        {use, "Eight bits", {crush(5, 8)}},
        {use, "Two bits", {crush(2, 2), filter(lowPass, 0.75, 0.1)}},
        {use, "Metal tube", {voices(0.2, 0.45, 5, 0, 0, 0.92, 0), room(0.8, 0.4, 1600, 0)}},
        {use, "Swarm", {voices(0.2, 0.9, 60, 0.9, 2.4, 0.4), notches(0.5, 0.8, 0.7, 300, 8000, 3)}},
        {use,
         "Broken radio",
         {filter(bandPass, 0.45, 0.6), crush(4, 7), gate(-30, -60, 0.2, 15, 20)}},
        {use,
         "Frozen",
         {filter(highPass, 0.32, 0), room(0, 1, 40000, 0), voices(0.5, 0.6, 20, 0.2, 0.2, 0, 180)}},
        {use, "Alien", {notches(0.1, 1, 0.9, 150, 3000, 7), voices(0.4, 0.8, 9, 0.5, 5, 0.6)}},
        {use, "Stutter", {echo(0.8, 0.9, 0.75, 1, 8, 1, 8)}},
    };
}

/// Behind others these add to the sound that stands there already, all of it.
bool addsToSound(int kind) {
    return kind == fxDelay || kind == fxReverb;
}

bool isDry(const Knob& knob) {
    return std::strcmp(knob.name, "Dry") == 0;
}

} // namespace

std::vector<RackPreset> rackPresets() {
    std::vector<RackPreset> all;
    for (const auto& some :
         {vocals(), drums(), bass(), guitars(), keys(), sends(), masters(), special()})
        all.insert(all.end(), some.begin(), some.end());
    return all;
}

std::string fillRack(CEffect* rack, const RackPreset& preset) {
    std::string missing;
    auto* prog = new CEffectProg;
    prog->id = preset.name;
    rack->progs.add(prog);
    for (const Unit& unit : preset.chain) {
        CFX* fx = makeNewEffect(unit.kind, float(rack->host->rate), rack->host->frames);
        const bool behind = addsToSound(unit.kind) && !prog->effects.empty();
        prog->effects.add(fx);
        for (const Knob& knob : unit.knobs) {
            const Setting* found = nullptr;
            for (const Setting& s : settingsOf(*fx))
                if (std::strcmp(s.group, knob.group) == 0 && std::strcmp(s.name(), knob.name) == 0)
                    found = &s;
            if (found)
                found->kind.set(fx, found->index,
                                {behind && isDry(knob) ? knob.value - 1.0 : knob.value});
            else if (missing.empty())
                missing = std::string(knob.group) + " / " + knob.name;
        }
    }
    return missing;
}

} // namespace presets
