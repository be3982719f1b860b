#include "project/ChannelMix.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "project/SongSounds.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/CTrack.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <utility>

namespace {

enum Controller : int {
    ccDataEntry = 6,
    ccVolume = 7,
    ccPan = 10,
    ccExpression = 11,
    ccResonance = 71,
    ccBrightness = 74,
    ccReverb = 91,
    ccChorus = 93,
    ccRegisteredLow = 100,
    ccRegisteredHigh = 101,
};

// Where a file tells nothing, as General MIDI has it.
constexpr int usualVolume = 100, usualReverb = 40;
constexpr float most = 127.0f;

constexpr int mostBend = 24;
/// Changes closer than this follow a hand; from others the value before stays until then.
constexpr int sweepTicks = 120;
constexpr int paramVolume = 0, paramPan = 1;

/// What the controllers of a channel stand at.
struct State {
    int volume = usualVolume, expression = 127, pan = 64;
    int registered = -1; ///< parameter that a data entry sets, 0 the bend

    float fader() const { return float(volume) / most * float(expression) / most; }
    float place() const { return fLimit(float(pan - 64) / 63.0f, -1.0f, 1.0f); }

    void take(int controller, int value) {
        if (controller == ccVolume) volume = value;
        if (controller == ccExpression) expression = value;
        if (controller == ccPan) pan = value;
        if (controller == ccRegisteredHigh) registered = value << 7;
        if (controller == ccRegisteredLow) registered = (std::max(0, registered) & ~127) | value;
    }
};

void addPoint(std::vector<ChannelMix::Point>& points, int tick, float value) {
    if (!points.empty() && points.back().tick == tick)
        points.back().value = value;
    else
        points.push_back({tick, value});
}

/// Fills a lane of a part; a value that stays keeps to it until the next comes.
void draw(CPart* part, int slot, const std::vector<ChannelMix::Point>& points, float scale,
          float shift) {
    const auto add = [&](int tick, float value) {
        part->addEventParam(tick, createEnvEvent(nullptr, value * scale + shift), slot);
    };
    for (size_t i = 0; i < points.size(); i++) {
        if (i > 0 && points[i].tick - points[i - 1].tick > sweepTicks)
            add(points[i].tick - 1, points[i - 1].value);
        add(points[i].tick, points[i].value);
    }
}

void addLane(CTrack* track, CSampler* instrument, const char* name, int param,
             const std::vector<ChannelMix::Moves>& moves,
             std::vector<ChannelMix::Point> ChannelMix::Moves::*points, float scale, float shift,
             CUndo* undo) {
    if (std::ranges::all_of(moves, [&](const auto& m) { return (m.*points).empty(); })) return;
    auto* lane = new CSubTrack(name, laneAutomation);
    lane->object = instrument->output();
    lane->param = param;
    lane->visible = 0;
    lane = track->addLane(lane, undo);
    if (!lane) return;
    for (const auto& m : moves) draw(m.part, lane->slot, m.*points, scale, shift);
}

} // namespace

ChannelMix::ChannelMix(const std::vector<CPart*>& parts) {
    State now;
    int sendReverb = usualReverb, sendChorus = 0;
    bool sounding = false;
    fader = now.fader();
    pan = now.place();
    for (CPart* part : parts) {
        Moves& m = moves.emplace_back(Moves{part, {}, {}});
        int tick = 0;
        for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
            tick += e->delta;
            const int data = asMessage(e)->data;
            sounding = sounding || noteOn(data);
            if (statusByte(data) != midiController) continue;
            const int controller = asByte1(data), value = asByte2(data) & 127;
            const float before = now.fader(), placeBefore = now.place();
            now.take(controller, value);
            if (controller == ccReverb) sendReverb = value;
            if (controller == ccChorus) sendChorus = value;
            if (controller == ccDataEntry && now.registered == 0)
                bend = asMinMax(value, 0, mostBend);
            tellsTone = tellsTone || controller == ccBrightness || controller == ccResonance;
            if (sounding && now.fader() != before) addPoint(m.faders, tick, now.fader());
            if (sounding && now.place() != placeBefore) addPoint(m.pans, tick, now.place());
            if (!sounding) fader = now.fader(), pan = now.place();
        }
    }
    reverb = float(sendReverb) / most;
    chorus = float(sendChorus) / most;
}

void ChannelMix::apply(CSampler* instrument, CTrack* track, float headroom, CUndo* undo) const {
    setStrip(instrument, fader * headroom, pan);
    addLane(track, instrument, "Volume", paramVolume, moves, &Moves::faders, headroom, 0.0f, undo);
    addLane(track, instrument, "Pan", paramPan, moves, &Moves::pans, 0.5f, 0.5f, undo);
    instrument->getProg()->eachSound([&](CSound* s) {
        if (bend >= 0) s->bendRange = bend;
        if (tellsTone) s->ccMap[ccBrightness] = s->ccMap[ccResonance] = targetNone;
    });
}
