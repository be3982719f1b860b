#include "engine/MidiTimeCode.h"

#include "engine/CQV.h"
#include "engine/SongTime.h"
#include "engine/TransportRing.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int timeCode = 0xF1, piecesOfMoment = 8, quartersOfFrame = 4;
constexpr double near = 1e-6;

double positionOf(CQV* host) {
    CComp* song = host->getMasterSeq();
    return song ? song->getPos() : double(host->pos);
}

} // namespace

// Out.

double TimeCodeOut::codeSeconds(double ticks) const {
    return 3600.0 * startHour + songSeconds(host, ticks);
}

double TimeCodeOut::quartersPerSecond() const {
    return quartersOfFrame * framesPerSecond(CodeRate(int(rate)));
}

bool TimeCodeOut::takePlace(TimeCode& code) {
    const int64_t frame = placed.exchange(nowhere);
    if (frame == nowhere) return false;
    code = TimeCode::ofFrame(frame, CodeRate(int(rate)));
    return true;
}

void TimeCodeOut::place(double ticks) {
    placed = int64_t(std::floor(codeSeconds(ticks) * framesPerSecond(CodeRate(int(rate))) + near));
}

/// Eight messages tell the moment of the first, which is that of every other frame.
size_t TimeCodeOut::write(const MidiClockOut::Part& part, std::span<AamEvent> room) {
    const bool jumped = std::fabs(part.ticks - reached) > near;
    if (device == noClockDevice) {
        running = false;
        reached = -1.0;
        return 0;
    }
    if (jumped || (running && !part.playing)) place(part.ticks);
    reached = part.ticks;
    if (!part.playing) running = false;
    if (!part.playing || part.frames < 1) return 0;
    const double perSecond = quartersPerSecond();
    const double from = codeSeconds(part.ticks) * perSecond;
    reached = part.ticks + part.ticksPerFrame * part.frames;
    const double perFrame = (codeSeconds(reached) * perSecond - from) / part.frames;
    if (jumped || !running)
        quarter = int64_t(std::ceil(from / piecesOfMoment - near)) * piecesOfMoment;
    running = true;
    size_t count = 0;
    for (; count < room.size(); quarter++) {
        const double frame = std::max(std::ceil((double(quarter) - from) / perFrame - near), 0.0);
        if (frame >= part.frames) break;
        const int index = int(quarter % piecesOfMoment);
        const TimeCode code =
            TimeCode::ofFrame((quarter - index) / quartersOfFrame, CodeRate(int(rate)));
        room[count++] = {
            timeCode | code.piece(index) << 8, int8_t(int(device)), {}, part.frame + int(frame)};
    }
    return count;
}

// In.

void TimeCodeIn::take(int data) {
    const int index = data >> 12 & 7;
    inOrder = index == (latest + 1) % piecesOfMoment ? std::min(inOrder + 1, piecesOfMoment) : 1;
    latest = index;
    heard = now;
    pieces[size_t(index)] = data >> 8 & 15;
    step(index);
}

/// The last piece makes a moment known, which was that of the first; each further one is a quarter
/// of a frame later.
void TimeCodeIn::step(int piece) {
    if (inOrder < piecesOfMoment) {
        known = known && inOrder > 1;
        if (!known) return;
    }
    bool fresh = !known;
    quarter++;
    if (piece == piecesOfMoment - 1 && inOrder == piecesOfMoment) {
        const TimeCode code = TimeCode::ofPieces(pieces);
        const int64_t told = code.frame() * quartersOfFrame + piece;
        fresh = fresh || told != quarter || code.rate != rate;
        quarter = told;
        rate = code.rate;
        known = true;
    }
    if (!known) return;
    if (fresh)
        pulse.begin(now, double(host->rate) / quartersPerSecond());
    else
        pulse.follow(now, double(host->rate));
    if (running)
        steer();
    else
        begin();
}

double TimeCodeIn::codeSeconds() const {
    return double(quarter) / quartersPerSecond() - startSeconds();
}

/// What lies before the song is waited for.
void TimeCodeIn::begin() {
    const double seconds = codeSeconds();
    if (seconds < 0.0) return;
    host->setPosSynced(songTicks(host, seconds));
    host->startSynced();
    ratio = 1.0;
    running = true;
}

/// The speed of the messages, and as much more or less of it as brings the song to where they are
/// within half a second. From far off it jumps.
void TimeCodeIn::steer() {
    constexpr double catchUp = 0.5, most = 0.1, far = 0.5; // seconds; share; seconds
    if (!host->playing) return;                            // the user has stopped it
    const double expected = double(host->rate) / quartersPerSecond();
    const double wanted =
        codeSeconds() + (double(now) - pulse.at) / (pulse.period * quartersPerSecond());
    double behind = wanted - songSeconds(host, positionOf(host));
    if (const int turn = host->loop ? host->loopEnd - host->loopStart : 0; turn > 0)
        behind = std::remainder(behind, songSeconds(host, host->loopEnd) -
                                            songSeconds(host, host->loopStart));
    if (std::fabs(behind) > far) {
        host->setPosSynced(songTicks(host, std::max(wanted, 0.0)));
        behind = 0.0;
    }
    ratio = expected / pulse.period * (1.0 + std::clamp(behind / catchUp, -most, most));
}

/// When the code is gone, if nothing comes meanwhile.
int64_t TimeCodeIn::end() const {
    return heard + int64_t(std::ceil(double(host->rate) / framesPerSecond(rate)));
}

int TimeCodeIn::most(int frames) const {
    return heard < 0 ? frames : int(std::clamp<int64_t>(end() - now, 1, frames));
}

void TimeCodeIn::advance(int frames) {
    now += frames;
    if (heard >= 0 && now >= end()) lose();
}

/// The song goes back to the last moment that was told.
void TimeCodeIn::lose() {
    known = false;
    inOrder = 0;
    heard = latest = -1;
    if (!running) return;
    running = false;
    host->stopSynced();
    host->setPosSynced(songTicks(host, std::max(codeSeconds(), 0.0)));
}

void TimeCodeIn::place(int from, const TimeCode& code) {
    if (running || device == noClockDevice || (device != anyClockDevice && device != from)) return;
    const double seconds = double(code.frame()) / framesPerSecond(code.rate) - startSeconds();
    TransportCall call;
    call.target = host;
    call.value = std::max(seconds, 0.0);
    call.act = [](CObject* target, double at, void*) {
        auto* root = static_cast<CQV*>(target);
        root->setPosSynced(songTicks(root, at));
    };
    host->onTransport(call);
}
