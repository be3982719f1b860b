#include "engine/MidiClock.h"

#include "base/Numbers.h"
#include "engine/CQV.h"

#include <algorithm>
#include <cmath>

namespace {

enum System : int {
    systemPosition = 0xF2,
    systemBeat = 0xF8,
    systemStart = 0xFA,
    systemContinue = 0xFB,
    systemStop = 0xFC
};

constexpr double beatTicks = 40.0, sixteenthTicks = 240.0;
constexpr int beatsOfSixteenth = 6, mostPosition = 16383;
constexpr double near = 1e-6; ///< ticks

} // namespace

// Out.

void MidiClockOut::put(int frame, int data) {
    if (count < to.size()) to[count++] = {data, int8_t(int(device)), {}, frame};
}

int MidiClockOut::frameOf(const Part& part, double ticks) {
    const double frame = std::ceil((ticks - part.ticks) / part.ticksPerFrame - near);
    return part.frame + int(std::clamp(frame, 0.0, double(part.frames)));
}

size_t MidiClockOut::write(const Part& part, std::span<AamEvent> room) {
    to = room;
    count = 0;
    const bool jumped = state != State::still && std::fabs(part.ticks - reached) > near;
    const bool off = device == noClockDevice;
    if (state == State::running && (!part.playing || jumped || off)) put(part.frame, systemStop);
    if (!part.playing || jumped || off) state = State::still;
    if (part.playing && !off) play(part);
    return count;
}

/// Others can begin at sixteenths alone: those of the song that come next.
void MidiClockOut::play(const Part& part) {
    const int end = part.frame + part.frames;
    if (state == State::still) {
        state = State::waiting;
        startsAt = std::ceil(part.ticks / sixteenthTicks - near) * sixteenthTicks;
    }
    if (const int frame = frameOf(part, startsAt); state == State::waiting && frame < end) {
        const int position = int(std::min(startsAt / sixteenthTicks, double(mostPosition)));
        if (position > 0)
            put(frame, systemPosition | (position & 127) << 8 | (position >> 7) << 16);
        put(frame, position > 0 ? systemContinue : systemStart);
        state = State::running;
        beat = int64_t(std::llround(startsAt / sixteenthTicks)) * beatsOfSixteenth;
    }
    for (int frame = 0; state == State::running; beat++) {
        frame = frameOf(part, double(beat) * beatTicks);
        if (frame >= end) break;
        put(frame, systemBeat);
    }
    reached = part.ticks + part.ticksPerFrame * part.frames;
}

// In.

void MidiClockIn::take(int data) {
    switch (data & 0xFF) {
    case systemBeat:
        return tick();
    case systemStart:
        ticks = 0.0;
        armed = true;
        host->stopSynced();
        return host->setPosSynced(0.0);
    case systemContinue:
        armed = true;
        return;
    case systemPosition:
        ticks = ((data >> 8 & 127) | (data >> 16 & 127) << 7) * sixteenthTicks;
        return host->setPosSynced(ticks);
    case systemStop:
        armed = running = false;
        return host->stopSynced();
    default:
        return;
    }
}

/// The song begins with the first beat behind the start, and not with that itself.
void MidiClockIn::tick() {
    const bool first = armed;
    follow();
    if (running) ticks += beatTicks;
    if (armed) {
        running = true;
        armed = false;
        host->startSynced();
    }
    if (pulse.period > 0.0) steer();
    if (first) pulse.at = double(now);
}

/// After a pause it begins anew.
void MidiClockIn::follow() {
    constexpr double longest = 0.5; // seconds: slower than any song
    const double rate = double(host->rate);
    const bool paused = pulse.came < 0 || double(now - pulse.came) > longest * rate;
    if (paused)
        pulse.begin(now, 0.0);
    else
        pulse.follow(now, rate);
}

/// The tempo of the beats, and as much more or less of it as brings the song to where they are
/// within half a second.
void MidiClockIn::steer() const {
    constexpr double catchUp = 0.5, most = 0.1; // seconds; share of the tempo
    const double rate = double(host->rate), ticksPerSecond = beatTicks * rate / pulse.period;
    double share = 0.0;
    if (running && host->playing) {
        const double wanted = ticks + (double(now) - pulse.at) * beatTicks / pulse.period;
        const CComp* song = host->getMasterSeq();
        const double is = song ? const_cast<CComp*>(song)->getPos() : double(host->pos);
        // A loop turns here, and not there.
        const int turn = host->loop ? host->loopEnd - host->loopStart : 0;
        const double behind = turn > 0 ? std::remainder(wanted - is, turn) : wanted - is;
        share = std::clamp(behind / (ticksPerSecond * catchUp), -most, most);
    }
    constexpr double ticksPerQuarterMinute = 16.0; // ticks a second at one beat a minute
    host->setTempoSynced(float(ticksPerSecond / ticksPerQuarterMinute * (1.0 + share)));
}
