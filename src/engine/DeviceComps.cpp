#include "engine/DeviceComps.h"

#include "base/BlockView.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "engine/MidiBytes.h"
#include "engine/ObjectKinds.h"
#include "engine/plan/PlanBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

int readSigned(CStream* stream) {
    return int(static_cast<signed char>(stream->readByte()));
}

void writeSigned(CStream* stream, int value) {
    stream->writeByte(static_cast<unsigned char>(value));
}

constexpr int autoqChoices[] = {16, 8, 4};
constexpr double shortestTicks = 120.0; ///< of a note that was let go before it began

} // namespace

void CDeviceAudio::setDevs() {
    int devs[2] = {-1, -1};
    int used = 0;
    for (int i = 0; i < maxDeviceChannels && used < 2; ++i)
        if (channelUsed[i]) devs[used++] = i;
    chs = used;
    dev0 = devs[0];
    dev1 = devs[1];
}

void CDeviceAudio::prepare(int frames) {
    CComp::prepare(frames);
    setDevs();
}

void CDeviceAudio::read(CStream* stream, int end) {
    eachBlock(stream, end, [&](const CStr& item, BlockView& body) {
        if (item == "chs" && body.has(1)) chs = std::clamp(body.readByte(), 0, 2);
        if (item != "devs" || !body.has(2)) return;
        for (Shared<int>* dev : {&dev0, &dev1}) {
            *dev = readSigned(&body);
            if (*dev >= 0 && *dev < maxDeviceChannels) channelUsed[*dev] = 1;
        }
    });
}

void CDeviceAudio::write(CStream* stream) {
    stream->writeId("chs", 1);
    stream->writeByte(static_cast<unsigned char>(chs));
    stream->writeId("devs", 2);
    writeSigned(stream, dev0);
    writeSigned(stream, dev1);
}

CAudioIn::CAudioIn(CQV* root) : CDeviceAudio(root) {
    type = compAudioIn;
    id = "Audio In";
}

void CAudioIn::init() {
    inPorts.add(new CInputPort(this));
    outputs.add(new COutputChannel(this));
}

void CAudioIn::process(int frames) {
    const ProcessGuard guard(this);
    if (guard.enter) mergeMIDI(frames);
}

CAudioOut::CAudioOut(CQV* root) : CDeviceAudio(root) {
    type = compAudioOut;
    id = "Audio Out";
}

void CAudioOut::init() {
    inPorts.add(new CInputPort(this));
    inputs.add(new CInputChannel(this));
    outputs.add(new COutputChannel(this));
}

// The plan itself leads cables into its inputs.
void CAudioOut::planRender(PlanBuilder& plan) {
    plan.needMidi(this);
    plan.render(this);
}

void CAudioOut::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    mergeMIDI(frames);
    const CInputChannel* in = input();
    COutputChannel* out = output();
    if (!in || !out) return;
    std::memcpy(out->bufL, in->bufL, sizeof(float) * size_t(frames));
    std::memcpy(out->bufR, in->bufR, sizeof(float) * size_t(frames));
}

namespace {

/// Whether a strip was worked out in this block, and holds nothing of an earlier one.
bool workedOut(const COutputChannel* ch) {
    CComp* part = ch->comp->getComp(const_cast<COutputChannel*>(ch));
    return (part ? part : ch->comp)->mixed;
}

bool goesWith(const ForgetSet& gone, const COutputChannel* ch) {
    if (gone.has(ch)) return true;
    return std::ranges::any_of(gone.all(), [ch](const CObject* o) {
        const CComp* comp = asComp(o);
        return comp && comp->outputs.contains(ch);
    });
}

} // namespace

/// The mix comes back before something else is listened to, so that nothing clicks.
void CAudioOut::playListened(int frames) {
    const COutputChannel* wanted = listened.loadAcquire();
    const bool rests = !mixFade.running();
    if (rests && !mixFade.leaving) heard = wanted;
    const bool away = heard && heard == wanted;
    if (away != mixFade.leaving) mixFade.turn(away, std::max(host->framesInMs * PlanFade::ms, 1));
    COutputChannel* out = output();
    if (!out || !heard) return;
    const bool sounds = workedOut(heard);
    for (int i = 0; i < frames; ++i) {
        const float share = mixFade.at(i), other = sounds ? 1.0f - share : 0.0f;
        out->bufL[i] = out->bufL[i] * share + heard->bufL[i] * other;
        out->bufR[i] = out->bufR[i] * share + heard->bufR[i] * other;
    }
    mixFade.advance(frames);
}

void CAudioOut::forget(const ForgetSet& gone) {
    for (const COutputChannel* ch : {listened.load(), heard}) {
        if (!ch || !goesWith(gone, ch)) continue;
        listened = nullptr;
        heard = nullptr;
        mixFade = PlanFade();
    }
}

CMIDIIn::CMIDIIn(CQV* root) : CComp(root) {
    type = compMIDIIn;
    id = "MIDI In";
}

void CMIDIIn::init() {
    outPorts.add(new COutputPort(this));
}

void CMIDIIn::addMidiEvent(int data) {
    keyQueue.push(data);
}

void CMIDIIn::playNote(int note, bool on) {
    constexpr int velocity = 100;
    if (on) {
        if (lastNote != -1) addMidiEvent(asData(midiNoteOn, lastNote, 0));
        addMidiEvent(asData(midiNoteOn, note, velocity));
        lastNote = note;
        return;
    }
    addMidiEvent(asData(midiNoteOn, note, 0));
    lastNote = -1;
}

void CMIDIIn::setAutoq(int choice) {
    const bool known = std::ranges::find(autoqChoices, choice) != std::end(autoqChoices);
    autoq = known ? choice : -1;
}

int CMIDIIn::withSens(int data) const {
    const int percent = sens;
    if (percent >= 127 || percent == fullSens || !noteOn(data)) return data;
    const double s = percent * 0.01, v = asByte2(data) - 1;
    const int velocity = asInt((1.0 - s + s * (v / 126.0)) * 126.0) + 1;
    return asData(data & 0xFF, asByte1(data), std::clamp(velocity, 1, 127));
}

int CMIDIIn::framesToGrid() const {
    const int choice = autoq;
    if (choice < 1 || !host->playing || !host->masterSeq) return 0;
    const int grid = ticksPerQuarter / choice * 4;
    double delta = std::floor(pos / grid) * grid - pos;
    if (pos > delta) delta += grid;
    return asInt(host->ticksToFrames(delta));
}

void CMIDIIn::accept(int data) {
    if (numPending >= maxPending) return;
    Pending next{withSens(data), 0, 0};
    if (noteOn(data)) next.frames = next.quantize = framesToGrid();
    if (noteOff(data)) {
        double t = 0.0;
        for (const Pending* p = pending; p < pending + numPending; ++p)
            if (noteOn(p->data) && chByte(p->data) == chByte(data) && p->quantize > t)
                t = host->ticksToFrames(shortestTicks) + p->quantize;
        next.frames = asInt(t);
    }
    pending[numPending++] = next;
}

void CMIDIIn::sendDue(int frames) {
    CMIDIQ* port = outPort();
    int kept = 0;
    for (int i = 0; i < numPending; ++i) {
        Pending& p = pending[i];
        if (p.frames >= frames) {
            p.frames -= frames;
            pending[kept++] = p;
        } else if (port) {
            port->insert(p.frames, p.data, eventMidi, 0.0f, 0, nullptr, nullptr);
        }
    }
    numPending = kept;
}

void CMIDIIn::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    int data = 0;
    while (keyQueue.pop(data)) accept(data);
    sendDue(frames);
    if (host->playing) pos += host->framesToTicks(frames);
}

void CMIDIIn::read(CStream* stream, int end) {
    eachBlock(stream, end, [&](const CStr& item, BlockView& body) {
        if (item == "device" && body.has(1)) device = std::max(readSigned(&body), -1);
        if (item == "autoq" && body.has(4)) setAutoq(body.readInt());
        if (item == "sens" && body.has(4)) sens = std::clamp(body.readInt(), 0, 127);
    });
}

void CMIDIIn::write(CStream* stream) {
    stream->writeId("device", 1);
    writeSigned(stream, device);
    writeIntBlock(stream, "autoq", autoq);
    writeIntBlock(stream, "sens", sens);
}

CMIDIOut::CMIDIOut(CQV* root) : CComp(root) {
    type = compMIDIOut;
    id = "MIDI Out";
}

void CMIDIOut::init() {
    inPorts.add(new CInputPort(this));
}

void CMIDIOut::process(int frames) {
    const ProcessGuard guard(this);
    if (guard.enter) mergeMIDI(frames);
}

void CMIDIOut::read(CStream* stream, int end) {
    eachBlock(stream, end, [&](const CStr& item, BlockView& body) {
        if (item == "device" && body.has(1)) device = std::max(readSigned(&body), -1);
    });
}

void CMIDIOut::write(CStream* stream) {
    stream->writeId("device", 1);
    writeSigned(stream, device);
}
