#include "surfaces/Mackie.h"

#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TrackValues.h"
#include "surfaces/SurfaceStrips.h"
#include "ui/Song.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int mostFader = 16383, restMs = 500;
constexpr int knobController = 16, ringController = 48, jogController = 60;
constexpr double knobSteps = 64.0, jogTicks = 240.0;

/// Buttons by their notes; those of strips are eight in a row.
enum Note : int {
    noteArm = 0,
    noteSolo = 8,
    noteMute = 16,
    noteSelect = 24,
    noteKnob = 32,
    noteBankLeft = 46,
    noteBankRight = 47,
    noteStripLeft = 48,
    noteStripRight = 49,
    noteCycle = 86,
    noteRewind = 91,
    noteForward = 92,
    noteStop = 93,
    notePlay = 94,
    noteRecord = 95,
    noteTouch = 104
};

int light(int note, bool on) {
    return asData(midiNoteOn, note, on ? 127 : 0);
}

/// What a line of a strip has room for, with a gap to the next one.
std::string fitted(const std::string& text, size_t room) {
    std::string plain;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte < 127) plain += c;
        if (byte >= 0xC0) plain += '?'; // one sign for each that the surface has not
    }
    plain.resize(room - 1, ' ');
    return plain + ' ';
}

} // namespace

Mackie::Mackie(CQV* root, Send sendShort, SendLong sendExclusive)
    : host(root), send(std::move(sendShort)), sendLong(std::move(sendExclusive)) {
    forgetShown();
}

void Mackie::forgetShown() {
    lights.fill(-1);
    faderAt.fill(-1);
    rings.fill(-1);
    meters.fill(-1);
    for (auto& line : texts) line.fill("");
}

// Strips.

SurfaceStrip Mackie::stripAt(int place) const {
    if (place == master) return mainStrip(host);
    const std::vector<SurfaceStrip> list = surfaceStrips(host);
    const size_t at = size_t(first + place);
    return at < list.size() ? list[at] : SurfaceStrip();
}

/// The last bank is full, where there are as many strips.
void Mackie::turnBank(int by) {
    first = asMinMax(first + by, 0, asMax(int(surfaceStrips(host).size()) - strips, 0));
}

// What comes in.

void Mackie::receive(int message) {
    const int ch = chByte(message), one = asByte1(message) & 127, two = asByte2(message) & 127;
    switch (statusByte(message)) {
    case midiPitchBend:
        return moveFader(ch, one | two << 7);
    case midiController:
        if (one >= knobController && one < knobController + strips)
            return turnKnob(one - knobController, two & 64 ? -(two & 63) : two);
        if (one == jogController)
            host->setPos(host->masterSeq ? host->masterSeq.load()->getPos() +
                                               (two & 64 ? -(two & 63) : two) * jogTicks
                                         : 0.0);
        return;
    case midiNoteOn:
    case midiNoteOff:
        if (one >= noteTouch && one < noteTouch + faders)
            return touch(one - noteTouch, noteOn(message));
        if (noteOn(message)) press(one);
        return;
    default:
        return;
    }
}

/// A hand on the fader is one gesture.
void Mackie::touch(int place, bool on) {
    if (touched[size_t(place)] == on) return;
    touched[size_t(place)] = on;
    movedAt[size_t(place)] = asTimeInMS();
    if (on)
        host->values->begin();
    else if (std::ranges::none_of(touched, [](bool t) { return t; }))
        host->values->end();
}

void Mackie::moveFader(int place, int value) {
    if (place >= faders) return;
    movedAt[size_t(place)] = asTimeInMS();
    faderAt[size_t(place)] = value;
    const SurfaceStrip strip = stripAt(place);
    if (!strip.channel) return;
    const float share = float(value) / float(mostFader);
    if (touched[size_t(place)] && host->values->dragging())
        host->values->setParam(strip.channel, 0, share);
    else
        host->values->nudgeParam(strip.channel, 0, share);
}

void Mackie::turnKnob(int place, int steps) {
    COutputChannel* channel = stripAt(place).channel;
    if (!channel) return;
    const double share = double(channel->param(1)) + steps / knobSteps;
    host->values->nudgeParam(channel, 1, fLimit(float(share), 0.0f, 1.0f));
}

void Mackie::press(int note) {
    switch (note) {
    case noteBankLeft:
    case noteBankRight:
        return turnBank(note == noteBankRight ? strips : -strips);
    case noteStripLeft:
    case noteStripRight:
        return turnBank(note == noteStripRight ? 1 : -1);
    case noteRewind:
        return host->setPos(0.0);
    case noteForward:
        if (CComp* song = host->masterSeq) host->setPos(song->getPos() + barTicks);
        return;
    case noteStop:
        return host->stop();
    case notePlay:
        return host->start();
    case noteRecord:
        return host->rec();
    case noteCycle: {
        const double on = host->loop ? 0.0 : 1.0;
        CSeq* seq = songOf(host);
        CSeqProg* prog = seq ? seq->getProg() : nullptr;
        return host->values->set(prog ? loopOf(prog) : loopOf(host), {on, prog ? on : 0.0});
    }
    default:
        if (note < noteKnob + strips) pressStrip(note / strips * strips, note % strips);
    }
}

void Mackie::pressStrip(int row, int place) {
    const SurfaceStrip strip = stripAt(place);
    if (!strip.channel) return;
    switch (row) {
    case noteArm:
        if (strip.track) host->values->set(armOf(strip.track), strip.track->recArm ? 0 : 1);
        return;
    case noteSolo:
        return strip.channel->toggleSolo();
    case noteMute:
        return strip.channel->toggleMute();
    case noteSelect:
        return selectTrackAlone(host, strip.track);
    case noteKnob:
        return host->values->set(panOf(strip.channel), 0.0);
    default:
        return;
    }
}

// What goes out.

void Mackie::show(int& shown, int message) {
    if (shown == message) return;
    shown = message;
    send(message);
}

void Mackie::showText(int line, int place, const std::string& text) {
    std::string& shown = texts[size_t(line)][size_t(place)];
    const std::string now = fitted(text, cell);
    if (shown == now) return;
    shown = now;
    std::vector<unsigned char> bytes = {0xF0, 0x00, 0x00, 0x66, 0x14, 0x12};
    bytes.push_back(static_cast<unsigned char>(line * lineLength + place * cell));
    bytes.insert(bytes.end(), now.begin(), now.end());
    bytes.push_back(0xF7);
    sendLong(bytes);
}

/// From -60 dB to full scale in twelve steps; the surface lets them fall by itself.
void Mackie::showMeter(int place, const COutputChannel* channel) {
    constexpr double lowest = -60.0;
    constexpr int steps = 12, over = 14;
    const float peak = channel ? std::max(channel->peakL.load(), channel->peakR.load()) : 0.0f;
    const double db = peak > 0.0f ? 20.0 * std::log10(double(peak)) : lowest;
    const int level =
        peak > 1.0f ? over : asMinMax(int(std::ceil((db - lowest) / -lowest * steps)), 0, steps);
    if (level == 0 && meters[size_t(place)] == 0) return;
    meters[size_t(place)] = level;
    send(asData(midiPressure, place << 4 | level, 0));
}

void Mackie::showStrip(int place) {
    const SurfaceStrip strip = stripAt(place);
    const COutputChannel* channel = strip.channel;
    const bool held = touched[size_t(place)] || asTimeInMS() - movedAt[size_t(place)] < restMs;
    const int fader = channel ? asRound(double(channel->vol) * mostFader) : 0;
    if (!held && faderAt[size_t(place)] != fader) {
        faderAt[size_t(place)] = fader;
        send(asData(midiPitchBend | place, fader & 127, fader >> 7));
    }
    if (place == master) return;
    constexpr int boost = 0x10, centreLight = 0x40, half = 5;
    const double pan = channel ? double(channel->pan) : 0.0;
    const int ring =
        channel ? boost | (asRound(pan * half) + half + 1) | (pan == 0.0 ? centreLight : 0) : 0;
    show(rings[size_t(place)], asData(midiController, ringController + place, ring));
    showText(0, place, strip.name);
    const bool level = held && channel;
    showText(1, place,
             level     ? channel->paramText(0).asChar()
             : channel ? channel->paramText(1).asChar()
                       : "");
    showMeter(place, channel);
    const auto lit = [&](int row, bool on) {
        show(lights[size_t(row + place)], light(row + place, on));
    };
    lit(noteArm, strip.track && strip.track->recArm);
    lit(noteSolo, channel && channel->solo);
    lit(noteMute, channel && channel->mute);
    lit(noteSelect, strip.track && strip.track->selected());
}

void Mackie::showLights() {
    const struct {
        int note;
        bool on;
    } all[] = {{notePlay, host->playing != 0},
               {noteStop, host->playing == 0},
               {noteRecord, host->recording != 0},
               {noteCycle, host->loop != 0}};
    for (const auto& l : all) show(lights[size_t(l.note)], light(l.note, l.on));
}

void Mackie::idle() {
    turnBank(0);
    for (int place = 0; place < faders; place++) showStrip(place);
    showLights();
}
