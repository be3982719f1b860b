#include "SoakHost.h"

#include "AskModule.h"

#include "audiofiles/CSample.h"
#include "engine/DeviceComps.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>
#include <vector>

namespace {

constexpr int sides = 2;

} // namespace

SoakHost::SoakHost(AamCallback callback) : bridge(callback) {
    qv = &host;
    host.settingsEnabled = false;
    host.setFrames(block);
    host.init();
    seq = new CSeq(&host);
    seq->init();
    {
        const GraphHold hold(&host);
        host.comps.add(seq);
    }
    for (int i = 0; i < sides; i++) {
        static_cast<CAudioOut*>(host.getAudioOut())->channelUsed[i] = 1;
        static_cast<CAudioIn*>(host.getAudioIn())->channelUsed[i] = 1;
        bridge.audioOutEnable(i, 1);
        bridge.audioInEnable(i, 1);
    }
    bridge.setFrames(block);
    host.aam = &bridge;
}

SoakHost::~SoakHost() {
    bridge.audioClose();
    host.aam = nullptr;
    host.clear();
}

void SoakHost::addTrack(const std::string& file) {
    auto* sample = new CSample;
    sample->streamed = 1;
    if (!sample->open(file.c_str())) std::exit(2);
    CSongTrack* songTrack = seq->addTrack(trackAudio, seq->getProg(), nullptr);
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->end = sample->frames - 1;
    auto* part = new CAudioPart;
    part->addEvent(0, event);
    songTrack->addPart(part, nullptr);
    const GraphHold hold(&host);
    host.samples.add(sample);
}

bool SoakHost::open(const std::string& feed) {
    bridge.audioOpen(bridge.numAudioDevs() - 1);
    if (!bridge.opened) return false;
    return feed.empty() || askModule(aamTestFeed, reinterpret_cast<intptr_t>(feed.c_str())) >= 0;
}

void GapWatch::writeFile(const std::string& file) {
    CSample out;
    out.setFormat(SoakHost::rate, 24, sides);
    out.create(file.c_str());
    out.writeHeader();
    const std::vector<float> side(SoakHost::rate, level);
    for (int i = 0; i < fileSeconds; i++) out.writeFrames(SoakHost::rate, side.data(), side.data());
    out.writeHeader();
    out.finalize();
}

void GapWatch::look(const float* out, int64_t count, int files, double pos) {
    const float whole = float(files) * level - 0.001f;
    if (pos < lastPos) jumpAt = frames;
    lastPos = pos;
    int64_t below = 0;
    for (int64_t i = 0; i < count; i++) below += out[i] < whole;
    const int64_t at = frames.fetch_add(count);
    if (at < settleFrames) return;
    (at - jumpAt < settleFrames ? missedAtJumps : missed) += below;
}
