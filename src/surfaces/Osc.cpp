#include "surfaces/Osc.h"

#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TrackValues.h"
#include "surfaces/SurfaceTarget.h"
#include "ui/Song.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

constexpr int frontParams = 16; ///< that are told
constexpr double lowestDb = -60.0;

/// The part up to the next "/", which goes from the rest.
std::string_view takePart(std::string_view& rest) {
    const size_t end = std::min(rest.find('/'), rest.size());
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

/// A number from 1 on as an index; -1 for anything else.
int indexOf(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number > 0 ? number - 1 : -1;
}

float levelDb(const COutputChannel* channel) {
    const float peak = std::max(channel->peakL.load(), channel->peakR.load());
    const double db = peak > 0.0f ? 20.0 * std::log10(double(peak)) : lowestDb;
    return float(std::max(std::round(db), lowestDb));
}

} // namespace

// What comes in.

void Osc::receive(const std::string& path, const std::vector<double>& numbers) {
    const double value = numbers.empty() ? 1.0 : numbers[0];
    if (path.empty() || path[0] != '/' || !std::isfinite(value)) return;
    if (const auto known = told.find(path); known != told.end()) {
        known->second.moved = true;
        known->second.movedAt = asTimeInMS();
    }
    std::string_view rest = std::string_view(path).substr(1);
    const std::string_view first = takePart(rest);
    if (first == "strip") {
        const std::vector<SurfaceStrip> strips = surfaceStrips(host);
        const int index = indexOf(takePart(rest));
        if (index >= 0 && index < int(strips.size())) setStrip(strips[size_t(index)], rest, value);
    } else if (first == "main") {
        setStrip(mainStrip(host), rest, value);
    } else if (first == "param") {
        setFront(rest, value);
    } else if (first == "action") {
        if (value != 0.0) ways.action(std::string(rest));
    } else if (rest.empty()) {
        transport(first, value);
    }
}

void Osc::transport(std::string_view what, double value) {
    CSeq* seq = playableSongOf(host);
    if (what == "tempo") {
        host->values->nudge(seq ? tempoHereOf(seq) : tempoOf(host), value);
    } else if (what == "position") {
        host->setPos(std::clamp(value, 0.0, double(maxTicks) / quarterTicks) *
                     double(quarterTicks));
    } else if (what == "loop") {
        const double on = value != 0.0;
        host->values->set(seq ? loopOf(seq->getProg()) : loopOf(host), {on, seq ? on : 0.0});
    } else if (value == 0.0) {
        return; // a button that is let go
    } else if (what == "play") {
        host->start();
    } else if (what == "stop") {
        host->stop();
    } else if (what == "record") {
        host->rec();
    } else if (what == "rewind") {
        host->setPos(0.0);
    } else if (what == "refresh") {
        forgetTold();
    }
}

void Osc::setStrip(const SurfaceStrip& strip, std::string_view what, double value) {
    COutputChannel* channel = strip.channel;
    if (!channel) return;
    const bool on = value != 0.0;
    const auto share = float(std::clamp(value, 0.0, 1.0));
    const std::string_view first = takePart(what);
    if (first == "volume") {
        host->values->nudgeParam(channel, 0, share);
    } else if (first == "pan") {
        host->values->nudge(panOf(channel), std::clamp(value, -1.0, 1.0));
    } else if (first == "mute") {
        if ((channel->mute != 0) != on) channel->toggleMute();
    } else if (first == "solo") {
        if ((channel->solo != 0) != on) channel->toggleSolo();
    } else if (first == "arm") {
        if (strip.track) host->values->set(armOf(strip.track), on);
    } else if (first == "select") {
        if (on) selectTrackAlone(host, strip.track);
    } else if (first == "param") {
        const int index = indexOf(what);
        if (index >= 0 && index < channel->numParams())
            host->values->nudgeParam(channel, index, share);
    }
}

void Osc::setFront(std::string_view number, double value) {
    const ParamRef at = surfaceParamOf(host, ways.front(), indexOf(number));
    if (at) host->values->nudgeParam(at.object, at.param, float(std::clamp(value, 0.0, 1.0)));
}

// What goes out.

void Osc::addStrip(Values& to, const std::string& path, const SurfaceStrip& strip) const {
    const COutputChannel* channel = strip.channel;
    if (!channel) return;
    to.emplace_back(path + "/name", strip.name);
    to.emplace_back(path + "/volume", channel->vol.load());
    to.emplace_back(path + "/pan", channel->pan.load());
    to.emplace_back(path + "/mute", int(channel->mute != 0));
    to.emplace_back(path + "/solo", int(channel->solo != 0));
    to.emplace_back(path + "/meter", levelDb(channel));
    if (!strip.track) return;
    to.emplace_back(path + "/arm", int(strip.track->recArm != 0));
    to.emplace_back(path + "/select", int(strip.track->selected()));
}

Osc::Values Osc::present() const {
    Values all;
    CSeq* seq = songOf(host);
    const double ticks = seq ? seq->getPos() : 0.0;
    all.emplace_back("/play", int(host->playing != 0));
    all.emplace_back("/record", int(host->recording != 0));
    all.emplace_back("/loop", int(host->loop != 0));
    all.emplace_back("/tempo", host->tempoNow.load());
    all.emplace_back("/position", float(std::floor(ticks * 10.0 / quarterTicks) / 10));
    const std::vector<SurfaceStrip> strips = surfaceStrips(host);
    all.emplace_back("/strips", int(strips.size()));
    addStrip(all, "/main", mainStrip(host));
    for (size_t i = 0; i < strips.size(); i++)
        addStrip(all, "/strip/" + std::to_string(i + 1), strips[i]);
    for (int i = 0; i < frontParams; i++) {
        const ParamRef at = surfaceParamOf(host, ways.front(), i);
        const std::string path = "/param/" + std::to_string(i + 1);
        const CStr name = at ? paramTitle(at.object, at.param) : CStr();
        all.emplace_back(path + "/name", std::string(name.asChar()));
        if (at) all.emplace_back(path, paramShare(at.object, at.param));
    }
    return all;
}

void Osc::idle(const Send& send) {
    const int now = asTimeInMS();
    size_t sent = 0;
    for (const auto& [path, value] : present()) {
        const auto [at, fresh] = told.try_emplace(path);
        Told& last = at->second;
        if (last.moved && now - last.movedAt >= restMs) last.moved = false;
        if (last.moved || (!fresh && last.value == value)) continue;
        if (++sent > mostTold) {
            if (fresh) told.erase(at);
            return;
        }
        last.value = value;
        send(path, value);
    }
}
