#include "mixer/StripLevels.h"

#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "engine/StripValues.h"
#include "instruments/CDrumSound.h"
#include "sequencer/edit/KitEdits.h"

#include <cmath>

namespace {

enum StripParam { paramVolume, paramPan };

} // namespace

StoredValue stripFader(const MixerStrip& strip) {
    return strip.drum ? levelOf(strip.drum) : faderOf(strip.channel);
}

StoredValue stripPan(const MixerStrip& strip) {
    return strip.drum ? panOf(strip.drum) : panOf(strip.channel);
}

StoredValue stripMute(const MixerStrip& strip) {
    return strip.drum ? muteOf(strip.drum) : muteOf(strip.channel);
}

StoredValue stripSolo(const MixerStrip& strip) {
    return strip.drum ? soloOf(strip.drum) : soloOf(strip.channel);
}

CStr faderText(const MixerStrip& strip) {
    if (!strip.drum) return strip.channel->paramText(paramVolume);
    const double level = strip.drum->volume;
    return level > 0.0 ? asStrFormat(40 * std::log10(level), "%0.2f dB") : CStr("-inf");
}

CStr panText(const MixerStrip& strip) {
    if (!strip.drum) return strip.channel->paramText(paramPan);
    constexpr double steps = 64.0;
    const double pan = strip.drum->pan;
    const int number = asInt(std::abs(pan) * steps);
    if (pan == 0.0) return "<C>";
    return (pan < 0.0 ? "L" : "R") + asStr(number);
}
