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
        {use, "Lead vocal", {squeeze(-24, 3, 8, 120, 6), room(1, 0.16, 1600, 45)}},
        {use, "Vocal plate", {squeeze(-22, 2, 15, 150, 4), room(1, 0.4, 2600, 15)}},
        {use, "Doubled", {voices(0.8, 0.6, 28, 0.06, 0.35), squeeze(-20, 2, 10, 100, 2)}},
        {use, "Slap echo", {squeeze(-24, 3, 5, 90, 5), slap(1, 0.45, 0.12, 115, 128)}},
        {use,
         "Telephone",
         {filter(highPass, 0.21, 0.1), filter(lowPass, 0.68, 0.25), squeeze(-30, 8, 2, 60, 12)}},
        {use, "Announcer", {gate(-46, -24, 1, 120, 180), squeeze(-32, 6, 2, 140, 12)}},
        {use, "Far choir", {voices(0.4, 0.8, 36, 0.14, 0.5), room(0.4, 0.8, 5200, 60)}},
        {use, "Robot", {voices(0.2, 0.9, 7, 0, 0, 0.88, 0), crush(9, 3)}},
        {use, "Dotted throw", {squeeze(-22, 3, 8, 120, 4), echo(1, 0.4, 0.45, 3, 4, 1, 1, 0.4)}},
        {use, "Old gramophone", {filter(bandPass, 0.46, 0.2), crush(7, 4), room(1, 0.1, 1000, 0)}},
    };
}

std::vector<RackPreset> drums() {
    constexpr const char* use = "Drums";
    return {
        {use, "Drum bus", {squeeze(-22, 3, 12, 110, 4)}},
        {use, "Pump", {squeeze(-36, 12, 4, 320, 11)}},
        {use, "Snap", {squeeze(-34, 6, 45, 60, 8)}},
        {use, "Tight gate", {gate(-30, -80, 0.2, 35, 40)}},
        {use, "Small room", {room(1, 0.3, 1000, 5)}},
        {use, "Arena", {squeeze(-26, 4, 6, 180, 6), room(1, 0.6, 4200, 30)}},
        {use, "Cut-off room", {room(0.8, 0.9, 2600, 0), gate(-28, -80, 0.5, 130, 40)}},
        {use, "Crushed", {crush(6, 6), squeeze(-26, 6, 2, 80, 8)}},
        {use, "Behind the door", {filter(lowPass, 0.24, 0.3), squeeze(-28, 4, 4, 120, 6)}},
        {use,
         "Dub",
         {filter(highPass, 0.15, 0.2), echo(1, 0.6, 0.62, 3, 4, 3, 4, 0.8),
          room(1, 0.3, 2800, 10)}},
        {use, "Tin can", {voices(0.5, 0.8, 3, 0.02, 0.1, 0.82, 0), filter(highPass, 0.21, 0)}},
    };
}

std::vector<RackPreset> bass() {
    constexpr const char* use = "Bass";
    return {
        {use, "Even", {squeeze(-28, 4, 12, 160, 7)}},
        {use, "Fingers", {squeeze(-24, 3, 30, 120, 4), cleanAmp(0.6, 0.55, 0.45, 0.5)}},
        {use, "Grit", {crunchAmp(0.55, 0.7, 0.35, 0.5, 0.45), squeeze(-20, 3, 8, 120, 2)}},
        {use, "Fuzz", {dirtyAmp(0.75, 0.75, 0.4, 0.4, 0.2, 0.4), gate(-48, -60, 1, 60, 120)}},
        {use, "Wide", {voices(0.8, 0.5, 18, 0.12, 0.4, 0, 180)}},
        {use, "Only the sub", {filter(lowPass, 0.125, 0.05), squeeze(-24, 4, 10, 140, 6)}},
        {use, "Liquid", {notches(0.6, 0.7, 0.6, 120, 2400, 0.25), squeeze(-24, 3, 10, 120, 4)}},
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
        {use, "Surf", {cleanAmp(0.35, 0.5, 0.85, 0.55), room(1, 0.7, 3200, 5)}},
        {use,
         "Country slap",
         {squeeze(-28, 5, 4, 100, 7), cleanAmp(0.4, 0.55, 0.75, 0.5), slap(1, 0.4, 0.1, 105, 105)}},
        {use, "Blues", {crunchAmp(0.4, 0.55, 0.5, 0.35, 0.5), room(1, 0.18, 1500, 10)}},
        {use, "Crunch rhythm", {crunchAmp(0.65, 0.5, 0.6, 0.25, 0.5)}},
        {use, "Garage", {crunchAmp(0.95, 0.35, 0.75, 0.1, 0.3), room(1, 0.3, 1000, 0)}},
        {use,
         "Solo",
         {dirtyAmp(0.7, 0.45, 0.7, 0.55, 0.45, 0.32), echo(1, 0.35, 0.35, 1, 1, 3, 4),
          room(1, 0.2, 2400, 20)}},
        {use, "Wall", {gate(-50, -80, 0.5, 60, 60), dirtyAmp(0.85, 0.7, 0.25, 0.6, 0.5, 0.45)}},
        {use, "Chug", {gate(-40, -80, 0.2, 25, 25), dirtyAmp(1, 0.6, 0.45, 0.5, 0.35, 0.4)}},
        {use,
         "Haze",
         {dirtyAmp(0.6, 0.5, 0.5, 0.35, 0.2, 0.4), voices(0.5, 0.8, 30, 0.35, 0.4),
          room(0.5, 0.9, 6500, 0)}},
        {use,
         "Rotating",
         {crunchAmp(0.3, 0.5, 0.45, 0.4, 0.5), voices(0.4, 0.9, 5, 0.45, 6.2, 0, 180)}},
        {use, "Wah at rest", {filter(bandPass, 0.36, 0.45), crunchAmp(0.6, 0.4, 0.6, 0.2, 0.5)}},
    };
}

std::vector<RackPreset> keys() {
    constexpr const char* use = "Keys and synths";
    return {
        {use, "Sway", {voices(0.7, 0.6, 16, 0.12, 0.7, 0, 180)}},
        {use, "Rotary", {voices(0.3, 0.9, 4, 0.5, 6.6, 0, 180), room(1, 0.15, 1200, 0)}},
        {use, "Ensemble", {voices(0.4, 0.7, 24, 0.3, 0.6), voices(0.5, 0.6, 11, 0.2, 1.1, 0, 180)}},
        {use, "Slow sky", {notches(0.6, 0.8, 0.5, 400, 9000, 0.06, 90), room(1, 0.5, 6000, 40)}},
        {use, "Jet", {notches(0.5, 0.9, 0.85, 200, 12000, 0.35)}},
        {use, "Flanged", {voices(0.7, 0.7, 3, 0.6, 0.18, 0.72, 60)}},
        {use, "Across", {echo(1, 0.5, 0.55, 1, 2, 1, 2, 1)}},
        {use, "Dotted lead", {echo(1, 0.4, 0.4, 3, 4, 1, 1, 0.3), room(1, 0.2, 2400, 25)}},
        {use, "Sixteenths", {echo(1, 0.45, 0.5, 3, 4, 1, 4)}},
        {use, "Dust", {crush(8, 5), filter(lowPass, 0.7, 0.05), voices(0.8, 0.4, 40, 0.05, 0.9)}},
        {use, "Cloud", {echo(0.6, 0.6, 0.7, 1, 3, 3, 8, 0.6), room(0.5, 0.9, 9000, 80)}},
    };
}

/// Without the sound itself, for send buses.
std::vector<RackPreset> sends() {
    constexpr const char* use = "Sends";
    return {
        {use, "Chamber", {room(0, 1, 1400, 12)}},
        {use, "Hall", {room(0, 1, 2800, 35)}},
        {use, "Cathedral", {room(0, 1, 8500, 70)}},
        {use, "Dark hall", {room(0, 1, 3600, 30), filter(lowPass, 0.5, 0)}},
        {use, "Bright plate", {room(0, 1, 2000, 5), filter(highPass, 0.27, 0)}},
        {use, "Quarter echo", {echo(0, 1, 0.45, 1, 1, 1, 1)}},
        {use, "Dotted echo", {echo(0, 1, 0.5, 3, 4, 3, 4, 1)}},
        {use, "Eighths left and right", {echo(0, 1, 0.55, 1, 2, 1, 1)}},
        {use, "Slap", {slap(0, 1, 0.08, 92, 108)}},
        {use, "Widener", {voices(0, 1, 22, 0.1, 0.4, 0, 180)}},
        {use, "Endless", {echo(0, 1, 0.82, 2, 3, 3, 4, 0.7), room(0, 1, 12000, 0)}},
    };
}

std::vector<RackPreset> masters() {
    constexpr const char* use = "Master";
    return {
        {use, "Glue", {squeeze(-18, 2, 30, 180, 2)}},
        {use, "Louder", {squeeze(-20, 4, 10, 120, 6), squeeze(-8, 12, 1, 60, 2)}},
        {use, "Ceiling", {squeeze(-6, 20, 1, 80, 0)}},
        {use, "Night listening", {squeeze(-44, 5, 5, 700, 11)}},
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
        {use, "Frozen", {room(0, 1, 40000, 0)}},
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
